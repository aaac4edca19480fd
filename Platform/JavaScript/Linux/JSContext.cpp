#include "Platform/JavaScript/JSContext.h"

#include <JavaScriptCore/JavaScript.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Foundation/Text/Utf16.h"

namespace zqcore::platform {

namespace {

using ScriptString = std::unique_ptr<OpaqueJSString, ReleasedBy<JSStringRelease>>;
using PropertyNames = std::unique_ptr<OpaqueJSPropertyNameArray, ReleasedBy<JSPropertyNameArrayRelease>>;

/// By units with their count: the engine's own UTF-8 forms end at a NUL.
ScriptString toScript(std::string_view text) {
    const std::u16string units = toUTF16(text);
    static_assert(sizeof(JSChar) == sizeof(char16_t));
    return ScriptString(
        JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(units.data()), units.size()));
}

std::string fromScript(JSStringRef text) {
    if (!text) return {};
    const auto* units = reinterpret_cast<const char16_t*>(JSStringGetCharactersPtr(text));
    return fromUTF16({units, JSStringGetLength(text)});
}

std::string textOf(JSContextRef context, JSValueRef value) {
    // A symbol has no text, and an object's own conversion may throw.
    return fromScript(ScriptString(JSValueToStringCopy(context, value, nullptr)).get());
}

/// One conversion of a value with all that is in it.
class Conversion final {
  public:
    explicit Conversion(JSContextRef context) : context_(context) {}

    Value object(JSValueRef value) {
        switch (JSValueGetType(context_, value)) {
            case kJSTypeBoolean:
                return JSValueToBoolean(context_, value);
            case kJSTypeNumber:
                return JSValueToNumber(context_, value, nullptr);
            case kJSTypeString:
                return textOf(context_, value);
            case kJSTypeObject:
                break;
            default:
                return nullptr;
        }
        if (JSValueIsDate(context_, value)) {
            return dateSince1970(JSValueToNumber(context_, value, nullptr) / 1000);
        }
        if (JSValueIsArray(context_, value)) return array(value);
        return dictionary(value);
    }

    Value::Array array(JSValueRef value) {
        Value::Array elements;
        const auto entered = enter(value);
        if (!entered) return elements;
        const ScriptString lengthName(JSStringCreateWithUTF8CString("length"));
        const JSValueRef length = JSObjectGetProperty(context_, *entered, lengthName.get(), nullptr);
        const double count = length ? JSValueToNumber(context_, length, nullptr) : 0;
        for (unsigned index = 0; index < count && left_ > 0; ++index) {
            const JSValueRef element = JSObjectGetPropertyAtIndex(context_, *entered, index, nullptr);
            elements.push_back(contained(element));
        }
        path_.pop_back();
        return elements;
    }

    Value::Dictionary dictionary(JSValueRef value) {
        Value::Dictionary entries;
        const auto entered = enter(value);
        if (!entered) return entries;
        const PropertyNames names(JSObjectCopyPropertyNames(context_, *entered));
        const std::size_t count = JSPropertyNameArrayGetCount(names.get());
        for (std::size_t index = 0; index < count && left_ > 0; ++index) {
            const JSStringRef name = JSPropertyNameArrayGetNameAtIndex(names.get(), index);
            const JSValueRef property = JSObjectGetProperty(context_, *entered, name, nullptr);
            if (!property || JSValueIsUndefined(context_, property)) continue;
            entries.set(fromScript(name), contained(property));
        }
        path_.pop_back();
        return entries;
    }

  private:
    static constexpr std::size_t kMaximumDepth = 512;

    /// Steps into an object, unless it is none.
    std::optional<JSObjectRef> enter(JSValueRef value) {
        const JSObjectRef object =
            JSValueIsObject(context_, value) ? JSValueToObject(context_, value, nullptr) : nullptr;
        if (!object) return std::nullopt;
        path_.push_back(object);
        return object;
    }

    /// A null pointer stands for a member that throws when it is asked for.
    Value contained(JSValueRef value) {
        --left_;
        if (!value) return nullptr;
        const bool endless = std::ranges::find(path_, value) != path_.end();
        if (endless || (path_.size() >= kMaximumDepth && JSValueIsObject(context_, value))) return nullptr;
        return object(value);
    }

    JSContextRef context_;
    // From the outermost object to the one that is being converted.
    std::vector<JSValueRef> path_;
    // Objects that share members unfold without end otherwise, and an array may claim any length.
    std::size_t left_ = 1'000'000;
};

class ScriptValue final : public JSValue {
  public:
    ScriptValue(std::shared_ptr<OpaqueJSContext> context, JSValueRef value)
        : keeper_(std::move(context)), value_(value) {
        JSValueProtect(keeper_.get(), value_);
    }
    ScriptValue(const ScriptValue&) = delete;
    ScriptValue& operator=(const ScriptValue&) = delete;
    ~ScriptValue() override { JSValueUnprotect(keeper_.get(), value_); }

    [[nodiscard]] bool isUndefined() const override { return JSValueIsUndefined(keeper_.get(), value_); }
    [[nodiscard]] bool isNull() const override { return JSValueIsNull(keeper_.get(), value_); }
    [[nodiscard]] bool isBoolean() const override { return JSValueIsBoolean(keeper_.get(), value_); }
    [[nodiscard]] bool isNumber() const override { return JSValueIsNumber(keeper_.get(), value_); }
    [[nodiscard]] bool isString() const override { return JSValueIsString(keeper_.get(), value_); }
    [[nodiscard]] bool isObject() const override { return JSValueIsObject(keeper_.get(), value_); }
    [[nodiscard]] bool isArray() const override { return JSValueIsArray(keeper_.get(), value_); }

    [[nodiscard]] bool toBool() const override { return JSValueToBoolean(keeper_.get(), value_); }
    [[nodiscard]] double toNumber() const override { return JSValueToNumber(keeper_.get(), value_, nullptr); }
    [[nodiscard]] std::string toString() const override { return textOf(keeper_.get(), value_); }
    [[nodiscard]] Value::Dictionary toDictionary() const override {
        return Conversion(keeper_.get()).dictionary(value_);
    }
    [[nodiscard]] Value::Array toArray() const override { return Conversion(keeper_.get()).array(value_); }
    [[nodiscard]] Value toObject() const override { return Conversion(keeper_.get()).object(value_); }

  private:
    std::shared_ptr<OpaqueJSContext> keeper_;
    JSValueRef value_;
};

}  // namespace

struct JSContext::Engine {
    std::shared_ptr<OpaqueJSContext> context{JSGlobalContextCreate(nullptr),
                                             ReleasedBy<JSGlobalContextRelease>()};
};

JSContext::JSContext() : engine_(std::make_unique<Engine>()) {}
JSContext::~JSContext() = default;

std::shared_ptr<JSValue> JSContext::evaluateScript(std::string_view script) {
    const JSContextRef context = engine_->context.get();
    JSValueRef thrown = nullptr;
    JSValueRef value = JSEvaluateScript(context, toScript(script).get(), nullptr, nullptr, 1, &thrown);
    exception_ = thrown ? textOf(context, thrown) : std::string();
    if (!value) value = JSValueMakeUndefined(context);
    return std::make_shared<ScriptValue>(engine_->context, value);
}

}  // namespace zqcore::platform
