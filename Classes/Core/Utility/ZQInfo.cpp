#include "Classes/Core/Utility/ZQInfo.h"

#include "Platform/Foundation/MachineFacts.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSProcessInfo.h"

namespace zqcore {

namespace {

std::optional<std::string> informationText(std::string_view key) {
    const auto information = NSBundle::mainBundle()->infoDictionary();
    const Value* value = information->find(key);
    if (!value || !value->asString()) return std::nullopt;
    return *value->asString();
}

std::optional<std::string> readSysctl(const char* name) {
    std::size_t size = 0;
    sysctlbyname(name, nullptr, &size);
    if (size < 1) return std::nullopt;
    std::string bytes(size, '\0');
    sysctlbyname(name, bytes.data(), &size);
    bytes.resize(bytes.find('\0') == std::string::npos ? bytes.size() : bytes.find('\0'));
    return bytes;
}

std::optional<IORegistryEntry> ioService(std::string_view name, bool wantBuiltIn) {
    for (auto& entry : IOServiceGetMatchingServices(name)) {
        const auto builtIn = IORegistryEntryCreateCFProperty(entry, "IOBuiltin");
        if (builtIn && builtIn->asBool() == wantBuiltIn) return std::move(entry);
    }
    return std::nullopt;
}

std::optional<Data> getMacAddress() {
    auto entry = ioService("en0", true);
    if (!entry) entry = ioService("en1", true);
    if (!entry) entry = ioService("en0", false);
    if (!entry) return std::nullopt;
    const auto address = IORegistryEntrySearchCFProperty(*entry, "IOMACAddress");
    if (!address || !address->asData()) return std::nullopt;
    return *address->asData();
}

}  // namespace

bool ZQInfo::appSandboxed() {
    const auto information = NSBundle::mainBundle()->infoDictionary();
    if (const Value* told = information->find("ZQCore_sandboxed"); told && told->asBool())
        return *told->asBool();
    const auto container = NSProcessInfo::processInfo().environment("APP_SANDBOX_CONTAINER_ID");
    return container && !container->empty();
}

std::string ZQInfo::appBundleName() { return informationText("CFBundleName").value_or(""); }

std::optional<std::string> ZQInfo::appDisplayName() { return informationText("CFBundleDisplayName"); }

std::string ZQInfo::appIdentifier() { return informationText("CFBundleIdentifier").value_or(""); }

std::string ZQInfo::appVersion() { return informationText("CFBundleShortVersionString").value_or(""); }

std::string ZQInfo::appBuild() { return informationText("CFBundleVersion").value_or(""); }

std::string ZQInfo::appFullVersion() { return appVersion() + "[" + appBuild() + "]"; }

std::string ZQInfo::macOSVersion() {
    const auto version = NSProcessInfo::processInfo().operatingSystemVersion();
    return "macOS " + std::to_string(version.majorVersion) + "." + std::to_string(version.minorVersion) +
           "." + std::to_string(version.patchVersion);
}

std::string ZQInfo::macModel() { return readSysctl("hw.model").value_or(""); }

std::string ZQInfo::macArchitecture() { return readSysctl("hw.machine").value_or(""); }

std::optional<std::string> ZQInfo::macGuid() {
    const auto address = getMacAddress();
    if (!address || address->empty()) return std::nullopt;
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string guid;
    for (const std::uint8_t byte : address->bytes()) {
        guid += digits[byte >> 4];
        guid += digits[byte & 0x0F];
    }
    return guid;
}

std::int32_t ZQInfo::pid() { return NSProcessInfo::processInfo().processIdentifier(); }

}  // namespace zqcore
