#pragma once

#include <string>
#include <string_view>

#include "Platform/Base/Date.h"
#include "Platform/Base/Value.h"

namespace zq {

/// Leaves standard output to results alone: what the library prints there, of a folder that it can't make for
/// one, goes to standard error from now on. For the start of the program.
void claimStandardOutput();

/// Writes `value` as one line of JSON to standard output. With `brief`, texts of more than 100 bytes are cut
/// to their first 24 and their size. False if standard output takes no more.
bool printJSON(zqcore::Value value, bool brief = false);

/// The same as the end of a command: its exit code, with a message if it failed.
int finishWith(zqcore::Value value, bool brief = false);

/// A date as JSON shows it: RFC 3339, in UTC, with milliseconds.
[[nodiscard]] std::string dateText(zqcore::Date date);

/// Ends a command with bare bytes instead of JSON; with `line`, a line end follows.
int finishWithBytes(std::string_view bytes, bool line);

}  // namespace zq
