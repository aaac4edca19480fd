#pragma once

#include <cstddef>
#include <utility>

#include "Platform/Dispatch/DispatchBlock.h"

namespace zqcore::platform {

/// Blocks in the order in which they were added, each in the room that it really needs. They lie in pieces of
/// memory that grow with the length and never move, so a long list costs no copying, and a third of the pages
/// that whole `DispatchBlock`s would: first touches of fresh pages are what a burst of blocks pays for.
/// Threads: one at a time. Lifetime: blocks that were not run end with the list.
class BlockList final {
  public:
    BlockList() noexcept = default;
    BlockList(const BlockList&) = delete;
    BlockList& operator=(const BlockList&) = delete;
    ~BlockList();

    [[nodiscard]] bool empty() const noexcept { return first_ == last_ && read_ == written_; }
    void add(DispatchBlock&& block);
    /// Runs the first block in its place and ends it. The list must not be empty.
    void runFirst();
    void swap(BlockList& other) noexcept;
    /// Once empty: gives back all but the first small piece.
    void shrink() noexcept;

  private:
    struct Piece {
        Piece* next;
        // Of the bytes behind it; once there is a next piece, how many of them are taken.
        std::size_t size;
        [[nodiscard]] std::byte* bytes() noexcept { return reinterpret_cast<std::byte*>(this + 1); }
    };
    using Operations = DispatchBlock::Operations;

    static constexpr std::size_t kSmallest = 512;
    static constexpr std::size_t kLargest = std::size_t{16} * 1024;

    // A block's entry: a pointer to its operations, then what it captured.
    static constexpr std::size_t kHead = sizeof(void*);
    static constexpr std::size_t entrySize(std::size_t captured) noexcept {
        constexpr std::size_t unit = DispatchBlock::kAlignment;
        return kHead + (captured + unit - 1) / unit * unit;
    }

    void addPiece();
    const Operations& takeEntry(void*& captured) noexcept;
    void nextPiece() noexcept;
    static void release(Piece* piece) noexcept;

    Piece* first_ = nullptr;
    Piece* last_ = nullptr;
    // Where the first block lies in the first piece, and where the next one goes in the last.
    std::size_t read_ = 0;
    std::size_t written_ = 0;
};

}  // namespace zqcore::platform
