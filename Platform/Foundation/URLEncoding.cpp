#include "Platform/Foundation/URLEncoding.h"

#include <algorithm>

#include "Platform/Foundation/JSON/JSONNumber.h"
#include "Platform/Foundation/Text/Compare.h"

namespace zqcore::platform {
namespace {

bool standsForItself(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           (c != '\0' && std::string_view("-._~/?").find(c) != std::string_view::npos);
}

std::string plainText(const Value& value) {
    if (const auto boolean = value.asBool()) return *boolean ? "1" : "0";
    if (const auto* string = value.asString()) return *string;
    if (value.isNull()) return "<null>";
    auto text = value.description();
    // As the platform's number object describes itself: 1.0 reads "1".
    if (value.asReal() && text.ends_with(".0")) text.resize(text.size() - 2);
    return text;
}

/// A value whose pairs are still to be made.
struct Pending {
    std::string key;
    const Value* value;
};

/// Members and elements, last one first, so that the first one is on top of the stack.
void pushContents(std::vector<Pending>& stack, const Pending& container) {
    if (const auto* array = container.value->asArray()) {
        const auto key = container.key + "[]";
        for (auto element = array->rbegin(); element != array->rend(); ++element) {
            stack.push_back({key, &*element});
        }
    } else {
        const auto entries = sortedByKey(*container.value->asDictionary());
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            stack.push_back({container.key + "[" + (*entry)->first + "]", &(*entry)->second});
        }
    }
}

}  // namespace

std::string URLEncoding::escape(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (standsForItself(c)) {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += '%';
            result += kDigits[byte >> 4U];
            result += kDigits[byte & 15U];
        }
    }
    return result;
}

std::vector<URLEncoding::Component> URLEncoding::queryComponents(std::string_view key, const Value& value) {
    std::vector<Component> components;
    // No recursion: however deep a value nests, it can't overflow the stack.
    std::vector<Pending> stack{{std::string(key), &value}};
    while (!stack.empty()) {
        const auto next = std::move(stack.back());
        stack.pop_back();
        if (next.value->asArray() || next.value->asDictionary()) {
            pushContents(stack, next);
        } else {
            components.emplace_back(escape(next.key), escape(plainText(*next.value)));
        }
    }
    return components;
}

std::vector<const Value::Dictionary::Entry*> sortedByKey(const Value::Dictionary& dictionary) {
    std::vector<const Value::Dictionary::Entry*> entries;
    entries.reserve(dictionary.size());
    for (const auto& entry : dictionary) entries.push_back(&entry);
    // Equal keys keep their order, which is that of their places. Clang takes no stable_sort of GCC 12.
    std::ranges::sort(entries, [](const auto* a, const auto* b) {
        const auto order = compareText(a->first, b->first);
        return order == NSOrderedSame ? a < b : order == NSOrderedAscending;
    });
    return entries;
}

}  // namespace zqcore::platform
