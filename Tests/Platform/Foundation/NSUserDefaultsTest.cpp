#include "Platform/Foundation/NSUserDefaults.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/PropertyList.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/ManualClock.h"
#include "TestKit/PlatformReports.h"
#include "TestKit/ScratchFolder.h"
#include "TestKit/TemporaryHome.h"

namespace zqcore {
namespace {

class NSUserDefaultsTest : public testing::Test {
  protected:
    /// What the file holds, as any other program would read it.
    Value onDisk() const {
        const auto bytes = NSFileManager::defaultManager().contentsAtPath(path);
        if (!bytes) return {};
        auto value = PropertyList::read(bytes->view());
        return value ? *std::move(value) : Value("damaged");
    }
    /// As another process would write it: past this one's store.
    void writeToDisk(const Value& value) {
        const auto bytes = PropertyList::write(value, PropertyList::Format::xml);
        folder.write("app.plist", std::string(bytes->view()));
    }
    std::size_t filesOnDisk() const {
        return NSFileManager::defaultManager().contentsOfDirectoryAtPath(folder.path())->size();
    }
    static std::vector<std::string> writer(std::vector<std::string> words) {
        words.insert(words.begin(), std::string(ZQ_TEST_PROGRAMS) + "/DefaultsWriter");
        return words;
    }

    testkit::PlatformReports reports;
    testkit::ScratchFolder folder;
    const std::string path = folder / "app.plist";
};

TEST_F(NSUserDefaultsTest, WritesAreSeenAtOnceAndReachTheFileALittleLater) {
    testkit::ManualClock clock;
    const auto defaults = NSUserDefaults::atPath(path);
    const auto same = NSUserDefaults::atPath(path);
    defaults->setInteger(7, "seven");
    EXPECT_EQ(same->objectForKey("seven"), Value(7));
    clock.advance(std::chrono::milliseconds(499));
    EXPECT_TRUE(onDisk().isNull());
    defaults->setBool(true, "flag");
    clock.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(onDisk(), Value(Value::Dictionary{{"seven", 7}, {"flag", true}})) << "one write for both";
    defaults->removeObjectForKey("seven");
    defaults->setObject(nullptr, "flag");
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(onDisk(), Value(Value::Dictionary{}));
    EXPECT_TRUE(reports.take().empty());
}

TEST_F(NSUserDefaultsTest, KindsStayApartInTheFile) {
    const Value::Dictionary all{{"bool", true},
                                {"one", 1},
                                {"real", 1.0},
                                {"text", "设"},
                                {"data", Data(std::string("\0\xFF", 2))},
                                {"date", dateSince1970(5)},
                                {"array", Value::Array{1, false}},
                                {"dictionary", Value::Dictionary{{"k", -1}}}};
    const auto defaults = NSUserDefaults::atPath(path);
    for (const auto& [key, value] : all) defaults->setObject(value, key);
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(onDisk(), Value(all));
    EXPECT_EQ(defaults->dictionaryRepresentation(), all);
    EXPECT_TRUE(NSFileManager::defaultManager().contentsAtPath(path)->view().starts_with("bplist00"));
    EXPECT_EQ(NSFileManager::defaultManager().attributesOfItemAtPath(path)->posixPermissions, 0600U);
}

TEST_F(NSUserDefaultsTest, ReadsNumbersAsDoubles) {
    const auto defaults = NSUserDefaults::atPath(path);
    const std::pair<Value, double> cases[] = {
        {true, 1.0},       {-3, -3.0},      {2.5, 2.5},    {"3.5 apples", 3.5},
        {" -1e2", -100.0}, {"apples", 0.0}, {Data(), 0.0}, {Value::Array{}, 0.0},
        {"1,5", 1.0},
    };
    for (const auto& [value, number] : cases) {
        defaults->setObject(value, "k");
        EXPECT_EQ(defaults->doubleForKey("k"), number) << value.description();
    }
    EXPECT_EQ(defaults->doubleForKey("missing"), 0.0);
}

TEST_F(NSUserDefaultsTest, RefusesWhatNoPropertyListHolds) {
    const auto defaults = NSUserDefaults::atPath(path);
    defaults->setInteger(1, "k");
    defaults->setObject(Value::Array{nullptr}, "k");
    defaults->setObject("\xFF", "k");
    EXPECT_EQ(defaults->objectForKey("k"), Value(1));
    const auto reported = reports.take();
    ASSERT_EQ(reported.size(), 2U);
    EXPECT_EQ(reported.front(), "NSUserDefaults: no property list can hold .k[0]: null");
}

TEST_F(NSUserDefaultsTest, MergesWithWhatOthersWrote) {
    writeToDisk(Value::Dictionary{{"ours", 1}, {"theirs", 1}, {"gone", 1}});
    const auto defaults = NSUserDefaults::atPath(path);
    EXPECT_EQ(defaults->objectForKey("ours"), Value(1)) << "the XML form is read too";
    writeToDisk(Value::Dictionary{{"ours", 2}, {"theirs", 2}, {"new", 2}, {"gone", 2}});
    EXPECT_EQ(defaults->objectForKey("theirs"), Value(1)) << "not before synchronize";
    defaults->setInteger(3, "ours");
    defaults->removeObjectForKey("gone");
    EXPECT_TRUE(defaults->synchronize());
    const Value::Dictionary merged{{"ours", 3}, {"theirs", 2}, {"new", 2}};
    EXPECT_EQ(defaults->dictionaryRepresentation(), merged);
    EXPECT_EQ(onDisk(), Value(merged));
}

TEST_F(NSUserDefaultsTest, SetsADamagedFileAside) {
    testkit::ManualClock clock;
    for (const char* damage : {"bplist00 rubbish", ""}) {
        folder.write("app.plist", damage);
        {
            const auto defaults = NSUserDefaults::atPath(path);
            EXPECT_TRUE(defaults->dictionaryRepresentation().empty());
            const auto reported = reports.take();
            ASSERT_EQ(reported.size(), 1U);
            EXPECT_NE(reported[0].find(path + ".damaged-2024-01-02--03-04-05"), std::string::npos)
                << reported[0];
            defaults->setInteger(1, "k");
            EXPECT_TRUE(defaults->synchronize());
        }
        EXPECT_EQ(onDisk(), Value(Value::Dictionary{{"k", 1}}));
    }
    const auto aside = NSFileManager::defaultManager().contentsAtPath(path + ".damaged-2024-01-02--03-04-05");
    ASSERT_TRUE(aside);
    EXPECT_EQ(aside->view(), "bplist00 rubbish") << "nothing is lost";
    EXPECT_TRUE(NSFileManager::defaultManager().fileExistsAtPath(path + ".damaged-2024-01-02--03-04-05 2"));
}

TEST_F(NSUserDefaultsTest, AFileThatCannotBeReadIsLeftAlone) {
    ASSERT_TRUE(NSFileManager::defaultManager().createDirectoryAtPath(path, false));
    const auto defaults = NSUserDefaults::atPath(path);
    defaults->setInteger(1, "k");
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(defaults->objectForKey("k"), Value(1));
    EXPECT_FALSE(reports.take().empty());
    ASSERT_TRUE(NSFileManager::defaultManager().removeItemAtPath(path));
    EXPECT_TRUE(defaults->synchronize()) << "what could not be written is written now";
    EXPECT_EQ(onDisk(), Value(Value::Dictionary{{"k", 1}}));
}

TEST_F(NSUserDefaultsTest, ThreadsMayUseItAtOnce) {
    const auto defaults = NSUserDefaults::atPath(path);
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; i < 25; ++i) {
                    const std::string key = std::to_string(t) + "/" + std::to_string(i);
                    defaults->setInteger(i, key);
                    EXPECT_EQ(defaults->objectForKey(key), Value(i));
                    EXPECT_TRUE(i % 10 != t || defaults->synchronize());
                }
            });
        }
    }
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(onDisk().asDictionary()->size(), 100U);
}

TEST_F(NSUserDefaultsTest, ProcessesThatWriteDifferentKeysLoseNone) {
    testkit::ChildProcess first(writer({path, "a", "40"}));
    testkit::ChildProcess second(writer({path, "b", "40"}));
    const auto defaults = NSUserDefaults::atPath(path);
    for (int i = 0; i < 40; ++i) {
        defaults->setInteger(i, "c" + std::to_string(i));
        EXPECT_TRUE(defaults->synchronize());
    }
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(defaults->dictionaryRepresentation().size(), 120U);
    EXPECT_EQ(onDisk().asDictionary()->size(), 120U);
    EXPECT_EQ(filesOnDisk(), 2U) << "the file and its lock";
}

TEST_F(NSUserDefaultsTest, AKillInMidWriteLeavesOldOrNew) {
    constexpr std::size_t size = 200'000;
    for (int round = 0; round < 10; ++round) {
        testkit::ChildProcess child(writer({path, "k", "0", std::to_string(size)}));
        ASSERT_TRUE(child.readLine()) << "the first write is over, the next is under way";
        child.kill();
        const Value value = onDisk();
        ASSERT_TRUE(value.asDictionary()) << "round " << round;
        const std::string& text = *value.asDictionary()->find("k")->asString();
        EXPECT_EQ(text, std::string(size, text.front()));
    }
    const auto defaults = NSUserDefaults::atPath(path);
    defaults->setInteger(1, "after");
    EXPECT_TRUE(defaults->synchronize()) << "the lock of a dead process holds nobody up";
    EXPECT_EQ(filesOnDisk(), 2U) << "and what it left half written is gone";
    EXPECT_TRUE(reports.take().empty());
}

TEST_F(NSUserDefaultsTest, LiesBelowTheLibraryFolderByIdentifier) {
    const testkit::TemporaryHome home;
    const auto bundle = testkit::FakeBundle::named("com.example.app");
    const auto standard = NSUserDefaults::standardUserDefaults();
    EXPECT_EQ(standard->path(), home.path() + "/.config/Preferences/com.example.app.plist");
    standard->setInteger(1, "k");
    EXPECT_TRUE(standard->synchronize()) << "the folder is made";
    EXPECT_EQ(NSUserDefaults::initWithSuiteName("com.example.app")->objectForKey("k"), Value(1));
    EXPECT_FALSE(NSUserDefaults::initWithSuiteName(""));
    EXPECT_FALSE(NSUserDefaults::initWithSuiteName("../x"));
}

}  // namespace
}  // namespace zqcore
