// docs/examples/strings.cpp
#include <cstdio>

#include "Classes/Core/Extension/OptionalText.h"
#include "Classes/Core/Extension/StringCodeCase.h"
#include "Classes/Core/Extension/StringExtension.h"
#include "Classes/Core/Extension/StringPath.h"
#include "Classes/Core/Extension/StringSubscript.h"

int main() {
    using namespace zqcore;
    const auto print = [](const std::string& text) { std::puts(text.c_str()); };
    print(
        zq_mergeCodeCase(zq_splitWords("parseHTTPResponse"), CodeCaseType::snake));  // => parse_http_response
    print(zq_escapingXML("a < \"b\""));                                      // => a &lt; &quot;b&quot;
    print(zq_replacingMultipleWhitespaceToSingle("a \t\n b"));               // => a b
    print(zq_matchRegex("2024", "[0-9]{4}") ? "a year" : "no year");         // => a year
    print(subscript("👩‍👩‍👧 and 你好", HalfOpenRange{0, 5}));  // => 👩‍👩‍👧 and
    print(appendingHTTPPath("https://example.org/", "/v1"));                 // => https://example.org/v1
    print(orElse(std::optional<int>(), [] { return "nothing"; }));           // => nothing
}
