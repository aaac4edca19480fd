#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"

namespace zqcore::platform {

/// What a run of text looks like: `NSFontAttributeName` and `NSForegroundColorAttributeName`, each may be
/// missing.
struct NSTextAttributes {
    std::shared_ptr<NSFont> font;
    std::shared_ptr<NSColor> foregroundColor;

    [[nodiscard]] bool isEmpty() const noexcept { return !font && !foregroundColor; }
    friend bool operator==(const NSTextAttributes&, const NSTextAttributes&) = default;
};

/// A text with attributes by range. Places and lengths count UTF-16 units.
/// Threads: one at a time while it changes, then any. Lifetime: shared.
/// Failure: what lies beyond the end is cut off.
class ZQ_EXPORT NSAttributedString : public NSObject {
  public:
    struct Run {
        NSRange range;
        NSTextAttributes attributes;
    };

    [[nodiscard]] static std::shared_ptr<NSAttributedString> make(std::string_view text,
                                                                  NSTextAttributes attributes = {}) {
        return makeObject<NSAttributedString>(text, std::move(attributes));
    }

    [[nodiscard]] const std::string& string() const noexcept { return text_; }
    /// In UTF-16 units.
    [[nodiscard]] std::size_t length() const noexcept { return length_; }
    /// What holds at that unit, empty beyond the end; `effectiveRange` becomes the run of equal attributes.
    [[nodiscard]] NSTextAttributes attributesAtIndex(std::size_t index,
                                                     NSRange* effectiveRange = nullptr) const;
    /// In order and without gaps, neighbours distinct; none of an empty text.
    [[nodiscard]] const std::vector<Run>& runs() const noexcept { return runs_; }
    [[nodiscard]] bool isEqualToAttributedString(const NSAttributedString& other) const;

  protected:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSAttributedString(std::string_view text, NSTextAttributes attributes);

    std::string text_;
    std::size_t length_ = 0;
    std::vector<Run> runs_;
};

/// The same, to be changed.
class ZQ_EXPORT NSMutableAttributedString final : public NSAttributedString {
  public:
    [[nodiscard]] static std::shared_ptr<NSMutableAttributedString> make(std::string_view text,
                                                                         NSTextAttributes attributes = {}) {
        return makeObject<NSMutableAttributedString>(text, std::move(attributes));
    }
    [[nodiscard]] static std::shared_ptr<NSMutableAttributedString> make(const NSAttributedString& other);

    /// Sets what `attributes` has over `range` and leaves the rest.
    void addAttributes(const NSTextAttributes& attributes, NSRange range);
    void appendAttributedString(const NSAttributedString& other);

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    using NSAttributedString::NSAttributedString;
    void joinEqualNeighbours();
};

}  // namespace zqcore::platform
