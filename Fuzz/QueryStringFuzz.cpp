// Any JSON object as query: its pairs hold no byte outside the query rule, and decode to the texts they came
// from.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Classes/AppleScript/Scheme/QueryString.h"
#include "Platform/Foundation/JSON/JSONReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zqcore;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    // The input itself under a key, which is bytes of any kind.
    const auto query = toQueryString(Value::Dictionary{{"k", text}});
    std::string decoded;
    for (std::size_t i = 2; i < query.size(); ++i) {
        const char c = query[i];
        if (c == '%') {
            decoded += static_cast<char>(std::stoi(query.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            decoded += c;
        }
    }
    if (decoded != text) std::abort();

    JSONReader reader(text);
    Value value;
    if (!reader.readValue(value) || !value.asDictionary()) return 0;
    constexpr std::string_view kAllowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/?%=&";
    if (toQueryString(*value.asDictionary()).find_first_not_of(kAllowed) != std::string::npos) std::abort();
    return 0;
}
