#include "TestKit/TimeZoneGuard.h"

#include <cstdlib>
#include <ctime>

namespace zqcore::testkit {

TimeZoneGuard::TimeZoneGuard(const char* zone) {
    if (const char* earlier = std::getenv("TZ")) earlier_ = earlier;
    setenv("TZ", zone, 1);
    tzset();
}

TimeZoneGuard::~TimeZoneGuard() {
    if (earlier_) {
        setenv("TZ", earlier_->c_str(), 1);
    } else {
        unsetenv("TZ");
    }
    tzset();
}

}  // namespace zqcore::testkit
