#include <gtest/gtest.h>

#include <string_view>

#include "TestKit/TemporaryHome.h"

namespace {

bool onlyLists(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]).starts_with("--gtest_list_tests")) return true;
    }
    return false;
}

}  // namespace

// A main of the kit's own, so that what must be in place before the first static (a home, an environment) can
// be set here.
int main(int argc, char** argv) {
    if (!onlyLists(argc, argv)) {
        // The first static of all is the last to end: what is written at exit still goes into this home.
        static const zqcore::testkit::TemporaryHome home;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
