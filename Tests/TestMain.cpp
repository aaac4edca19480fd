#include <gtest/gtest.h>

// A main of the kit's own, so that what must be in place before the first static (a home, an environment) can
// be set here.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
