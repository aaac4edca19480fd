#include "Platform/Scripting/CommandLineOpenPanel.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {
namespace {

void print(int output, std::string_view text) {
    while (!text.empty()) {
        const auto written = ::write(output, text.data(), text.size());
        if (written < 0 && errno != EINTR) return;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
}

/// One line without its end; absent at the end of the input. Byte by byte, since what follows isn't ours.
std::optional<std::string> readLine(int input) {
    std::string line;
    while (true) {
        char character = 0;
        const auto got = ::read(input, &character, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return line.empty() ? std::nullopt : std::optional(line);
        if (character == '\n') return line;
        if (line.size() < 64 * 1024) line += character;
    }
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const auto begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::string absolutePath(std::string_view text) {
    if (text.starts_with("~/")) {
        if (const char* home = std::getenv("HOME")) return std::string(home) + std::string(text.substr(1));
    }
    std::error_code error;
    const auto path = std::filesystem::absolute(text, error).lexically_normal().string();
    return error ? std::string(text) : path;
}

std::optional<NSURL> ask(int input, int output, const std::optional<NSURL>& folder) {
    while (true) {
        print(output, " [y/n/PATH] ");
        const auto line = readLine(input);
        if (!line) {
            print(output, "\n");
            return std::nullopt;
        }
        const auto answer = trimmed(*line);
        if (answer == "y" || answer == "Y" || answer == "yes") return folder;
        if (answer == "n" || answer == "N" || answer == "no") return std::nullopt;
        if (answer.starts_with('/') || answer.starts_with('.') || answer.starts_with("~/")) {
            return NSURL::fileURLWithPath(absolutePath(answer));
        }
        print(output, "y, n, or a path that begins with /, . or ~/:");
    }
}

}  // namespace

void CommandLineOpenPanel::present(const NSOpenPanel& panel, Answer answer) {
    const auto& folder = panel.directoryURL();
    print(output_, panel.message() + "\n" + (folder ? folder->path() : "") + "\n");
    if (assumeYes_) {
        answer(folder);
        return;
    }
    print(output_, panel.prompt());
    DispatchQueue::global(DispatchQoS::userInitiated)
        ->async([input = input_, output = output_, folder, answer = std::move(answer)]() mutable {
            const DispatchBlockingScope waiting;
            answer(ask(input, output, folder));
        });
}

}  // namespace zqcore::platform
