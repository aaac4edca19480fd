#include "Platform/Base/NSObject.h"

#include <cxxabi.h>

#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <typeinfo>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zqcore::platform {

struct NSObject::SideTable {
    std::mutex mutex;
    std::unordered_map<const void*, std::any> values;
    std::vector<std::move_only_function<void()>> deallocHandlers;
};

NSObject::~NSObject() { delete sideTable_.load(std::memory_order_acquire); }

NSObject::SideTable& NSObject::sideTable() const {
    if (SideTable* present = sideTable_.load(std::memory_order_acquire)) return *present;
    auto made = std::make_unique<SideTable>();
    SideTable* expected = nullptr;
    if (sideTable_.compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel))
        return *made.release();
    return *expected;
}

void NSObject::setAssociatedValue(const void* key, std::any value) {
    SideTable& table = sideTable();
    // The old value may run foreign destructors, so it goes after the lock.
    std::any old;
    const std::lock_guard lock(table.mutex);
    if (const auto found = table.values.find(key); found != table.values.end()) {
        old = std::move(found->second);
        if (value.has_value()) {
            found->second = std::move(value);
        } else {
            table.values.erase(found);
        }
    } else if (value.has_value()) {
        table.values.emplace(key, std::move(value));
    }
}

std::any NSObject::associatedValue(const void* key) const {
    SideTable* table = sideTable_.load(std::memory_order_acquire);
    if (!table) return {};
    const std::lock_guard lock(table->mutex);
    const auto found = table->values.find(key);
    return found == table->values.end() ? std::any{} : found->second;
}

void NSObject::addDeallocHandler(std::move_only_function<void()> handler) {
    SideTable& table = sideTable();
    const std::lock_guard lock(table.mutex);
    table.deallocHandlers.push_back(std::move(handler));
}

void NSObject::willDealloc() noexcept {
    SideTable* table = sideTable_.load(std::memory_order_acquire);
    if (!table) return;
    for (auto& handler : std::exchange(table->deallocHandlers, {})) handler();
}

std::string NSObject::description() const {
    int status = 0;
    char* name = abi::__cxa_demangle(typeid(*this).name(), nullptr, nullptr, &status);
    char address[24];
    std::snprintf(address, sizeof address, ": %p>", static_cast<const void*>(this));
    std::string text = std::string("<") + (name ? name : typeid(*this).name()) + address;
    std::free(name);
    return text;
}

}  // namespace zqcore::platform
