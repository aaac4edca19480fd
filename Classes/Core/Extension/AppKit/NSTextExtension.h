#pragma once

#include <string>

#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSTextField;
class NSTextView;
}  // namespace zqcore::platform

namespace zqcore {

// Operations on fields and text views. Threads: main thread. Failure: none.

/// Puts the selection of the field's editor at the beginning; without one nothing happens.
ZQ_EXPORT void zq_deselectText(NSTextField& field);
/// Takes the focus from whatever has it in the field's window.
ZQ_EXPORT void zq_endEditing(NSTextField& field);

/// The selected texts in order, one a line; a range that passes the end of the text is left out.
[[nodiscard]] ZQ_EXPORT std::string zq_selectedText(const NSTextView& view);

}  // namespace zqcore
