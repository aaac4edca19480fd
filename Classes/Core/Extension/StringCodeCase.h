#pragma once

#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore {

/// The naming conventions of identifiers: fooBar, FooBar, foo_bar, foo-bar, FOO_BAR.
enum class CodeCaseType { camel, upperCamel, snake, kebab, constant };

// Turning identifiers from one convention into another takes both operations, one after the other:
//
//     zq_mergeCodeCase(zq_splitWords("parseHTTPResponse"), CodeCaseType::snake)   // "parse_http_response"
//
// Threads: pure functions, any thread. Failure: none.

/// The words of an identifier, separated by single blanks; digits are dropped. A text that holds anything but
/// ASCII letters, digits and `_ - / .` comes back trimmed, and otherwise as it is.
[[nodiscard]] ZQ_EXPORT std::string zq_splitWords(std::string_view text);

/// The words of `text` joined in a convention. Everything but ASCII letters and digits separates words,
/// letters of other scripts too. In a capitalised word the letter behind a digit is raised as well.
[[nodiscard]] ZQ_EXPORT std::string zq_mergeCodeCase(std::string_view text, CodeCaseType type);

}  // namespace zqcore
