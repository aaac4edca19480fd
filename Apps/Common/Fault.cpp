#include "Apps/Common/Fault.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string>

#include "Platform/Dispatch/DispatchQueue.h"

namespace faults {

namespace {

// What the compiler may not see through: it would warn, or make something else of the fault.
volatile std::uintptr_t lowAddress = 0x10;
volatile int sink = 0;
volatile int endlessly = 1;

[[gnu::noinline]] void writeNowhere() {
    *reinterpret_cast<volatile int*>(lowAddress) = 1;
    sink = 1;
}

[[gnu::noinline]] void readPastFile() {
    std::FILE* file = std::tmpfile();
    if (!file) std::abort();
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    sink = *static_cast<volatile unsigned char*>(mmap(nullptr, page, PROT_READ, MAP_SHARED, fileno(file), 0));
}

[[gnu::noinline]] void executeNothing() {
#if defined(__x86_64__)
    asm volatile("ud2");
#else
    std::raise(SIGILL);
#endif
}

[[gnu::noinline]] void divideByNothing() {
#if defined(__x86_64__)
    // By hand: the compiler makes a comparison of 1 / n.
    asm volatile("xorl %%edx, %%edx; movl $1, %%eax; xorl %%ecx, %%ecx; idivl %%ecx" ::: "eax", "ecx", "edx");
#else
    std::raise(SIGFPE);  // a division by zero is none there
#endif
}

[[gnu::noinline]] void trap() {
#if defined(__x86_64__)
    asm volatile("int3");
#else
    std::raise(SIGTRAP);
#endif
}

[[gnu::noinline]] int overflow(int depth) {
    volatile unsigned char frame[512];
    frame[0] = static_cast<unsigned char>(depth);
    sink = frame[0];
    return endlessly != 0 ? overflow(depth + 1) + frame[0] : 0;
}

struct Fault {
    std::string_view name;
    void (*commit)();
};
constexpr Fault kFaults[] = {
    {"segv", writeNowhere},
    {"abort", [] { std::abort(); }},
    {"bus", readPastFile},
    {"ill", executeNothing},
    {"fpe", divideByNothing},
    {"trap", trap},
    {"throw", [] { throw std::runtime_error("a crash was asked for"); }},
    {"overflow", [] { sink = overflow(0); }},
};

const Fault* find(std::string_view name) noexcept {
    const auto* const found = std::ranges::find(kFaults, name, &Fault::name);
    return found == std::end(kFaults) ? nullptr : found;
}

}  // namespace

bool isKnown(std::string_view name) noexcept { return find(name) != nullptr; }

void commit(std::string_view name) {
    const Fault* fault = find(name);
    if (!fault) return;
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    fault->commit();
    std::abort();  // should a machine take it lightly
}

void commitOnQueue(std::string_view name) {
    if (!isKnown(name)) return;
    const auto queue = zqcore::platform::DispatchQueue::serial("com.tessaradev.faulty");
    queue->async([name = std::string(name)] { commit(name); });
    for (;;) pause();
}

}  // namespace faults
