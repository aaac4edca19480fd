#include "Apps/Zq/Input.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "Apps/Zq/Command.h"
#include "Classes/Core/Utility/ZQConvert.h"

namespace zq {

std::optional<std::string> readContent(const std::string& path) {
    const auto close = [](std::FILE* file) {
        if (file != stdin) std::fclose(file);
    };
    const std::unique_ptr<std::FILE, decltype(close)> file(
        path == "-" ? stdin : std::fopen(path.c_str(), "rbe"), close);
    const auto fail = [&path] {
        complain("can't read " + (path == "-" ? "standard input" : path) + ": " + std::strerror(errno),
                 kUnreadable);
        return std::nullopt;
    };
    if (!file) return fail();
    std::string content;
    std::array<char, 65536> buffer;
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
        content.append(buffer.data(), count);
    }
    if (std::ferror(file.get()) != 0) return fail();  // a folder opens, and then can't be read
    return content;
}

std::optional<std::string> readArgument(const std::string& word) {
    return word == "-" ? readContent(word) : std::optional(word);
}

std::optional<std::string> readTextArgument(const std::string& word) {
    auto bytes = readArgument(word);
    if (!bytes) return std::nullopt;
    auto text = zqcore::ZQConvert::utf8StringFromData(zqcore::Data(std::move(*bytes)));
    if (!text) complain("the text isn't UTF-8", kUnreadable);
    return text;
}

std::string withoutLineEnd(std::string text) {
    if (text.ends_with('\n')) text.pop_back();
    if (text.ends_with('\r')) text.pop_back();
    return text;
}

}  // namespace zq
