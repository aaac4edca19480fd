#include "Platform/Foundation/JSON/JSONRecord.h"

#include <bit>

namespace zqcore::platform {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

std::size_t find(const JSONRecordInfo& info, std::string_view key) {
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
    // Texts keep the order of the declaration as a rule: keys are looked for behind the last one.
    std::size_t expected = 0;
    for (;;) {
        std::size_t at = reader.nextKnownKey(info.fields, expected);
        if (at == info.fields.size()) {
            path.setKey("");
            std::string_view key;
            const auto step = reader.nextKey(key);
            if (step == JSONReader::Step::failed) return false;
            if (step == JSONReader::Step::end) break;
            at = find(info, key);
        }
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
    const std::uint64_t missing = info.required & ~seen;
    if (missing == 0) return true;
    path.setKey(info.fields[static_cast<std::size_t>(std::countr_zero(missing))].name);
    return reader.fail(JSONError::Kind::keyNotFound, "no such key");
}

void encodeRecord(JSONWriter& writer, const void* record, const JSONRecordInfo& info) {
    if (!writer.beginObject()) return;
    JSONWriter::PathScope path(writer);
    for (const JSONFieldInfo& field : info.fields) {
        path.setKey(field.name);
        field.encode(writer, record);
    }
    writer.endObject();
}

}  // namespace zqcore::platform
