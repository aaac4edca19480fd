#include "Platform/Foundation/UTType.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "Platform/Foundation/Linux/MimeDatabase.h"
#include "Platform/Foundation/UTTypeTable.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::platform {
namespace {

// A slip in the table would make a type an orphan, or an extension two things at once.
TEST(UTTypeTable, HasNoUnknownParentAndNoExtensionTwice) {
    std::set<std::string_view> identifiers;
    for (const UTTypeEntry& type : knownTypes()) {
        EXPECT_TRUE(identifiers.insert(type.identifier).second) << type.identifier;
    }
    const auto words = [](std::string_view list, auto visit) {
        while (!list.empty()) {
            const std::size_t end = std::min(list.find(' '), list.size());
            visit(list.substr(0, end));
            list.remove_prefix(std::min(end + 1, list.size()));
        }
    };
    std::set<std::string_view> names;
    for (const UTTypeEntry& type : knownTypes()) {
        words(type.parents, [&](std::string_view parent) {
            EXPECT_TRUE(identifiers.contains(parent)) << type.identifier << " below " << parent;
        });
        words(type.extensions,
              [&](std::string_view name) { EXPECT_TRUE(names.insert(name).second) << name; });
        words(type.mimeTypes, [&](std::string_view name) { EXPECT_TRUE(names.insert(name).second) << name; });
    }
}

TEST(UTType, KnowsKinship) {
    struct Case {
        std::string_view identifier;
        std::string_view kind;
        bool conforms;
    };
    constexpr Case kCases[] = {
        {"public.png", "public.png", true},
        {"public.png", "public.image", true},
        {"public.png", "public.item", true},
        {"public.png", "public.content", true},
        {"public.image", "public.png", false},
        {"public.svg-image", "public.text", true},
        {"public.folder", "public.directory", true},
        {"public.folder", "public.data", false},
        {"public.zip-archive", "public.archive", true},
        {"com.example.own", "com.example.own", true},
        {"com.example.own", "public.data", false},
        {"dyn.whatever", "public.data", true},
        {"", "public.data", false},
        {"public.png", "", false},
    };
    for (const auto& [identifier, kind, conforms] : kCases) {
        EXPECT_EQ(UTTypeConformsTo(identifier, kind), conforms) << identifier << " " << kind;
    }
}

TEST(UTType, TakesWhatItsTableLacksFromTheMimeDatabase) {
    EXPECT_EQ(typeIdentifierForExtension("JPG"), "public.jpeg");
    EXPECT_EQ(typeIdentifierForExtension(""), "public.data");
    const std::string unknown = typeIdentifierForExtension("no-such-thing");
    EXPECT_TRUE(unknown.starts_with("dyn."));
    EXPECT_TRUE(UTTypeConformsTo(unknown, "public.data"));
    if (!MimeDatabase::shared().typeForExtension("lua")) GTEST_SKIP() << "shared-mime-info isn't installed";
    EXPECT_TRUE(UTTypeConformsTo(typeIdentifierForExtension("lua"), "public.plain-text"));
    EXPECT_TRUE(UTTypeConformsTo(typeIdentifierForExtension("xcf"), "public.image"));
}

TEST(MimeDatabase, ReadsGlobsByWeightAndKinshipWithoutEnd) {
    const testkit::ScratchFolder folder;
    folder.write("mime/globs2",
                 "# comment\n50:text/x-one:*.one\n60:text/x-better:*.ONE\n40:text/x-worse:*.one\n"
                 "50:text/x-case:*.C:cs\n50:text/x-odd:*.a[bc]\n50:text/x-name:Makefile\nrubbish\n");
    folder.write("mime/subclasses", "application/x-a application/x-b\napplication/x-b application/x-a\n");
    const MimeDatabase database({folder.path(), folder / "none"});
    EXPECT_EQ(database.typeForExtension("one"), "text/x-better");
    EXPECT_FALSE(database.typeForExtension("c"));
    EXPECT_FALSE(database.typeForExtension("a[bc]"));
    EXPECT_EQ(database.ancestors("application/x-a"), std::vector<std::string>{"application/x-b"});
    EXPECT_EQ(database.ancestors("text/x-one"), std::vector<std::string>{"text/plain"});
}

}  // namespace
}  // namespace zqcore::platform
