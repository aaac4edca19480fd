#include "Platform/Foundation/NSNotificationCenter.h"

#include <gtest/gtest.h>

namespace zqcore::platform {
namespace {

// As a view does that observes its own scroll view.
class Observer final : public NSObject {
  public:
    explicit Observer(NSNotificationCenter& center)
        : center_(center), token_(center.addObserverForName("moved", nullptr, [](const auto&) {})) {}
    ~Observer() override { center_.removeObserver(token_); }

  private:
    NSNotificationCenter& center_;
    std::shared_ptr<NSObject> token_;
};

TEST(NSNotificationCenterTest, WhatGoesWithAForgottenClosureMayLeaveInTurn) {
    NSNotificationCenter center;
    auto object = makeObject<NSObject>();
    auto observer = makeObject<Observer>(center);
    const std::weak_ptr<NSObject> kept = observer;
    center.addObserverForName("resized", object, [observer](const auto&) {});
    observer.reset();
    object.reset();
    EXPECT_FALSE(kept.expired());
    center.addObserverForName("closed", nullptr, [](const auto&) {});
    EXPECT_TRUE(kept.expired()) << "the closure about an object that is gone went with the next observer";
}

}  // namespace
}  // namespace zqcore::platform
