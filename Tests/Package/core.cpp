#include <cstdio>

#include "Classes/Core/Utility/ZQVersionComparator.h"

int main() {
    const auto order = zqcore::ZQVersionComparator::compareVersion("1.2", "1.10");
    std::puts(order == zqcore::NSOrderedAscending ? "1.2 is older than 1.10" : "wrong order");
    return order == zqcore::NSOrderedAscending ? 0 : 1;
}
