#include "Classes/Core/Extension/NSAppleEventDescriptorExtension.h"

#include <array>
#include <cstdint>
#include <utility>

namespace zqcore {
namespace {

constexpr FourCharCode kAppleScriptSuite = fourCharCode("ascr");
constexpr FourCharCode kSubroutineEvent = fourCharCode("psbr");
constexpr std::uint32_t kCurrentProcess = 2;

std::shared_ptr<NSAppleEventDescriptor> currentProcess() {
    const std::array<std::uint32_t, 2> serialNumber{0, kCurrentProcess};
    return NSAppleEventDescriptor::make(
        kTypeProcessSerialNumber,
        std::string(reinterpret_cast<const char*>(serialNumber.data()), sizeof serialNumber));
}

}  // namespace

std::shared_ptr<NSAppleEventDescriptor> zq_eventDescriptior(
    std::string functionName, std::vector<std::shared_ptr<NSAppleEventDescriptor>> parameters) {
    auto event = NSAppleEventDescriptor::make(kAppleScriptSuite, kSubroutineEvent, currentProcess(),
                                              kAutoGenerateReturnID, kAnyTransactionID);
    event->setParamDescriptor(NSAppleEventDescriptor::descriptorWithString(std::move(functionName)),
                              kKeySubroutineName);
    if (parameters.empty()) return event;
    auto list = NSAppleEventDescriptor::listDescriptor();
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        list->insertDescriptor(std::move(parameters[i]), i + 1);
    }
    event->setParamDescriptor(std::move(list), kKeyDirectObject);
    return event;
}

}  // namespace zqcore
