#include "TestKit/UI/XvfbDriver.h"
#include "Tests/Platform/AppKit/DisplayContract.h"

namespace zqcore {

INSTANTIATE_TEST_SUITE_P(X11, DisplayContract, testing::Values(&testkit::XvfbDriver::make));

}  // namespace zqcore
