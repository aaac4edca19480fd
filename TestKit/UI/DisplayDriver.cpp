#include "TestKit/UI/DisplayDriver.h"

#include "Platform/Dispatch/RunLoop.h"

namespace zqcore::testkit {

void HeadlessDriver::settle() {
    while (platform::RunLoop::main().drain()) {
    }
}

}  // namespace zqcore::testkit
