#include "Platform/Base/Value.h"

#include <charconv>
#include <cmath>
#include <unordered_map>

namespace zqcore::platform {

namespace {

// Below this a linear search over neighbours beats hashing.
constexpr std::size_t kIndexFrom = 16;

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
};

}  // namespace

struct ValueDictionary::Storage {
    std::vector<Entry> entries;
    std::unordered_map<std::string, std::size_t, TextHash, std::equal_to<>> index;

    std::size_t position(std::string_view key) const {
        if (!index.empty()) {
            const auto found = index.find(key);
            return found == index.end() ? entries.size() : found->second;
        }
        std::size_t i = 0;
        while (i < entries.size() && entries[i].first != key) ++i;
        return i;
    }
    void append(std::string key, Value value) {
        entries.emplace_back(std::move(key), std::move(value));
        if (!index.empty()) {
            index.emplace(entries.back().first, entries.size() - 1);
        } else if (entries.size() >= kIndexFrom) {
            buildIndex();
        }
    }
    void buildIndex() {
        for (std::size_t i = 0; i < entries.size(); ++i) index.emplace(entries[i].first, i);
    }
    void erase(std::size_t at) {
        if (entries.size() <= kIndexFrom) {
            index.clear();
        } else {
            // Moved up in place: making the texts of the index anew would cost far more.
            index.erase(entries[at].first);
            for (auto& [key, position] : index) {
                if (position > at) --position;
            }
        }
        entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(at));
    }
};

ValueDictionary::ValueDictionary() = default;
ValueDictionary::ValueDictionary(std::initializer_list<Entry> entries) {
    for (const auto& [key, value] : entries) set(key, value);
}
ValueDictionary::ValueDictionary(const ValueDictionary& other)
    : storage_(other.storage_ ? std::make_unique<Storage>(*other.storage_) : nullptr) {}
ValueDictionary::ValueDictionary(ValueDictionary&&) noexcept = default;
ValueDictionary& ValueDictionary::operator=(const ValueDictionary& other) {
    if (this != &other) storage_ = other.storage_ ? std::make_unique<Storage>(*other.storage_) : nullptr;
    return *this;
}
ValueDictionary& ValueDictionary::operator=(ValueDictionary&&) noexcept = default;
ValueDictionary::~ValueDictionary() = default;

const Value* ValueDictionary::find(std::string_view key) const {
    if (!storage_) return nullptr;
    const auto at = storage_->position(key);
    return at < storage_->entries.size() ? &storage_->entries[at].second : nullptr;
}

Value* ValueDictionary::find(std::string_view key) {
    return const_cast<Value*>(static_cast<const ValueDictionary*>(this)->find(key));
}

void ValueDictionary::set(std::string key, Value value) {
    if (Value* present = find(key)) {
        *present = std::move(value);
        return;
    }
    if (!storage_) storage_ = std::make_unique<Storage>();
    storage_->append(std::move(key), std::move(value));
}

bool ValueDictionary::insert(std::string key, Value value) {
    if (find(key)) return false;
    if (!storage_) storage_ = std::make_unique<Storage>();
    storage_->append(std::move(key), std::move(value));
    return true;
}

bool ValueDictionary::erase(std::string_view key) {
    if (!storage_) return false;
    const auto at = storage_->position(key);
    if (at >= storage_->entries.size()) return false;
    storage_->erase(at);
    return true;
}

std::size_t ValueDictionary::size() const noexcept { return storage_ ? storage_->entries.size() : 0; }
bool ValueDictionary::empty() const noexcept { return size() == 0; }
const ValueDictionary::Entry* ValueDictionary::begin() const noexcept {
    return storage_ ? storage_->entries.data() : nullptr;
}
const ValueDictionary::Entry* ValueDictionary::end() const noexcept {
    return storage_ ? storage_->entries.data() + storage_->entries.size() : nullptr;
}

bool operator==(const ValueDictionary& a, const ValueDictionary& b) {
    if (a.size() != b.size()) return false;
    for (const auto& [key, value] : a) {
        const Value* other = b.find(key);
        if (!other || !(*other == value)) return false;
    }
    return true;
}

Value& Value::operator=(const Value& other) {
    if (this != &other) {
        Storage copy = other.storage_;
        dismantle();
        storage_ = std::move(copy);
    }
    return *this;
}

Value& Value::operator=(Value&& other) noexcept {
    if (this != &other) {
        // `other` may lie inside this value, so it is taken out before anything is ended.
        Storage taken = std::move(other.storage_);
        dismantle();
        storage_ = std::move(taken);
    }
    return *this;
}

Value::~Value() { dismantle(); }

void Value::dismantle() noexcept {
    const auto isContainer = [](const Value& value) { return value.asArray() || value.asDictionary(); };
    if (!isContainer(*this)) return;
    std::vector<Value> pending;
    const auto collect = [&](Value& value) {
        if (auto* array = value.asArray()) {
            for (auto& element : *array) {
                if (isContainer(element)) pending.push_back(std::move(element));
            }
        } else if (auto* dictionary = value.asDictionary()) {
            for (const auto& entry : *dictionary) {
                auto& element = const_cast<Value&>(entry.second);
                if (isContainer(element)) pending.push_back(std::move(element));
            }
        }
    };
    collect(*this);
    while (!pending.empty()) {
        Value value = std::move(pending.back());
        pending.pop_back();
        collect(value);
        value.storage_ = std::monostate{};
    }
}

Value::Kind Value::kind() const noexcept {
    static constexpr Kind kinds[] = {Kind::null,  Kind::boolean,   Kind::integer, Kind::integer,
                                     Kind::real,  Kind::string,    Kind::data,    Kind::date,
                                     Kind::array, Kind::dictionary};
    return kinds[storage_.index()];
}

bool Value::isNumber() const noexcept {
    const Kind k = kind();
    return k == Kind::boolean || k == Kind::integer || k == Kind::real;
}

std::optional<bool> Value::asBool() const noexcept {
    if (const bool* value = std::get_if<bool>(&storage_)) return *value;
    return std::nullopt;
}

std::optional<std::int64_t> Value::asInt64() const noexcept {
    if (const auto* value = std::get_if<std::int64_t>(&storage_)) return *value;
    return std::nullopt;
}

std::optional<std::uint64_t> Value::asUInt64() const noexcept {
    if (const auto* value = std::get_if<std::uint64_t>(&storage_)) return *value;
    if (const auto* value = std::get_if<std::int64_t>(&storage_); value && *value >= 0) {
        return static_cast<std::uint64_t>(*value);
    }
    return std::nullopt;
}

std::optional<double> Value::asReal() const noexcept {
    if (const double* value = std::get_if<double>(&storage_)) return *value;
    return std::nullopt;
}

const std::string* Value::asString() const noexcept { return std::get_if<std::string>(&storage_); }
const Data* Value::asData() const noexcept { return std::get_if<Data>(&storage_); }
std::optional<Date> Value::asDate() const noexcept {
    if (const Date* value = std::get_if<Date>(&storage_)) return *value;
    return std::nullopt;
}
const Value::Array* Value::asArray() const noexcept { return std::get_if<Array>(&storage_); }
Value::Array* Value::asArray() noexcept { return std::get_if<Array>(&storage_); }
const Value::Dictionary* Value::asDictionary() const noexcept { return std::get_if<Dictionary>(&storage_); }
Value::Dictionary* Value::asDictionary() noexcept { return std::get_if<Dictionary>(&storage_); }

std::optional<double> Value::numberAsDouble() const noexcept {
    if (const bool* value = std::get_if<bool>(&storage_)) return *value ? 1.0 : 0.0;
    if (const auto* value = std::get_if<std::int64_t>(&storage_)) return static_cast<double>(*value);
    if (const auto* value = std::get_if<std::uint64_t>(&storage_)) return static_cast<double>(*value);
    return asReal();
}

std::optional<std::uint32_t> Value::numberAsUInt32() const noexcept {
    if (const bool* value = std::get_if<bool>(&storage_)) return *value ? 1U : 0U;
    if (const auto* value = std::get_if<std::int64_t>(&storage_)) return static_cast<std::uint32_t>(*value);
    if (const auto* value = std::get_if<std::uint64_t>(&storage_)) return static_cast<std::uint32_t>(*value);
    if (const double* value = std::get_if<double>(&storage_)) {
        // A double beyond the range has no defined cut; the nearest end stands for it.
        if (!(*value > -9.2e18)) return *value != *value ? 0U : static_cast<std::uint32_t>(INT64_MIN);
        if (*value > 9.2e18) return static_cast<std::uint32_t>(INT64_MAX);
        return static_cast<std::uint32_t>(static_cast<std::int64_t>(*value));
    }
    return std::nullopt;
}

namespace {

void describe(const Value& value, std::string& out, int depth) {
    // Deeper nesting says nothing to a reader and must not use up the stack.
    constexpr int kDepth = 64;
    if (depth > kDepth) {
        out += "...";
        return;
    }
    switch (value.kind()) {
        case Value::Kind::null:
            out += "(null)";
            break;
        case Value::Kind::boolean:
            out += *value.asBool() ? "true" : "false";
            break;
        case Value::Kind::integer:
            out += value.asInt64() ? std::to_string(*value.asInt64()) : std::to_string(*value.asUInt64());
            break;
        case Value::Kind::real: {
            char buffer[32];
            const auto end = std::to_chars(buffer, buffer + sizeof buffer, *value.asReal());
            out.append(buffer, end.ptr);
            break;
        }
        case Value::Kind::string:
            out += *value.asString();
            break;
        case Value::Kind::data:
            out += std::to_string(value.asData()->size()) + " bytes";
            break;
        case Value::Kind::date:
            out += std::to_string(secondsSince1970(*value.asDate())) + " s since 1970";
            break;
        case Value::Kind::array: {
            const char* separator = "[";
            if (value.asArray()->empty()) out += separator;
            for (const auto& element : *value.asArray()) {
                out += separator;
                describe(element, out, depth + 1);
                separator = ", ";
            }
            out += ']';
            break;
        }
        case Value::Kind::dictionary: {
            const char* separator = "[";
            if (value.asDictionary()->empty()) out += "[:";
            for (const auto& [key, element] : *value.asDictionary()) {
                out += separator;
                out += key;
                out += ": ";
                describe(element, out, depth + 1);
                separator = ", ";
            }
            out += ']';
            break;
        }
    }
}

}  // namespace

std::string Value::description() const {
    std::string out;
    describe(*this, out, 0);
    return out;
}

bool operator==(const Value& a, const Value& b) { return a.storage_ == b.storage_; }

}  // namespace zqcore::platform
