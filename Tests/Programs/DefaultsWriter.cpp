// usage: DefaultsWriter FILE PREFIX COUNT [BYTES]
// Sets PREFIX0 to PREFIX<COUNT-1> in a settings file, each written at once. With BYTES it goes on for ever,
// setting the one key PREFIX to texts of that size that consist of one digit; it says "ready" after the
// first.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Platform/Foundation/NSUserDefaults.h"

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    const auto defaults = zqcore::platform::NSUserDefaults::atPath(argv[1]);
    const std::string prefix = argv[2];
    if (argc > 4) {
        for (int i = 0;; ++i) {
            defaults->setObject(
                std::string(std::strtoul(argv[4], nullptr, 10), static_cast<char>('0' + i % 10)), prefix);
            if (!defaults->synchronize()) return 1;
            if (i == 0) {
                std::puts("ready");
                std::fflush(stdout);
            }
        }
    }
    for (int i = 0; i < std::atoi(argv[3]); ++i) {
        defaults->setInteger(i, prefix + std::to_string(i));
        if (!defaults->synchronize()) return 1;
    }
    return 0;
}
