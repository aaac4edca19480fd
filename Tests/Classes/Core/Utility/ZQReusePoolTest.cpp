#include "Classes/Core/Utility/ZQReusePool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace zqcore {
namespace {

struct Wrapper {
    int recovered = 0;
    int reused = 0;
};
using Element = std::shared_ptr<Wrapper>;
using Pool = ZQReusePool<Element>;

class ZQReusePoolTest : public testing::Test {
  protected:
    /// Gives so many new objects back.
    std::vector<Element> fill(int count) {
        std::vector<Element> given;
        for (int i = 0; i < count; ++i) given.push_back(std::make_shared<Wrapper>());
        for (const auto& one : given) pool.recoveryObject(one);
        return given;
    }
    [[nodiscard]] static long idle(const std::vector<Element>& given) {
        return std::ranges::count_if(given, [](const Element& one) { return one.use_count() > 1; });
    }
    [[nodiscard]] static int recoveries(const std::vector<Element>& given) {
        int sum = 0;
        for (const auto& one : given) sum += one->recovered;
        return sum;
    }

    int made = 0;
    Pool pool{[this] {
                  ++made;
                  return std::make_shared<Wrapper>();
              },
              [](const Element& one) { ++one->recovered; }, [](const Element& one) { ++one->reused; }};
};

TEST_F(ZQReusePoolTest, GivesAnIdleObjectOrMakesOneAndPreparesBoth) {
    const auto fresh = pool.dequeueReusableObject();
    EXPECT_EQ(made, 1);
    EXPECT_EQ(fresh->reused, 1) << "a new one goes through the handler too";
    pool.recoveryObject(fresh);
    pool.recoveryObject(fresh);
    EXPECT_EQ(fresh->recovered, 2);
    EXPECT_EQ(pool.dequeueReusableObject(), fresh);
    EXPECT_EQ(made, 1);
    EXPECT_NE(pool.dequeueReusableObject(), fresh) << "given back twice, it was in the pool once";
}

TEST_F(ZQReusePoolTest, KeepsAtMostFiveAndPreparesTheSixthInVain) {
    const auto given = fill(6);
    EXPECT_EQ(idle(given), 5);
    EXPECT_EQ(given.back()->recovered, 1);
    EXPECT_EQ(given.back().use_count(), 1);
    pool.clear();
    EXPECT_EQ(idle(given), 0);
    EXPECT_EQ(recoveries(given), 6) << "clearing calls no handler";
}

TEST_F(ZQReusePoolTest, LowersTheLimitWithASecondRecovery) {
    const auto given = fill(5);
    pool.setMaxCacheCount(-1);
    EXPECT_EQ(idle(given), 5) << "a negative limit is ignored";
    pool.setMaxCacheCount(2);
    EXPECT_EQ(idle(given), 2);
    EXPECT_EQ(recoveries(given), 5 + 3);
    pool.setMaxCacheCount(0);
    EXPECT_EQ(idle(given), 0);
    EXPECT_EQ(idle(fill(1)), 0);
}

TEST(ZQReusePoolHandlerTest, HandlersMayCallThePool) {
    Pool* inside = nullptr;
    int recoveries = 0, reuses = 0;
    Pool pool([] { return std::make_shared<Wrapper>(); },
              [&](const Element&) {
                  ++recoveries;
                  inside->clear();
              },
              [&](const Element&) {
                  ++reuses;
                  inside->setMaxCacheCount(3);
              });
    inside = &pool;
    const std::vector<Element> given{std::make_shared<Wrapper>(), std::make_shared<Wrapper>()};
    for (const auto& one : given) pool.recoveryObject(one);
    EXPECT_EQ(recoveries, 2);
    EXPECT_EQ(given.front().use_count(), 1) << "the second one's handler cleared the pool";
    EXPECT_EQ(given.back().use_count(), 2) << "an object goes into the pool after its handler";

    EXPECT_EQ(pool.dequeueReusableObject(), given.back());
    EXPECT_EQ(reuses, 1);
    for (int i = 0; i < 2; ++i) pool.recoveryObject(given.front());
    pool.setMaxCacheCount(0);
    EXPECT_EQ(recoveries, 5) << "what is dropped goes through the handler, which finds no lock held";
    EXPECT_EQ(given.front().use_count(), 1);
}

TEST(ZQReusePoolHandlerTest, ThreadsNeverShareAnObject) {
    Pool pool([] { return std::make_shared<Wrapper>(); });
    std::atomic<int> shared{0};
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < 2000; ++i) {
                    const auto one = pool.dequeueReusableObject();
                    if (std::atomic_ref(one->reused).fetch_add(1) != 0) ++shared;
                    std::atomic_ref(one->reused).fetch_sub(1);
                    pool.recoveryObject(one);
                }
            });
        }
    }
    EXPECT_EQ(shared, 0);
}

}  // namespace
}  // namespace zqcore
