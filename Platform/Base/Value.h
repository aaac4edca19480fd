#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/Base/Data.h"
#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

class Value;

/// A dictionary with text keys that keeps the order in which keys were first set.
/// Threads: a value. Small ones are searched linearly, large ones through an index that is built on demand.
class ZQ_EXPORT ValueDictionary final {
  public:
    using Entry = std::pair<std::string, Value>;

    ValueDictionary();
    ValueDictionary(std::initializer_list<Entry> entries);
    ValueDictionary(const ValueDictionary&);
    ValueDictionary(ValueDictionary&&) noexcept;
    ValueDictionary& operator=(const ValueDictionary&);
    ValueDictionary& operator=(ValueDictionary&&) noexcept;
    ~ValueDictionary();

    /// The value under `key`, or null pointer. It stays valid until the dictionary changes.
    [[nodiscard]] const Value* find(std::string_view key) const;
    [[nodiscard]] Value* find(std::string_view key);
    /// Replaces the value under `key`, or appends a new entry.
    void set(std::string key, Value value);
    /// Appends unless the key is there already; false then, and nothing changes.
    bool insert(std::string key, Value value);
    /// Whether there was one to remove.
    bool erase(std::string_view key);

    [[nodiscard]] std::size_t size() const noexcept;
    [[nodiscard]] bool empty() const noexcept;
    [[nodiscard]] const Entry* begin() const noexcept;
    [[nodiscard]] const Entry* end() const noexcept;

    /// Same keys with equal values, in any order.
    friend ZQ_EXPORT bool operator==(const ValueDictionary&, const ValueDictionary&);

  private:
    struct Storage;
    std::unique_ptr<Storage> storage_;
};

/// A generic value of the property-list and JSON kinds. Integers are exact over the signed and unsigned
/// 64-bit range, and booleans, integers and reals stay apart. Threads: a value.
class ZQ_EXPORT Value final {
  public:
    enum class Kind { null, boolean, integer, real, string, data, date, array, dictionary };
    using Array = std::vector<Value>;
    using Dictionary = ValueDictionary;

    Value() noexcept = default;
    Value(std::nullptr_t) noexcept {}
    Value(bool value) noexcept : storage_(value) {}
    template <std::integral T>
    requires(!std::same_as<T, bool>) Value(T value)
    noexcept : storage_(stored(value)) {}
    Value(double value) noexcept : storage_(value) {}
    Value(std::string value) noexcept : storage_(std::move(value)) {}
    Value(std::string_view value) : storage_(std::string(value)) {}
    Value(const char* value) : storage_(std::string(value)) {}
    Value(Data value) noexcept : storage_(std::move(value)) {}
    Value(Date value) noexcept : storage_(value) {}
    Value(Array value) noexcept : storage_(std::move(value)) {}
    Value(Dictionary value) noexcept : storage_(std::move(value)) {}

    // Nested containers are taken apart without recursion, so depth can't overflow the stack.
    Value(const Value&) = default;
    Value(Value&&) noexcept = default;
    Value& operator=(const Value&);
    Value& operator=(Value&&) noexcept;
    ~Value();

    [[nodiscard]] Kind kind() const noexcept;
    [[nodiscard]] bool isNull() const noexcept { return kind() == Kind::null; }
    /// Boolean, integer or real: what the platform keeps as a number object.
    [[nodiscard]] bool isNumber() const noexcept;

    // Exact looks inside, by kind alone: absent or a null pointer for every other kind, and no conversion.
    [[nodiscard]] std::optional<bool> asBool() const noexcept;
    /// Absent also for an integer beyond the signed (the unsigned) range.
    [[nodiscard]] std::optional<std::int64_t> asInt64() const noexcept;
    [[nodiscard]] std::optional<std::uint64_t> asUInt64() const noexcept;
    [[nodiscard]] std::optional<double> asReal() const noexcept;
    [[nodiscard]] const std::string* asString() const noexcept;
    [[nodiscard]] const Data* asData() const noexcept;
    [[nodiscard]] std::optional<Date> asDate() const noexcept;
    [[nodiscard]] const Array* asArray() const noexcept;
    [[nodiscard]] Array* asArray() noexcept;
    [[nodiscard]] const Dictionary* asDictionary() const noexcept;
    [[nodiscard]] Dictionary* asDictionary() noexcept;

    /// A number of any kind read as a double (booleans 1 and 0, large integers rounded); absent for what is
    /// none.
    [[nodiscard]] std::optional<double> numberAsDouble() const noexcept;
    /// A number of any kind cut to an integer modulo 2^32, as the platform's number object gives its unsigned
    /// 32-bit value (3.7 gives 3, -1 gives 4294967295, true gives 1); absent for what is none.
    [[nodiscard]] std::optional<std::uint32_t> numberAsUInt32() const noexcept;

    /// A text for log lines and people; not JSON. The absent value reads "(null)".
    [[nodiscard]] std::string description() const;

    /// Equal kind and content: true, 1 and 1.0 are three different values. NaN equals nothing.
    friend ZQ_EXPORT bool operator==(const Value&, const Value&);

  private:
    using Storage = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Data,
                                 Date, Array, Dictionary>;

    template <std::integral T>
    static Storage stored(T value) noexcept {
        // One form for each number: unsigned only beyond the signed range.
        if (std::in_range<std::int64_t>(value)) return static_cast<std::int64_t>(value);
        return static_cast<std::uint64_t>(value);
    }
    void dismantle() noexcept;

    Storage storage_;
};

}  // namespace zqcore::platform
