#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// A URL as its text. Threads: a value. Failure: none; any text is taken.
class ZQ_EXPORT NSURL final {
  public:
    explicit NSURL(std::string absoluteString) : text_(std::move(absoluteString)) {}

    /// The URL of a text; what may not stand in one is percent-encoded. Absent for the empty text and for one
    /// that isn't UTF-8.
    [[nodiscard]] static std::optional<NSURL> URLWithString(std::string_view text);

    /// The file URL of an absolute path, percent-encoded (RFC 3986) and with a slash behind a folder that is
    /// there.
    [[nodiscard]] static NSURL fileURLWithPath(std::string_view path);

    [[nodiscard]] const std::string& absoluteString() const noexcept { return text_; }
    [[nodiscard]] const std::string& description() const noexcept { return text_; }
    [[nodiscard]] bool isFileURL() const noexcept { return text_.starts_with("file:"); }
    /// The path, percent-decoded and without a trailing slash; empty without one.
    [[nodiscard]] std::string path() const;

    friend bool operator==(const NSURL&, const NSURL&) = default;

  private:
    std::string text_;
};

}  // namespace zqcore::platform
