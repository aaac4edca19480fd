#pragma once

#include <string>
#include <string_view>

#include "Platform/Base/Date.h"
#include "Platform/Base/Value.h"

namespace zq {

/// Opens those of the three standard streams that the caller closed, so that reading and writing them fails
/// instead of reaching whatever would be opened under their numbers. For the very start of the program.
void keepStandardNumbers();

/// Leaves standard output to results alone: what the library prints there, of a folder that it can't make for
/// one, goes to standard error from now on. For the start of the program.
void claimStandardOutput();

/// `text`, cut to its first 24 bytes and its size if it has more than 100.
[[nodiscard]] std::string shortened(const std::string& text);

/// Writes `value` as one line of JSON to standard output, with `brief` its texts shortened. False if standard
/// output takes no more.
bool printJSON(zqcore::Value value, bool brief = false);

/// The same as the end of a command: its exit code, with a message if it failed.
int finishWith(zqcore::Value value, bool brief = false);

/// A date as JSON shows it: RFC 3339, in UTC, with milliseconds.
[[nodiscard]] std::string dateText(zqcore::Date date);

/// Ends a command with bare bytes instead of JSON; with `line`, a line end follows.
int finishWithBytes(std::string_view bytes, bool line);

}  // namespace zq
