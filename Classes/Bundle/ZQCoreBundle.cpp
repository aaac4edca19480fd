#include "Classes/Bundle/ZQCoreBundle.h"

#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSImage.h"

namespace zqcore {

std::shared_ptr<NSBundle> ZQCoreBundle::frameworkBunble() {
    // Something that lies in the same module as the code of this class.
    static const char anchor = 0;
    return NSBundle::bundleForClass(&anchor);
}

std::shared_ptr<NSBundle> ZQCoreBundle::bundle() {
    if (const auto url = frameworkBunble()->URLForResource("ZQCore", "bundle")) {
        if (auto found = NSBundle::bundleWithURL(*url)) return found;
    }
    ZQLogError("获取 bundle 失败");
    return nullptr;
}

std::shared_ptr<NSImage> ZQCoreBundle::image(const std::string& named) {
    if (const auto own = bundle()) {
        if (auto found = own->imageForResource(named)) return found;
    }
    if (auto found = frameworkBunble()->imageForResource(named)) {
        ZQLogInfo([&] { return "获取图片成功（候补方案）: " + named; });
        return found;
    }
    ZQLogError([&] { return "获取图片失败: " + named; });
    // Only to tell whoever reads the log where the image lies instead.
    if (NSImage::imageNamed(named)) ZQLogInfo([&] { return "获取图片默认方案可行：" + named; });
    return nullptr;
}

}  // namespace zqcore
