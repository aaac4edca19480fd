// docs/examples/crash.cpp
#include <cstdio>

#include "Classes/Crash/ZQCrash.h"
#include "Classes/Log/Log/ZQLog.h"

int main() {
    using namespace zqcore;
    ZQCrash::install();  // first thing: captures from here on, and writes out what earlier runs left
    const auto reports = ZQCrash::exportedReports();
    for (const auto& report : reports) std::puts(report.path.c_str());
    std::printf("%zu crashes until now\n", reports.size());  // => 0 crashes until now
    ZQLogInfo("started");
}
