#include "Platform/Scripting/NSAppleEventDescriptor.h"

#include <array>
#include <charconv>
#include <cstring>

namespace zqcore::platform {
namespace {

constexpr FourCharCode kTypeInt32 = fourCharCode("long");
constexpr FourCharCode kTypeInt64 = fourCharCode("comp");
constexpr FourCharCode kTypeDouble = fourCharCode("doub");
constexpr FourCharCode kTypeBoolean = fourCharCode("bool");

template <class Number>
std::optional<std::string> numberText(std::string_view bytes) {
    Number number{};
    if (bytes.size() != sizeof number) return std::nullopt;
    std::memcpy(&number, bytes.data(), sizeof number);
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return std::string(text.data(), end);
}

}  // namespace

NSAppleEventDescriptor::Pointer NSAppleEventDescriptor::make(FourCharCode descriptorType, std::string bytes) {
    return std::make_shared<NSAppleEventDescriptor>(Private{}, descriptorType, std::move(bytes));
}

NSAppleEventDescriptor::Pointer NSAppleEventDescriptor::descriptorWithString(std::string text) {
    return make(kTypeText, std::move(text));
}

NSAppleEventDescriptor::Pointer NSAppleEventDescriptor::listDescriptor() { return make(kTypeList, {}); }

NSAppleEventDescriptor::Pointer NSAppleEventDescriptor::make(FourCharCode eventClass, FourCharCode eventID,
                                                             Pointer targetDescriptor, std::int16_t returnID,
                                                             std::int32_t transactionID) {
    auto event = make(kTypeEvent, {});
    event->event_ = {eventClass, eventID, returnID, transactionID, std::move(targetDescriptor)};
    return event;
}

std::optional<std::string> NSAppleEventDescriptor::stringValue() const {
    switch (type_) {
        case kTypeText:
            return bytes_;
        case kTypeInt32:
            return numberText<std::int32_t>(bytes_);
        case kTypeInt64:
            return numberText<std::int64_t>(bytes_);
        case kTypeDouble:
            return numberText<double>(bytes_);
        case kTypeBoolean:
            if (bytes_.size() != 1) return std::nullopt;
            return bytes_[0] != 0 ? "true" : "false";
        default:
            return std::nullopt;
    }
}

NSAppleEventDescriptor::Pointer NSAppleEventDescriptor::descriptorAtIndex(std::size_t index) const {
    return index >= 1 && index <= items_.size() ? items_[index - 1] : nullptr;
}

void NSAppleEventDescriptor::insertDescriptor(Pointer descriptor, std::size_t index) {
    if (type_ != kTypeList || !descriptor) return;
    if (index >= 1 && index <= items_.size()) {
        items_[index - 1] = std::move(descriptor);
    } else {
        items_.push_back(std::move(descriptor));
    }
}

void NSAppleEventDescriptor::setParamDescriptor(Pointer descriptor, FourCharCode keyword) {
    if (type_ != kTypeEvent) return;
    std::erase_if(parameters_, [&](const auto& parameter) { return parameter.first == keyword; });
    if (descriptor) parameters_.emplace_back(keyword, std::move(descriptor));
}

NSAppleEventDescriptor::Pointer NSAppleEventDescriptor::paramDescriptorForKeyword(
    FourCharCode keyword) const {
    for (const auto& [key, descriptor] : parameters_) {
        if (key == keyword) return descriptor;
    }
    return nullptr;
}

}  // namespace zqcore::platform
