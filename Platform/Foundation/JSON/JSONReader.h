#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/JSON/JSONError.h"
#include "Platform/Foundation/JSON/JSONNumber.h"

namespace zqcore::platform {

class Value;
struct JSONFieldInfo;

/// Reads one JSON text (RFC 8259, UTF-8) from front to back, value by value, without a tree between: the seam
/// behind which the parser stands. It is strict in all that it passes, also in what is skipped: no trailing
/// commas, no lone surrogates, no invalid UTF-8, no number beyond a double. A byte order mark is skipped.
/// Threads: one reader belongs to one thread. Lifetime: the text must outlive the reader.
/// Failure: every reading operation gives false and the first failure stays in `error()`. A value of another
/// kind than asked for is left unread, so that it can be read as something else after `takeMismatch()`; every
/// other failure is final.
class ZQ_EXPORT JSONReader final {
  public:
    /// Arrays and objects within each other.
    static constexpr int kMaximumDepth = 512;

    enum class Kind : std::uint8_t { null, boolean, number, string, array, object, invalid };
    enum class Step : std::uint8_t { item, end, failed };
    /// Whether a skipped number must fit a double.
    enum class SkippedNumbers : std::uint8_t { inRange, any };

    explicit JSONReader(std::string_view text) noexcept;
    JSONReader(const JSONReader&) = delete;
    JSONReader& operator=(const JSONReader&) = delete;

    /// The kind of the next value by its first character; `invalid` when none begins here.
    [[nodiscard]] Kind peek() noexcept;
    /// Passes a null if one is next.
    [[nodiscard]] bool consumeNull() {
        // Most values begin at once and with something else.
        return (at_ == end_ || static_cast<unsigned char>(*at_) <= ' ' || *at_ == 'n') && consumeNullHere();
    }

    [[nodiscard]] bool readBool(bool& out);
    // Numbers by value: 1.0 and 1e2 are integers, 1.5 and 2^63 are not (`readInt64`).
    [[nodiscard]] bool readInt64(std::int64_t& out);
    [[nodiscard]] bool readUInt64(std::uint64_t& out);
    [[nodiscard]] bool readDouble(double& out);
    [[nodiscard]] bool readNumber(JSONNumber& out);
    [[nodiscard]] bool readString(std::string& out);
    /// The same without a copy where the text has no escapes; valid until the next call.
    [[nodiscard]] bool readText(std::string_view& out);
    /// Any value as a generic one: integers exact within 64 bits, doubles beyond; the first of two equal
    /// keys.
    [[nodiscard]] bool readValue(Value& out);
    /// Passes one value of any kind, checked like all others.
    [[nodiscard]] bool skipValue(SkippedNumbers numbers = SkippedNumbers::inRange);
    /// Passes one value like `skipValue` and gives its text, which a reader of its own can read again.
    [[nodiscard]] bool readRaw(std::string_view& out);

    // An object is read by beginObject and then nextKey, each key followed by its value, until `end`. The key
    // is valid until the next call. Arrays likewise.
    [[nodiscard]] bool beginObject();
    [[nodiscard]] Step nextKey(std::string_view& key);
    /// A short cut before `nextKey`: passes the next key if it stands there compactly and is that of one of
    /// `fields` from number `from` on, and gives its number; otherwise passes nothing and gives their count.
    [[nodiscard]] std::size_t nextKnownKey(std::span<const JSONFieldInfo> fields, std::size_t from);
    [[nodiscard]] bool beginArray();
    [[nodiscard]] Step nextElement();

    /// True when nothing but white space follows.
    [[nodiscard]] bool finish();

    [[nodiscard]] const std::optional<JSONError>& error() const noexcept { return error_; }
    /// Takes back a failure that left its value unread; absent, with nothing changed, for any other.
    [[nodiscard]] std::optional<JSONError> takeMismatch();
    /// For coders: records a failure at the value in hand and gives false.
    bool fail(JSONError::Kind kind, std::string reason);

    /// One step of the path, for the time of its life; see JSONPathNode.
    class PathScope final {
      public:
        explicit PathScope(JSONReader& reader) noexcept : reader_(reader), node_{reader.path_, {}, 0} {
            reader.path_ = &node_;
        }
        ~PathScope() { reader_.path_ = node_.parent; }
        PathScope(const PathScope&) = delete;
        PathScope& operator=(const PathScope&) = delete;
        void setKey(std::string_view key) noexcept { node_.key = key; }
        void setIndex(std::size_t index) noexcept { node_.index = index; }

      private:
        JSONReader& reader_;
        JSONPathNode node_;
    };

  private:
    /// A string as it stands: from behind its quote to the first escape, and to the quote that ends it.
    struct RawText {
        const char* from = nullptr;
        const char* stop = nullptr;
        const char* to = nullptr;
        /// Something above 0x7F before the stop.
        bool nonASCII = false;
    };

    bool consumeNullHere();
    void skipBlanks() noexcept;
    bool corrupted(const char* reason);
    bool mismatch(std::string_view wanted);
    bool word(std::string_view text);
    bool scanNumber(JSONNumber& out);
    bool scanString(RawText& raw);
    bool scanEscaped(RawText& raw);
    bool checkUTF8(const RawText& raw);
    bool takeText(std::string_view& out);
    bool skipString();
    bool unescape(const RawText& raw, std::string& out);
    bool enter();

    const char* begin_;
    const char* at_;
    const char* end_;
    int depth_ = 0;
    /// The container in hand has just been opened; only the innermost can be so.
    bool fresh_ = false;
    const JSONPathNode* path_ = nullptr;
    /// A text with its escapes undone.
    std::string scratch_;
    std::optional<JSONError> error_;
};

}  // namespace zqcore::platform
