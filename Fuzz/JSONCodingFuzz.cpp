// Any bytes through the generic reader and the typed one: what is read is written and read again, and what is
// accepted is compared with another parser where that is linked in.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"
#include "Platform/Foundation/JSON/NSJSONSerialization.h"
#include "TestKit/LogCapture.h"

#if __has_include(<simdjson.h>)
#include <simdjson.h>
#endif

namespace zqcore {
namespace {

struct Everything {
    std::optional<std::int32_t> narrow;
    std::optional<std::int64_t> wide;
    std::optional<std::uint64_t> unsignedWide;
    std::optional<double> real;
    std::optional<bool> flag;
    std::optional<std::string> text;
    std::optional<CGPoint> point;
    std::optional<std::vector<std::string>> texts;
    std::optional<Value> any;
    std::shared_ptr<Everything> inner;
    std::vector<std::shared_ptr<ASError>> errors;
    ZQ_FIELDS(Everything, narrow, wide, unsignedWide, real, flag, text, point, texts, any, inner, errors)
};

void require(bool condition, const char* what, std::string_view text) {
    if (condition) return;
    std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(text.size()), text.data());
    std::abort();
}

template <class T>
bool roundTrip(std::string_view text) {
    const auto read = JSONDecoder{}.decode<T>(text);
    if (!read) return false;
    const auto written = JSONEncoder{}.encode(*read);
    require(written.has_value(), "what was read can't be written", text);
    const auto again = JSONDecoder{}.decode<T>(written->view());
    require(again.has_value(), "what was written can't be read", written->view());
    require(JSONEncoder{}.encode(*again)->view() == written->view(), "written differently", written->view());
    return true;
}

#if __has_include(<simdjson.h>)

/// Told differences: the judge refuses integers beyond 64 bits, reads an underflow as 0 and counts depth in
/// its own way.
bool judgeDiffers(std::string_view text) {
    int digits = 0;
    int depth = 0;
    for (const char c : text) {
        digits = c >= '0' && c <= '9' ? digits + 1 : 0;
        depth += c == '[' || c == '{' ? 1 : 0;
        if (digits > 18) return true;
        if (c == 'e' || c == 'E') digits = 0;
    }
    return depth > 500 || text.find("e-") != text.npos || text.find("E-") != text.npos ||
           text.starts_with("\xEF\xBB\xBF");
}

void judge(std::string_view text, bool accepted) {
    static simdjson::dom::parser parser(64U << 20U);
    if (text.empty() || judgeDiffers(text)) return;
    simdjson::dom::element root;
    const auto error = parser.parse(text.data(), text.size()).get(root);
    const bool judged = error == simdjson::SUCCESS;
    require(judged == accepted, accepted ? "the judge refuses" : "the judge accepts", text);
}

#else

void judge(std::string_view, bool) {}

#endif

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static testkit::LogCapture silence(0);
    // A copy without spare bytes behind it, so that a read beyond the end is seen.
    const std::vector<char> exact(data, data + size);
    const std::string_view text(exact.data(), exact.size());

    JSONReader skipping(text);
    const bool skipped = skipping.skipValue() && skipping.finish();
    const auto value = NSJSONSerialization::JSONObject(text, NSJSONReadingFragmentsAllowed);
    require(skipped == value.has_value(), "reading and skipping disagree", text);
    judge(text, skipped);
    if (value) {
        const bool container = value->asArray() || value->asDictionary();
        if (container) {
            require(NSJSONSerialization::isValidJSONObject(*value) || text.size() > 1000, "not valid", text);
        }
        if (const auto written = NSJSONSerialization::data(*value)) {
            const auto again =
                NSJSONSerialization::JSONObject(written->view(), NSJSONReadingFragmentsAllowed);
            require(again.has_value(), "what was written can't be read", written->view());
            require(NSJSONSerialization::data(*again)->view() == written->view(), "written differently",
                    text);
        }
    }
    // A record takes no text that the generic reader refuses, but for numbers that a tolerant field passes.
    const bool typed = roundTrip<Everything>(text);
    require(!typed || skipped || text.find_first_of("eE") != text.npos || text.size() > 300, "typed only",
            text);
    static_cast<void>(roundTrip<OrbelTranslateRequest::RequestValue>(text));
    static_cast<void>(roundTrip<OrbelHelperSelectedTextRequest::ResponseValue>(text));
    static_cast<void>(roundTrip<OrbelHelperHotkeyRequest::RequestValue>(text));
    return 0;
}

}  // namespace zqcore
