#pragma once

#include <unistd.h>

#include <expected>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Base/NSError.h"

namespace zqcore::platform::posix {

/// An open file descriptor; closed at its end.
class Descriptor final {
  public:
    explicit Descriptor(int fd = -1) noexcept : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    [[nodiscard]] int get() const noexcept { return fd_; }
    explicit operator bool() const noexcept { return fd_ >= 0; }

  private:
    int fd_;
};

enum class Access { reading, changing };

/// The error that stands for `number` (errno), met while reading or changing `path`.
[[nodiscard]] NSError fileError(int number, std::string_view path, Access access);

/// All bytes of a regular file, in a loop over short reads.
[[nodiscard]] std::expected<std::string, NSError> readFile(const std::string& path);

/// Writes `temporary` anew with `mode`, then renames it onto `path`. With `durable` both the file and its
/// folder have reached the disk on return. The temporary file is gone on failure.
[[nodiscard]] std::expected<void, NSError> replaceFile(const std::string& path, const std::string& temporary,
                                                       std::string_view bytes, unsigned mode, bool durable);

}  // namespace zqcore::platform::posix
