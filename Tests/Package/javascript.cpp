#include <cstdio>

#include "Classes/Core/Extension/JSValueExtension.h"
#include "Platform/JavaScript/JSContext.h"

int main() {
    zqcore::JSContext context;
    const auto sum = zqcore::safeToNumber(*context.evaluateScript("1 + 2"));
    std::puts(sum == 3.0 ? "the engine counts" : "wrong sum");
    return sum == 3.0 ? 0 : 1;
}
