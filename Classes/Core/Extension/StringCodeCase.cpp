// Both operations are defined by a row of pattern replacements. Here each is one pass over the bytes; what
// the patterns say stands beside the step that does it.
#include "Classes/Core/Extension/StringCodeCase.h"

#include <array>
#include <cstdint>

#include "Classes/Core/Extension/StringExtension.h"

namespace zqcore {
namespace {

enum class Class : std::uint8_t { other, lower, upper, digit, separator };

constexpr std::array<Class, 256> kClasses = [] {
    std::array<Class, 256> classes{};
    for (int c = 'a'; c <= 'z'; ++c) classes[static_cast<std::size_t>(c)] = Class::lower;
    for (int c = 'A'; c <= 'Z'; ++c) classes[static_cast<std::size_t>(c)] = Class::upper;
    for (int c = '0'; c <= '9'; ++c) classes[static_cast<std::size_t>(c)] = Class::digit;
    for (const char c : std::string_view("_-/.")) classes[static_cast<unsigned char>(c)] = Class::separator;
    return classes;
}();

constexpr Class classOf(char c) { return kClasses[static_cast<unsigned char>(c)]; }
constexpr bool isLetter(Class c) { return c == Class::lower || c == Class::upper; }
constexpr char lowered(char c) { return classOf(c) == Class::upper ? static_cast<char>(c + 32) : c; }
constexpr char raised(char c) { return classOf(c) == Class::lower ? static_cast<char>(c - 32) : c; }

/// ^[0-9a-zA-Z_\-/\.]+$
bool isIdentifier(std::string_view text) {
    for (const char c : text) {
        if (classOf(c) == Class::other) return false;
    }
    return !text.empty();
}

/// Text to which words are added; blanks between them are never doubled and never stand at an end.
class Words final {
  public:
    explicit Words(std::size_t room) { text_.reserve(room); }

    void separate() { pending_ = !text_.empty(); }
    void append(std::string_view letters) {
        if (std::exchange(pending_, false)) text_ += ' ';
        text_ += letters;
    }
    [[nodiscard]] std::string take() { return std::move(text_); }

  private:
    std::string text_;
    bool pending_ = false;
};

std::size_t runEnd(std::string_view text, std::size_t begin, Class wanted) {
    std::size_t end = begin;
    while (end < text.size() && classOf(text[end]) == wanted) ++end;
    return end;
}

enum class Style { lower, upper, capitalized };

void appendWord(std::string& result, std::string_view word, Style style) {
    bool inRun = false;
    for (const char c : word) {
        const bool up = style == Style::upper || (style == Style::capitalized && !inRun);
        result += up ? raised(c) : lowered(c);
        inRun = isLetter(classOf(c));
    }
}

}  // namespace

std::string zq_splitWords(std::string_view text) {
    const auto trimmed = trimmedView(text);
    if (!isIdentifier(trimmed)) return std::string(trimmed);
    // At most every second character begins a word.
    Words words(trimmed.size() + trimmed.size() / 2);
    for (std::size_t i = 0; i < trimmed.size();) {
        switch (classOf(trimmed[i])) {
            case Class::upper: {
                // ([A-Z][a-z]+) is a word; what capitals remain before it are one by [A-Z]{2,}, while a
                // single one stays with what is before it.
                std::size_t end = runEnd(trimmed, i, Class::upper);
                const std::size_t lowerEnd = runEnd(trimmed, end, Class::lower);
                const bool word = lowerEnd > end;
                if (word) --end;
                if (end - i >= 2) words.separate();
                if (end > i) words.append(trimmed.substr(i, end - i));
                if (word) {
                    words.separate();
                    words.append(trimmed.substr(end, lowerEnd - end));
                    words.separate();
                    end = lowerEnd;
                }
                i = end;
                break;
            }
            case Class::lower: {
                const std::size_t end = runEnd(trimmed, i, Class::lower);
                words.append(trimmed.substr(i, end - i));
                i = end;
                break;
            }
            default:
                // [_\-/\.\s]+ and ([0-9\W]+)
                words.separate();
                ++i;
                break;
        }
    }
    return words.take();
}

std::string zq_mergeCodeCase(std::string_view text, CodeCaseType type) {
    constexpr struct {
        Style first, other;
        const char* separator;
    } kRules[] = {{Style::lower, Style::capitalized, ""},
                  {Style::capitalized, Style::capitalized, ""},
                  {Style::lower, Style::lower, "_"},
                  {Style::lower, Style::lower, "-"},
                  {Style::upper, Style::upper, "_"}};
    const auto& rule = kRules[static_cast<std::size_t>(type)];
    std::string result;
    result.reserve(text.size());
    const auto inWord = [&](std::size_t i) {
        const Class c = classOf(text[i]);
        return isLetter(c) || c == Class::digit;
    };
    for (std::size_t i = 0; i < text.size();) {
        if (!inWord(i)) {
            ++i;
            continue;
        }
        const std::size_t begin = i;
        while (i < text.size() && inWord(i)) ++i;
        const bool first = result.empty();
        if (!first) result += rule.separator;
        appendWord(result, text.substr(begin, i - begin), first ? rule.first : rule.other);
    }
    return result;
}

}  // namespace zqcore
