#include "Platform/Foundation/JSON/JSONEncoder.h"

#include <exception>

namespace zqcore::platform {
namespace {

/// The coder of an application's own field type may throw. That is a failure like any other.
template <class Run, class Fail>
void guarded(const Run& run, const Fail& fail) {
    try {
        run();
    } catch (const std::exception& exception) {
        fail(std::string("exception: ") + exception.what());
    } catch (...) {
        fail("unknown exception");
    }
}

}  // namespace

std::expected<Data, JSONError> JSONEncoder::encode(const void* value, const JSONTypeInfo& type) const {
    JSONWriter writer;
    guarded([&] { type.encode(writer, value); }, [&](std::string reason) { writer.fail(std::move(reason)); });
    if (writer.empty()) writer.fail("the top-level value encodes nothing");
    auto text = writer.take();
    if (!text) return std::unexpected(*writer.error());
    return Data(*std::move(text));
}

std::string JSONEncoder::describe(const void* value, const JSONTypeInfo& type) const {
    JSONWriter writer(JSONWriter::Purpose::description);
    guarded([&] { type.encode(writer, value); }, [&](std::string reason) { writer.fail(std::move(reason)); });
    return writer.take().value_or("");
}

std::optional<JSONError> JSONDecoder::decode(std::string_view text, void* value,
                                             const JSONTypeInfo& type) const {
    JSONReader reader(text);
    bool good = false;
    guarded([&] { good = type.decode(reader, value) && reader.finish(); },
            [&](std::string reason) { reader.fail(JSONError::Kind::corrupted, std::move(reason)); });
    if (good) return std::nullopt;
    return reader.error();
}

}  // namespace zqcore::platform
