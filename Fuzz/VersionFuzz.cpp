// Two versions, cut apart at the first NUL: every pair has an answer, and the mirrored pair the mirrored one.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Classes/Core/Utility/ZQVersionComparator.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using zqcore::ZQVersionComparator;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto cut = input.find('\0');
    const auto a = input.substr(0, cut);
    const auto b = cut == std::string_view::npos ? std::string_view{} : input.substr(cut + 1);
    if (ZQVersionComparator::compareVersion(a, b) != -ZQVersionComparator::compareVersion(b, a)) std::abort();
    if (ZQVersionComparator::compareVersion(a, a) != 0) std::abort();
    return 0;
}
