#include <cxxabi.h>
#include <dlfcn.h>
#include <elfutils/libdwfl.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "Platform/CrashCapture/Symbolication.h"

namespace zqcore::platform::crash {

namespace {

// Loaded at the first report and given back after: a process that has none to read doesn't pay for it.
struct Library {
    void* handle = nullptr;
    decltype(&dwfl_begin) begin = nullptr;
    decltype(&dwfl_end) end = nullptr;
    decltype(&dwfl_report_begin_add) reportBegin = nullptr;
    decltype(&dwfl_report_elf) reportElf = nullptr;
    decltype(&dwfl_report_end) reportEnd = nullptr;
    decltype(&dwfl_addrmodule) addressModule = nullptr;
    decltype(&dwfl_module_addrinfo) addressInfo = nullptr;
    decltype(&dwfl_module_build_id) buildId = nullptr;
    decltype(&dwfl_module_info) moduleInfo = nullptr;
    decltype(&dwfl_offline_section_address) sectionAddress = nullptr;

    template <class Function>
    bool find(const char* name, Function& function) {
        function = reinterpret_cast<Function>(dlsym(handle, name));
        return function != nullptr;
    }
    bool load() {
        handle = dlopen("libdw.so.1", RTLD_NOW | RTLD_LOCAL);
        return handle && find("dwfl_begin", begin) && find("dwfl_end", end) &&
               find("dwfl_report_begin_add", reportBegin) && find("dwfl_report_elf", reportElf) &&
               find("dwfl_report_end", reportEnd) && find("dwfl_addrmodule", addressModule) &&
               find("dwfl_module_addrinfo", addressInfo) && find("dwfl_module_build_id", buildId) &&
               find("dwfl_module_info", moduleInfo) && find("dwfl_offline_section_address", sectionAddress);
    }
    ~Library() {
        if (handle) dlclose(handle);
    }
};

std::string hexadecimal(const unsigned char* bytes, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text.push_back("0123456789abcdef"[bytes[i] >> 4]);
        text.push_back("0123456789abcdef"[bytes[i] & 15]);
    }
    return text;
}

class DwarfSource final : public SymbolSource {
  public:
    ~DwarfSource() override {
        if (session_) library_.end(session_);
    }

    bool start() {
        if (!library_.load()) return false;
        callbacks_.find_debuginfo = findDebugInformation;
        callbacks_.section_address = library_.sectionAddress;
        session_ = library_.begin(&callbacks_);
        return session_ != nullptr;
    }

    void addImage(std::uint64_t address, const std::string& path, std::string_view uuid) override {
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (file < 0) return;
        library_.reportBegin(session_);
        Dwfl_Module* module = library_.reportElf(session_, path.c_str(), path.c_str(), file, address, false);
        if (!module) {
            close(file);
        } else if (const std::string found = identifierOf(module); !found.starts_with(uuid)) {
            // Another build lies there now. It can't be taken back, so remember not to believe it.
            distrusted_.push_back(module);
        } else {
            void** userData = nullptr;
            library_.moduleInfo(module, &userData, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
            *userData = this;
        }
        library_.reportEnd(session_, nullptr, nullptr);
    }

    std::optional<Symbol> symbolAt(std::uint64_t address) override {
        Dwfl_Module* module = library_.addressModule(session_, address);
        if (!module || std::find(distrusted_.begin(), distrusted_.end(), module) != distrusted_.end()) {
            return std::nullopt;
        }
        GElf_Off offset = 0;
        GElf_Sym symbol{};
        const char* name = library_.addressInfo(module, address, &offset, &symbol, nullptr, nullptr, nullptr);
        if (!name) return std::nullopt;
        return Symbol{address - offset, name};
    }

  private:
    std::string identifierOf(Dwfl_Module* module) const {
        const unsigned char* bits = nullptr;
        GElf_Addr where = 0;
        const int size = library_.buildId(module, &bits, &where);
        return size > 0 ? hexadecimal(bits, size) : std::string();
    }

    // Separate debugging information by its build id, from where packages put it. The library's own search
    // would also ask servers on the network, and an application's start is no time for that.
    static int findDebugInformation(Dwfl_Module* module, void** userData, const char*, GElf_Addr, const char*,
                                    const char*, GElf_Word, char**) {
        const auto* self = static_cast<const DwarfSource*>(*userData);
        const std::string identifier = self ? self->identifierOf(module) : std::string();
        if (identifier.size() < 3) return -1;
        const std::string path =
            "/usr/lib/debug/.build-id/" + identifier.substr(0, 2) + "/" + identifier.substr(2) + ".debug";
        return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    }

    Library library_;
    Dwfl_Callbacks callbacks_{};
    Dwfl* session_ = nullptr;
    std::vector<Dwfl_Module*> distrusted_;
};

}  // namespace

std::unique_ptr<SymbolSource> SymbolSource::open() {
    auto source = std::make_unique<DwarfSource>();
    if (!source->start()) return nullptr;
    return source;
}

std::string demangledType(const std::string& name) {
    int status = 0;
    char* text = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
    std::string result = status == 0 && text ? text : name;
    std::free(text);
    return result;
}

std::string demangledSymbol(const std::string& name) {
    // A plain name such as "i" would read as a type.
    return name.starts_with("_Z") ? demangledType(name) : name;
}

}  // namespace zqcore::platform::crash
