#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// A four-character code, written as its text: 'psbr' is 0x70736272.
using FourCharCode = std::uint32_t;

[[nodiscard]] constexpr FourCharCode fourCharCode(const char (&text)[5]) noexcept {
    FourCharCode code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8U | static_cast<unsigned char>(text[i]);
    return code;
}

inline constexpr FourCharCode kTypeText = fourCharCode("utxt");
inline constexpr FourCharCode kTypeList = fourCharCode("list");
inline constexpr FourCharCode kTypeEvent = fourCharCode("aevt");
inline constexpr FourCharCode kTypeData = fourCharCode("rdat");
inline constexpr FourCharCode kTypeNull = fourCharCode("null");
inline constexpr FourCharCode kTypeProcessSerialNumber = fourCharCode("psn ");
inline constexpr FourCharCode kKeyDirectObject = fourCharCode("----");
inline constexpr FourCharCode kKeySubroutineName = fourCharCode("snam");

inline constexpr std::int16_t kAutoGenerateReturnID = -1;
inline constexpr std::int32_t kAnyTransactionID = 0;

/// One value of the scripting system: typed bytes, a text, a list, or an event with its parameters.
/// Units: list indices count from 1. Threads: building belongs to one thread; one that no longer changes is
/// read from any. Lifetime: shared; a list and an event hold what was put into them, so a large text is held,
/// never copied. Failure: an absent value or a null pointer for what isn't there.
class ZQ_EXPORT NSAppleEventDescriptor final {
    struct Private {};

  public:
    using Pointer = std::shared_ptr<NSAppleEventDescriptor>;

    NSAppleEventDescriptor(Private, FourCharCode type, std::string bytes)
        : type_(type), bytes_(std::move(bytes)) {}

    /// Typed bytes. Numbers lie in the machine's byte order.
    [[nodiscard]] static Pointer make(FourCharCode descriptorType, std::string bytes);
    [[nodiscard]] static Pointer descriptorWithString(std::string text);
    [[nodiscard]] static Pointer listDescriptor();
    /// An event without parameters.
    [[nodiscard]] static Pointer make(FourCharCode eventClass, FourCharCode eventID, Pointer targetDescriptor,
                                      std::int16_t returnID, std::int32_t transactionID);

    [[nodiscard]] FourCharCode descriptorType() const noexcept { return type_; }
    [[nodiscard]] std::string_view data() const noexcept { return bytes_; }
    /// The text itself, or what coerces to it: 32- and 64-bit integers, doubles and booleans. Absent for
    /// lists, events, raw data and the null descriptor.
    [[nodiscard]] std::optional<std::string> stringValue() const;

    // Lists.
    [[nodiscard]] std::size_t numberOfItems() const noexcept { return items_.size(); }
    /// Null pointer outside 1 to `numberOfItems()`.
    [[nodiscard]] Pointer descriptorAtIndex(std::size_t index) const;
    /// Replaces the item at `index`; 0, or an index behind the last, appends. Only lists take items.
    void insertDescriptor(Pointer descriptor, std::size_t index);

    // Events.
    [[nodiscard]] FourCharCode eventClass() const noexcept { return event_.eventClass; }
    [[nodiscard]] FourCharCode eventID() const noexcept { return event_.eventID; }
    [[nodiscard]] std::int16_t returnID() const noexcept { return event_.returnID; }
    [[nodiscard]] std::int32_t transactionID() const noexcept { return event_.transactionID; }
    [[nodiscard]] const Pointer& targetDescriptor() const noexcept { return event_.target; }
    /// Puts a parameter under `keyword`, in place of an earlier one. Only events take parameters.
    void setParamDescriptor(Pointer descriptor, FourCharCode keyword);
    /// Null pointer if there is none.
    [[nodiscard]] Pointer paramDescriptorForKeyword(FourCharCode keyword) const;

  private:
    struct Event {
        FourCharCode eventClass = 0;
        FourCharCode eventID = 0;
        std::int16_t returnID = 0;
        std::int32_t transactionID = 0;
        Pointer target;
    };

    FourCharCode type_;
    std::string bytes_;
    Event event_;
    std::vector<Pointer> items_;
    std::vector<std::pair<FourCharCode, Pointer>> parameters_;
};

}  // namespace zqcore::platform
