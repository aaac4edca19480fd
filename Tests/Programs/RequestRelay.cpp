// Stands in for the command line tool that the installed script calls: hands the text on its standard input
// to an application's scripting command and prints the answer. Usage: RequestRelay relay IDENTIFIER
#include <cstdio>
#include <string>

#include "Platform/Scripting/ScriptingBus.h"

int main(int argc, char** argv) {
    if (argc != 3 || std::string(argv[1]) != "relay") return 2;
    std::string text;
    char buffer[65536];
    while (const auto got = std::fread(buffer, 1, sizeof buffer, stdin)) text.append(buffer, got);
    const auto answer = zqcore::platform::ScriptingBus::current().request(argv[2], text);
    if (!answer) {
        std::fprintf(stderr, "error %ld: %s\n", answer.error().code(),
                     answer.error().localizedDescription().c_str());
        return 1;
    }
    const std::string result = answer->value_or("");
    std::fwrite(result.data(), 1, result.size(), stdout);
    return 0;
}
