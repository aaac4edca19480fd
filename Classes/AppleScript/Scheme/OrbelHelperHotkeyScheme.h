#pragma once

#include <vector>

#include "Classes/AppleScript/Scheme/SchemeParameter.h"

namespace zqcore {

/// Registers or drops hotkeys of the helper application by URL.
class ZQ_EXPORT OrbelHelperHotkeyScheme final {
  public:
    OrbelHelperHotkeyScheme() = delete;

    static constexpr std::string_view action = "hotkey";

    /// Raw values: "register", "unregister", "registerAll", "unregisterAll".
    enum class HotkeyAction { register_, unregister, registerAll, unregisterAll };
    [[nodiscard]] static std::string_view rawValue(HotkeyAction hotkeyAction) noexcept;
    /// Absent for a text that is no raw value.
    [[nodiscard]] static std::optional<HotkeyAction> hotkeyActionFromRawValue(
        std::string_view rawValue) noexcept;

    class ZQ_EXPORT RequestParameter final : public SchemeCommonParameter {
      public:
        [[nodiscard]] static std::shared_ptr<RequestParameter> make(
            const std::optional<SchemeParameters>& parameters = std::nullopt);

        std::optional<HotkeyAction> hotkeyaction;
        /// One text with commas between in the query, nothing trimmed: "a,,b" is three, the empty text one.
        std::optional<std::vector<std::string>> hotkeyids;

        [[nodiscard]] SchemeParameters toParameters() const override;

      private:
        explicit RequestParameter(const std::optional<SchemeParameters>& parameters);
    };
    using ResponseParameter = SchemeCommonParameter;
};

}  // namespace zqcore
