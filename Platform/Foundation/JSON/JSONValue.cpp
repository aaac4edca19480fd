// Generic values between text and `Value`, with stacks of their own in the place of recursion.
#include <vector>

#include "Platform/Base/Value.h"
#include "Platform/Foundation/JSON/JSONReader.h"
#include "Platform/Foundation/JSON/JSONWriter.h"

namespace zqcore::platform {

namespace {

struct Open {
    std::string key;
    Value container;
};

void addTo(Open& open, Value value) {
    if (auto* array = open.container.asArray()) {
        array->push_back(std::move(value));
    } else {
        open.container.asDictionary()->insert(std::move(open.key), std::move(value));
    }
}

bool readNumberValue(JSONReader& reader, Value& out) {
    JSONNumber number;
    if (!reader.readNumber(number)) return false;
    // A minus zero keeps its sign only as a double.
    if (number.integral && number.fits && !(number.negative && number.magnitude == 0)) {
        if (const auto integer = number.asInt64()) {
            out = Value(*integer);
            return true;
        }
        if (const auto integer = number.asUInt64()) {
            out = Value(*integer);
            return true;
        }
    }
    const auto real = number.asDouble();
    if (!real) return reader.fail(JSONError::Kind::corrupted, "a number beyond every double");
    out = Value(*real);
    return true;
}

/// Everything but arrays and objects.
bool readLeaf(JSONReader& reader, JSONReader::Kind kind, Value& out) {
    switch (kind) {
        case JSONReader::Kind::null:
            out = Value();
            return reader.consumeNull();
        case JSONReader::Kind::boolean: {
            bool value = false;
            if (!reader.readBool(value)) return false;
            out = Value(value);
            return true;
        }
        case JSONReader::Kind::string: {
            std::string text;
            if (!reader.readString(text)) return false;
            out = Value(std::move(text));
            return true;
        }
        default:
            return readNumberValue(reader, out);
    }
}

}  // namespace

bool JSONReader::readValue(Value& out) {
    std::vector<Open> open;
    for (;;) {
        Value value;
        const Kind kind = peek();
        if (kind == Kind::array || kind == Kind::object) {
            if (!enter()) return false;
            open.push_back({{}, kind == Kind::array ? Value(Value::Array{}) : Value(Value::Dictionary{})});
        } else {
            if (!readLeaf(*this, kind, value)) return false;
            if (open.empty()) {
                out = std::move(value);
                return true;
            }
            addTo(open.back(), std::move(value));
        }
        for (;;) {
            Step step = Step::item;
            if (open.back().container.asArray()) {
                step = nextElement();
            } else {
                std::string_view key;
                step = nextKey(key);
                if (step == Step::item) open.back().key = key;
            }
            if (step == Step::failed) return false;
            if (step == Step::item) break;
            value = std::move(open.back().container);
            open.pop_back();
            if (open.empty()) {
                out = std::move(value);
                return true;
            }
            addTo(open.back(), std::move(value));
        }
    }
}

void JSONWriter::value(const Value& root) {
    struct Level {
        const Value::Array* array;
        const Value::Dictionary* dictionary;
        std::size_t next;
    };
    std::vector<Level> levels;
    const Value* value = &root;
    for (;;) {
        switch (value->kind()) {
            case Value::Kind::null:
                null();
                break;
            case Value::Kind::boolean:
                boolean(*value->asBool());
                break;
            case Value::Kind::integer:
                if (const auto integral = value->asInt64()) {
                    integer(*integral);
                } else {
                    unsignedInteger(*value->asUInt64());
                }
                break;
            case Value::Kind::real:
                real(*value->asReal());
                break;
            case Value::Kind::string:
                string(*value->asString());
                break;
            case Value::Kind::data:
            case Value::Kind::date:
                fail("a value of no JSON kind");
                string(value->description());
                break;
            case Value::Kind::array:
                levels.push_back({value->asArray(), nullptr, 0});
                if (!beginArray()) return;
                break;
            case Value::Kind::dictionary:
                levels.push_back({nullptr, value->asDictionary(), 0});
                if (!beginObject()) return;
                break;
        }
        for (value = nullptr; !value;) {
            if (levels.empty() || error_) return;
            Level& level = levels.back();
            if (level.array && level.next < level.array->size()) {
                element();
                value = &(*level.array)[level.next++];
            } else if (level.dictionary && level.next < level.dictionary->size()) {
                const auto& entry = level.dictionary->begin()[level.next++];
                key(entry.first);
                value = &entry.second;
            } else {
                if (level.array) {
                    endArray();
                } else {
                    endObject();
                }
                levels.pop_back();
            }
        }
    }
}

}  // namespace zqcore::platform
