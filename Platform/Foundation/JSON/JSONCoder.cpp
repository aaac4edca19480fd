#include "Platform/Foundation/JSON/JSONCoder.h"

namespace zqcore::platform {

bool JSONCoder<CGPoint>::decode(JSONReader& reader, CGPoint& out) {
    if (!reader.beginArray()) return false;
    JSONReader::PathScope path(reader);
    for (std::size_t index = 0;; ++index) {
        path.setIndex(index);
        switch (reader.nextElement()) {
            case JSONReader::Step::failed:
                return false;
            case JSONReader::Step::end:
                return index >= 2 || reader.fail(JSONError::Kind::valueNotFound, "a point needs two numbers");
            case JSONReader::Step::item:
                break;
        }
        const bool good = index == 0   ? reader.readDouble(out.x)
                          : index == 1 ? reader.readDouble(out.y)
                                       : reader.skipValue();
        if (!good) return false;
    }
}

void JSONCoder<CGPoint>::encode(JSONWriter& writer, const CGPoint& value) {
    if (!writer.beginArray()) return;
    writer.element();
    writer.real(value.x);
    writer.element();
    writer.real(value.y);
    writer.endArray();
}

}  // namespace zqcore::platform
