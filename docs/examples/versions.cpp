// docs/examples/versions.cpp
#include <cstdio>

#include "Classes/Core/Utility/SeedChecker.h"
#include "Classes/Core/Utility/ZQVersionComparator.h"

int main() {
    using namespace zqcore;
    std::printf("%d\n", ZQVersionComparator::compareVersion("1.10", "1.9"));   // => 1
    std::printf("%d\n", ZQVersionComparator::compareVersion("1.0b2", "1.0"));  // => -1
    SeedChecker search;
    const auto seed = search.increase();                          // a new search begins ...
    search.increase();                                            // ... and another one
    std::puts(search.check(seed) ? "still wanted" : "outdated");  // => outdated
}
