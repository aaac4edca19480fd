#include "Classes/Core/Utility/AppKit/DrakMode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Classes/Core/Utility/AppKit/DarkModeManager.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Base/NSLog.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class Painted final : public NSObject {
  public:
    std::string painted;
};

class DrakModeTest : public testing::Test {
  protected:
    DrakModeTest() {
        DarkModeManager::shared()->observeAgainForTesting();
        ui.turn();
    }
    std::shared_ptr<RACDisposable> follow() {
        return DrakMode::execute(
            thing, [](Painted& it) { it.painted += "light "; }, [](Painted& it) { it.painted += "dark "; });
    }

    testkit::HeadlessApplication ui;
    std::shared_ptr<Painted> thing = makeObject<Painted>();
};

TEST_F(DrakModeTest, FollowsTheAppearanceOneTurnLater) {
    follow();
    EXPECT_EQ(thing->painted, "light ") << "the first comes inside the call";
    ui.display().setAppearance(DisplayAppearance::dark);
    EXPECT_FALSE(DarkModeManager::shared()->isDarkMode()) << "read one turn later";
    ui.turn();
    EXPECT_TRUE(DarkModeManager::shared()->isDarkMode());
    EXPECT_EQ(thing->painted, "light dark ");

    ui.display().setAppearance(DisplayAppearance::light);
    ui.display().setAppearance(DisplayAppearance::dark);
    ui.turn();
    EXPECT_EQ(thing->painted, "light dark ") << "what ends where it began is no change";
}

TEST_F(DrakModeTest, EndsByDisposableOrWithTheObject) {
    const auto disposable = follow();
    auto second = makeObject<Painted>();
    int painted = 0;
    const auto count = [&](Painted&) { ++painted; };
    DrakMode::execute(second, count, count);
    second.reset();
    disposable->dispose();
    ui.display().setAppearance(DisplayAppearance::dark);
    ui.turn();
    EXPECT_EQ(thing->painted, "light ");
    EXPECT_EQ(painted, 1) << "that object is gone";
    DrakMode::execute(std::shared_ptr<Painted>(), count, count);
    EXPECT_EQ(painted, 1);
}

TEST_F(DrakModeTest, AClosureThatThrowsKeepsNobodyElseFromTheChange) {
    static std::vector<std::string> lines;
    setNSLogHandler([](std::string_view line) { lines.emplace_back(line); });
    const auto fail = [](Painted&) { throw 1; };
    const auto other = makeObject<Painted>();
    DrakMode::execute(other, fail, fail);
    follow();
    ui.display().setAppearance(DisplayAppearance::dark);
    ui.turn();
    setNSLogHandler(nullptr);
    EXPECT_EQ(thing->painted, "light dark ");
    EXPECT_EQ(lines, std::vector<std::string>(2, "appearance closure threw what is no exception"));
}

TEST_F(DrakModeTest, FromAnotherThreadItCallsOnTheMainOne) {
    bool onMain = false;
    DispatchQueue::global()->async(
        [&] { DrakMode::execute(thing, [&](Painted&) { onMain = isMainThread(); }, {}); });
    ui.turn();
    EXPECT_TRUE(onMain);
}

}  // namespace
}  // namespace zqcore
