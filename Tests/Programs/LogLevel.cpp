// Tells the level that it found, and stores another one if it is given; else shows what is logged at all.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "Classes/Log/Log/ZQLog.h"
#include "Classes/Log/Log/ZQManagerForLog.h"
#include "Platform/Lumberjack/DDLog.h"

using namespace zqcore;

int main(int count, char** arguments) {
    ZQManagerForLog::initialize();
    std::printf("level %llu\n", static_cast<unsigned long long>(ZQDefaultLogLevel.load()));
    if (count > 1) {
        ZQManagerForLog::setLogLevel(std::strtoull(arguments[1], nullptr, 10));
        return 0;
    }
    ZQLogInfo("info");
    ZQLogError("error");
    DDLog::flushLog();
    if (!std::filesystem::exists(ZQManagerForLog::defaultLogDirectory())) std::puts("info and error silent");
    // Synchronous: the line is in the file without anyone's help.
    ZQAssert(true, "no line");
    ZQAssert(false, "assertion");
    for (const auto& file : std::filesystem::directory_iterator(ZQManagerForLog::defaultLogDirectory())) {
        std::ifstream stream(file.path());
        for (std::string line; std::getline(stream, line);) std::puts(line.c_str());
    }
    return 0;
}
