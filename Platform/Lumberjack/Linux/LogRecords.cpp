#include "Platform/Lumberjack/Linux/LogRecords.h"

#include <sched.h>
#include <sys/mman.h>

#include <cstring>
#include <new>
#include <utility>

// Of the leak checker, where one watches: by itself it doesn't look into mapped memory.
extern "C" [[gnu::weak]] void __lsan_register_root_region(const void* start, std::size_t size);  // NOLINT

namespace zqcore::platform {

namespace {

// This many empty chunks keep their pages; a burst's others give them back.
constexpr std::size_t kWarmChunks = 8;
// Behind the last byte there is room for an end mark, wherever the last record ends.
constexpr std::size_t kMapped = LogRecords::kChunkSize + sizeof(LogRecord);

std::uint32_t sizeOf(const LogRecord* record) noexcept {
    return std::atomic_ref(const_cast<LogRecord*>(record)->size).load(std::memory_order_acquire);
}

void pauseBriefly(unsigned round) noexcept {
    if (round >= 32) ::sched_yield();
}

}  // namespace

struct LogRecords::Chunk {
    /// Bytes handed out. Beyond kChunkSize the chunk is full; an empty chunk in the pool counts as full too.
    std::atomic<std::uint64_t> reserved{kChunkSize + 1};
    std::atomic<Chunk*> next{nullptr};
    std::byte* bytes = nullptr;

    [[nodiscard]] LogRecord* at(std::uint64_t offset) const noexcept {
        return reinterpret_cast<LogRecord*>(bytes + offset);
    }
};

LogRecords::LogRecords() {
    Chunk* first = takeChunk();
    open_.store(first);
    reading_.store(first);
    next_ = last_ = oldest_ = {first, 0};
}

LogRecords::Chunk* LogRecords::takeChunk() {
    Chunk* chunk = nullptr;
    {
        const std::lock_guard lock(poolMutex_);
        std::vector<Chunk*>& pool = warm_.empty() ? cold_ : warm_;
        if (!pool.empty()) {
            chunk = pool.back();
            pool.pop_back();
        }
    }
    if (!chunk) {
        void* bytes = ::mmap(nullptr, kMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (bytes == MAP_FAILED) throw std::bad_alloc();
        if (__lsan_register_root_region) __lsan_register_root_region(bytes, kMapped);
        chunk = new Chunk;
        chunk->bytes = static_cast<std::byte*>(bytes);
    }
    chunk->next.store(nullptr, std::memory_order_relaxed);
    chunk->reserved.store(0);
    return chunk;
}

LogRecord* LogRecords::reserve(std::uint32_t size) {
    for (;;) {
        Chunk* chunk = open_.load();
        // Sequentially consistent, as are `pending` and the sleep flag of the queue: either the writer sees
        // the queue asleep, or the queue sees this reservation before it sleeps.
        const std::uint64_t position = chunk->reserved.fetch_add(size);
        if (position + size <= kChunkSize) return chunk->at(position);
        if (position <= kChunkSize) {
            close(chunk, position);  // exactly one writer crosses the end
            continue;
        }
        for (unsigned round = 0; open_.load() == chunk && chunk->reserved.load() > kChunkSize; ++round)
            pauseBriefly(round);
    }
}

void LogRecords::close(Chunk* chunk, std::uint64_t position) {
    Chunk* fresh = takeChunk();
    LogRecord* end = chunk->at(position);
    end->kind = LogRecord::Kind::end;
    complete(end, sizeof(LogRecord));
    chunk->next.store(fresh, std::memory_order_release);
    // A writer with an old pointer may have filled this chunk before it was opened here.
    Chunk* expected = chunk;
    for (unsigned round = 0; !open_.compare_exchange_weak(expected, fresh); ++round) {
        expected = chunk;
        pauseBriefly(round);
    }
}

bool LogRecords::pending() const noexcept {
    return reading_.load()->reserved.load() > readOffset_.load(std::memory_order_relaxed);
}

LogRecord* LogRecords::next() noexcept {
    for (;;) {
        if (next_.chunk->reserved.load() <= next_.offset) return nullptr;
        LogRecord* record = next_.chunk->at(next_.offset);
        // Reserved: its writer is at it, or was just put off the processor.
        for (unsigned round = 0; sizeOf(record) == 0; ++round) pauseBriefly(round);
        if (record->kind != LogRecord::Kind::end) {
            last_ = next_;
            next_.offset += record->size;
            readOffset_.store(next_.offset, std::memory_order_relaxed);
            return record;
        }
        Chunk* following = nullptr;
        for (unsigned round = 0; !(following = next_.chunk->next.load(std::memory_order_acquire)); ++round)
            pauseBriefly(round);
        next_ = {following, 0};
        readOffset_.store(0, std::memory_order_relaxed);
        reading_.store(following);
    }
}

void LogRecords::retireTo(Place place) {
    while (oldest_.chunk != place.chunk) {
        Chunk* emptied = oldest_.chunk;
        oldest_ = {emptied->next.load(std::memory_order_acquire), 0};
        recycle(emptied);
    }
    oldest_.offset = place.offset;
}

void LogRecords::recycle(Chunk* chunk) {
    const std::lock_guard lock(poolMutex_);
    if (warm_.size() < kWarmChunks) {
        std::memset(chunk->bytes, 0, kMapped);
        warm_.push_back(chunk);
    } else {
        ::madvise(chunk->bytes, kMapped, MADV_DONTNEED);
        cold_.push_back(chunk);
    }
}

void LogRecords::abandon() {
    Chunk* fresh = takeChunk();
    open_.store(fresh);
    reading_.store(fresh);
    readOffset_.store(0);
    next_ = last_ = oldest_ = {fresh, 0};
}

const LogRecord* LogRecords::step(Place& place) noexcept {
    while (place.chunk && place.chunk->reserved.load() > place.offset) {
        const LogRecord* record = place.chunk->at(place.offset);
        const std::uint32_t size = sizeOf(record);
        if (size == 0) return nullptr;
        if (record->kind != LogRecord::Kind::end) {
            place.offset += size;
            return record;
        }
        place = {place.chunk->next.load(std::memory_order_acquire), 0};
    }
    return nullptr;
}

}  // namespace zqcore::platform
