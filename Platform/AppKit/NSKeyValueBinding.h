#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// An object whose values go by names, as the models have that views are bound to. A key path goes from
/// object to object: "account.isActive". Threads: main thread. Lifetime: as the object that has it as a base.
/// Failure: an unknown name reads null, and setting it gives false.
class ZQ_EXPORT NSKeyValueCoding {
  public:
    virtual ~NSKeyValueCoding() = default;

    [[nodiscard]] virtual Value valueForKey(std::string_view /*key*/) const { return {}; }
    virtual bool setValueForKey(const Value& /*value*/, std::string_view /*key*/) { return false; }
    /// The object that a path goes on with at `key`.
    [[nodiscard]] virtual std::shared_ptr<NSKeyValueCoding> objectForKey(std::string_view /*key*/) const {
        return nullptr;
    }

    [[nodiscard]] Value valueForKeyPath(std::string_view keyPath) const;
    bool setValueForKeyPath(const Value& value, std::string_view keyPath);

    /// To be called by the class after a change: what is bound to the value follows.
    void didChangeValueForKey(std::string_view key);
    /// Calls `changed` after each change of the value at the path's end; for as long as `token` lives.
    void observeValueForKeyPath(std::string_view keyPath, const std::shared_ptr<void>& token,
                                std::function<void()> changed);

  private:
    struct Observer {
        std::string key;
        std::weak_ptr<void> token;
        std::function<void()> changed;
    };
    std::vector<Observer> observers_;
};

/// Turns a model's value into a view's and, where it can, back. Threads: main thread. Lifetime: one with a
/// name stays until the name is taken back.
class ZQ_EXPORT NSValueTransformer : public NSObject {
  public:
    [[nodiscard]] virtual Value transformedValue(const Value& value) const { return value; }
    [[nodiscard]] virtual bool allowsReverseTransformation() const { return false; }
    [[nodiscard]] virtual Value reverseTransformedValue(const Value& value) const { return value; }

    /// Null takes the name back.
    static void setValueTransformer(std::shared_ptr<NSValueTransformer> transformer, std::string name);
    [[nodiscard]] static std::shared_ptr<NSValueTransformer> valueTransformerForName(std::string_view name);
};

/// The platform's binding options.
struct NSBindingOptions {
    std::shared_ptr<NSValueTransformer> valueTransformer;  ///< "NSValueTransformer"
    std::string valueTransformerName;  ///< "NSValueTransformerName"; used without the other

    /// The one given or named; null without both.
    [[nodiscard]] ZQ_EXPORT std::shared_ptr<NSValueTransformer> transformer() const;
};

/// What a value of a view is bound to; the model is held weakly.
struct NSBindingInfo {
    std::weak_ptr<NSKeyValueCoding> observedObject;  ///< "NSObservedObject"
    std::string observedKeyPath;                     ///< "NSObservedKeyPath"
    NSBindingOptions options;                        ///< "NSOptions"
};

}  // namespace zqcore::platform
