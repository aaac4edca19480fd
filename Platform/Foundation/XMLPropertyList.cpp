#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "Platform/Foundation/PropertyListCoding.h"
#include "Platform/Foundation/Text/Base64.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform::propertylist {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

std::optional<Value> integerOf(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint64_t size = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), size, base);
    if (read.ec != std::errc{} || read.ptr != text.data() + text.size()) return std::nullopt;
    if (!negative) return size;
    if (size > std::uint64_t{1} << 63) return std::nullopt;
    return static_cast<std::int64_t>(~size + 1);
}

std::optional<Value> realOf(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ptr != text.data() + text.size() || text.empty()) return std::nullopt;
    if (read.ec != std::errc{}) return std::nullopt;
    return value;
}

/// "2021-03-04T05:06:07Z" and no other form.
std::optional<Value> dateOf(std::string_view text) {
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    if (text.size() != form.size()) return std::nullopt;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (form[i] == '0' ? !digit : text[i] != form[i]) return std::nullopt;
    }
    const auto field = [&](std::size_t at, std::size_t size) {
        int value = 0;
        std::from_chars(text.data() + at, text.data() + at + size, value);
        return value;
    };
    const std::chrono::year_month_day day{std::chrono::year(field(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(field(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(field(8, 2)))};
    if (!day.ok() || field(11, 2) > 23 || field(14, 2) > 59 || field(17, 2) > 59) return std::nullopt;
    const auto seconds = std::chrono::sys_days(day).time_since_epoch() + std::chrono::hours(field(11, 2)) +
                         std::chrono::minutes(field(14, 2)) + std::chrono::seconds(field(17, 2));
    return dateOfReference(static_cast<double>(seconds.count() - kReferenceDate));
}

std::optional<Value> dataOf(std::string_view text) {
    constexpr std::string_view allowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= \t\r\n";
    if (text.find_first_not_of(allowed) != std::string_view::npos) return std::nullopt;
    auto bytes = decodeBase64(text);
    if (!bytes) return std::nullopt;
    return Data(*std::move(bytes));
}

class Reader final {
  public:
    explicit Reader(std::string_view text) : text_(text) {}

    std::expected<Value, std::string> read() {
        if (!isValidUTF8(text_)) return std::unexpected("not UTF-8");
        if (text_.starts_with("\xEF\xBB\xBF")) at_ = 3;
        Value value;
        std::string_view tag;
        if (misc() && open(tag) &&
            expect(nameOf(tag) == "plist" && !tag.ends_with('/'), "no plist element") && misc() &&
            element(value, 0) && misc() && close("plist") && misc() &&
            expect(at_ == text_.size(), "something behind the plist element")) {
            return value;
        }
        return std::unexpected(error_ + (" at byte " + std::to_string(at_)));
    }

  private:
    bool expect(bool condition, const char* reason) {
        if (!condition) error_ = reason;
        return condition;
    }
    [[nodiscard]] std::string_view rest() const { return text_.substr(at_); }

    bool skipPast(std::string_view mark) {
        const std::size_t end = text_.find(mark, at_);
        if (!expect(end != std::string_view::npos, "cut off")) return false;
        at_ = end + mark.size();
        return true;
    }

    /// Passes blanks, comments, processing instructions and a document type without declarations of its own.
    bool misc() {
        for (;;) {
            at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
            const std::size_t start = at_;
            if (rest().starts_with("<!--")) {
                if (!skipPast("-->")) return false;
            } else if (rest().starts_with("<?")) {
                if (!skipPast("?>")) return false;
            } else if (rest().starts_with("<!DOCTYPE")) {
                if (!skipPast(">")) return false;
                // Declared entities could unfold without end, and no property list has any.
                if (!expect(text_.substr(start, at_ - start).find('[') == std::string_view::npos,
                            "a document type with declarations")) {
                    return false;
                }
            } else {
                return true;
            }
        }
    }

    /// Takes an opening or empty-element tag; `tag` is what stands between its brackets.
    bool open(std::string_view& tag) {
        if (!expect(rest().starts_with('<') && !rest().starts_with("</"), "no element")) return false;
        const std::size_t end = text_.find('>', at_);
        if (!expect(end != std::string_view::npos, "cut off")) return false;
        tag = text_.substr(at_ + 1, end - at_ - 1);
        at_ = end + 1;
        return true;
    }

    static std::string_view nameOf(std::string_view tag) {
        return tag.substr(0, tag.find_first_of(" \t\r\n/"));
    }

    bool close(std::string_view name) {
        if (!expect(rest().starts_with("</") && rest().substr(2).starts_with(name), "a wrong closing tag")) {
            return false;
        }
        at_ += 2 + name.size();
        at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
        if (!expect(rest().starts_with('>'), "a wrong closing tag")) return false;
        ++at_;
        return true;
    }

    bool entity(std::string& out) {
        static constexpr std::array<std::pair<std::string_view, char>, 5> named{
            {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
        const std::size_t end = rest().substr(0, 16).find(';');
        if (!expect(end != std::string_view::npos, "an entity that doesn't end")) return false;
        std::string_view name = text_.substr(at_ + 1, end - 1);
        at_ += end + 1;
        for (const auto& [known, character] : named) {
            if (name == known) {
                out += character;
                return true;
            }
        }
        if (!expect(name.starts_with('#'), "an unknown entity")) return false;
        name.remove_prefix(1);
        const bool hexadecimal = name.starts_with('x');
        if (hexadecimal) name.remove_prefix(1);
        std::uint32_t scalar = 0;
        const auto read =
            std::from_chars(name.data(), name.data() + name.size(), scalar, hexadecimal ? 16 : 10);
        const bool valid = read.ec == std::errc{} && read.ptr == name.data() + name.size() && scalar != 0 &&
                           scalar <= 0x10FFFF && (scalar < 0xD800 || scalar > 0xDFFF);
        if (!expect(valid, "a character reference to nothing")) return false;
        appendUTF8(out, scalar);
        return true;
    }

    /// The text up to the closing tag of `name`, entities and CDATA sections resolved.
    bool content(std::string_view name, std::string& out) {
        for (;;) {
            const std::size_t mark = text_.find_first_of("<&", at_);
            if (!expect(mark != std::string_view::npos, "cut off")) return false;
            out += text_.substr(at_, mark - at_);
            at_ = mark;
            if (text_[mark] == '&') {
                if (!entity(out)) return false;
            } else if (rest().starts_with("<![CDATA[")) {
                const std::size_t start = at_ + 9;
                if (!skipPast("]]>")) return false;
                out += text_.substr(start, at_ - 3 - start);
            } else if (rest().starts_with("<!--")) {
                if (!skipPast("-->")) return false;
            } else {
                return close(name);
            }
        }
    }

    bool element(Value& out, int depth) {
        if (!expect(depth <= kDepth, "nested too deeply")) return false;
        std::string_view tag;
        if (!open(tag)) return false;
        const std::string_view name = nameOf(tag);
        const bool empty = tag.ends_with('/');
        if (name == "array") return empty ? assign(out, Value::Array()) : array(out, depth);
        if (name == "dict") return empty ? assign(out, Value::Dictionary()) : dictionary(out, depth);
        std::string text;
        if (!empty && !content(name, text)) return false;
        if (name == "string") return assign(out, std::move(text));
        if (name == "true" || name == "false") {
            return expect(trimmed(text).empty(), "a boolean with a text") && assign(out, name == "true");
        }
        const std::string_view digits = trimmed(text);
        if (name == "integer") return assign(out, integerOf(digits), "an integer that is none");
        if (name == "real") return assign(out, realOf(digits), "a real that is none");
        if (name == "date") return assign(out, dateOf(digits), "a date that is none");
        if (name == "data") return assign(out, dataOf(text), "data that is not base64");
        return expect(false, "an unknown element");
    }

    static bool assign(Value& out, Value value) {
        out = std::move(value);
        return true;
    }
    bool assign(Value& out, std::optional<Value> value, const char* reason) {
        if (!expect(value.has_value(), reason)) return false;
        out = *std::move(value);
        return true;
    }

    bool array(Value& out, int depth) {
        Value::Array elements;
        while (misc() && !rest().starts_with("</")) {
            if (!element(elements.emplace_back(), depth + 1)) return false;
        }
        return close("array") && assign(out, std::move(elements));
    }

    bool dictionary(Value& out, int depth) {
        Value::Dictionary entries;
        while (misc() && !rest().starts_with("</")) {
            std::string_view tag;
            std::string key;
            Value value;
            if (!open(tag) || !expect(nameOf(tag) == "key", "no key") ||
                !(tag.ends_with('/') || content("key", key)) || !misc() || !element(value, depth + 1)) {
                return false;
            }
            entries.insert(std::move(key), std::move(value));
        }
        return close("dict") && assign(out, std::move(entries));
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::string error_;
};

class Writer final {
  public:
    std::expected<std::string, std::string> write(const Value& value) {
        out_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
        append(value, 0);
        out_ += "</plist>\n";
        if (!error_.empty()) return std::unexpected(std::move(error_));
        return std::move(out_);
    }

  private:
    void line(int depth, std::string_view name, std::string_view content) {
        out_.append(static_cast<std::size_t>(depth), '\t');
        out_.append("<").append(name).append(">");
        for (const char c : content) {
            // XML 1.0 has no way to write other control characters.
            if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') {
                error_ = "a control character, which XML can't hold";
            }
            if (c == '&') {
                out_ += "&amp;";
            } else if (c == '<') {
                out_ += "&lt;";
            } else if (c == '>') {
                out_ += "&gt;";
            } else if (c == '\r') {
                out_ += "&#13;";  // a reader would make a line feed of it
            } else {
                out_ += c;
            }
        }
        out_.append("</").append(name).append(">\n");
    }

    void word(int depth, std::string_view text) {
        out_.append(static_cast<std::size_t>(depth), '\t').append(text).append("\n");
    }

    static std::string dateText(Date date) {
        const auto day = std::chrono::floor<std::chrono::days>(date);
        const std::chrono::year_month_day calendar{day};
        const std::chrono::hh_mm_ss time{std::chrono::floor<std::chrono::seconds>(date - day)};
        char text[32];
        std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(calendar.year()),
                      static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                      static_cast<int>(time.seconds().count()));
        return text;
    }

    void append(const Value& value, int depth) {
        switch (value.kind()) {
            case Value::Kind::boolean:
                word(depth, *value.asBool() ? "<true/>" : "<false/>");
                break;
            case Value::Kind::integer:
            case Value::Kind::real:
                line(depth, value.kind() == Value::Kind::real ? "real" : "integer", value.description());
                break;
            case Value::Kind::string:
                line(depth, "string", *value.asString());
                break;
            case Value::Kind::data:
                line(depth, "data", encodeBase64(value.asData()->view()));
                break;
            case Value::Kind::date:
                line(depth, "date", dateText(*value.asDate()));
                break;
            case Value::Kind::array:
                word(depth, "<array>");
                for (const auto& element : *value.asArray()) append(element, depth + 1);
                word(depth, "</array>");
                break;
            case Value::Kind::dictionary:
                word(depth, "<dict>");
                for (const auto& [key, element] : *value.asDictionary()) {
                    line(depth + 1, "key", key);
                    append(element, depth + 1);
                }
                word(depth, "</dict>");
                break;
            case Value::Kind::null:
                break;
        }
    }

    std::string out_;
    std::string error_;
};

}  // namespace

std::expected<Value, std::string> readXML(std::string_view text) { return Reader(text).read(); }

std::expected<std::string, std::string> writeXML(const Value& value) { return Writer().write(value); }

}  // namespace zqcore::platform::propertylist
