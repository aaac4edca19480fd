#include "Platform/Foundation/JSON/JSONEncoder.h"

namespace zqcore::platform {

std::expected<Data, JSONError> JSONEncoder::encode(const void* value, const JSONTypeInfo& type) const {
    JSONWriter writer;
    type.encode(writer, value);
    if (writer.empty()) writer.fail("the top-level value encodes nothing");
    auto text = writer.take();
    if (!text) return std::unexpected(*writer.error());
    return Data(*std::move(text));
}

std::string JSONEncoder::describe(const void* value, const JSONTypeInfo& type) const {
    JSONWriter writer(JSONWriter::Purpose::description);
    type.encode(writer, value);
    return writer.take().value_or("");
}

std::optional<JSONError> JSONDecoder::decode(std::string_view text, void* value,
                                             const JSONTypeInfo& type) const {
    JSONReader reader(text);
    if (type.decode(reader, value) && reader.finish()) return std::nullopt;
    return reader.error();
}

}  // namespace zqcore::platform
