// docs/examples/emoji.cpp
#include <cstdio>

#include "Classes/Core/Category/NSStringRemoveEmoji.h"

int main() {
    using namespace zqcore;
    std::puts(zq_removingEmoji("早上好 😀👨‍👩‍👧!").c_str());  // => 早上好 !
    std::puts(zq_allEmojiRanges("ok 😀").at(0).c_str());                        // => {3, 2}
}
