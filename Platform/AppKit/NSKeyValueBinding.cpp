#include "Platform/AppKit/NSKeyValueBinding.h"

#include <map>
#include <optional>
#include <utility>

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSView.h"

namespace zqcore::platform {

namespace {

std::map<std::string, std::shared_ptr<NSValueTransformer>, std::less<>>& transformers() {
    static auto& named = *new std::map<std::string, std::shared_ptr<NSValueTransformer>, std::less<>>;
    return named;
}

/// What the path's last key belongs to, kept if it isn't `start` itself; null where the path breaks off.
struct PathEnd {
    std::shared_ptr<NSKeyValueCoding> held;
    NSKeyValueCoding* object;
    std::string_view key;
};

PathEnd endOf(NSKeyValueCoding& start, std::string_view keyPath) {
    PathEnd end{nullptr, &start, keyPath};
    for (auto dot = end.key.find('.'); dot != std::string_view::npos && end.object; dot = end.key.find('.')) {
        end.held = end.object->objectForKey(end.key.substr(0, dot));
        end.object = end.held.get();
        end.key.remove_prefix(dot + 1);
    }
    return end;
}

}  // namespace

Value NSKeyValueCoding::valueForKeyPath(std::string_view keyPath) const {
    const PathEnd end = endOf(const_cast<NSKeyValueCoding&>(*this), keyPath);
    return end.object ? end.object->valueForKey(end.key) : Value{};
}

bool NSKeyValueCoding::setValueForKeyPath(const Value& value, std::string_view keyPath) {
    const PathEnd end = endOf(*this, keyPath);
    return end.object && end.object->setValueForKey(value, end.key);
}

void NSKeyValueCoding::didChangeValueForKey(std::string_view key) {
    std::erase_if(observers_, [](const Observer& observer) { return observer.token.expired(); });
    for (const Observer& observer : std::vector(observers_)) {
        // An earlier one may have ended this one.
        if (observer.key == key && !observer.token.expired())
            guardedCall("observer of a value", observer.changed);
    }
}

void NSKeyValueCoding::observeValueForKeyPath(std::string_view keyPath, const std::shared_ptr<void>& token,
                                              std::function<void()> changed) {
    const PathEnd end = endOf(*this, keyPath);
    if (end.object) end.object->observers_.push_back({std::string(end.key), token, std::move(changed)});
}

void NSValueTransformer::setValueTransformer(std::shared_ptr<NSValueTransformer> transformer,
                                             std::string name) {
    if (transformer) {
        transformers().insert_or_assign(std::move(name), std::move(transformer));
    } else {
        transformers().erase(name);
    }
}

std::shared_ptr<NSValueTransformer> NSValueTransformer::valueTransformerForName(std::string_view name) {
    const auto found = transformers().find(name);
    return found == transformers().end() ? nullptr : found->second;
}

std::shared_ptr<NSValueTransformer> NSBindingOptions::transformer() const {
    return valueTransformer ? valueTransformer
                            : NSValueTransformer::valueTransformerForName(valueTransformerName);
}

/// The bindings of one view by name, each of them the token of its observation.
struct NSView::Bindings {
    std::map<std::string, std::shared_ptr<NSBindingInfo>, std::less<>> named;
};

void NSView::bind(std::string_view binding, const std::shared_ptr<NSKeyValueCoding>& object,
                  std::string keyPath, NSBindingOptions options) {
    unbind(binding);
    if (!object) return;
    if (!bindings_) bindings_ = std::make_shared<Bindings>();
    const auto info = std::make_shared<NSBindingInfo>(object, std::move(keyPath), std::move(options));
    bindings_->named.emplace(binding, info);
    // By its address alone the closure may know the view: the binding, its token, goes with it.
    const auto follow = [this, binding = std::string(binding), weak = std::weak_ptr(info)] {
        const auto held = weak_from_this().lock();
        const auto bound = weak.lock();
        const auto model = bound ? bound->observedObject.lock() : nullptr;
        if (!held || !model) return;
        const Value value = model->valueForKeyPath(bound->observedKeyPath);
        const auto transformer = bound->options.transformer();
        setValueForBinding(transformer ? transformer->transformedValue(value) : value, binding);
    };
    object->observeValueForKeyPath(info->observedKeyPath, info, follow);
    guardedCall("binding", follow);
}

void NSView::unbind(std::string_view binding) {
    if (!bindings_) return;
    const auto found = bindings_->named.find(binding);
    if (found != bindings_->named.end()) bindings_->named.erase(found);
}

std::optional<NSBindingInfo> NSView::infoForBinding(std::string_view binding) const {
    if (!bindings_) return std::nullopt;
    const auto found = bindings_->named.find(binding);
    return found == bindings_->named.end() ? std::nullopt : std::optional(*found->second);
}

}  // namespace zqcore::platform
