#include "Platform/CrashCapture/Linux/SystemFacts.h"

#include <sys/utsname.h>
#include <systemd/sd-id128.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <ctime>
#include <fstream>
#include <optional>
#include <string_view>

#include "Platform/Foundation/MachineFacts.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/Text/Utf16.h"

namespace zqcore::platform::crash {

namespace {

// A value of os-release(5), without its quotes.
std::string releaseField(std::string_view key) {
    std::ifstream file("/etc/os-release");
    std::string line;
    while (std::getline(file, line)) {
        if (!line.starts_with(key) || line.size() <= key.size() || line[key.size()] != '=') continue;
        std::string value = line.substr(key.size() + 1);
        std::erase(value, '"');
        return value;
    }
    return {};
}

std::string executablePath() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    return {path.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

// The same for this application on this machine, and telling nothing about either: the machine's identifier,
// hashed with the application's (FNV-1a twice, for 128 bits of key).
std::string installationHash(std::string_view identifier) {
    constexpr std::uint64_t kPrime = 0x100000001b3;
    sd_id128_t key{};
    key.qwords[0] = 0xcbf29ce484222325;
    for (const char c : identifier) key.qwords[0] = (key.qwords[0] ^ static_cast<unsigned char>(c)) * kPrime;
    key.qwords[1] = (key.qwords[0] ^ identifier.size()) * kPrime;
    sd_id128_t hash{};
    if (sd_id128_get_machine_app_specific(key, &hash) < 0) return {};
    std::array<char, SD_ID128_STRING_MAX> text{};
    return sd_id128_to_string(hash, text.data());
}

std::string architecture(std::string_view machine) {
    return machine == "aarch64" ? "arm64" : std::string(machine);
}

std::string timeZoneName() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local.tm_zone ? local.tm_zone : "";
}

std::string infoText(std::string_view key) {
    const auto information = NSBundle::mainBundle()->infoDictionary();
    const Value* value = information->find(key);
    return value && value->asString() ? *value->asString() : std::string();
}

}  // namespace

std::string reportName() {
    std::string name = infoText("CFBundleName");
    if (name.empty()) name = NSProcessInfo::processInfo().processName();
    std::ranges::replace(name, '/', '_');
    return name;
}

Value::Dictionary systemFacts() {
    utsname kernel{};
    uname(&kernel);
    const std::string path = executablePath();
    const std::string model = MachineFacts::current().systemControl("hw.model").value_or("");
    Value::Dictionary facts;
    // A fact that is missing stays out, so that readers see that it is missing. The name of a file may be any
    // bytes, and the report is a text.
    const auto set = [&facts](const char* key, const std::string& value) {
        if (!value.empty()) facts.set(key, fromUTF16(toUTF16(value)));
    };
    set("system_name", releaseField("NAME"));
    set("system_version", releaseField("VERSION_ID"));
    set("os_version", kernel.release);
    set("machine", model);
    set("model", model);
    set("cpu_arch", architecture(kernel.machine));
    set("time_zone", timeZoneName());
    set("process_name", NSProcessInfo::processInfo().processName());
    set("device_app_hash", installationHash(NSBundle::mainBundle()->bundleIdentifier()));
    set("CFBundleExecutablePath", path);
    set("CFBundleExecutable", lastPathComponent(path));
    for (const char* key :
         {"CFBundleIdentifier", "CFBundleName", "CFBundleVersion", "CFBundleShortVersionString"}) {
        set(key, infoText(key));
    }
    return facts;
}

}  // namespace zqcore::platform::crash
