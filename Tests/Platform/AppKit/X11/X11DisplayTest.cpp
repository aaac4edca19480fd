#include <cstdlib>

#include "Platform/AppKit/DefaultDisplay.h"
#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Tests/Platform/AppKit/X11/X11DisplayFixture.h"

namespace zqcore::platform {

TEST_F(X11DisplayTest, ShowsPixelsWhereTheFrameLies) {
    Pixels pixels = plain(100, 50, 0xFF2040C0);
    pixels.values[0] = 0xFFFF0000;  // the upper left one
    const auto window = show(card({{200, 300}, {100, 50}}), pixels);
    ASSERT_GT(window, 0);
    // y-up: the upper edge at 350 is the row 250 from the top.
    EXPECT_EQ(pixel(200, 250), 0xFF0000U);
    EXPECT_EQ(pixel(299, 299), 0x2040C0U);
    EXPECT_EQ(pixel(300, 299), 0U);
    EXPECT_EQ(pixel(299, 300), 0U);
    EXPECT_EQ(pixel(199, 250), 0U);

    // Another application's window comes over it and goes; nobody needs to draw anew.
    const auto other = server->addWindow(150, 240, 200, 100, 0x00FF00);
    EXPECT_EQ(pixel(250, 280), 0x00FF00U);
    server->removeWindow(other);
    EXPECT_EQ(pixel(250, 280), 0x2040C0U);
    EXPECT_TRUE(heard.wantPixels.empty());

    display->updateWindow(window, card({{0, 0}, {100, 50}}));
    EXPECT_EQ(pixel(0, 550), 0xFF0000U);
    EXPECT_EQ(pixel(250, 280), 0U);
    display->hideWindow(window);
    EXPECT_EQ(pixel(0, 550), 0U);
    display->orderFront(window, true);
    EXPECT_EQ(pixel(0, 550), 0xFF0000U) << "shown again with the pixels it had";
    display->closeWindow(window);
    EXPECT_EQ(pixel(0, 550), 0U);
}

TEST_F(X11DisplayTest, PresentsAChangedPartOverWhatWasThere) {
    const auto window = show(card({{200, 300}, {100, 50}}), plain(100, 50, 0xFF2040C0));
    const Pixels next = plain(100, 50, 0xFFAA0000);
    DisplaySurface surface = next.surface();
    surface.changed = {10, 20, 30, 5};
    display->present(window, surface);
    EXPECT_EQ(pixel(210, 270), 0xAA0000U);
    EXPECT_EQ(pixel(239, 274), 0xAA0000U);
    for (const auto& [x, y] : {std::pair{209, 270}, {240, 274}, {210, 269}, {239, 275}})
        EXPECT_EQ(pixel(x, y), 0x2040C0U) << x << ", " << y;
    surface.changed = {90, 40, 1000, 1000};
    display->present(window, surface);
    EXPECT_EQ(pixel(299, 299), 0xAA0000U);
    EXPECT_EQ(pixel(289, 299), 0x2040C0U);
    // Another size has no old pixels to be put over.
    display->updateWindow(window, card({{200, 300}, {100, 40}}));
    surface.changed = {0, 0, 1, 1};
    display->present(window, surface);
    EXPECT_EQ(pixel(250, 275), 0xAA0000U);
}

TEST_F(X11DisplayTest, AsksForNoShadow) {
    auto state = card({{200, 300}, {100, 50}});
    state.hasShadow = false;
    const auto window = show(state, plain(100, 50, 0xFF2040C0));
    const auto extents = [&] {
        settle();
        return server->property(static_cast<std::uint32_t>(window), "_GTK_FRAME_EXTENTS");
    };
    EXPECT_EQ(extents(), (std::vector<std::uint32_t>{0, 0, 0, 0}));
    state.hasShadow = true;
    display->updateWindow(window, state);
    EXPECT_TRUE(extents().empty());
}

TEST_F(X11DisplayTest, KeepsTheOrderOfLevels) {
    const auto high = show(card({{100, 100}, {50, 50}}, NSStatusWindowLevel), plain(50, 50, 0xFFAA0000));
    const auto low = show(card({{100, 100}, {50, 50}}, NSFloatingWindowLevel), plain(50, 50, 0xFF00AA00));
    const auto other = show(card({{100, 100}, {50, 50}}, NSFloatingWindowLevel), plain(50, 50, 0xFF0000AA));
    EXPECT_EQ(pixel(120, 470), 0xAA0000U) << "the higher level, though shown first";
    display->hideWindow(high);
    EXPECT_EQ(pixel(120, 470), 0x0000AAU);
    display->order(low, true, other);
    EXPECT_EQ(pixel(120, 470), 0x00AA00U);
    display->order(low, false, 0);
    EXPECT_EQ(pixel(120, 470), 0x0000AAU);
    display->updateWindow(low, card({{100, 100}, {50, 50}}, NSPopUpMenuWindowLevel));
    EXPECT_EQ(pixel(120, 470), 0x00AA00U);
}

TEST_F(X11DisplayTest, FollowsMonitorsWorkAreaAndScale) {
    ASSERT_EQ(display->screens().size(), 1U);
    EXPECT_EQ(display->screens()[0].frame, (CGRect{{0, 0}, {kWidth, kHeight}}));
    EXPECT_EQ(display->screens()[0].visibleFrame, display->screens()[0].frame) << "nobody keeps a work area";
    const auto window = show(card({{100, 100}, {50, 50}}), plain(50, 50, 0xFF00AA00));

    // The lower one is primary, so the origin moves up and the window's frame down.
    if (server->run({"xrandr", "--setmonitor", "upper", "800/211x200/53+0+0", "none"}) != 0)
        GTEST_SKIP() << "xrandr isn't installed here";
    ASSERT_EQ(server->run({"xrandr", "--setmonitor", "*lower", "800/211x300/79+0+200", "screen"}), 0);
    ASSERT_TRUE(waitFor([&] { return display->screens().size() == 2; }));
    EXPECT_GT(heard.screenChanges, 0);
    auto screens = display->screens();
    EXPECT_EQ(screens[0].frame, (CGRect{{0, 0}, {800, 300}}));
    EXPECT_EQ(screens[1].frame, (CGRect{{0, 300}, {800, 200}}));
    ASSERT_TRUE(waitFor([&] { return !heard.moves.empty(); }));
    EXPECT_EQ(heard.moves.back(), (CGRect{{100, 0}, {50, 50}}));
    EXPECT_EQ(pixel(100, 450), 0x00AA00U) << "it stays on the glass";

    // A panel of 30 pixels above and one of 40 below; each monitor has its part.
    server->setProperty(server->root(), "_NET_WORKAREA", "CARDINAL", {0, 30, 800, 430});
    ASSERT_TRUE(waitFor([&] { return display->screens()[0].visibleFrame.size.height != 300; }));
    screens = display->screens();
    EXPECT_EQ(screens[0].visibleFrame, (CGRect{{0, 40}, {800, 260}}));
    EXPECT_EQ(screens[1].visibleFrame, (CGRect{{0, 300}, {800, 170}}));

    server->setText(server->root(), "RESOURCE_MANAGER", "*font: fixed\nXft.dpi:\t192\n");
    ASSERT_TRUE(waitFor([&] { return display->screens()[0].scale == 2; }));
    EXPECT_EQ(display->screens()[0].frame, (CGRect{{0, 0}, {400, 150}}));
    display->updateWindow(window, card({{10, 20}, {50, 30}}));
    const Pixels pixels = plain(100, 60, 0xFFCC00CC);
    DisplaySurface surface = pixels.surface();
    surface.scale = 2;
    display->present(window, surface);
    EXPECT_EQ(pixel(20, 400), 0xCC00CCU);
    EXPECT_EQ(pixel(119, 459), 0xCC00CCU);
    EXPECT_NE(pixel(120, 460), 0xCC00CCU);
    const auto picture = display->capture({{10, 20}, {50, 30}}, {window});
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 100);
}

TEST_F(X11DisplayTest, CutsOutWhatNobodyBlends) {
    server->addWindow(100, 100, 200, 200, 0x123456);
    Pixels pixels = plain(100, 100, 0);
    for (std::size_t y = 25; y < 75; ++y)
        for (std::size_t x = 25; x < 75; ++x) pixels.values[y * 100 + x] = 0xFF00AA00;
    pixels.values[25 * 100 + 24] = 0xC0006000;  // a soft edge
    auto state = card({{120, 380}, {100, 100}});
    state.opaque = false;
    const auto window = show(state, pixels);
    EXPECT_EQ(pixel(125, 125), 0x123456U);
    EXPECT_EQ(pixel(145, 145), 0x00AA00U);
    EXPECT_EQ(pixel(195, 194), 0x123456U);
    EXPECT_EQ(pixel(144, 145), 0x008000U) << "its own colour, not a dark one";
    state.alpha = 0;
    display->updateWindow(window, state);
    EXPECT_EQ(pixel(145, 145), 0x123456U);
    state.alpha = 0.5;
    display->updateWindow(window, state);
    EXPECT_EQ(pixel(145, 145), 0x00AA00U);
    EXPECT_EQ(server->property(static_cast<std::uint32_t>(window), "_NET_WM_WINDOW_OPACITY"),
              std::vector{0x7FFFFFFFU});

    // With a compositing manager the shape goes, and the pixels are wanted with their alpha.
    server->pretendCompositor(true);
    ASSERT_TRUE(waitFor([&] { return !heard.wantPixels.empty(); }));
    EXPECT_EQ(heard.wantPixels, std::vector{window});
    display->present(window, pixels.surface());
    const auto picture = display->capture(state.frame, {window});
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->pixel(0, 0), 0U);
    EXPECT_EQ(picture->pixel(50, 50), 0x80005500U) << "under the window's alpha";
    server->pretendCompositor(false);
    ASSERT_TRUE(waitFor([&] { return heard.wantPixels.size() == 2; }));
}

TEST_F(X11DisplayTest, ListsAndCapturesWindows) {
    const auto foreign = static_cast<DisplayWindowNumber>(server->addWindow(100, 100, 100, 100, 0x123456));
    server->setText(static_cast<std::uint32_t>(foreign), "WM_NAME", "Reader");
    server->setText(static_cast<std::uint32_t>(foreign), "WM_CLASS", std::string("reader\0Reader App\0", 18));
    server->setProperty(static_cast<std::uint32_t>(foreign), "_NET_WM_PID", "CARDINAL", {4711});
    auto state = card({{150, 350}, {100, 100}});
    state.title = "Tip";
    const auto window = show(state, plain(100, 100, 0xFF00AA00));
    const auto hidden = display->openWindow(card({{0, 0}, {10, 10}}));

    const auto list = display->windowList(true);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].number, window);
    EXPECT_EQ(list[0].name, "Tip");
    EXPECT_EQ(list[0].level, NSFloatingWindowLevel);
    EXPECT_EQ(list[1].number, foreign);
    EXPECT_EQ(list[1].ownerName, "Reader App");
    EXPECT_EQ(list[1].ownerProcess, 4711);
    EXPECT_EQ(list[1].name, "Reader");
    EXPECT_EQ(list[1].frame, (CGRect{{100, 400}, {100, 100}}));
    const auto all = display->windowList(false);
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[2].number, hidden);
    EXPECT_FALSE(all[2].onScreen);

    const CGRect both{{100, 350}, {150, 150}};
    auto picture = display->capture(both, {window, foreign});
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->pixel(0, 0), 0xFF123456U);
    EXPECT_EQ(picture->pixel(60, 60), 0xFF00AA00U) << "ours is in front";
    EXPECT_EQ(picture->pixel(149, 0), 0U);
    state.sharesPixels = false;
    display->updateWindow(window, state);
    picture = display->capture(both, {window});
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->pixel(60, 60), 0U);
}

TEST_F(X11DisplayTest, SurvivesTheEndOfItsServer) {
    const auto window = show(card({{100, 100}, {50, 50}}), plain(50, 50, 0xFF00AA00));
    display->setReportsOutsideEvents(true);
    server->stop();
    // Writing to it before the loss was told must not end the process either.
    for (int time = 0; time < 100; ++time) display->updateWindow(window, card({{1.0 * time, 0}, {50, 50}}));
    ASSERT_TRUE(waitFor([&] { return !heard.losses.empty(); }));
    EXPECT_TRUE(display->isLost());
    EXPECT_EQ(display->openWindow(card({{0, 0}, {10, 10}})), 0);
    display->orderFront(window, true);
    display->focusWindow(window);
    display->present(window, plain(50, 50, 0xFF00AA00).surface());
    display->closeWindow(window);
    EXPECT_EQ(display->windowAt({10, 10}), 0);
    EXPECT_TRUE(display->windowList(false).empty());
    EXPECT_FALSE(display->capture({{0, 0}, {10, 10}}, {window}));
    EXPECT_FALSE(display->screens().empty());
    EXPECT_EQ(heard.losses.size(), 1U);
}

TEST_F(X11DisplayTest, IsTheDefaultWhereItsServerCanBeReached) {
    ::setenv("DISPLAY", server->display().c_str(), 1);
    EXPECT_TRUE(std::dynamic_pointer_cast<X11Display>(openDefaultDisplay()));
    server->stop();
    EXPECT_TRUE(std::dynamic_pointer_cast<HeadlessDisplay>(openDefaultDisplay()));
    ::unsetenv("DISPLAY");
    EXPECT_TRUE(std::dynamic_pointer_cast<HeadlessDisplay>(openDefaultDisplay()));
}

TEST_F(X11DisplayTest, LivesWithAWindowManager) {
    const auto manager = server->start({"openbox"});
    if (!manager) GTEST_SKIP() << "openbox isn't installed here";
    ASSERT_TRUE(
        waitFor([&] { return !server->property(server->root(), "_NET_SUPPORTING_WM_CHECK").empty(); }));
    const auto other = server->addWindow(0, 0, 50, 50, 0);
    server->focus(other);
    DisplayWindowState titled = card({{300, 300}, {100, 100}}, NSNormalWindowLevel);
    titled.styleMask = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskResizable;
    const auto window = show(titled, plain(100, 100, 0xFF0000AA));
    const auto tip = show(card({{320, 320}, {20, 20}}), plain(20, 20, 0xFF00AA00));
    const auto managed = [&] {
        // A request that comes while it starts lies in its queue until the next event.
        server->setProperty(server->root(), "_ZQ_NUDGE", "CARDINAL", {1});
        return server->property(server->root(), "_NET_CLIENT_LIST_STACKING") ==
               std::vector{static_cast<std::uint32_t>(window)};
    };
    ASSERT_TRUE(waitFor([&] { return managed() && pixel(350, 220) == 0x0000AA; }));
    EXPECT_EQ(pixel(330, 270), 0x00AA00U) << "the tip is over it";
    EXPECT_TRUE(waitFor([&] {
        return display->windowAt({310, 310}) == window;
    })) << "inside of the manager's frame";
    EXPECT_EQ(display->windowAt({330, 330}), tip);
    EXPECT_TRUE(heard.moves.empty()) << "where the program wanted it";
    EXPECT_EQ(server->focusedWindow(), other) << "showing is not focusing";
    EXPECT_TRUE(display->isOnActiveSpace(window));

    display->focusWindow(window);
    ASSERT_TRUE(waitFor([&] { return !heard.focus.empty() && heard.focus.back() == window; }));
    EXPECT_EQ(pixel(330, 270), 0x00AA00U) << "raising what it manages leaves ours in front";
    titled.frame = {{200, 200}, {120, 110}};
    display->updateWindow(window, titled);
    display->present(window, plain(120, 110, 0xFF0000AA).surface());
    ASSERT_TRUE(waitFor([&] { return pixel(201, 399) == 0x0000AA; }));
    const auto list = display->windowList(true);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].number, tip);
    EXPECT_EQ(list[1].number, window);
    EXPECT_EQ(list[1].frame, titled.frame);
}

TEST_F(X11DisplayTest, BlendsUnderACompositingManager) {
    server->addWindow(100, 100, 200, 200, 0x804020);
    auto state = card({{120, 380}, {100, 100}});
    state.opaque = false;
    const auto window = show(state, plain(100, 100, 0x80000080));
    const auto manager = server->start({"picom", "--config", "/dev/null", "--backend", "xrender"});
    if (!manager) GTEST_SKIP() << "picom isn't installed here";
    ASSERT_TRUE(waitFor([&] { return !heard.wantPixels.empty(); }));
    display->present(window, plain(100, 100, 0x80000080).surface());
    const auto near = [&](std::uint32_t color) {
        const std::uint32_t there = pixel(150, 150);
        for (const int shift : {16, 8, 0})
            if (std::abs(static_cast<int>(there >> shift & 0xFF) - static_cast<int>(color >> shift & 0xFF)) >
                3)
                return false;
        return true;
    };
    EXPECT_TRUE(waitFor([&] { return near(0x402090); })) << std::hex << pixel(150, 150);
    state.alpha = 0.5;
    display->updateWindow(window, state);
    EXPECT_TRUE(waitFor([&] { return near(0x603058); })) << std::hex << pixel(150, 150);
}

TEST_F(X11DisplayTest, WindowsStayOnTheirDesktop) {
    server->setProperty(server->root(), "_NET_CURRENT_DESKTOP", "CARDINAL", {2});
    const auto bound = show(card({{100, 100}, {50, 50}}), plain(50, 50, 0xFF00AA00));
    auto state = card({{200, 100}, {50, 50}});
    state.collectionBehavior = NSWindowCollectionBehaviorCanJoinAllSpaces;
    const auto everywhere = show(state, plain(50, 50, 0xFF0000AA));
    EXPECT_TRUE(display->isOnActiveSpace(bound));
    server->setProperty(server->root(), "_NET_CURRENT_DESKTOP", "CARDINAL", {0});
    ASSERT_TRUE(waitFor([&] { return pixel(120, 470) == 0; }));
    EXPECT_FALSE(display->isOnActiveSpace(bound));
    EXPECT_TRUE(display->isOnActiveSpace(everywhere));
    EXPECT_EQ(pixel(220, 470), 0x0000AAU);
    server->setProperty(server->root(), "_NET_CURRENT_DESKTOP", "CARDINAL", {2});
    EXPECT_TRUE(waitFor([&] { return pixel(120, 470) == 0x00AA00; }));
}

}  // namespace zqcore::platform
