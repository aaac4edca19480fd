#include <cstdint>
#include <cstdlib>

#include "Platform/Foundation/PropertyList.h"

using zqcore::platform::PropertyList;
using zqcore::platform::Value;

namespace {

// Whether `value` can be written in that form and is the same when it has been read again. Dates lose what
// the form can't hold, so the second round is compared with the first.
bool comesBack(const Value& value, PropertyList::Format format) {
    const auto written = PropertyList::write(value, format);
    if (!written) return false;
    const auto again = PropertyList::read(written->view());
    if (!again) return false;
    const auto twice = PropertyList::write(*again, format);
    return twice && twice->view() == written->view();
}

}  // namespace

// What reads can be written in the form it came in, and in the binary one, which holds everything. The XML
// form may refuse, but what it writes it also reads.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    PropertyList::Format format{};
    const auto read = PropertyList::read({reinterpret_cast<const char*>(data), size}, &format);
    if (!read) return 0;
    if (!comesBack(*read, format) || !comesBack(*read, PropertyList::Format::binary)) std::abort();
    if (const auto text = PropertyList::write(*read, PropertyList::Format::xml)) {
        if (!PropertyList::read(text->view())) std::abort();
    }
    return 0;
}
