// What a report says, section by section. Runs in the signal handler: system calls and static memory only.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>

#include "Platform/CrashCapture/Linux/CrashFacts.h"
#include "Platform/CrashCapture/Linux/FrameCapture.h"
#include "Platform/CrashCapture/Linux/ProcessTables.h"
#include "Platform/CrashCapture/Linux/ReportWriter.h"
#include "Platform/CrashCapture/Linux/ThreadSnapshots.h"

namespace zqcore::platform::crash {

namespace {

const HandlerConfiguration* settings = nullptr;
const CrashFacts* facts = nullptr;
ReportWriter writer;
int file = -1;
std::array<char, PATH_MAX> path{};

HandlerFault firstFault;
bool faulted = false;

std::array<std::uint64_t, 128> frames{};
std::size_t frameCount = 0;
std::array<int, 512> threads{};
std::size_t threadCount = 0;

// The platform's name and number for what stopped the process, mach(7)-like, and for why.
struct SignalFacts {
    int signal;
    const char* name;
    int exception;
    const char* exceptionName;
};
constexpr SignalFacts kSignals[] = {
    {SIGSEGV, "SIGSEGV", 1, "EXC_BAD_ACCESS"},    {SIGBUS, "SIGBUS", 1, "EXC_BAD_ACCESS"},
    {SIGILL, "SIGILL", 2, "EXC_BAD_INSTRUCTION"}, {SIGFPE, "SIGFPE", 3, "EXC_ARITHMETIC"},
    {SIGTRAP, "SIGTRAP", 6, "EXC_BREAKPOINT"},    {SIGABRT, "SIGABRT", 10, "EXC_CRASH"},
    {SIGSYS, "SIGSYS", 10, "EXC_CRASH"},
};

const SignalFacts* factsOf(int signal) noexcept {
    for (const SignalFacts& entry : kSignals) {
        if (entry.signal == signal) return &entry;
    }
    return nullptr;
}

struct CodeName {
    int signal;
    int code;
    const char* name;
    int machCode;
    const char* machName;
};
constexpr CodeName kCodes[] = {
    {SIGSEGV, SEGV_MAPERR, "SEGV_MAPERR", 1, "KERN_INVALID_ADDRESS"},
    {SIGSEGV, SEGV_ACCERR, "SEGV_ACCERR", 2, "KERN_PROTECTION_FAILURE"},
    {SIGBUS, BUS_ADRALN, "BUS_ADRALN", 0, nullptr},
    {SIGBUS, BUS_ADRERR, "BUS_ADRERR", 10, "KERN_MEMORY_ERROR"},
    {SIGBUS, BUS_OBJERR, "BUS_OBJERR", 10, "KERN_MEMORY_ERROR"},
    {SIGILL, ILL_ILLOPC, "ILL_ILLOPC", 0, nullptr},
    {SIGILL, ILL_ILLOPN, "ILL_ILLOPN", 0, nullptr},
    {SIGILL, ILL_PRVOPC, "ILL_PRVOPC", 0, nullptr},
    {SIGFPE, FPE_INTDIV, "FPE_INTDIV", 0, nullptr},
    {SIGFPE, FPE_INTOVF, "FPE_INTOVF", 0, nullptr},
    {SIGFPE, FPE_FLTDIV, "FPE_FLTDIV", 0, nullptr},
    {SIGFPE, FPE_FLTINV, "FPE_FLTINV", 0, nullptr},
    {SIGTRAP, TRAP_BRKPT, "TRAP_BRKPT", 0, nullptr},
    {SIGTRAP, TRAP_TRACE, "TRAP_TRACE", 0, nullptr},
};

// Codes that any signal may carry.
const char* originOf(int code) noexcept {
    switch (code) {
        case SI_USER:
            return "SI_USER";
        case SI_KERNEL:
            return "SI_KERNEL";
        case SI_QUEUE:
            return "SI_QUEUE";
        case SI_TKILL:
            return "SI_TKILL";
        default:
            return nullptr;
    }
}

bool isFault() noexcept { return !facts->isException && facts->info.si_code > 0; }

// The guard page lies just beyond the stack pointer, or a large frame's size away from it.
bool isStackOverflow() noexcept {
    if (facts->signal != SIGSEGV || !isFault()) return false;
    constexpr std::uint64_t kLargeFrame = 64 * 1024;
    const auto address = reinterpret_cast<std::uint64_t>(facts->info.si_addr);
    const std::uint64_t top = stackPointer(*facts->context);
    return address <= top + 4096 && address + kLargeFrame >= top;
}

// ---- The sections ----

void captureCrashedThread() {
    frameCount = captureFrames(*facts->context, frames);
    const std::size_t skipped = std::min(facts->skippedFrames, frameCount);
    std::copy(frames.begin() + static_cast<long>(skipped), frames.begin() + static_cast<long>(frameCount),
              frames.begin());
    frameCount -= skipped;
}

// When the unwinder failed on the crashed stack, its frame pointers may still lead through.
void rescueFrames() {
    if (frameCount == 0) frameCount = captureFramesByPointer(*facts->context, frames);
}

void captureOtherThreads() {
    threadCount = listThreads(threads);
    requestSnapshots(std::span(threads).first(threadCount));
}

void writeReportMembers() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    writer.beginObject("report");
    writer.text("type", "standard");
    writer.integer("timestamp", std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000);
    writer.members(settings->reportMembers);
    writer.end();
}

void writeSystem() {
    writer.beginObject("system");
    writer.integer("process_id", getpid());
    writer.integer("parent_process_id", getppid());
    writer.members(settings->systemMembers);
    writer.end();
}

void writeSignal(int signal, int code, bool isKernelCode) {
    const SignalFacts* known = factsOf(signal);
    const CodeName* name = std::find_if(std::begin(kCodes), std::end(kCodes), [&](const CodeName& entry) {
        return isKernelCode && entry.signal == signal && entry.code == code;
    });
    if (name == std::end(kCodes)) name = nullptr;
    writer.beginObject("mach");
    writer.integer("exception", known ? known->exception : 0);
    if (known) writer.text("exception_name", known->exceptionName);
    writer.integer("code", name ? name->machCode : 0);
    if (name && name->machName) writer.text("code_name", name->machName);
    writer.end();
    writer.beginObject("signal");
    writer.integer("signal", signal);
    if (known) writer.text("name", known->name);
    writer.integer("code", code);
    const char* codeName = name ? name->name : isKernelCode ? originOf(code) : nullptr;
    if (codeName) writer.text("code_name", codeName);
    writer.end();
}

void writeError() {
    writer.beginObject("error");
    writer.text("type", facts->isException ? "cpp_exception" : "signal");
    writer.unsignedInteger("address", isFault() ? reinterpret_cast<std::uint64_t>(facts->info.si_addr) : 0);
    writeSignal(facts->signal, facts->isException ? 0 : facts->info.si_code, !facts->isException);
    if (facts->isException) {
        if (facts->hasReason) writer.text("reason", facts->exceptionReason.data());
        writer.beginObject("cpp_exception");
        writer.text("name", facts->exceptionName.data());
        writer.end();
    } else if (isStackOverflow()) {
        writer.text("reason", "Stack overflow");
    }
    writer.end();
}

void writeFrames(std::span<const std::uint64_t> addresses, std::size_t skipped) {
    writer.beginObject("backtrace");
    writer.unsignedInteger("skipped", skipped);
    writer.beginArray("contents");
    for (const std::uint64_t address : addresses) {
        writer.beginObject();
        writer.unsignedInteger("instruction_addr", address);
        writer.end();
    }
    writer.end();
    writer.end();
}

// A thread that never got a name of its own carries the program's, and a worker's tells less than its
// queue's.
void writeName(int identifier, std::string_view queueLabel) {
    std::array<char, 32> program;
    std::array<char, 32> buffer;
    const std::string_view name = threadName(identifier, buffer);
    const bool isWorker = !queueLabel.empty() && name.starts_with("zq.");
    if (!name.empty() && !isWorker && name != threadName(getpid(), program)) writer.text("name", name);
    if (!queueLabel.empty()) writer.text("dispatch_queue", queueLabel);
}

std::size_t indexOf(int identifier) noexcept {
    const auto end = threads.begin() + static_cast<long>(threadCount);
    const auto found = std::find(threads.begin(), end, identifier);
    return found == end ? 0 : static_cast<std::size_t>(found - threads.begin());
}

// First of all threads, since it is the one that counts if the report ends here.
void writeCrashedThread() {
    writer.beginObject();
    writer.unsignedInteger("index", indexOf(facts->thread));
    writer.boolean("crashed", true);
    writer.boolean("current_thread", true);
    writeFrames(std::span(frames).first(frameCount), facts->skippedFrames);
    std::array<Register, 40> registers;
    const std::size_t count = registersOf(*facts->context, registers);
    writer.beginObject("registers");
    writer.beginObject("basic");
    for (const Register& entry : std::span(registers).first(count))
        writer.unsignedInteger(entry.name, entry.value);
    writer.end();
    writer.end();
    writeName(facts->thread, currentQueueLabel());
    writer.end();
}

void writeOtherThreads() {
    for (std::size_t index = 0; index < threadCount; ++index) {
        if (threads[index] == facts->thread) continue;
        const ThreadSnapshot snapshot = snapshotOf(threads[index]);
        writer.beginObject();
        writer.unsignedInteger("index", index);
        writer.boolean("crashed", false);
        writer.boolean("current_thread", false);
        writeName(threads[index], snapshot.queueLabel);
        writeFrames(snapshot.frames, 0);
        writer.end();
    }
}

void writeImage(const LoadedImage& image, void*) {
#if defined(__x86_64__)
    constexpr std::int64_t kType = 0x0100'0007;
    constexpr std::int64_t kSubtype = 3;
#else
    constexpr std::int64_t kType = 0x0100'000C;
    constexpr std::int64_t kSubtype = 0;
#endif
    writer.beginObject();
    writer.unsignedInteger("image_addr", image.address);
    writer.unsignedInteger("image_size", image.size);
    writer.unsignedInteger("image_vmaddr", image.preferredAddress);
    writer.text("name", image.path);
    std::array<char, 64> uuid;
    for (std::size_t i = 0; i < image.buildIdSize; ++i) {
        uuid[2 * i] = "0123456789abcdef"[image.buildId[i] >> 4];
        uuid[2 * i + 1] = "0123456789abcdef"[image.buildId[i] & 15];
    }
    // As long as the platform's; a build id is mostly longer, and its head as good as the whole.
    if (image.buildIdSize > 0)
        writer.text("uuid", {uuid.data(), std::min<std::size_t>(2 * image.buildIdSize, 32)});
    writer.integer("cpu_type", kType);
    writer.integer("cpu_subtype", kSubtype);
    writer.end();
}

void writeImages() {
    writer.beginArray("binary_images");
    forEachLoadedImage(writeImage, nullptr);
    writer.end();
}

void writePendingLog() {
    if (!settings->pendingLogWriter) return;
    // What is known so far goes out first: the writer is the application's, and the least known code in here.
    writer.flush();
    const std::size_t end = std::strlen(path.data());
    const std::size_t extension = end - std::strlen(kReportExtension);
    std::memcpy(path.data() + extension, kLogExtension, std::strlen(kLogExtension) + 1);
    const int log = open(path.data(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (log < 0) return;
    settings->pendingLogWriter(log);
    if (lseek(log, 0, SEEK_CUR) == 0) unlink(path.data());
    close(log);
}

void writeRecrash() {
    if (!faulted) return;
    writer.beginObject("recrash_report");
    writer.beginObject("crash");
    writer.beginObject("error");
    writer.text("type", "signal");
    writer.unsignedInteger("address", firstFault.address);
    writer.text("reason", firstFault.section);
    writeSignal(firstFault.signal, 0, false);
    writer.end();
    writer.beginArray("threads");
    writer.beginObject();
    writer.boolean("crashed", true);
    writeFrames(std::span(firstFault.frames).first(firstFault.frameCount), 0);
    writer.end();
    writer.end();
    writer.end();
    writer.end();
}

constexpr ReportSection kSections[] = {
    {"report", writeReportMembers},
    {"system", writeSystem},
    {"frames", captureCrashedThread},
    {"frame pointers", rescueFrames},
    {"threads", captureOtherThreads},
    {"crash", [] { writer.beginObject("crash"); }},
    {"error", writeError},
    {"thread list", [] { writer.beginArray("threads"); }},
    {"crashed thread", writeCrashedThread},
    {"other threads", writeOtherThreads},
    {"end of crash", [] { writer.closeTo(1); }},
    {"images", writeImages},
    {"pending log", writePendingLog},
    {"recrash", writeRecrash},
};

}  // namespace

std::string_view signalName(int signal) noexcept {
    const SignalFacts* known = factsOf(signal);
    return known ? known->name : std::string_view();
}

int beginReport(const HandlerConfiguration& configuration, const CrashFacts& crash) noexcept {
    settings = &configuration;
    facts = &crash;
    constexpr std::size_t kNumberDigits = 16;
    const std::size_t prefix = configuration.reportPrefix.size();
    const std::size_t extension = std::strlen(kReportExtension) + 1;
    if (prefix + kNumberDigits + extension > path.size()) return -1;
    // Another process of the same application may have taken the number.
    for (std::uint64_t number = configuration.firstNumber; number < configuration.firstNumber + 1000;
         ++number) {
        std::memcpy(path.data(), configuration.reportPrefix.data(), prefix);
        std::array<char, 20> digits;
        const std::string_view text = digitsOf(number, 16, digits);
        std::memset(path.data() + prefix, '0', kNumberDigits);
        std::memcpy(path.data() + prefix + kNumberDigits - text.size(), text.data(), text.size());
        std::memcpy(path.data() + prefix + kNumberDigits, kReportExtension, extension);
        file = open(path.data(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (file >= 0 || errno != EEXIST) break;
    }
    if (file < 0) return -1;
    // Held until the file is closed, or this process is gone: a reader that gets it finds what will ever be
    // there.
    flock(file, LOCK_EX | LOCK_NB);
    writer.open(file);
    writer.beginObject();
    return file;
}

const ReportSection* reportSections(std::size_t& count) noexcept {
    count = std::size(kSections);
    return kSections;
}

std::size_t reportDepth() noexcept { return writer.depth(); }

void abandonSection(std::size_t depth, const HandlerFault& fault) noexcept {
    writer.closeTo(depth);
    if (!faulted) firstFault = fault;
    faulted = true;
}

void endReport() noexcept {
    writer.boolean("complete", true);
    writer.closeTo(0);
    writer.flush();
    fsync(file);
    close(file);
}

}  // namespace zqcore::platform::crash
