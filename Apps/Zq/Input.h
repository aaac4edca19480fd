#pragma once

#include <optional>
#include <string>

namespace zq {

/// The bytes of the file at `path`, of standard input for "-". Absent, with a message, if they can't be read.
[[nodiscard]] std::optional<std::string> readContent(const std::string& path);

/// The bytes that a word of the command line stands for: standard input for "-", else itself. Absent, with a
/// message, if standard input can't be read.
[[nodiscard]] std::optional<std::string> readArgument(const std::string& word);

/// The same for text: absent, with a message, also if it isn't UTF-8.
[[nodiscard]] std::optional<std::string> readTextArgument(const std::string& word);

/// `text` without one line end at its end, which files and `echo` put there.
[[nodiscard]] std::string withoutLineEnd(std::string text);

}  // namespace zq
