#include "Platform/CrashCapture/TornReport.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <optional>

#include "Platform/Foundation/JSON/JSONReader.h"

namespace zqcore::platform::crash {

namespace {

std::optional<Value::Dictionary> parsed(std::string_view text) {
    JSONReader reader(text);
    Value value;
    if (!reader.readValue(value) || !reader.finish()) return std::nullopt;
    if (Value::Dictionary* dictionary = value.asDictionary()) return std::move(*dictionary);
    return std::nullopt;
}

// Since 3.3.0 a number counts microseconds, before it seconds.
bool countsMicroseconds(const Value::Dictionary& report) {
    const Value* version = report.find("version");
    int major = 0;
    int minor = 0;
    if (!version || !version->asString()) return true;
    if (std::sscanf(version->asString()->c_str(), "%d.%d", &major, &minor) < 2) return true;
    return major > 3 || (major == 3 && minor >= 3);
}

std::string timestampText(std::int64_t number, bool microseconds) {
    using namespace std::chrono;
    // What lies beyond the years that four digits can write is no moment of a crash.
    constexpr std::int64_t kLimit = 253'402'300'800;
    const std::int64_t seconds = microseconds ? number / 1'000'000 : number;
    const std::int64_t fraction = microseconds ? number % 1'000'000 : 0;
    if (number < 0 || seconds >= kLimit) return {};
    const sys_seconds moment{std::chrono::seconds(seconds)};
    const sys_days day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(moment - day);
    std::array<char, 48> text;
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                      static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                      static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    std::string result(text.data(), static_cast<std::size_t>(length));
    if (microseconds) {
        (void)std::snprintf(text.data(), text.size(), ".%06d", static_cast<int>(fraction));
        result += text.data();
    }
    return result + "Z";
}

}  // namespace

std::string closeTornJSON(std::string_view text) {
    std::string closers;      // of what is open here, the innermost last
    std::string safeClosers;  // the same at the last place where the text may be cut
    std::size_t safeEnd = 0;
    bool inText = false;
    bool escaped = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inText) {
            if (c == '"' && !escaped) inText = false;
            escaped = c == '\\' && !escaped;
            continue;
        }
        std::size_t end = 0;
        if (c == '"') {
            inText = true;
        } else if (c == '{' || c == '[') {
            closers.push_back(c == '{' ? '}' : ']');
            end = i + 1;
        } else if (c == '}' || c == ']') {
            if (closers.empty() || closers.back() != c) break;
            closers.pop_back();
            end = i + 1;
        } else if (c == ',') {
            end = i;
        }
        if (end == 0) continue;
        safeEnd = end;
        safeClosers = closers;
        if (closers.empty()) break;
    }
    return std::string(text.substr(0, safeEnd)) + std::string(safeClosers.rbegin(), safeClosers.rend());
}

Value::Dictionary parseStoredReport(std::string_view text) {
    std::optional<Value::Dictionary> whole = parsed(text);
    const Value* mark = whole ? whole->find("complete") : nullptr;
    const bool complete = mark && *mark == Value(true);
    Value::Dictionary result;
    if (whole) {
        result = std::move(*whole);
    } else if (auto repaired = parsed(closeTornJSON(text))) {
        result = std::move(*repaired);
    }
    if (!complete) result.set("incomplete", true);
    Value* report = result.find("report");
    if (Value::Dictionary* members = report ? report->asDictionary() : nullptr) {
        Value* timestamp = members->find("timestamp");
        const std::optional<std::int64_t> number = timestamp ? timestamp->asInt64() : std::nullopt;
        if (number) *timestamp = timestampText(*number, countsMicroseconds(*members));
    }
    return result;
}

}  // namespace zqcore::platform::crash
