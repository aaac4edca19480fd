#include <utility>

#include "Platform/Keyboard/Sauce.h"
#include "Tests/Platform/AppKit/X11/X11DisplayFixture.h"

namespace zqcore::platform {

TEST_F(X11DisplayTest, TakesTheFocusOnlyWhenAsked) {
    const auto other = server->addWindow(0, 0, 50, 50, 0);
    server->focus(other);
    show(card({{100, 100}, {50, 50}}), plain(50, 50, 0xFF00AA00));
    DisplayWindowState titled = card({{300, 300}, {50, 50}}, NSNormalWindowLevel);
    titled.styleMask = NSWindowStyleMaskTitled;
    const auto window = show(titled, plain(50, 50, 0xFF0000AA));
    EXPECT_EQ(server->focusedWindow(), other);

    display->focusWindow(window);
    ASSERT_TRUE(waitFor([&] { return !heard.focus.empty(); }));
    EXPECT_EQ(heard.focus, std::vector{window});
    EXPECT_EQ(server->focusedWindow(), static_cast<std::uint32_t>(window));
    server->pressKey(38);  // the key of A
    const auto* down = next(NSEventType::keyDown);
    ASSERT_TRUE(down);
    EXPECT_EQ(down->window, window);
    EXPECT_FALSE(down->outside);
    EXPECT_EQ(down->keyCode, 0);
    EXPECT_EQ(down->characters, "a");

    server->focus(other);
    ASSERT_TRUE(waitFor([&] { return heard.focus.size() == 2; }));
    EXPECT_EQ(heard.focus.back(), 0);
    EXPECT_EQ(heard.activity, std::vector{false});
    // One that isn't shown yet gets the focus with its showing.
    const auto late = display->openWindow(titled);
    display->focusWindow(late);
    settle();
    EXPECT_EQ(server->focusedWindow(), other);
    display->orderFront(late, true);
    ASSERT_TRUE(waitFor([&] { return heard.focus.back() == late; }));
    EXPECT_EQ(heard.activity, (std::vector{false, true}));
    display->focusWindow(0);
    settle();
    EXPECT_NE(server->focusedWindow(), static_cast<std::uint32_t>(late));
}

TEST_F(X11DisplayTest, LetsClicksThroughToTheWindowBelow) {
    server->addWindow(100, 100, 200, 200, 0x123456);
    auto state = card({{100, 300}, {200, 200}});
    state.ignoresMouse = true;
    const auto window = show(state, plain(200, 200, 0xFF00AA00));
    server->movePointer(200, 200);
    server->click(1);
    EXPECT_EQ(server->pressesHeard(), 1);
    EXPECT_EQ(display->windowAt({200, 400}), 0);
    state.ignoresMouse = false;
    display->updateWindow(window, state);
    settle();
    server->click(1);
    EXPECT_EQ(server->pressesHeard(), 1);
    const auto* down = next(NSEventType::leftMouseDown);
    ASSERT_TRUE(down);
    EXPECT_EQ(down->window, window);
    EXPECT_EQ(down->location, (CGPoint{200, 400}));
    EXPECT_EQ(display->windowAt({200, 400}), window);
}

TEST_F(X11DisplayTest, CountsClicksNamesButtonsAndHoldsTheGrab) {
    const auto window = show(card({{100, 100}, {100, 100}}), plain(100, 100, 0xFF00AA00));
    server->movePointer(150, 450);
    server->click(1);
    server->click(1);
    server->click(3);
    server->pressButton(2);
    server->movePointer(400, 100);
    server->releaseButton(2);
    ASSERT_TRUE(next(NSEventType::otherMouseUp));
    std::vector<std::pair<NSEventType, int>> told;
    for (const DisplayEvent& event : heard.events) {
        if (event.type == NSEventType::mouseMoved) continue;
        told.emplace_back(event.type, event.clickCount);
        EXPECT_EQ(event.window, window);
    }
    using enum NSEventType;
    EXPECT_EQ(told, (std::vector<std::pair<NSEventType, int>>{{leftMouseDown, 1},
                                                              {leftMouseUp, 1},
                                                              {leftMouseDown, 2},
                                                              {leftMouseUp, 2},
                                                              {rightMouseDown, 1},
                                                              {rightMouseUp, 1},
                                                              {otherMouseDown, 1},
                                                              {otherMouseDragged, 0},
                                                              {otherMouseUp, 1}}));
    EXPECT_EQ(heard.events.back().windowUnderPointer, 0);
    EXPECT_EQ(heard.events.back().location, (CGPoint{400, 500}));
    EXPECT_EQ(heard.events.back().buttonNumber, 2);
}

TEST_F(X11DisplayTest, TellsOutsideEventsOnlyWhileAsked) {
    const auto window = show(card({{100, 100}, {100, 100}}), plain(100, 100, 0xFF00AA00));
    const auto wander = [&](bool hears) {
        server->movePointer(400, 100);
        ASSERT_TRUE(!hears || waitFor([&] { return !heard.events.empty(); }));
        server->click(1);
        server->click(4);
        server->pressKey(56);  // the key of B
        server->releaseKey(56);
        // Comes in any case, and last.
        server->movePointer(150, 450);
        ASSERT_TRUE(waitFor([&] { return !heard.events.empty() && heard.events.back().window == window; }));
    };
    wander(false);
    EXPECT_EQ(heard.events.size(), 1U);
    heard.events.clear();

    display->setReportsOutsideEvents(true);
    settle();
    wander(true);
    std::vector<NSEventType> types;
    for (const DisplayEvent& event : heard.events) types.push_back(event.type);
    using enum NSEventType;
    EXPECT_EQ(types,
              (std::vector{mouseMoved, leftMouseDown, leftMouseUp, scrollWheel, keyDown, keyUp, mouseMoved}));
    ASSERT_EQ(heard.events.size(), 7U);
    for (std::size_t place = 0; place < 6; ++place) {
        EXPECT_TRUE(heard.events[place].outside);
        EXPECT_EQ(heard.events[place].window, 0);
    }
    EXPECT_GT(heard.events[3].scrollingDeltaY, 0);
    EXPECT_EQ(heard.events[4].keyCode, 11);
    EXPECT_EQ(heard.events[4].characters, "b");
    EXPECT_FALSE(heard.events[6].outside) << "ours comes once, as ours";
    heard.events.clear();

    display->setReportsOutsideEvents(false);
    settle();
    wander(true);
    // The way out of the window is told always.
    ASSERT_EQ(heard.events.size(), 2U);
    EXPECT_TRUE(heard.events[0].outside);
    EXPECT_EQ(heard.events[0].type, mouseMoved);
}

TEST_F(X11DisplayTest, NamesKeysByTheServersLayout) {
    EXPECT_EQ(display->keyText(0), "a");
    EXPECT_EQ(display->keyText(36), "") << "Return has no text";
    if (server->run({"setxkbmap", "fr"}) != 0) GTEST_SKIP() << "setxkbmap isn't installed here";
    ASSERT_TRUE(waitFor([&] { return display->keyText(0) == "q"; }));
    EXPECT_EQ(Sauce::shared().currentKeyCode(Key::q), 0);
    EXPECT_EQ(display->keyText(41), "m");
}

TEST_F(X11DisplayTest, PassesTheWishToClose) {
    DisplayWindowState titled = card({{300, 300}, {50, 50}}, NSNormalWindowLevel);
    titled.styleMask = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable;
    const auto window = show(titled, plain(50, 50, 0xFF0000AA));
    server->requestClose(static_cast<std::uint32_t>(window));
    ASSERT_TRUE(waitFor([&] { return !heard.closing.empty(); }));
    EXPECT_EQ(heard.closing, std::vector{window});
}

}  // namespace zqcore::platform
