#include "Apps/Zq/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

#include "Apps/Zq/Command.h"
#include "Classes/Core/Utility/Codable/JSONTool.h"
#include "Platform/Foundation/NSDateFormatter.h"

namespace zq {

using zqcore::Value;

namespace {

Value withShortTexts(const Value& value) {
    if (const auto* text = value.asString()) return {shortened(*text)};
    if (const auto* array = value.asArray()) {
        Value::Array result;
        for (const auto& element : *array) result.push_back(withShortTexts(element));
        return {std::move(result)};
    }
    if (const auto* dictionary = value.asDictionary()) {
        Value::Dictionary result;
        for (const auto& [key, element] : *dictionary) result.set(key, withShortTexts(element));
        return {std::move(result)};
    }
    return value;
}

// Null until standard output is claimed, or if it can't be.
std::FILE* claimed = nullptr;

bool put(std::string_view bytes) {
    std::FILE* const results = claimed ? claimed : stdout;
    return std::fwrite(bytes.data(), 1, bytes.size(), results) == bytes.size() && std::fflush(results) == 0;
}

}  // namespace

std::string shortened(const std::string& text) {
    constexpr std::size_t kLongest = 100;
    constexpr std::size_t kKept = 24;
    if (text.size() <= kLongest) return text;
    std::size_t cut = kKept;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        --cut;  // not inside a character
    return text.substr(0, cut) + "… (" + std::to_string(text.size()) + " bytes)";
}

void keepStandardNumbers() {
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free number is the one that is given.
        if (::fcntl(number, F_GETFD) < 0) ::open("/dev/null", number == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
    }
}

void claimStandardOutput() {
    const int own = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (own < 0) return;
    claimed = ::fdopen(own, "w");
    if (claimed) ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

bool printJSON(Value value, bool brief) {
    if (brief) value = withShortTexts(value);
    auto text = zqcore::JSONTool::encodeToString(value);
    if (!text) return false;
    text->push_back('\n');
    return put(*text);
}

int finishWith(Value value, bool brief) {
    return printJSON(std::move(value), brief) ? kDone : complain("can't write the result", kUnreadable);
}

std::string dateText(zqcore::Date date) {
    zqcore::NSDateFormatter formatter;
    formatter.setDateFormat("yyyy-MM-dd'T'HH:mm:ss.SSS'Z'");
    formatter.setTimeZone(zqcore::NSTimeZone::timeZoneForSecondsFromGMT(0));
    return formatter.stringFromDate(date);
}

int finishWithBytes(std::string_view bytes, bool line) {
    return put(bytes) && (!line || put("\n")) ? kDone : complain("can't write the result", kUnreadable);
}

}  // namespace zq
