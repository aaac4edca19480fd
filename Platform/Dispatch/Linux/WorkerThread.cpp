#include "Platform/Dispatch/Linux/WorkerThread.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <utility>

#include "Platform/Dispatch/Linux/Shortage.h"

namespace zqcore::platform {

namespace {

struct Start {
    std::string name;
    std::move_only_function<void()> body;
};

// No catch and no noexcept anywhere below: a throw then finds no handler at all, and the process ends inside
// the throw, before any frame has been unwound. That is what a crash report wants to see.
void* runThread(void* argument) {
    const std::unique_ptr<Start> start(static_cast<Start*>(argument));
    pthread_setname_np(pthread_self(), start->name.c_str());
    const AlternateSignalStack stack;
    start->body();
    start->body = nullptr;
    return nullptr;
}

}  // namespace

AlternateSignalStack::AlternateSignalStack() noexcept {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t size = kSize + page;
    void* mapping =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (mapping == MAP_FAILED) return;
    mprotect(mapping, page, PROT_NONE);
    stack_t stack{};
    stack.ss_sp = static_cast<char*>(mapping) + page;
    stack.ss_size = kSize;
    stack_t earlier{};
    if (sigaltstack(&stack, &earlier) != 0) {
        munmap(mapping, size);
        return;
    }
    mapping_ = mapping;
    mappedSize_ = size;
    earlierStack_ = earlier.ss_sp;
    earlierSize_ = earlier.ss_size;
    earlierFlags_ = earlier.ss_flags;
}

AlternateSignalStack::~AlternateSignalStack() {
    if (!mapping_) return;
    stack_t earlier{};
    earlier.ss_sp = earlierStack_;
    earlier.ss_size = earlierSize_;
    earlier.ss_flags = earlierFlags_;
    sigaltstack(&earlier, nullptr);
    munmap(mapping_, mappedSize_);
}

bool startWorkerThread(const char* name, std::move_only_function<void()> body) {
    auto start = std::make_unique<Start>(Start{std::string(name).substr(0, 15), std::move(body)});
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread{};
    const bool made = pthread_create(&thread, &attributes, runThread, start.get()) == 0;
    pthread_attr_destroy(&attributes);
    if (made) {
        (void)start.release();
    } else {
        Shortage::note();
    }
    return made;
}

}  // namespace zqcore::platform
