#pragma once

#include <atomic>
#include <concepts>
#include <cstdint>
#include <source_location>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Base/Export.h"

namespace zqcore::platform {
class DDLog;
}  // namespace zqcore::platform

namespace zqcore {

/// The level mask that every log call passes: error 1, warning 2, info 4, debug 8, verbose 16. Initially 7.
ZQ_EXPORT extern std::atomic<std::uint64_t> ZQDefaultLogLevel;
/// Whether the log calls and the banner write asynchronously. Initially 1.
ZQ_EXPORT extern std::atomic<std::uint8_t> ZQDefaultLogAsyncEnabled;

namespace logging {

inline constexpr std::uint64_t kFlagError = 1;
inline constexpr std::uint64_t kFlagInfo = 4;
inline constexpr std::uint64_t kFlagVerbose = 16;
inline constexpr std::uint64_t kLevelAll = ~std::uint64_t{0};

/// Set once the stored level has been restored; until then the level can't be judged.
ZQ_EXPORT extern std::atomic<bool> ready;
ZQ_EXPORT void initializeOnce();
ZQ_EXPORT void write(std::string_view message, std::uint64_t level, std::uint64_t flag, bool asynchronous,
                     DDLog* ddlog, const std::source_location& where);
/// The same for a text that may be taken over, which spares copying long ones.
ZQ_EXPORT void write(std::string&& message, std::uint64_t level, std::uint64_t flag, bool asynchronous,
                     DDLog* ddlog, const std::source_location& where);

/// The current level, the stored one restored first.
[[nodiscard]] inline std::uint64_t level() {
    if (!ready.load(std::memory_order_acquire)) [[unlikely]]
        initializeOnce();
    return ZQDefaultLogLevel.load(std::memory_order_relaxed);
}

template <class T>
concept Message = std::invocable<T&> || std::convertible_to<T, std::string_view>;

/// A built text as std::string&&, any other as a view of it.
template <Message T>
[[nodiscard]] decltype(auto) text(T&& message) {
    if constexpr (std::invocable<T&>) {
        return std::string(message());
    } else if constexpr (std::same_as<T, std::string>) {
        return std::forward<T>(message);
    } else {
        return std::string_view(message);
    }
}

/// What a call at or above the level does. Out of line, and with what it needs by value, so that below the
/// level the caller neither saves a register nor stores anything. `T` is a reference for what the caller
/// keeps.
template <class T>
[[gnu::noinline]] void build(T message, std::uint64_t current, std::uint64_t flag, DDLog* ddlog,
                             std::source_location where) {
    write(text(std::forward<T>(message)), current, flag,
          ZQDefaultLogAsyncEnabled.load(std::memory_order_relaxed) != 0, ddlog, where);
}

/// Below the level a call costs two loads and builds nothing.
template <Message T>
inline void log(T&& message, std::uint64_t flag, DDLog* ddlog, const std::source_location& where) {
    const std::uint64_t current = level();
    if ((current & flag) == 0) return;
    if constexpr (std::invocable<T&> || std::same_as<T, std::string>) {
        build<T>(std::forward<T>(message), current, flag, ddlog, where);
    } else {
        build<std::string_view>(message, current, flag, ddlog, where);
    }
}

}  // namespace logging

/// Writes one line at info level. `message` is a text or, better, a callable that builds it: it is called
/// only if the line is really written. `ddlog` is the logger, a null pointer the shared one. Any thread;
/// never throws for its own part and reports no failure. `ZQLogError` and `ZQLogVerbose` are the same at
/// their levels.
template <logging::Message T>
void ZQLogInfo(T&& message, DDLog* ddlog = nullptr,
               const std::source_location& where = std::source_location::current()) {
    logging::log(std::forward<T>(message), logging::kFlagInfo, ddlog, where);
}

template <logging::Message T>
void ZQLogError(T&& message, DDLog* ddlog = nullptr,
                const std::source_location& where = std::source_location::current()) {
    logging::log(std::forward<T>(message), logging::kFlagError, ddlog, where);
}

template <logging::Message T>
void ZQLogVerbose(T&& message, DDLog* ddlog = nullptr,
                  const std::source_location& where = std::source_location::current()) {
    logging::log(std::forward<T>(message), logging::kFlagVerbose, ddlog, where);
}

/// Writes an error line if `condition` is false, whatever the level, and returns when the line is out. Never
/// stops the process.
template <logging::Message T>
void ZQAssert(bool condition, T&& message, DDLog* ddlog = nullptr,
              const std::source_location& where = std::source_location::current()) {
    if (condition) return;
    logging::write(logging::text(std::forward<T>(message)), logging::kLevelAll, logging::kFlagError, false,
                   ddlog, where);
}

/// Writes the calling thread's call stack at verbose level. Any thread.
ZQ_EXPORT void logCallStackSymbols(const std::source_location& where = std::source_location::current());

}  // namespace zqcore
