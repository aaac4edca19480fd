#include <gtest/gtest.h>

#include <string_view>

#include "TestKit/TemporaryHome.h"

namespace {

// Lists tests, or is the child of a death test, which has its parent's home and ends without removing one.
bool needsNoHome(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word.starts_with("--gtest_list_tests") || word.starts_with("--gtest_internal_run_death_test"))
            return true;
    }
    return false;
}

}  // namespace

// A main of the kit's own, so that what must be in place before the first static (a home, an environment) can
// be set here.
int main(int argc, char** argv) {
    if (!needsNoHome(argc, argv)) {
        // The first static of all is the last to end: what is written at exit still goes into this home.
        static const zqcore::testkit::TemporaryHome home;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
