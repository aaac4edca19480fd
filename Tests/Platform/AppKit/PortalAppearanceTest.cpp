#include "Platform/AppKit/PortalAppearance.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Dispatch/RunLoop.h"
#include "TestKit/PrivateBus.h"

namespace zqcore::platform {
namespace {

/// Stands in for the desktop's settings portal: on a connection of its own, driven by the same run loop.
class FakeSettingsPortal {
  public:
    enum class Generation { old, present };

    FakeSettingsPortal(std::uint32_t scheme, Generation generation) : scheme_(scheme) {
        static const sd_bus_vtable kOld[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("Read", "ss", "v", onRead, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_SIGNAL("SettingChanged", "ssv", 0),
            SD_BUS_VTABLE_END,
        };
        static const sd_bus_vtable kPresent[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("ReadOne", "ss", "v", onReadOne, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_SIGNAL("SettingChanged", "ssv", 0),
            SD_BUS_VTABLE_END,
        };
        EXPECT_GE(sd_bus_open_user(&bus_), 0);
        EXPECT_GE(sd_bus_add_object_vtable(bus_, nullptr, kPath, kInterface,
                                           generation == Generation::old ? kOld : kPresent, this),
                  0);
        EXPECT_GE(sd_bus_request_name(bus_, "org.freedesktop.portal.Desktop", 0), 0);
        watch_ = RunLoop::main().watch(sd_bus_get_fd(bus_), 1, [this](short) { process(); });
        process();
    }
    ~FakeSettingsPortal() {
        watch_.reset();
        sd_bus_flush_close_unref(bus_);
    }

    void change(const char* space, const char* key, std::uint32_t scheme) {
        scheme_ = scheme;
        EXPECT_GE(
            sd_bus_emit_signal(bus_, kPath, kInterface, "SettingChanged", "ssv", space, key, "u", scheme), 0);
        EXPECT_GE(sd_bus_flush(bus_), 0);
    }
    int asked = 0;

  private:
    static constexpr const char* kPath = "/org/freedesktop/portal/desktop";
    static constexpr const char* kInterface = "org.freedesktop.portal.Settings";

    void process() {
        while (sd_bus_process(bus_, nullptr) > 0) {
        }
        sd_bus_flush(bus_);
    }
    static int onReadOne(sd_bus_message* call, void* self, sd_bus_error*) {
        auto& portal = *static_cast<FakeSettingsPortal*>(self);
        ++portal.asked;
        return sd_bus_reply_method_return(call, "v", "u", portal.scheme_);
    }
    static int onRead(sd_bus_message* call, void* self, sd_bus_error*) {
        auto& portal = *static_cast<FakeSettingsPortal*>(self);
        ++portal.asked;
        return sd_bus_reply_method_return(call, "v", "v", "u", portal.scheme_);
    }

    sd_bus* bus_ = nullptr;
    std::unique_ptr<RunLoop::Watch> watch_;
    std::uint32_t scheme_;
};

constexpr auto kAppearance = "org.freedesktop.appearance";
constexpr auto kScheme = "color-scheme";
using Generation = FakeSettingsPortal::Generation;
using enum DisplayAppearance;

bool waitFor(const std::function<bool()>& done) {
    return RunLoop::main().runUntil(done, std::chrono::seconds(60));
}

TEST(PortalAppearanceTest, ReadsTheDesktopsSchemeAndFollowsIt) {
    for (const auto generation : {Generation::present, Generation::old}) {
        const testkit::PrivateBus bus;
        FakeSettingsPortal portal(1, generation);
        std::vector<DisplayAppearance> told;
        PortalAppearance appearance([&](DisplayAppearance changed) { told.push_back(changed); });
        EXPECT_EQ(appearance.appearance(), light) << "nothing waits for the answer";
        ASSERT_TRUE(waitFor([&] { return told.size() == 1; }));
        EXPECT_EQ(appearance.appearance(), dark);

        portal.change("org.freedesktop.other", kScheme, 2);
        portal.change(kAppearance, "accent-color", 2);
        portal.change(kAppearance, kScheme, 1);
        portal.change(kAppearance, kScheme, 0);
        ASSERT_TRUE(waitFor([&] { return told.size() == 2; }));
        portal.change(kAppearance, kScheme, 2);
        portal.change(kAppearance, kScheme, 1);
        ASSERT_TRUE(waitFor([&] { return told.back() == dark; }));
        EXPECT_EQ(told.front(), dark);
        EXPECT_EQ(told[1], light);
    }
}

TEST(PortalAppearanceTest, APortalThatComesLaterIsAsked) {
    const testkit::PrivateBus bus;
    std::optional<DisplayAppearance> told;
    PortalAppearance appearance([&](DisplayAppearance changed) { told = changed; });
    EXPECT_EQ(appearance.appearance(), light);
    {
        FakeSettingsPortal portal(1, Generation::present);
        ASSERT_TRUE(waitFor([&] { return told.has_value(); }));
        EXPECT_EQ(told, dark);
    }
    FakeSettingsPortal next(2, Generation::present);
    ASSERT_TRUE(waitFor([&] { return told == light; }));
}

TEST(PortalAppearanceTest, WithoutBusItIsLightAndALostBusKeepsTheLast) {
    {
        const testkit::NoBus none;
        PortalAppearance appearance([](DisplayAppearance) { ADD_FAILURE() << "nothing changes"; });
        EXPECT_EQ(appearance.appearance(), light);
    }
    testkit::PrivateBus bus;
    std::vector<DisplayAppearance> told;
    PortalAppearance appearance([&](DisplayAppearance changed) { told.push_back(changed); });
    {
        FakeSettingsPortal portal(1, Generation::present);
        ASSERT_TRUE(waitFor([&] { return told.size() == 1; }));
    }
    bus.stop();
    while (RunLoop::main().drain()) {
    }
    EXPECT_EQ(appearance.appearance(), dark);
    bus.start();
    FakeSettingsPortal portal(2, Generation::present);
    ASSERT_TRUE(waitFor([&] { return appearance.appearance() == light; }));
}

TEST(PortalAppearanceTest, WhoIsToldMayEndIt) {
    const testkit::PrivateBus bus;
    FakeSettingsPortal portal(1, Generation::present);
    std::unique_ptr<PortalAppearance> appearance;
    bool told = false;
    appearance = std::make_unique<PortalAppearance>([&](DisplayAppearance) {
        told = true;
        appearance.reset();
    });
    ASSERT_TRUE(waitFor([&] { return told; }));
    EXPECT_FALSE(appearance);
}

}  // namespace
}  // namespace zqcore::platform
