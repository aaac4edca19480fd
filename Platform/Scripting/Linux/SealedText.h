#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

#include "Platform/Scripting/Linux/SdBusHandles.h"

namespace zqcore::platform {

/// Texts from this size travel in a sealed memory file between our own processes, in bytes: below it the copy
/// through the bus costs less than the file's system calls.
inline constexpr std::size_t kSealedTextThreshold = 64 * 1024;
/// The largest text that is sent or taken, in bytes. A bus ends the connection of whoever sends a message
/// above 128 MiB, so a text is refused well before.
inline constexpr std::size_t kLargestText = 100 * 1024 * 1024;

/// Whether a text can travel: valid UTF-8, no NUL, not above `kLargestText`. Any thread.
[[nodiscard]] bool isSendableText(std::string_view text) noexcept;

/// A memory file with the text in it, sealed against every change (memfd_create(2), F_ADD_SEALS in
/// fcntl(2)); none if the system has no memory for it. Any thread.
[[nodiscard]] FileDescriptor makeSealedText(std::string_view text) noexcept;

/// The text of a sealed memory file. Refused with a reason: a file that its sender could still change, or one
/// that is too large, and bytes that are no sendable text. Any thread.
[[nodiscard]] std::expected<std::string, std::string> readSealedText(const FileDescriptor& file);

/// What a message brought: a text, or a sealed file with one.
struct CarriedText {
    std::string text;
    FileDescriptor file;
};

/// Puts the argument of a message in: a string for whoever speaks only that, else a variant of the file if
/// there is one or of the text's bytes. Bytes, since a bus library looks at each byte of a string on either
/// side of either hop, at a tenth of the speed of `isSendableText`, which has been asked here. Negative
/// errno.
[[nodiscard]] int putCarriedText(sd_bus_message* message, bool exchange, std::string_view text,
                                 const FileDescriptor& file);

/// Takes the next argument of a message: a text, or a variant of a text, its bytes or a file. Only under the
/// connection's lock; the file is read later, without it. Negative errno for anything else.
[[nodiscard]] int takeCarriedText(sd_bus_message* message, CarriedText& carried);

}  // namespace zqcore::platform
