#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>

#include "Platform/Foundation/NSHashTable.h"
#include "Platform/Foundation/NSMapTable.h"

namespace zqcore::platform {
namespace {

int memoryBlocks = 0;

/// Tells how much memory is held for objects, the dead ones that a weak reference still knows included.
template <class T>
struct CountingAllocator {
    using value_type = T;
    CountingAllocator() = default;
    template <class U>
    CountingAllocator(const CountingAllocator<U>&) noexcept {}
    T* allocate(std::size_t count) {
        ++memoryBlocks;
        return std::allocator<T>().allocate(count);
    }
    void deallocate(T* pointer, std::size_t count) noexcept {
        --memoryBlocks;
        std::allocator<T>().deallocate(pointer, count);
    }
    friend bool operator==(CountingAllocator, CountingAllocator) noexcept { return true; }
};

std::shared_ptr<int> makeCounted(int value) {
    return std::allocate_shared<int>(CountingAllocator<int>(), value);
}

TEST(WeakTablesTest, TheDeadGoWithoutBeingAskedAboutAndTheLivingStay) {
    const auto first = makeCounted(-1);
    const auto second = makeCounted(-2);
    NSHashTable<int> set;
    NSMapTable<std::string, int> map;
    set.addObject(first);
    map.setObject(first, "first");
    for (int i = 0; i < 1000; ++i) {
        const auto passing = makeCounted(i);
        set.addObject(passing);
        map.setObject(passing, std::to_string(i));
    }
    set.addObject(second);
    map.setObject(second, "second");
    EXPECT_LT(memoryBlocks, 100);
    EXPECT_EQ(set.allObjects(), (std::vector{first, second}));
    EXPECT_EQ(map.objectForKey("first"), first);
    EXPECT_EQ(map.objectForKey("second"), second);
    EXPECT_EQ(map.objectForKey("999"), nullptr);
}

}  // namespace
}  // namespace zqcore::platform
