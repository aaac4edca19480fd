#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Graphics/CGColor.h"

namespace zqcore::platform {

class NSAppearance;

/// A colour, fixed or dynamic: a dynamic one is worked out anew, by the current drawing appearance, each time
/// it is asked for.
/// Threads: any; it never changes. Lifetime: shared; the named ones live as long as the process.
class ZQ_EXPORT NSColor final : public NSObject {
  public:
    using Shared = std::shared_ptr<NSColor>;
    using Provider = std::function<CGColor(const NSAppearance&)>;

    /// Components from 0 to 1; what lies outside is cut, and what is no number is 0.
    [[nodiscard]] static Shared colorWithRGBA(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha = 1);
    [[nodiscard]] static Shared colorWithWhite(CGFloat white, CGFloat alpha = 1);
    [[nodiscard]] static Shared colorWithCGColor(const CGColor& color);
    [[nodiscard]] static Shared colorWithProvider(Provider provider);

    [[nodiscard]] static Shared whiteColor();
    [[nodiscard]] static Shared blackColor();
    [[nodiscard]] static Shared clearColor();
    // Dynamic: one value for light, one for dark.
    [[nodiscard]] static Shared labelColor();
    [[nodiscard]] static Shared secondaryLabelColor();
    [[nodiscard]] static Shared controlAccentColor();
    [[nodiscard]] static Shared controlColor();
    [[nodiscard]] static Shared controlBackgroundColor();
    [[nodiscard]] static Shared windowBackgroundColor();
    [[nodiscard]] static Shared separatorColor();

    /// The colour as it is under the current drawing appearance.
    [[nodiscard]] CGColor cgColor() const;
    [[nodiscard]] CGFloat redComponent() const { return cgColor().red; }
    [[nodiscard]] CGFloat greenComponent() const { return cgColor().green; }
    [[nodiscard]] CGFloat blueComponent() const { return cgColor().blue; }
    [[nodiscard]] CGFloat alphaComponent() const { return cgColor().alpha; }
    [[nodiscard]] bool isDynamic() const noexcept { return static_cast<bool>(provider_); }
    /// The same colour with another alpha; a dynamic one stays dynamic.
    [[nodiscard]] Shared colorWithAlphaComponent(CGFloat alpha) const;
    /// Whether both show the same now.
    [[nodiscard]] bool isEqual(const NSColor& other) const { return cgColor() == other.cgColor(); }

    /// Makes it the fill and stroke colour of the current graphics context; without one nothing happens.
    void set() const;
    void setFill() const;
    void setStroke() const;

    [[nodiscard]] std::string description() const override;

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    explicit NSColor(const CGColor& color) : color_(color) {}
    explicit NSColor(Provider provider) : provider_(std::move(provider)) {}

    CGColor color_{};
    Provider provider_;
};

}  // namespace zqcore::platform
