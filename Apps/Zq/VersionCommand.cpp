#include <string>
#include <utility>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Input.h"
#include "Apps/Zq/Output.h"
#include "Classes/Core/Utility/ZQVersionComparator.h"

namespace zq {

using namespace zqcore;

namespace {

std::string_view nameOf(NSComparisonResult result) {
    switch (result) {
        case NSOrderedAscending:
            return "older";
        case NSOrderedSame:
            return "same";
        case NSOrderedDescending:
            return "newer";
    }
    return "";
}

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {}, {"A", "B"});
    if (!parsed) return kUsage;
    const auto& words = parsed->words();
    if (words[0] == "-" && words[1] == "-") return complain("standard input can only be one of the two");
    auto a = readTextArgument(words[0]);
    auto b = readTextArgument(words[1]);
    if (!a || !b) return kUnreadable;
    if (words[0] == "-") a = withoutLineEnd(std::move(*a));
    if (words[1] == "-") b = withoutLineEnd(std::move(*b));
    const NSComparisonResult order = ZQVersionComparator::compareVersion(*a, *b);
    Value::Dictionary result;
    result.set("a", std::move(*a));
    result.set("b", std::move(*b));
    result.set("order", static_cast<int>(order));
    result.set("result", nameOf(order));
    return finishWith(Value(std::move(result)));
}

}  // namespace

const Command kVersionCommand = {
    .name = "version",
    .summary = "compare two versions",
    .help =
        "usage: zq version A B\n\n"
        "Prints \"order\": -1 if A is older than B, 0 if they are the same, 1 if A is newer; and the same in "
        "a\n"
        "word under \"result\". Either may be - for standard input. Numbers compare by value, separators are "
        "all\n"
        "equal, and a suffix of letters is older than none: 1.0b2 < 1.0 < 1.0.0 < 1.0.1.\n\n"
        "example:\n"
        "  zq version 1.10 1.9      prints {\"a\":\"1.10\",\"b\":\"1.9\",\"order\":1,\"result\":\"newer\"}\n",
    .codes = exitCodes(),
    .offers = {},
    .hidden = false,
    .run = run,
};

}  // namespace zq
