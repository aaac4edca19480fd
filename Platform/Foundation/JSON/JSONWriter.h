#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/JSON/JSONError.h"

namespace zqcore::platform {

class Value;

/// Writes one JSON text: compact, keys in the order of the calls, '/' as "\/", non-ASCII as it stands.
/// Threads: one writer belongs to one thread. Lifetime: keys given to the path must outlive the scope.
/// Failure: the first one stays in `error()`, and `take()` then gives nothing: a NaN or infinity, text that
/// is no UTF-8, more than 512 levels.
class ZQ_EXPORT JSONWriter final {
  public:
    static constexpr int kMaximumDepth = 512;

    /// `description` never fails: it is for log lines, where what JSON can't express is told as well.
    enum class Purpose : std::uint8_t { json, description };

    explicit JSONWriter(Purpose purpose = Purpose::json) noexcept : purpose_(purpose) {}
    JSONWriter(const JSONWriter&) = delete;
    JSONWriter& operator=(const JSONWriter&) = delete;

    [[nodiscard]] Purpose purpose() const noexcept { return purpose_; }

    void null();
    void boolean(bool value);
    void integer(std::int64_t value);
    void unsignedInteger(std::uint64_t value);
    void real(double value);
    void string(std::string_view value);
    /// Any generic value of the JSON kinds.
    void value(const Value& value);

    /// False, with nothing written, when that would be a level too many; then it isn't ended either.
    [[nodiscard]] bool beginObject();
    /// Any text as key, to be followed by its value.
    void key(std::string_view name);
    /// A key that needs no escapes, with its quotes and colon: "\"pid\":".
    void quotedKey(std::string_view quoted);
    void endObject();
    [[nodiscard]] bool beginArray();
    /// Before each element.
    void element();
    void endArray();

    [[nodiscard]] const std::optional<JSONError>& error() const noexcept { return error_; }
    /// For coders: records a failure at the value in hand.
    void fail(std::string reason);
    [[nodiscard]] bool empty() const noexcept { return used_ == 0; }
    /// The text, moved out; nothing after a failure.
    [[nodiscard]] std::optional<std::string> take();

    /// One step of the path, for the time of its life; see JSONPathNode.
    class PathScope final {
      public:
        explicit PathScope(JSONWriter& writer) noexcept : writer_(writer), node_{writer.path_, {}, 0} {
            writer.path_ = &node_;
        }
        ~PathScope() { writer_.path_ = node_.parent; }
        PathScope(const PathScope&) = delete;
        PathScope& operator=(const PathScope&) = delete;
        void setKey(std::string_view key) noexcept { node_.key = key; }
        void setIndex(std::size_t index) noexcept { node_.index = index; }

      private:
        JSONWriter& writer_;
        JSONPathNode node_;
    };

    /// Writing that may fail without harm to the rest of the text, for the time of its life; may be nested.
    class Attempt final {
      public:
        explicit Attempt(JSONWriter& writer) noexcept;
        ~Attempt();
        Attempt(const Attempt&) = delete;
        Attempt& operator=(const Attempt&) = delete;
        /// What failed since it was made, absent if nothing did. All that was written since is then taken
        /// back, and the writer stands where it stood.
        [[nodiscard]] std::optional<JSONError> takeFailure() noexcept;

      private:
        JSONWriter& writer_;
        std::size_t used_;
        int depth_;
        bool comma_;
        std::optional<JSONError> earlier_;
    };

  private:
    char* room(std::size_t count);
    void grow(std::size_t count);
    void put(std::string_view text);
    void separate();
    bool open(char bracket);
    void close(char bracket);
    void escaped(std::string_view text);

    /// All of it is room; the first `used_` bytes are text.
    std::string buffer_;
    std::size_t used_ = 0;
    int depth_ = 0;
    bool comma_ = false;
    Purpose purpose_;
    const JSONPathNode* path_ = nullptr;
    std::optional<JSONError> error_;
};

}  // namespace zqcore::platform
