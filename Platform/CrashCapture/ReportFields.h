#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Base/Value.h"

namespace zqcore::platform::crash {

/// Looks into the nested dictionaries of a report. Every look into a missing one finds nothing.
class ReportFields final {
  public:
    explicit ReportFields(const Value::Dictionary* dictionary) noexcept : dictionary_(dictionary) {}

    [[nodiscard]] const Value* find(std::string_view key) const {
        return dictionary_ ? dictionary_->find(key) : nullptr;
    }
    [[nodiscard]] ReportFields in(std::string_view key) const {
        const Value* value = find(key);
        return ReportFields(value ? value->asDictionary() : nullptr);
    }
    [[nodiscard]] const Value::Array& list(std::string_view key) const {
        static const auto& none = *new Value::Array;
        const Value* value = find(key);
        return value && value->asArray() ? *value->asArray() : none;
    }
    [[nodiscard]] const std::string* text(std::string_view key) const {
        const Value* value = find(key);
        return value ? value->asString() : nullptr;
    }
    [[nodiscard]] std::uint64_t number(std::string_view key) const {
        const Value* value = find(key);
        if (!value) return 0;
        if (const auto number = value->asUInt64()) return *number;
        return static_cast<std::uint64_t>(value->asInt64().value_or(0));
    }
    [[nodiscard]] bool isTrue(std::string_view key) const {
        const Value* value = find(key);
        return value && *value == Value(true);
    }
    /// A text or a number as text; "(null)" for everything else.
    [[nodiscard]] std::string shown(std::string_view key) const {
        const Value* value = find(key);
        return value && (value->asString() || value->isNumber()) ? value->description() : "(null)";
    }
    [[nodiscard]] bool present() const noexcept { return dictionary_ != nullptr; }
    [[nodiscard]] const Value::Dictionary* dictionary() const noexcept { return dictionary_; }

  private:
    const Value::Dictionary* dictionary_;
};

}  // namespace zqcore::platform::crash
