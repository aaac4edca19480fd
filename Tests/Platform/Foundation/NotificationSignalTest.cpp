#include "Platform/Foundation/NotificationSignal.h"

#include <gtest/gtest.h>

#include <string>

#include "Platform/Combine/WillDeallocSignal.h"

namespace zqcore::platform {
namespace {

TEST(NotificationSignalTest, SendsWhatIsPostedAboutItsObjectUntilItEnds) {
    NSNotificationCenter center;
    auto object = makeObject<NSObject>();
    const auto other = makeObject<NSObject>();
    std::string seen;
    const auto note = [&](const char* what) {
        return [&seen, what](const std::shared_ptr<const NSNotification>& notification) {
            ASSERT_TRUE(notification);
            EXPECT_EQ(notification->name(), "moved");
            seen += what;
        };
    };
    const auto signal = rac_addObserverForName(center, "moved", object);
    signal.takeUntil(rac_willDeallocSignal(other)).subscribeNext(note("a"));
    const auto disposable = signal.subscribeNext(note("b"));
    rac_addObserverForName(center, "moved", nullptr).subscribeNext(note("*"));
    EXPECT_EQ(object.use_count(), 1) << "nothing keeps the object";

    center.postNotificationName("moved", object);
    EXPECT_EQ(seen, "ab*");
    center.postNotificationName("resized", object);
    center.postNotificationName("moved", other);
    EXPECT_EQ(seen, "ab**");
    disposable->dispose();
    center.postNotificationName("moved", object);
    EXPECT_EQ(seen, "ab**a*");

    object.reset();
    signal.subscribeNext(note("late"));
    center.postNotificationName("moved");
    EXPECT_EQ(seen, "ab**a**") << "an object that is gone does not become anyone";
}

}  // namespace
}  // namespace zqcore::platform
