#include "TestKit/FakeBundle.h"

#include "Platform/Foundation/NSBundle.h"

namespace zqcore::testkit {

using platform::NSBundle;
using platform::NSSearchPathDirectory;

FakeBundle::FakeBundle(platform::Value::Dictionary info, std::string path) {
    if (path.empty()) {
        NSBundle::setMainBundleForTesting(nullptr);
        path = NSBundle::mainBundle()->bundlePath();
    }
    NSBundle::setMainBundleForTesting(NSBundle::makeForTesting(path, std::move(info)));
}

FakeBundle FakeBundle::named(const std::string& identifier) {
    return FakeBundle(platform::Value::Dictionary{
        {"CFBundleIdentifier", identifier},
        {"CFBundleName", identifier.substr(identifier.rfind('.') + 1)},
    });
}

FakeBundle::~FakeBundle() { NSBundle::setMainBundleForTesting(nullptr); }

FakeSearchPaths::FakeSearchPaths(std::string home, Folders folders)
    : home_(std::move(home)), folders_(std::move(folders)) {
    SearchPaths::installForTesting(this);
}

FakeSearchPaths::~FakeSearchPaths() { SearchPaths::installForTesting(nullptr); }

FakeSearchPaths::Folders FakeSearchPaths::platformFolders(const std::string& home,
                                                          const std::string& identifier) {
    return {
        {NSSearchPathDirectory::library, home + "/Library"},
        {NSSearchPathDirectory::documents, home + "/Documents"},
        {NSSearchPathDirectory::desktop, home + "/Desktop"},
        {NSSearchPathDirectory::caches, home + "/Library/Caches"},
        {NSSearchPathDirectory::applicationSupport, home + "/Library/Application Support"},
        {NSSearchPathDirectory::downloads, home + "/Downloads"},
        {NSSearchPathDirectory::applicationScripts, home + "/Library/Application Scripts/" + identifier},
    };
}

std::string FakeSearchPaths::userDirectory(NSSearchPathDirectory directory) const {
    const auto found = folders_.find(directory);
    return found == folders_.end() ? std::string() : found->second;
}

}  // namespace zqcore::testkit
