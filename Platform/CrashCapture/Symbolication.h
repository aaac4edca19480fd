#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Value.h"

namespace zqcore::platform::crash {

/// The function that an address lies in.
struct Symbol {
    std::uint64_t address = 0;
    std::string name;
};

/// Names for addresses in files of code, as they lay in a process that may be long gone.
/// Threads: one at a time. Lifetime: what reading the files took is given back at the end.
/// Failure: a file that is missing, or another one by its build id, names nothing.
class SymbolSource {
  public:
    virtual ~SymbolSource() = default;
    /// Tells that the file at `path` lay at `address`. `uuid`: the head of its build id in hexadecimal
    /// digits; empty if that isn't known.
    virtual void addImage(std::uint64_t address, const std::string& path, std::string_view uuid) = 0;
    [[nodiscard]] virtual std::optional<Symbol> symbolAt(std::uint64_t address) = 0;

    /// The system's reader of debugging information; a null pointer where its library isn't installed.
    [[nodiscard]] static std::unique_ptr<SymbolSource> open();
};

// A C++ name as its author wrote it; unchanged if it is none. Types are written as `type_info::name` gives
// them.
[[nodiscard]] std::string demangledSymbol(const std::string& name);
[[nodiscard]] std::string demangledType(const std::string& name);

/// Adds to every frame of a report the image and the symbol it lies in, and writes the type of an exception
/// as its author did. Any thread.
void symbolicate(Value::Dictionary& report);

}  // namespace zqcore::platform::crash
