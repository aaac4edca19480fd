#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Platform/Foundation/PropertyList.h"

using zqcore::platform::PropertyList;

// What reads is written and read again, in the form it came in, and must be the same property list; dates
// lose what their form can't hold, so the second round is compared with the first.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    PropertyList::Format format{};
    const auto read = PropertyList::read({reinterpret_cast<const char*>(data), size}, &format);
    if (!read) return 0;
    const auto written = PropertyList::write(*read, PropertyList::Format::binary);
    if (!written) std::abort();
    const auto again = PropertyList::read(written->view());
    if (!again) std::abort();
    const auto twice = PropertyList::write(*again, PropertyList::Format::binary);
    if (!twice || twice->view() != written->view()) std::abort();
    if (const auto text = PropertyList::write(*read, PropertyList::Format::xml)) {
        if (!PropertyList::read(text->view())) std::abort();
    }
    return 0;
}
