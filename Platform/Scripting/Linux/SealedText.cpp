#include "Platform/Scripting/Linux/SealedText.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {
namespace {

constexpr int kSeals = F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW;

[[nodiscard]] bool writeAll(int file, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// How many bytes were really there.
[[nodiscard]] std::size_t readAll(int file, char* bytes, std::size_t size) noexcept {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ::pread(file, bytes + done, size - done, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

}  // namespace

bool isSendableText(std::string_view text) noexcept {
    return text.size() <= kLargestText &&
           (text.empty() || std::memchr(text.data(), '\0', text.size()) == nullptr) && isValidUTF8(text);
}

FileDescriptor makeSealedText(std::string_view text) noexcept {
    FileDescriptor file(::memfd_create("zqcore-text", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file || !writeAll(file.get(), text)) return FileDescriptor();
    if (::fcntl(file.get(), F_ADD_SEALS, kSeals | F_SEAL_SEAL) != 0) return FileDescriptor();
    return file;
}

std::expected<std::string, std::string> readSealedText(const FileDescriptor& file) {
    // Only memory files have seals; on a pipe or a plain file this fails, so nothing here can block.
    const int seals = ::fcntl(file.get(), F_GET_SEALS);
    if (seals < 0 || (seals & kSeals) != kSeals) return std::unexpected("the file isn't sealed");
    struct stat facts {};
    if (::fstat(file.get(), &facts) != 0 || facts.st_size < 0) return std::unexpected("the file has no size");
    const auto size = static_cast<std::size_t>(facts.st_size);
    if (size > kLargestText) return std::unexpected("the text is too large");

    std::string text;
    text.resize_and_overwrite(
        size, [&](char* bytes, std::size_t count) { return readAll(file.get(), bytes, count); });
    if (text.size() != size) return std::unexpected("the file can't be read");
    if (!isSendableText(text)) return std::unexpected("the text isn't UTF-8 without NUL");
    return text;
}

int putCarriedText(sd_bus_message* message, bool exchange, std::string_view text,
                   const FileDescriptor& file) {
    if (exchange && file) return sd_bus_message_append(message, "v", "h", file.get());
    // An array is shorter than 64 MiB on a bus, so a text that found no memory for its file goes as one.
    const bool bytes = exchange && text.size() < kSealedTextThreshold;
    int put = exchange ? sd_bus_message_open_container(message, 'v', bytes ? "ay" : "s") : 0;
    void* room = nullptr;
    char* place = nullptr;
    if (put >= 0 && bytes) put = sd_bus_message_append_array_space(message, 'y', text.size(), &room);
    if (put >= 0 && !bytes) put = sd_bus_message_append_string_space(message, text.size(), &place);
    if (put < 0) return put;
    std::ranges::copy(text, bytes ? static_cast<char*>(room) : place);
    return exchange ? sd_bus_message_close_container(message) : put;
}

int takeCarriedText(sd_bus_message* message, CarriedText& carried) {
    char type = 0;
    const char* content = nullptr;
    int read = sd_bus_message_peek_type(message, &type, &content);
    if (read <= 0) return read < 0 ? read : -EBADMSG;
    if (type == 'v') {
        const std::string_view kind(content);
        if (kind != "s" && kind != "ay" && kind != "h") return -EBADMSG;
        read = sd_bus_message_enter_container(message, 'v', content);
        if (read < 0) return read;
        type = kind.front();
    }
    if (type == 's') {
        const char* text = nullptr;
        read = sd_bus_message_read_basic(message, 's', &text);
        if (read > 0) carried.text = text;
        return read;
    }
    if (type == 'a') {
        const void* bytes = nullptr;
        std::size_t size = 0;
        read = sd_bus_message_read_array(message, 'y', &bytes, &size);
        if (read < 0) return read;
        const std::string_view text(static_cast<const char*>(bytes), size);
        if (!isSendableText(text)) return -EBADMSG;
        carried.text = text;
        return read;
    }
    if (type != 'h') return -EBADMSG;
    int descriptor = -1;
    read = sd_bus_message_read_basic(message, 'h', &descriptor);
    if (read <= 0) return read;
    // The message keeps its own; ours outlives it.
    carried.file = FileDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
    return carried.file ? read : -errno;
}

}  // namespace zqcore::platform
