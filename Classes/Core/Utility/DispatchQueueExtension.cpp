#include "Classes/Core/Utility/DispatchQueueExtension.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace zqcore {

namespace {

struct Tokens {
    std::recursive_mutex lock;
    std::vector<std::string> seen;
};

Tokens& tokens() {
    // Never ended: threads may still ask while the process goes.
    static Tokens& shared = *new Tokens;
    return shared;
}

}  // namespace

void DispatchQueueExtension::safeMain(DispatchBlock work) {
    if (isMainThread()) {
        work();
    } else {
        DispatchQueue::main()->async(std::move(work));
    }
}

void DispatchQueueExtension::once(std::string_view token, const std::function<void()>& block) {
    Tokens& shared = tokens();
    const std::lock_guard lock(shared.lock);
    if (std::ranges::find(shared.seen, token) != shared.seen.end()) return;
    shared.seen.emplace_back(token);
    if (block) block();
}

void DispatchQueueExtension::once(const std::function<void()>& block, const std::source_location& where) {
    once(std::string(where.file_name()) + ":" + where.function_name() + ":" + std::to_string(where.line()),
         block);
}

}  // namespace zqcore
