#include "Platform/Foundation/NSThread.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace zqcore::platform {

namespace {

struct Free {
    void operator()(char* text) const noexcept { std::free(text); }
};

std::string demangled(const char* symbol) {
    int status = 0;
    const std::unique_ptr<char, Free> name(abi::__cxa_demangle(symbol, nullptr, nullptr, &status));
    return status == 0 && name ? name.get() : symbol;
}

std::string row(std::size_t number, const void* address) {
    std::string_view image = "???";
    std::string symbol = "0x0";
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    std::uintptr_t start = 0;
    Dl_info info{};
    if (::dladdr(address, &info) != 0) {
        image = info.dli_fname;
        image.remove_prefix(image.rfind('/') + 1);
        start = reinterpret_cast<std::uintptr_t>(info.dli_saddr ? info.dli_saddr : info.dli_fbase);
        if (info.dli_sname) {
            symbol = demangled(info.dli_sname);
        } else {
            std::array<char, 24> base;
            std::snprintf(base.data(), base.size(), "0x%" PRIxPTR, start);
            symbol = base.data();
        }
    }
    std::array<char, 32> columns;
    std::snprintf(columns.data(), columns.size(), "%-4zu", number);
    std::string text = columns.data();
    text += image;
    if (image.size() < 35) text.append(35 - image.size(), ' ');
    std::snprintf(columns.data(), columns.size(), " 0x%016" PRIxPTR " ", at);
    return text + columns.data() + symbol + " + " + std::to_string(at - start);
}

}  // namespace

std::vector<std::string> NSThread::callStackSymbols() {
    std::array<void*, 129> frames;
    const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
    std::vector<std::string> rows;
    for (int i = 1; i < count; ++i) rows.push_back(row(rows.size(), frames[static_cast<std::size_t>(i)]));
    return rows;
}

}  // namespace zqcore::platform
