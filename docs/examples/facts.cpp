// docs/examples/facts.cpp
#include <cstdio>

#include "Classes/Core/Utility/ZQInfo.h"
#include "Classes/Core/Utility/ZQPathFetcher.h"

int main() {
    using namespace zqcore;
    const auto print = [](const std::string& text) { std::puts(text.c_str()); };
    print(ZQInfo::appIdentifier() + " " + ZQInfo::appFullVersion());   // => com.example.Words 1.0.0[7]
    print(ZQInfo::macOSVersion() + ", " + ZQInfo::macArchitecture());  // => macOS ..., ...
    print(ZQPathFetcher::userDefaultsPlistFilePath());  // => .../.config/Preferences/com.example.Words.plist
    print(ZQPathFetcher::zqcoreCachesDirectory());      // => ...
}
