// docs/examples/settings.cpp
#include <cstdio>

#include "Classes/Core/Utility/DefaultsStorage.h"

int main() {
    using namespace zqcore;
    DefaultsStorage<int> limit(50, "historyLimit", NSUserDefaults::standardUserDefaults());
    const auto watching =
        limit.projectedValue().sink([](int value) { std::printf("%d\n", value); });  // => 50
    limit.setWrappedValue(80);                                                       // => 80
    limit.changeWrappedValue([](int& value) { value /= 2; });                        // => 40
}
