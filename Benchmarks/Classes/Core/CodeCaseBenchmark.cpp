// Peer: the patterns that define the two operations, each compiled once and its matcher kept, run by ICU on a
// text that is already in UTF-16.
#include <benchmark/benchmark.h>
#include <unicode/locid.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Classes/Core/Extension/StringCodeCase.h"

namespace zqcore {
namespace {

const std::vector<std::string>& identifiers() {
    static const std::vector<std::string> texts{"userName",    "parseHTTPResponse",     "foo_bar-baz/qux.txt",
                                                "Html5Parser", "ORDER_LINE_ITEM_COUNT", "x"};
    return texts;
}

void ours(benchmark::State& state) {
    for (auto _ : state) {
        for (const auto& text : identifiers()) {
            benchmark::DoNotOptimize(zq_mergeCodeCase(zq_splitWords(text), CodeCaseType::camel));
        }
    }
}
BENCHMARK(ours)->Name("codecase/ours");

class Step final {
  public:
    Step(const char16_t* pattern, const char16_t* replacement)
        : replacement_(replacement),
          matcher_(std::make_unique<icu::RegexMatcher>(icu::UnicodeString(pattern), 0, status_)) {}

    void replace(icu::UnicodeString& text) {
        matcher_->reset(text);
        text = matcher_->replaceAll(replacement_, status_);
        if (U_FAILURE(status_)) std::abort();
    }
    bool matches(const icu::UnicodeString& text) {
        matcher_->reset(text);
        return matcher_->matches(status_);
    }

  private:
    UErrorCode status_ = U_ZERO_ERROR;
    icu::UnicodeString replacement_;
    std::unique_ptr<icu::RegexMatcher> matcher_;
};

icu::UnicodeString camelByPatterns(icu::UnicodeString text) {
    static Step whole(uR"(^[0-9a-zA-Z_\-/\.]+$)", u"");
    static Step steps[] = {{uR"([_\-/\.\s]+)", u" "},
                           {uR"(([A-Z][a-z]+)|([0-9\W]+))", u" $1 "},
                           {u"[A-Z]{2,}", u" $0"},
                           {uR"(\s{2,})", u" "}};
    static Step boundaries(u"[^a-zA-Z0-9]+", u" ");
    text.trim();
    if (whole.matches(text)) {
        for (auto& step : steps) step.replace(text);
        text.trim();
    }
    boundaries.replace(text);
    const auto& root = icu::Locale::getRoot();
    icu::UnicodeString result;
    for (std::int32_t begin = 0; begin < text.length();) {
        auto end = text.indexOf(u' ', begin);
        if (end < 0) end = text.length();
        if (end > begin) {
            auto first = icu::UnicodeString(text, begin, 1);
            auto rest = icu::UnicodeString(text, begin + 1, end - begin - 1);
            result.append(result.isEmpty() ? first.toLower(root) : first.toUpper(root))
                .append(rest.toLower(root));
        }
        begin = end + 1;
    }
    return result;
}

void icuPatterns(benchmark::State& state) {
    std::vector<icu::UnicodeString> texts;
    for (const auto& text : identifiers()) texts.push_back(icu::UnicodeString::fromUTF8(text));
    for (auto _ : state) {
        for (const auto& text : texts) benchmark::DoNotOptimize(camelByPatterns(text));
    }
}
BENCHMARK(icuPatterns)->Name("codecase/icu");

}  // namespace
}  // namespace zqcore
