// Prints who it is, by the Info.plist that is compiled in: IDENTIFIER, a blank, VERSION[BUILD].
#include <cstdio>

#include "Classes/Core/Utility/ZQInfo.h"

int main() {
    std::printf("%s %s\n", zqcore::ZQInfo::appIdentifier().c_str(), zqcore::ZQInfo::appFullVersion().c_str());
    return 0;
}
