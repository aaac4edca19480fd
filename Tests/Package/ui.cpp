#include <cstdio>

#include "Classes/Bundle/ZQCoreBundle.h"
#include "Platform/Foundation/NSImage.h"

int main() {
    const auto image = zqcore::ZQCoreBundle::image("hud_success");
    std::puts(image ? "the bundle's image is there" : "no image");
    return image ? 0 : 1;
}
