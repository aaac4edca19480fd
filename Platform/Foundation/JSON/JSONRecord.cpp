#include "Platform/Foundation/JSON/JSONRecord.h"

namespace zqcore::platform {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// The place of `key` among the fields; the one behind the last that came is tried first, since texts keep
/// the order of the declaration as a rule.
std::size_t find(const JSONRecordInfo& info, std::string_view key, std::size_t expected) {
    if (expected < info.fields.size() && info.fields[expected].name == key) return expected;
    for (std::size_t i = 0; i < info.fields.size(); ++i) {
        if (info.fields[i].name == key) return i;
    }
    return kNone;
}

}  // namespace

bool decodeRecord(JSONReader& reader, void* record, const JSONRecordInfo& info) {
    if (!reader.beginObject()) return false;
    std::uint64_t seen = 0;
    JSONReader::PathScope path(reader);
    std::size_t expected = 0;
    for (;;) {
        path.setKey("");
        std::string_view key;
        const auto step = reader.nextKey(key);
        if (step == JSONReader::Step::failed) return false;
        if (step == JSONReader::Step::end) break;
        const std::size_t at = find(info, key, expected);
        const std::uint64_t bit = at == kNone ? 0 : std::uint64_t{1} << at;
        if (at == kNone || (seen & bit) != 0) {
            if (!reader.skipValue()) return false;
            continue;
        }
        seen |= bit;
        expected = at + 1;
        const JSONFieldInfo& field = info.fields[at];
        path.setKey(field.name);
        if (!field.required && reader.consumeNull()) continue;
        if (!field.decode(reader, record)) return false;
    }
    for (std::size_t i = 0; i < info.fields.size(); ++i) {
        if (info.fields[i].required && (seen >> i & 1) == 0) {
            path.setKey(info.fields[i].name);
            return reader.fail(JSONError::Kind::keyNotFound, "no such key");
        }
    }
    return true;
}

void encodeRecord(JSONWriter& writer, const void* record, const JSONRecordInfo& info) {
    writer.beginObject();
    JSONWriter::PathScope path(writer);
    for (const JSONFieldInfo& field : info.fields) {
        path.setKey(field.name);
        field.encode(writer, record);
    }
    writer.endObject();
}

}  // namespace zqcore::platform
