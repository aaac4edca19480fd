#include "Platform/Foundation/MachineFacts.h"

#include <sys/utsname.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <set>

#include "Platform/Foundation/Linux/FileSupport.h"

namespace zqcore::platform {

namespace {

namespace fs = std::filesystem;

/// The first line of a small system file, without blanks and NULs at its end; absent if there is nothing.
std::optional<std::string> line(const std::string& path) {
    auto text = posix::readFile(path);
    if (!text) return std::nullopt;
    text->resize(std::min(text->find('\n'), text->size()));
    while (!text->empty() && (text->back() == '\0' || text->back() == ' ')) text->pop_back();
    if (text->empty()) return std::nullopt;
    return *std::move(text);
}

/// "00:1a:2b:3c:4d:5e" as bytes; absent for a text of another form and for an address of zeros only.
std::optional<Data> hardwareAddress(std::string_view text) {
    std::string bytes;
    while (!text.empty()) {
        unsigned byte = 0;
        const auto [end, error] =
            std::from_chars(text.data(), text.data() + std::min<std::size_t>(2, text.size()), byte, 16);
        if (error != std::errc{} || end != text.data() + 2) return std::nullopt;
        bytes += static_cast<char>(byte);
        text.remove_prefix(2);
        if (text.empty()) break;
        if (text.front() != ':' || text.size() == 1) return std::nullopt;
        text.remove_prefix(1);
    }
    if (bytes.find_first_not_of('\0') == std::string::npos) return std::nullopt;
    return Data(std::move(bytes));
}

struct Interface {
    std::string name;
    std::optional<bool> builtIn;
    std::optional<Data> address;
};

/// Whether `name` is "en" and a number without leading zeros.
bool isPlatformName(std::string_view name) {
    if (!name.starts_with("en") || name.size() < 3 || name.size() > 8) return false;
    const std::string_view digits = name.substr(2);
    return digits.find_first_not_of("0123456789") == std::string_view::npos &&
           (digits.size() == 1 || digits.front() != '0');
}

/// Orders enp2s0 before enp10s0: runs of digits count as numbers.
bool naturallyBefore(std::string_view a, std::string_view b) {
    const auto takeNumber = [](std::string_view& text) {
        text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
        const std::string_view number =
            text.substr(0, std::min(text.find_first_not_of("0123456789"), text.size()));
        text.remove_prefix(number.size());
        return std::pair(number.size(), number);
    };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            const auto numberA = takeNumber(a);
            const auto numberB = takeNumber(b);
            if (numberA != numberB) return numberA < numberB;
        } else {
            if (a.front() != b.front()) return a.front() < b.front();
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
    }
    return a.size() < b.size();
}

class SystemFacts final : public MachineFacts {
  public:
    SystemFacts(std::string root, std::string machine)
        : root_(std::move(root)), machine_(std::move(machine)) {}

    std::optional<std::string> systemControl(std::string_view name) const override {
        if (name == "hw.model") {
            auto model = line(root_ + "/sys/class/dmi/id/product_name");
            return model ? model : line(root_ + "/sys/firmware/devicetree/base/model");
        }
        if (name == "hw.machine" && !machine_.empty()) return machine_ == "aarch64" ? "arm64" : machine_;
        return std::nullopt;
    }

    std::vector<IORegistryEntry> networkServices(std::string_view bsdName) const override {
        std::vector<IORegistryEntry> found;
        for (const auto& [name, interface] : named()) {
            if (name != bsdName) continue;
            IORegistryEntry entry{.bsdName = name, .properties = {}, .parentProperties = {}};
            if (interface.builtIn) entry.properties.set("IOBuiltin", *interface.builtIn);
            if (interface.address) entry.parentProperties.set("IOMACAddress", *interface.address);
            found.push_back(std::move(entry));
        }
        return found;
    }

    NSOperatingSystemVersion operatingSystemVersion() const override {
        auto text = posix::readFile(root_ + "/etc/os-release");
        if (!text) text = posix::readFile(root_ + "/usr/lib/os-release");
        if (!text) return {};
        constexpr std::string_view key = "\nVERSION_ID=";
        const std::string whole = "\n" + *text;
        const std::size_t at = whole.find(key);
        if (at == std::string::npos) return {};
        const char* position = whole.data() + at + key.size();
        const char* const end = whole.data() + whole.size();
        if (position != end && (*position == '"' || *position == '\'')) ++position;
        NSOperatingSystemVersion version;
        for (long* number : {&version.majorVersion, &version.minorVersion, &version.patchVersion}) {
            const auto read = std::from_chars(position, end, *number);
            if (read.ec != std::errc{} || read.ptr == end || *read.ptr != '.') break;
            position = read.ptr + 1;
        }
        return version;
    }

  private:
    std::vector<Interface> interfaces() const {
        std::vector<Interface> found;
        std::error_code error;
        for (fs::directory_iterator entry(root_ + "/sys/class/net", error), end; !error && entry != end;
             entry.increment(error)) {
            const std::string path = entry->path().native();
            constexpr std::string_view ethernet = "1";
            if (line(path + "/type") != ethernet) continue;
            Interface interface {
                .name = entry->path().filename().native(), .builtIn = {}, .address = {}
            };
            std::error_code missing;
            const fs::path subsystem = fs::read_symlink(path + "/device/subsystem", missing);
            if (!missing) interface.builtIn = subsystem.filename() != "usb";
            // An address that was made up (addr_assign_type other than 0) identifies nothing.
            const auto assigned = line(path + "/addr_assign_type");
            if (const auto text = line(path + "/address"); text && (!assigned || *assigned == "0")) {
                interface.address = hardwareAddress(*text);
            }
            found.push_back(std::move(interface));
        }
        return found;
    }

    std::vector<std::pair<std::string, Interface>> named() const {
        std::vector<std::pair<std::string, Interface>> result;
        std::vector<Interface> others;
        std::set<std::string> taken;
        for (auto& interface : interfaces()) {
            if (isPlatformName(interface.name)) {
                taken.insert(interface.name);
                std::string name = interface.name;
                result.emplace_back(std::move(name), std::move(interface));
            } else if (interface.builtIn && interface.address) {
                others.push_back(std::move(interface));
            }
        }
        std::sort(others.begin(), others.end(), [](const Interface& a, const Interface& b) {
            if (a.builtIn != b.builtIn) return *a.builtIn;
            return naturallyBefore(a.name, b.name);
        });
        int number = 0;
        for (auto& interface : others) {
            while (taken.contains("en" + std::to_string(number))) ++number;
            result.emplace_back("en" + std::to_string(number++), std::move(interface));
        }
        return result;
    }

    std::string root_;
    std::string machine_;
};

std::string kernelMachine() {
    utsname names{};
    return ::uname(&names) == 0 ? names.machine : "";
}

std::atomic<const MachineFacts*> installed{nullptr};

std::optional<Value> copied(const Value* value) {
    if (!value) return std::nullopt;
    return *value;
}

}  // namespace

const MachineFacts& MachineFacts::current() noexcept {
    if (const auto* facts = installed.load(std::memory_order_acquire)) return *facts;
    static const SystemFacts& system = *new SystemFacts("", kernelMachine());
    return system;
}

void MachineFacts::installForTesting(const MachineFacts* facts) noexcept {
    installed.store(facts, std::memory_order_release);
}

std::unique_ptr<MachineFacts> MachineFacts::belowRoot(std::string root, std::string machine) {
    return std::make_unique<SystemFacts>(std::move(root), std::move(machine));
}

int sysctlbyname(const char* name, void* oldp, std::size_t* oldlenp) {
    const auto value = MachineFacts::current().systemControl(name);
    if (!value) {
        *oldlenp = 0;
        return -1;
    }
    const std::size_t needed = value->size() + 1;
    if (!oldp) {
        *oldlenp = needed;
        return 0;
    }
    const std::size_t given = std::min(*oldlenp, needed);
    std::memcpy(oldp, value->c_str(), given);
    *oldlenp = given;
    return given == needed ? 0 : -1;
}

std::vector<IORegistryEntry> IOServiceGetMatchingServices(std::string_view bsdName) {
    return MachineFacts::current().networkServices(bsdName);
}

std::optional<Value> IORegistryEntryCreateCFProperty(const IORegistryEntry& entry, std::string_view key) {
    return copied(entry.properties.find(key));
}

std::optional<Value> IORegistryEntrySearchCFProperty(const IORegistryEntry& entry, std::string_view key) {
    if (const Value* own = entry.properties.find(key)) return *own;
    return copied(entry.parentProperties.find(key));
}

}  // namespace zqcore::platform
