#include "Platform/CrashCapture/Linux/FrameCapture.h"

#include <dlfcn.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>

#define UNW_LOCAL_ONLY
#include <libunwind.h>

// The library's functions are macros that carry the architecture in their names.
#define ZQ_TEXT_OF(name) #name
#define ZQ_NAME_OF(macro) ZQ_TEXT_OF(macro)

namespace zqcore::platform::crash {

namespace {

// Loaded, not linked: libunwind exports the C++ runtime's own _Unwind_ functions, and a program that links it
// throws all its exceptions through them, by a slower way that takes the loader's lock.
struct Unwinder {
    decltype(&unw_init_local2) initialize = nullptr;
    decltype(&unw_step) step = nullptr;
    decltype(&unw_get_reg) read = nullptr;

    [[nodiscard]] bool complete() const noexcept { return initialize && step && read; }
};

Unwinder unwinder;

template <class Function>
void find(void* library, const char* name, Function& function) noexcept {
    function = reinterpret_cast<Function>(dlsym(library, name));
}

#if defined(__x86_64__)
std::uint64_t framePointer(const ucontext_t& context) noexcept {
    return static_cast<std::uint64_t>(context.uc_mcontext.gregs[REG_RBP]);
}
void enterCaller(ucontext_t& context, std::uint64_t returnAddress) noexcept {
    context.uc_mcontext.gregs[REG_RIP] = static_cast<greg_t>(returnAddress);
    context.uc_mcontext.gregs[REG_RSP] += sizeof returnAddress;
}
// After a call to nowhere the return address still lies on top of the stack.
std::uint64_t callerAfterJump(const ucontext_t& context) noexcept {
    std::uint64_t address = 0;
    return readMemory(stackPointer(context), &address, sizeof address) ? address : 0;
}
#elif defined(__aarch64__)
std::uint64_t framePointer(const ucontext_t& context) noexcept { return context.uc_mcontext.regs[29]; }
void enterCaller(ucontext_t& context, std::uint64_t returnAddress) noexcept {
    context.uc_mcontext.pc = returnAddress;
}
std::uint64_t callerAfterJump(const ucontext_t& context) noexcept { return context.uc_mcontext.regs[30]; }
#else
#error "Teach crash capture the registers of this architecture."
#endif

// A sandbox may forbid the careful way of reading; then only the null page is known to be bad.
bool readsMemory = true;

bool isReadable(std::uint64_t address) noexcept {
    unsigned char byte = 0;
    return readsMemory ? readMemory(address, &byte, sizeof byte) : address >= 4096;
}

std::size_t unwind(ucontext_t context, std::span<std::uint64_t> frames) noexcept {
    std::size_t count = 0;
    unw_cursor_t cursor;
    if (unwinder.initialize(&cursor, &context, UNW_INIT_SIGNAL_FRAME) != 0) return 0;
    while (count < frames.size()) {
        unw_word_t address = 0;
        if (unwinder.read(&cursor, UNW_REG_IP, &address) != 0 || address == 0) break;
        frames[count++] = address;
        if (unwinder.step(&cursor) <= 0) break;
    }
    return count;
}

}  // namespace

std::uint64_t programCounter(const ucontext_t& context) noexcept {
#if defined(__x86_64__)
    return static_cast<std::uint64_t>(context.uc_mcontext.gregs[REG_RIP]);
#else
    return context.uc_mcontext.pc;
#endif
}

std::uint64_t stackPointer(const ucontext_t& context) noexcept {
#if defined(__x86_64__)
    return static_cast<std::uint64_t>(context.uc_mcontext.gregs[REG_RSP]);
#else
    return context.uc_mcontext.sp;
#endif
}

bool readMemory(std::uint64_t address, void* into, std::size_t size) noexcept {
    iovec local{into, size};
    iovec remote{reinterpret_cast<void*>(address), size};
    return process_vm_readv(getpid(), &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

void prepareFrameCapture() noexcept {
    if (unwinder.complete()) return;
    const int probe = 0;
    int copy = 0;
    readsMemory = readMemory(reinterpret_cast<std::uint64_t>(&probe), &copy, sizeof copy);
    void* library = dlopen("libunwind.so.8", RTLD_NOW | RTLD_LOCAL);
    if (!library) return;
    find(library, ZQ_NAME_OF(unw_init_local2), unwinder.initialize);
    find(library, ZQ_NAME_OF(unw_step), unwinder.step);
    find(library, ZQ_NAME_OF(unw_get_reg), unwinder.read);
    ucontext_t here;
    std::array<std::uint64_t, 8> frames{};
    if (getcontext(&here) == 0) (void)captureFrames(here, frames);
}

std::size_t captureFrames(const ucontext_t& context, std::span<std::uint64_t> frames) noexcept {
    if (frames.empty()) return 0;
    ucontext_t start = context;
    std::size_t count = 0;
    if (!isReadable(programCounter(context))) {
        // A call through a bad pointer: the frame itself tells nothing, its caller does.
        frames[count++] = programCounter(context);
        const std::uint64_t caller = callerAfterJump(context);
        if (!isReadable(caller)) return count;
        enterCaller(start, caller);
    }
    const std::span<std::uint64_t> rest = frames.subspan(count);
    const std::size_t unwound = unwinder.complete() ? unwind(start, rest) : 0;
    return count + (unwound > 0 ? unwound : captureFramesByPointer(start, rest));
}

std::size_t captureFramesByPointer(const ucontext_t& context, std::span<std::uint64_t> frames) noexcept {
    if (frames.empty()) return 0;
    std::size_t count = 0;
    frames[count++] = programCounter(context);
    std::uint64_t frame = framePointer(context);
    while (count < frames.size() && frame != 0) {
        std::array<std::uint64_t, 2> record{};  // the caller's frame pointer, the return address
        if (!readMemory(frame, record.data(), sizeof record) || record[1] == 0) break;
        frames[count++] = record[1];
        // Callers lie higher up; everything else is a loop or rubbish.
        if (record[0] <= frame) break;
        frame = record[0];
    }
    return count;
}

std::size_t registersOf(const ucontext_t& context, std::span<Register> registers) noexcept {
    std::size_t count = 0;
    const auto add = [&](const char* name, std::uint64_t value) {
        if (count < registers.size()) registers[count++] = {name, value};
    };
#if defined(__x86_64__)
    static constexpr struct {
        const char* name;
        int index;
    } kGeneral[] = {{"rax", REG_RAX}, {"rbx", REG_RBX},   {"rcx", REG_RCX}, {"rdx", REG_RDX},
                    {"rdi", REG_RDI}, {"rsi", REG_RSI},   {"rbp", REG_RBP}, {"rsp", REG_RSP},
                    {"r8", REG_R8},   {"r9", REG_R9},     {"r10", REG_R10}, {"r11", REG_R11},
                    {"r12", REG_R12}, {"r13", REG_R13},   {"r14", REG_R14}, {"r15", REG_R15},
                    {"rip", REG_RIP}, {"rflags", REG_EFL}};
    for (const auto& [name, index] : kGeneral) {
        add(name, static_cast<std::uint64_t>(context.uc_mcontext.gregs[index]));
    }
    // One word holds cs, gs and fs, 16 bits each, from the low end up.
    const auto segments = static_cast<std::uint64_t>(context.uc_mcontext.gregs[REG_CSGSFS]);
    add("cs", segments & 0xFFFF);
    add("fs", segments >> 32 & 0xFFFF);
    add("gs", segments >> 16 & 0xFFFF);
#else
    static constexpr const char* kNames[] = {"x0",  "x1",  "x2",  "x3",  "x4",  "x5",  "x6",  "x7",
                                             "x8",  "x9",  "x10", "x11", "x12", "x13", "x14", "x15",
                                             "x16", "x17", "x18", "x19", "x20", "x21", "x22", "x23",
                                             "x24", "x25", "x26", "x27", "x28", "fp",  "lr"};
    std::size_t index = 0;
    for (const char* name : kNames) add(name, context.uc_mcontext.regs[index++]);
    add("sp", context.uc_mcontext.sp);
    add("pc", context.uc_mcontext.pc);
    add("cpsr", context.uc_mcontext.pstate);
#endif
    return count;
}

}  // namespace zqcore::platform::crash
