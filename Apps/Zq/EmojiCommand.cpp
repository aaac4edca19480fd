#include <string>
#include <utility>
#include <vector>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Input.h"
#include "Apps/Zq/Output.h"
#include "Classes/Core/Category/NSStringRemoveEmoji.h"

namespace zq {

using namespace zqcore;

namespace {

int strip(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"with"}, {"raw", false}}, {"TEXT"});
    if (!parsed) return kUsage;
    const std::string& word = parsed->words()[0];
    const auto text = readTextArgument(word);
    if (!text) return kUnreadable;
    std::string stripped = zq_stringByReplaceingEmojiWithString(*text, parsed->value("with").value_or(""));
    // A text from standard input brings its own line ends.
    if (parsed->has("raw")) return finishWithBytes(stripped, word != "-");
    Value::Dictionary result;
    result.set("text", std::move(stripped));
    result.set("emoji", zq_allEmoji(*text).size());
    return finishWith(Value(std::move(result)));
}

int list(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {}, {"TEXT"});
    if (!parsed) return kUsage;
    const auto text = readTextArgument(parsed->words()[0]);
    if (!text) return kUnreadable;
    const std::vector<std::string> found = zq_allEmoji(*text);
    const std::vector<std::string> ranges = zq_allEmojiRanges(*text);
    Value::Array result;
    for (std::size_t i = 0; i < found.size(); ++i) {
        result.emplace_back(Value::Dictionary{{"emoji", found[i]}, {"range", ranges[i]}});
    }
    return finishWith(Value(std::move(result)));
}

int run(std::span<const std::string> arguments) {
    if (!arguments.empty() && arguments[0] == "strip") return strip(arguments.subspan(1));
    if (!arguments.empty() && arguments[0] == "list") return list(arguments.subspan(1));
    return complain("zq emoji knows \"strip\" and \"list\"; try zq emoji --help");
}

constexpr Offer kOffers[] = {{"", "strip list"}, {"strip", "--with --raw"}};

}  // namespace

const Command kEmojiCommand = {
    .name = "emoji",
    .summary = "strip or list the emoji of a text",
    .help =
        "usage: zq emoji strip TEXT [--with REPLACEMENT] [--raw]\n"
        "       zq emoji list TEXT\n\n"
        "strip prints TEXT (- for standard input) without its emoji and their number; list prints each of\n"
        "them with its range, location and length in UTF-16 units. Arrows and some other symbols count as\n"
        "well; flags, families and keycaps count as one.\n\n"
        "  --with REPLACEMENT   put this in the place of each emoji\n"
        "  --raw                print the bare text, not JSON\n\n"
        "example:\n"
        "  zq emoji strip - --raw <chat.txt >plain.txt\n",
    .codes = exitCodes(),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
