#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Input.h"
#include "Apps/Zq/Output.h"
#include "Classes/Core/Extension/StringCodeCase.h"

namespace zq {

using namespace zqcore;

namespace {

struct Convention {
    std::string_view name;
    CodeCaseType type;
};
constexpr Convention kConventions[] = {
    {"camel", CodeCaseType::camel}, {"upperCamel", CodeCaseType::upperCamel}, {"snake", CodeCaseType::snake},
    {"kebab", CodeCaseType::kebab}, {"constant", CodeCaseType::constant},
};

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}, {"raw", false}}, {"TEXT"});
    if (!parsed) return kUsage;
    const auto to = parsed->value("to");
    const auto* const wanted =
        std::ranges::find(kConventions, std::string_view(to.value_or("")), &Convention::name);
    if (to && wanted == std::end(kConventions)) {
        return complain("--to is camel, upperCamel, snake, kebab or constant, not \"" + *to + "\"");
    }
    if (!to && parsed->has("raw")) return complain("--raw wants one convention: --to");
    const auto text = readTextArgument(parsed->words()[0]);
    if (!text) return kUnreadable;

    const std::string words = zq_splitWords(*text);
    if (parsed->has("raw")) return finishWithBytes(zq_mergeCodeCase(words, wanted->type), true);
    Value::Dictionary result;
    result.set("words", words);
    for (const Convention& one : kConventions) {
        if (!to || wanted == &one) result.set(std::string(one.name), zq_mergeCodeCase(words, one.type));
    }
    return finishWith(Value(std::move(result)));
}

constexpr Offer kOffers[] = {{"*", "--to --raw"}};

}  // namespace

const Command kCaseCommand = {
    .name = "case",
    .summary = "turn an identifier from one naming convention into another",
    .help =
        "usage: zq case TEXT [--to camel|upperCamel|snake|kebab|constant] [--raw]\n\n"
        "Splits TEXT (- for standard input) into words and joins them in each convention, or in that of\n"
        "--to. An identifier of ASCII letters, digits and _ - / . is split at case and at all but letters;\n"
        "in any other text the words are the runs of ASCII letters and digits.\n\n"
        "  --to CONVENTION   only this one\n"
        "  --raw             print the bare text, not JSON\n\n"
        "example:\n"
        "  zq case parseHTTPResponse --to snake --raw      prints parse_http_response\n",
    .codes = exitCodes(),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
