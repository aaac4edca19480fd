#include "Apps/Zq/CrashText.h"

#include <optional>

namespace zq {

namespace {

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const auto end = text.find('\n');
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

std::optional<std::string_view> behind(std::string_view line, std::string_view prefix) {
    if (!line.starts_with(prefix)) return std::nullopt;
    line.remove_prefix(prefix.size());
    return line;
}

/// "main + 25" of "1   zq    \t0x0000562e61e7 0x562e61e0 + 29415 (main + 25)"; the place where there is no
/// symbol.
std::string_view symbolIn(std::string_view frame) {
    const auto place = frame.find(" + ");
    const auto open = frame.find(" (", place == std::string_view::npos ? 0 : place);
    if (open != std::string_view::npos && frame.ends_with(')')) {
        return frame.substr(open + 2, frame.size() - open - 3);
    }
    const auto tab = frame.find('\t');
    return tab == std::string_view::npos ? frame : frame.substr(tab + 1);
}

}  // namespace

CrashText readCrashText(std::string_view text) {
    constexpr std::string_view kName = " name:  ";
    constexpr std::string_view kCrashed = " Crashed:";
    CrashText result;
    std::string_view name;
    enum class Part { other, frames, pendingLog } part = Part::other;
    for (const std::string_view line : linesOf(text)) {
        if (part == Part::frames && line.empty()) part = Part::other;
        if (part == Part::frames) result.frames.emplace_back(symbolIn(line));
        if (part == Part::pendingLog) result.pendingLog.emplace_back(line);
        if (part != Part::other) continue;
        if (const auto type = behind(line, "Exception Type:  ")) result.exceptionType = *type;
        if (line.starts_with("*** Terminating app due to uncaught exception "))
            result.reason = line.substr(4);
        if (line == "Log lines that had not reached the file:") part = Part::pendingLog;
        if (!line.starts_with("Thread ")) continue;
        if (const auto at = line.find(kName); at != std::string_view::npos) name = line;
        if (!line.ends_with(kCrashed)) continue;
        part = Part::frames;
        const std::string_view thread = line.substr(0, line.size() - kCrashed.size());
        result.threadName = thread;
        if (name.starts_with(thread) && name.substr(thread.size()).starts_with(kName)) {
            result.threadName += ", " + std::string(name.substr(thread.size() + kName.size()));
        }
    }
    return result;
}

}  // namespace zq
