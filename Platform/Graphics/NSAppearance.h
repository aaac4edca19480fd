#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

inline constexpr std::string_view NSAppearanceNameAqua = "NSAppearanceNameAqua";
inline constexpr std::string_view NSAppearanceNameDarkAqua = "NSAppearanceNameDarkAqua";

/// Light or dark, by name; what dynamic colours look at.
/// Threads: the appearance itself never changes; each thread has a current one of its own, light at first.
class ZQ_EXPORT NSAppearance final {
  public:
    /// One object for each of the two names; a null pointer for any other.
    [[nodiscard]] static std::shared_ptr<const NSAppearance> appearanceNamed(std::string_view name);
    [[nodiscard]] static std::shared_ptr<const NSAppearance> aqua();
    [[nodiscard]] static std::shared_ptr<const NSAppearance> darkAqua();

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    [[nodiscard]] bool isDark() const noexcept { return name_ == NSAppearanceNameDarkAqua; }
    /// Its own name if that is listed, else the light one, from which both descend; absent without either.
    [[nodiscard]] std::optional<std::string> bestMatchFromAppearancesWithNames(
        std::span<const std::string_view> names) const;

    /// What the calling thread draws for; never null.
    [[nodiscard]] static std::shared_ptr<const NSAppearance> currentDrawingAppearance();
    /// A null pointer means light.
    static void setCurrentDrawingAppearance(const std::shared_ptr<const NSAppearance>& appearance);
    /// Runs `block` with this appearance current on the calling thread.
    void performAsCurrentDrawingAppearance(const std::function<void()>& block) const;

    explicit NSAppearance(std::string_view name) : name_(name) {}

  private:
    std::string name_;
};

}  // namespace zqcore::platform
