// docs/examples/facts.cpp
#include <cstdio>

#include "Classes/Core/Utility/ZQInfo.h"
#include "Classes/Core/Utility/ZQPathFetcher.h"

int main() {
    using namespace zqcore;
    std::printf("%s %s on %s, %s\n", ZQInfo::appIdentifier().c_str(), ZQInfo::appFullVersion().c_str(),
                ZQInfo::macOSVersion().c_str(), ZQInfo::macArchitecture().c_str());
    std::printf("settings %s\ncaches %s\n", ZQPathFetcher::userDefaultsPlistFilePath().c_str(),
                ZQPathFetcher::zqcoreCachesDirectory().c_str());
}
