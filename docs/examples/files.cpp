// docs/examples/files.cpp
#include <cstdio>

#include "Classes/Core/Extension/NSFileManagerExtension.h"
#include "Classes/Core/Extension/StringPath.h"
#include "Classes/Core/Utility/ZQPathFetcher.h"

int main() {
    using namespace zqcore;
    const NSFileManager& files = NSFileManager::defaultManager();
    const std::string folder = appendingFilePath(ZQPathFetcher::zqcoreCachesDirectory(), "export");
    zq_createDirectoryIfNotExist(files, folder);
    for (int i = 0; i < 2; ++i) {
        const auto path = zq_suitablePath(files, appendingFilePath(folder, "words.json"));
        std::puts(lastPathComponent(*path).c_str());       // => words.json
        (void)files.writeAtomically(R"({"n":1})", *path);  // => words(1).json
    }
    const auto words = zq_dictionary(files, appendingFilePath(folder, "words.json"));
    std::printf("%zu entry, %ld bytes\n", words->size(),
                static_cast<long>(zq_folderSize(files, folder)));  // => 1 entry, 14 bytes
}
