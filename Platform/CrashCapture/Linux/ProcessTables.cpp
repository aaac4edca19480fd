#include "Platform/CrashCapture/Linux/ProcessTables.h"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Platform/CrashCapture/Linux/FrameCapture.h"
#include "Platform/CrashCapture/Linux/ReportWriter.h"

namespace zqcore::platform::crash {

namespace {

ssize_t readSome(int fd, void* into, std::size_t size) noexcept {
    ssize_t count = 0;
    do count = read(fd, into, size);
    while (count < 0 && errno == EINTR);
    return count;
}

// Whole lines of a file, one at a time, through a buffer of its own. What is longer than the buffer is cut.
class LineReader final {
  public:
    explicit LineReader(int fd) noexcept : fd_(fd) {}

    bool next(std::string_view& line) noexcept {
        for (;;) {
            const std::string_view rest(buffer_.data() + first_, last_ - first_);
            if (const std::size_t end = rest.find('\n'); end != std::string_view::npos) {
                line = rest.substr(0, end);
                first_ += end + 1;
                return true;
            }
            std::memmove(buffer_.data(), rest.data(), rest.size());
            first_ = 0;
            last_ = rest.size() < buffer_.size() ? rest.size() : 0;
            const ssize_t count = readSome(fd_, buffer_.data() + last_, buffer_.size() - last_);
            if (count <= 0) return false;
            last_ += static_cast<std::size_t>(count);
        }
    }

  private:
    int fd_;
    std::size_t first_ = 0;
    std::size_t last_ = 0;
    std::array<char, 8192> buffer_;
};

std::uint64_t takeHexadecimal(std::string_view& text) noexcept {
    std::uint64_t value = 0;
    while (!text.empty()) {
        const char c = text[0];
        const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
        if (digit < 0) break;
        value = value * 16 + static_cast<unsigned>(digit);
        text.remove_prefix(1);
    }
    return value;
}

// One line of proc(5) maps: "START-END PERM OFFSET MAJOR:MINOR INODE      PATH".
struct Mapping {
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    bool executable = false;
    std::string_view path;
};

Mapping parseMapping(std::string_view line) noexcept {
    Mapping mapping;
    mapping.start = takeHexadecimal(line);
    if (!line.empty()) line.remove_prefix(1);
    mapping.end = takeHexadecimal(line);
    if (line.size() > 5) {
        mapping.executable = line[3] == 'x';
        line.remove_prefix(6);
    }
    const std::size_t path = line.find_first_of("/[");
    if (path != std::string_view::npos) mapping.path = line.substr(path);
    // A program that was replaced while it runs is still known by its name; its build id tells the
    // difference.
    constexpr std::string_view kDeleted = " (deleted)";
    if (mapping.path.ends_with(kDeleted)) mapping.path.remove_suffix(kDeleted.size());
    return mapping;
}

// Looks through one segment of notes, elf(5): three words, the owner's name, the content, each part padded.
void findBuildId(std::uint64_t address, std::uint64_t size, LoadedImage& image) noexcept {
    std::array<unsigned char, 512> notes;
    const std::size_t length = size < notes.size() ? static_cast<std::size_t>(size) : notes.size();
    if (!readMemory(address, notes.data(), length)) return;
    const auto padded = [](std::size_t bytes) { return (bytes + 3) & ~std::size_t{3}; };
    for (std::size_t at = 0; at + sizeof(ElfW(Nhdr)) <= length;) {
        ElfW(Nhdr) note;
        std::memcpy(&note, notes.data() + at, sizeof note);
        const std::size_t name = at + sizeof note;
        const std::size_t content = name + padded(note.n_namesz);
        const std::size_t end = content + padded(note.n_descsz);
        if (end > length || end <= at) return;
        constexpr std::string_view kOwner("GNU\0", 4);
        if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == kOwner.size() &&
            std::memcmp(notes.data() + name, kOwner.data(), kOwner.size()) == 0 &&
            note.n_descsz <= image.buildId.size()) {
            std::memcpy(image.buildId.data(), notes.data() + content, note.n_descsz);
            image.buildIdSize = note.n_descsz;
            return;
        }
        at = end;
    }
}

void readHeaders(LoadedImage& image) noexcept {
    ElfW(Ehdr) header{};
    std::array<ElfW(Phdr), 24> segments;
    if (!readMemory(image.address, &header, sizeof header)) return;
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_phentsize != sizeof(ElfW(Phdr))) return;
    const std::size_t count = header.e_phnum < segments.size() ? header.e_phnum : segments.size();
    if (!readMemory(image.address + header.e_phoff, segments.data(), count * sizeof segments[0])) return;
    const std::span<const ElfW(Phdr)> all = std::span(segments).first(count);
    for (const ElfW(Phdr) & segment : all) {
        if (segment.p_type != PT_LOAD) continue;
        image.preferredAddress = segment.p_vaddr;
        break;
    }
    for (const ElfW(Phdr) & segment : all) {
        if (segment.p_type != PT_NOTE || image.buildIdSize != 0) continue;
        findBuildId(image.address - image.preferredAddress + segment.p_vaddr, segment.p_memsz, image);
    }
}

// The signal stack is small, so what is large lies here. One report is written at a time.
std::array<char, 4096> imagePath;

}  // namespace

void forEachLoadedImage(ImageCallback callback, void* context) noexcept {
    const int fd = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    LineReader lines(fd);
    LoadedImage image;
    bool hasCode = false;
    const auto finish = [&] {
        if (hasCode) {
            readHeaders(image);
            callback(image, context);
        }
        image = LoadedImage{};
        hasCode = false;
    };
    std::string_view line;
    while (lines.next(line)) {
        const Mapping mapping = parseMapping(line);
        const bool isCode = mapping.path.starts_with('/') || mapping.path == "[vdso]";
        if (!isCode) continue;
        if (mapping.path != image.path) {
            finish();
            const std::size_t length =
                mapping.path.size() < imagePath.size() ? mapping.path.size() : imagePath.size();
            std::memcpy(imagePath.data(), mapping.path.data(), length);
            image.path = {imagePath.data(), length};
            image.address = mapping.start;
        }
        image.size = mapping.end - image.address;
        hasCode = hasCode || mapping.executable;
    }
    finish();
    close(fd);
}

std::size_t listThreads(std::span<int> identifiers) noexcept {
    const int fd = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return 0;
    std::size_t count = 0;
    alignas(8) std::array<char, 2048> buffer;
    for (;;) {
        const long bytes = syscall(SYS_getdents64, fd, buffer.data(), buffer.size());
        if (bytes <= 0) break;
        // getdents64(2): inode 8, offset 8, record length 2, type 1, then the name.
        constexpr long kLengthAt = 16;
        constexpr long kNameAt = 19;
        for (long at = 0; at + kNameAt < bytes;) {
            std::uint16_t length = 0;
            std::memcpy(&length, buffer.data() + at + kLengthAt, sizeof length);
            int identifier = 0;
            for (const char* digit = buffer.data() + at + kNameAt; *digit >= '0' && *digit <= '9'; ++digit) {
                identifier = identifier * 10 + (*digit - '0');
            }
            if (identifier != 0 && count < identifiers.size()) identifiers[count++] = identifier;
            at += length;
        }
    }
    close(fd);
    return count;
}

std::string_view threadName(int identifier, std::span<char> buffer) noexcept {
    std::array<char, 64> path{};
    std::size_t used = 0;
    const auto append = [&](std::string_view text) {
        std::memcpy(path.data() + used, text.data(), text.size());
        used += text.size();
    };
    std::array<char, 20> digits;
    append("/proc/self/task/");
    append(digitsOf(static_cast<unsigned>(identifier), 10, digits));
    append("/comm");
    const int fd = open(path.data(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return {};
    const ssize_t count = readSome(fd, buffer.data(), buffer.size());
    close(fd);
    std::string_view name(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    if (name.ends_with('\n')) name.remove_suffix(1);
    return name;
}

}  // namespace zqcore::platform::crash
