#include "Classes/AppleScript/Scheme/QueryString.h"

#include "Platform/Foundation/URLEncoding.h"

namespace zqcore {

std::string toQueryString(const Value::Dictionary& dictionary) {
    std::string query;
    for (const auto* entry : sortedByKey(dictionary)) {
        for (const auto& [key, value] : URLEncoding::queryComponents(entry->first, entry->second)) {
            if (!query.empty()) query += '&';
            query += key;
            query += '=';
            query += value;
        }
    }
    return query;
}

std::string toQueryString(const std::map<std::string, std::string>& parameters) {
    Value::Dictionary dictionary;
    for (const auto& [key, value] : parameters) dictionary.set(key, value);
    return toQueryString(dictionary);
}

}  // namespace zqcore
