#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace zqcore::platform {

class OneShotSignal;
struct LogOutputs;

/// What waits in the log queue. A line's text follows the record in memory, or lies in `body` if it is long.
struct LogRecord {
    enum class Kind : std::uint32_t {
        line,      // text behind the record
        longLine,  // body: std::string*
        work,      // body: DispatchBlock*
        end,       // the chunk is full, go on in the next one
    };
    std::uint32_t size;  // all bytes of the record; 0 until it is complete. Only through std::atomic_ref.
    Kind kind;
    std::uint32_t textSize;
    std::uint32_t line;
    LogOutputs* outputs;
    std::int64_t timestamp;
    std::uint64_t level;
    std::uint64_t flag;
    std::int64_t context;
    const char* file;
    const char* function;
    const void* tag;
    void* body;
    OneShotSignal* done;  // told when the record has been dealt with

    [[nodiscard]] const char* text() const noexcept { return reinterpret_cast<const char*>(this + 1); }
    [[nodiscard]] char* text() noexcept { return reinterpret_cast<char*>(this + 1); }
};

/// A queue of records without limit: any thread puts in without a lock, one thread at a time takes out.
/// Records lie one behind the other in chunks of memory. A writer reserves its bytes with one atomic addition
/// and completes the record by storing its size last. Chunks are never given back, only their pages: a
/// writer that still holds a chunk from before it was emptied finds it either full or open again, and both
/// are right; and a crash handler never reads memory that is gone.
class LogRecords final {
  public:
    static constexpr std::uint32_t kChunkSize = 64 * 1024 - sizeof(LogRecord);
    /// The most that one record may take.
    static constexpr std::uint32_t kLongest = 4096;

    LogRecords();
    LogRecords(const LogRecords&) = delete;
    LogRecords& operator=(const LogRecords&) = delete;
    ~LogRecords() = default;

    // Any thread.
    /// Zeroed space for a record of `size` bytes, a multiple of 8 and at most `kLongest`.
    [[nodiscard]] LogRecord* reserve(std::uint32_t size);
    static void complete(LogRecord* record, std::uint32_t size) noexcept {
        std::atomic_ref(record->size).store(size, std::memory_order_release);
    }
    /// Whether a record has been reserved that `next` has not given yet.
    [[nodiscard]] bool pending() const noexcept;

    // The taking side.
    /// The next record, or null if none is waiting. It lives until `retire`.
    [[nodiscard]] LogRecord* next() noexcept;
    /// Gives up all that `next` gave, or all but the last.
    void retire() { retireTo(next_); }
    void retireEarlier() { retireTo(last_); }

    // Round a fork(2).
    /// Keeps other threads from being amid their taking of memory, which the child would wait for without
    /// end. Taken behind the role of the drainer, as `retire` takes it; between the two calls this thread may
    /// only fork.
    void holdMemory() { poolMutex_.lock(); }
    void letGoOfMemory() { poolMutex_.unlock(); }
    /// Forgets every record, also those that were never completed. For the child.
    void abandon();

    /// Calls `visit` for each complete record that is not retired. For a crash handler: no lock, no
    /// allocation.
    template <class Visitor>
    void visit(Visitor&& visitor) const noexcept {
        for (Place place = oldest_; const LogRecord* record = step(place);) visitor(*record);
    }

  private:
    struct Chunk;
    struct Place {
        Chunk* chunk;
        std::uint32_t offset;
    };

    [[nodiscard]] Chunk* takeChunk();
    void close(Chunk* chunk, std::uint64_t position);
    void retireTo(Place place);
    void recycle(Chunk* chunk);
    static const LogRecord* step(Place& place) noexcept;

    std::atomic<Chunk*> open_;     // where writers reserve
    std::atomic<Chunk*> reading_;  // next_.chunk, for `pending`
    std::atomic<std::uint32_t> readOffset_{0};
    Place next_;
    Place last_;  // what `next` gave last
    Place oldest_;
    std::mutex poolMutex_;
    // Empty chunks, with their pages and without. The warm ones go first, or one large burst would leave its
    // cold chunks to every later one.
    std::vector<Chunk*> warm_;
    std::vector<Chunk*> cold_;
};

}  // namespace zqcore::platform
