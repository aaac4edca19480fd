#pragma once

#include "Classes/AppleScript/Scheme/SchemeParameter.h"

namespace zqcore {

/// Opens a page of the helper application by URL.
class ZQ_EXPORT OrbelHelperOpenScheme final {
  public:
    OrbelHelperOpenScheme() = delete;

    static constexpr std::string_view action = "open";

    /// Raw values are the cases' names.
    enum class Page { main, preference, updaterCheck, updaterCheckInBackground };
    [[nodiscard]] static std::string_view rawValue(Page page) noexcept;
    /// Absent for a text that is no raw value.
    [[nodiscard]] static std::optional<Page> pageFromRawValue(std::string_view rawValue) noexcept;

    class ZQ_EXPORT RequestParameter final : public SchemeCommonParameter {
      public:
        [[nodiscard]] static std::shared_ptr<RequestParameter> make(
            const std::optional<SchemeParameters>& parameters = std::nullopt);

        std::optional<Page> page;

        [[nodiscard]] SchemeParameters toParameters() const override;

      private:
        explicit RequestParameter(const std::optional<SchemeParameters>& parameters);
    };
    using ResponseParameter = SchemeCommonParameter;
};

}  // namespace zqcore
