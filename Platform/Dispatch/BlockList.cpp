#include "Platform/Dispatch/BlockList.h"

#include <algorithm>
#include <new>

namespace zqcore::platform {

BlockList::~BlockList() {
    while (!empty()) {
        void* captured = nullptr;
        const Operations& operations = takeEntry(captured);
        if (operations.destroy) operations.destroy(captured);
    }
    while (first_) release(std::exchange(first_, first_->next));
}

void BlockList::release(Piece* piece) noexcept { ::operator delete(piece); }

void BlockList::addPiece() {
    const std::size_t size = last_ ? std::min(last_->size * 2, kLargest) : kSmallest;
    auto* piece = static_cast<Piece*>(::operator new(sizeof(Piece) + size));
    piece->next = nullptr;
    piece->size = size;
    if (last_) {
        last_->size = written_;
        last_->next = piece;
    } else {
        first_ = piece;
    }
    last_ = piece;
    written_ = 0;
}

void BlockList::nextPiece() noexcept {
    release(std::exchange(first_, first_->next));
    read_ = 0;
}

void BlockList::add(DispatchBlock&& block) {
    const Operations* operations = block.operations_;
    const std::size_t size = entrySize(operations->size);
    if (!last_ || written_ + size > last_->size) addPiece();
    std::byte* entry = last_->bytes() + written_;
    written_ += size;
    *reinterpret_cast<const Operations**>(entry) = operations;
    block.operations_ = nullptr;
    DispatchBlock::relocate(*operations, block.storage_, entry + kHead);
}

const BlockList::Operations& BlockList::takeEntry(void*& captured) noexcept {
    if (read_ == first_->size && first_ != last_) nextPiece();
    std::byte* entry = first_->bytes() + read_;
    const Operations* operations = *reinterpret_cast<const Operations**>(entry);
    read_ += entrySize(operations->size);
    captured = entry + kHead;
    return *operations;
}

void BlockList::runFirst() {
    void* captured = nullptr;
    const Operations& operations = takeEntry(captured);
    operations.invoke(captured);
    if (operations.destroy) operations.destroy(captured);
    // The last piece serves again.
    if (empty()) read_ = written_ = 0;
}

void BlockList::swap(BlockList& other) noexcept {
    std::swap(first_, other.first_);
    std::swap(last_, other.last_);
    std::swap(read_, other.read_);
    std::swap(written_, other.written_);
}

void BlockList::shrink() noexcept {
    if (!first_ || first_->size <= kSmallest) return;
    release(first_);
    first_ = last_ = nullptr;
    read_ = written_ = 0;
}

}  // namespace zqcore::platform
