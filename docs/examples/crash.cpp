// docs/examples/crash.cpp
#include <cstdio>

#include "Classes/Crash/ZQCrash.h"
#include "Classes/Log/Log/ZQLog.h"

int main() {
    using namespace zqcore;
    ZQCrash::install();  // first thing: captures from here on, and writes out what earlier runs left
    for (const auto& report : ZQCrash::exportedReports()) std::puts(report.path.c_str());
    ZQLogInfo("started");
}
