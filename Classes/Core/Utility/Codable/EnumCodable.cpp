#include "Classes/Core/Utility/Codable/EnumCodable.h"

#include "Classes/Log/Log/ZQLog.h"

namespace zqcore::enumdetail {

namespace {

/// The raw value was of the wrong kind: told, passed, and the default stands.
bool recover(JSONReader& reader, const EnumInfo& info) {
    const auto error = reader.takeMismatch();
    if (!error) return false;
    ZQLogError([&] { return std::string(info.typeName) + " catch error: " + error->description(); });
    return reader.skipValue(JSONReader::SkippedNumbers::any);
}

}  // namespace

bool decode(JSONReader& reader, const EnumInfo& info, std::int64_t& out) {
    out = info.cases.front().value;
    if (info.raw == EnumInfo::Raw::integer) {
        std::int64_t raw = 0;
        if (!reader.readInt64(raw)) return recover(reader, info);
        for (const EnumCase& one : info.cases) {
            if (one.value == raw) out = raw;
        }
        return true;
    }
    std::string_view raw;
    if (!reader.readText(raw)) return recover(reader, info);
    for (const EnumCase& one : info.cases) {
        if (one.text == raw) out = one.value;
    }
    return true;
}

void encode(JSONWriter& writer, const EnumInfo& info, std::int64_t value) {
    if (info.raw == EnumInfo::Raw::integer) return writer.integer(value);
    for (const EnumCase& one : info.cases) {
        if (one.value == value) return writer.string(one.text);
    }
    writer.fail("no case of " + std::string(info.typeName));
    writer.string("");
}

std::string typeText(const EnumInfo& info) {
    std::string text;
    for (const EnumCase& one : info.cases) {
        if (!text.empty()) text += '|';
        if (info.raw == EnumInfo::Raw::integer) text += std::to_string(one.value) + '=';
        text += one.text;
    }
    return text;
}

}  // namespace zqcore::enumdetail
