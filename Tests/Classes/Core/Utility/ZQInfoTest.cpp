#include "Classes/Core/Utility/ZQInfo.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "Platform/Foundation/MachineFacts.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore {
namespace {

TEST(ZQInfoTest, DictionaryDecidesOnTheSandboxBeforeTheEnvironment) {
    struct Case {
        Value told;
        const char* container;
        bool sandboxed;
    };
    const Case cases[] = {
        {nullptr, nullptr, false}, {nullptr, "", false}, {nullptr, "x", true}, {false, "x", false},
        {true, nullptr, true},     {"NO", "x", true},    {1, nullptr, false},  {0, "x", true},
    };
    for (const auto& [told, container, sandboxed] : cases) {
        Value::Dictionary information;
        if (!told.isNull()) information.set("ZQCore_sandboxed", told);
        const testkit::FakeBundle bundle(information);
        if (container) {
            ::setenv("APP_SANDBOX_CONTAINER_ID", container, 1);
        } else {
            ::unsetenv("APP_SANDBOX_CONTAINER_ID");
        }
        EXPECT_EQ(ZQInfo::appSandboxed(), sandboxed)
            << told.description() << ", " << (container ? container : "unset");
    }
}

TEST(ZQInfoTest, ReadsItsIdentityAtEveryCall) {
    {
        const testkit::FakeBundle bundle(Value::Dictionary{{"CFBundleName", "App"},
                                                           {"CFBundleDisplayName", "An App"},
                                                           {"CFBundleIdentifier", "com.example.app"},
                                                           {"CFBundleShortVersionString", "1.2.3"},
                                                           {"CFBundleVersion", "456"}});
        EXPECT_EQ(ZQInfo::appBundleName(), "App");
        EXPECT_EQ(ZQInfo::appDisplayName(), "An App");
        EXPECT_EQ(ZQInfo::appIdentifier(), "com.example.app");
        EXPECT_EQ(ZQInfo::appFullVersion(), "1.2.3[456]");
    }
    const testkit::FakeBundle bundle(Value::Dictionary{{"CFBundleVersion", 456}, {"CFBundleName", true}});
    EXPECT_EQ(ZQInfo::appFullVersion(), "[]") << "a number is no text";
    EXPECT_EQ(ZQInfo::appBundleName(), "");
    EXPECT_EQ(ZQInfo::appIdentifier(), "");
    EXPECT_FALSE(ZQInfo::appDisplayName());
    EXPECT_EQ(ZQInfo::pid(), ::getpid());
}

/// A small tree in the shape of /sys and /etc.
class ZQInfoMachineTest : public testing::Test {
  protected:
    void addInterface(const std::string& name, const char* subsystem, const std::string& address,
                      const std::string& type = "1", const std::string& assigned = "0") {
        const std::string base = "sys/class/net/" + name;
        root.write(base + "/type", type + "\n");
        root.write(base + "/address", address + "\n");
        root.write(base + "/addr_assign_type", assigned + "\n");
        if (!subsystem) return;
        std::filesystem::create_directories(root / (base + "/device"));
        std::filesystem::create_symlink(std::string("../../../../../bus/") + subsystem,
                                        root / (base + "/device/subsystem"));
    }
    void removeInterface(const std::string& name) {
        std::filesystem::remove_all(root / ("sys/class/net/" + name));
    }

    void useMachine(const std::string& machine) {
        MachineFacts::installForTesting(nullptr);
        facts = MachineFacts::belowRoot(root.path(), machine);
        MachineFacts::installForTesting(facts.get());
    }
    void SetUp() override { useMachine("x86_64"); }
    void TearDown() override { MachineFacts::installForTesting(nullptr); }

    testkit::ScratchFolder root;
    std::unique_ptr<MachineFacts> facts;
};

TEST_F(ZQInfoMachineTest, AnEmptyMachineHasNoFacts) {
    useMachine("");
    EXPECT_EQ(ZQInfo::macModel(), "");
    EXPECT_EQ(ZQInfo::macArchitecture(), "");
    EXPECT_EQ(ZQInfo::macOSVersion(), "macOS 0.0.0");
    EXPECT_FALSE(ZQInfo::macGuid());
}

TEST_F(ZQInfoMachineTest, ReadsModelArchitectureAndVersion) {
    root.write("sys/firmware/devicetree/base/model", std::string("Board 4\0", 8));
    EXPECT_EQ(ZQInfo::macModel(), "Board 4");
    root.write("sys/class/dmi/id/product_name", "Book 14,2 \n");
    EXPECT_EQ(ZQInfo::macModel(), "Book 14,2");
    EXPECT_EQ(ZQInfo::macArchitecture(), "x86_64");
    useMachine("aarch64");
    EXPECT_EQ(ZQInfo::macArchitecture(), "arm64");

    const std::pair<const char*, const char*> versions[] = {
        {"ID=x\nVERSION_ID=\"12\"\n", "macOS 12.0.0"}, {"VERSION_ID=22.04\n", "macOS 22.4.0"},
        {"VERSION_ID='1.2.3.4'", "macOS 1.2.3"},       {"VERSION_ID=rolling\n", "macOS 0.0.0"},
        {"MY_VERSION_ID=7\n", "macOS 0.0.0"},          {"VERSION_ID=", "macOS 0.0.0"},
    };
    for (const auto& [text, expected] : versions) {
        root.write("etc/os-release", text);
        EXPECT_EQ(ZQInfo::macOSVersion(), expected) << text;
    }
}

TEST_F(ZQInfoMachineTest, IdentifierClimbsDownTheLadder) {
    addInterface("lo", nullptr, "00:00:00:00:00:00", "772");
    addInterface("veth0", nullptr, "02:00:00:00:00:01");
    addInterface("en0", nullptr, "02:00:00:00:00:02");
    EXPECT_FALSE(ZQInfo::macGuid()) << "an entry that doesn't say whether it is built in is never chosen";

    removeInterface("en0");
    addInterface("en0", "usb", "00:1a:2b:3c:4d:5e");
    EXPECT_EQ(ZQInfo::macGuid(), "001A2B3C4D5E") << "the only one there is";
    addInterface("en1", "pci", "aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(ZQInfo::macGuid(), "AABBCCDDEEFF") << "built in goes before plugged in";
    removeInterface("en0");
    addInterface("en0", "platform", "00:00:00:00:00:01");
    EXPECT_EQ(ZQInfo::macGuid(), "000000000001");
}

TEST_F(ZQInfoMachineTest, NumbersTheMachinesOwnInterfaces) {
    addInterface("enp10s0", "pci", "00:00:00:00:00:10");
    addInterface("enp2s0", "pci", "00:00:00:00:00:02");
    addInterface("enx1", "usb", "00:00:00:00:00:03");
    addInterface("br0", nullptr, "00:00:00:00:00:04");
    addInterface("enp1s0", "pci", "12:34:56:78:9a:bc", "1", "3");
    addInterface("enp0s0", "pci", "00:00:00:00:00:00");
    EXPECT_EQ(ZQInfo::macGuid(), "000000000002")
        << "a made-up address and one of zeros identify nothing; 2 comes before 10";
    const auto third = IOServiceGetMatchingServices("en2");
    ASSERT_EQ(third.size(), 1U);
    EXPECT_EQ(IORegistryEntryCreateCFProperty(third[0], "IOBuiltin"), Value(false))
        << "what hangs on USB is last";
    EXPECT_TRUE(IOServiceGetMatchingServices("en3").empty());
    EXPECT_TRUE(IOServiceGetMatchingServices("br0").empty());
}

TEST(MachineFactsTest, TellsSizesAsTheKernelDoes) {
    std::size_t size = 99;
    EXPECT_EQ(sysctlbyname("hw.nothing", nullptr, &size), -1);
    EXPECT_EQ(size, 0U);
    ASSERT_EQ(sysctlbyname("hw.machine", nullptr, &size), 0);
    EXPECT_EQ(size, ZQInfo::macArchitecture().size() + 1) << "with the closing NUL";
}

}  // namespace
}  // namespace zqcore
