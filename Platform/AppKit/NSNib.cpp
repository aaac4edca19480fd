#include "Platform/AppKit/NSNib.h"

#include <map>
#include <utility>

namespace zqcore::platform {

namespace {

std::map<std::string, NSNib::Factory, std::less<>>& factories() {
    static auto& shared = *new std::map<std::string, NSNib::Factory, std::less<>>;
    return shared;
}

}  // namespace

void NSNib::registerNib(std::string name, Factory factory) {
    if (factory) {
        factories().insert_or_assign(std::move(name), std::move(factory));
    } else {
        factories().erase(name);
    }
}

std::optional<std::vector<std::shared_ptr<NSObject>>> NSNib::loadNibNamed(
    std::string_view name, const std::shared_ptr<NSObject>& owner) {
    const auto found = factories().find(name);
    if (found == factories().end()) return std::nullopt;
    const auto make = found->second;
    return make(owner);
}

}  // namespace zqcore::platform
