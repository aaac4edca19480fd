#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

// Private to the solver.
namespace zqcore::platform {

/// A vector of plain values whose first `N` need no memory of their own: the solver has hundreds of short
/// lists, and few that grow long.
template <class T, std::size_t N>
class InlineVector final {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    InlineVector() = default;
    InlineVector(const InlineVector& other) { assign(other.begin(), other.end()); }
    InlineVector(InlineVector&& other) noexcept { take(other); }
    InlineVector& operator=(const InlineVector& other) {
        if (this != &other) assign(other.begin(), other.end());
        return *this;
    }
    InlineVector& operator=(InlineVector&& other) noexcept {
        if (this != &other) take(other);
        return *this;
    }
    ~InlineVector() = default;

    [[nodiscard]] T* begin() noexcept { return heap_ ? heap_.get() : room_; }
    [[nodiscard]] T* end() noexcept { return begin() + size_; }
    [[nodiscard]] const T* begin() const noexcept { return heap_ ? heap_.get() : room_; }
    [[nodiscard]] const T* end() const noexcept { return begin() + size_; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    [[nodiscard]] T& operator[](std::size_t index) noexcept { return begin()[index]; }
    [[nodiscard]] const T& back() const noexcept { return end()[-1]; }

    void clear() noexcept { size_ = 0; }
    /// To a smaller size.
    void shrinkTo(std::size_t size) noexcept { size_ = size; }
    void push_back(const T& value) {
        const T kept = value;
        reserve(size_ + 1);
        begin()[size_++] = kept;
    }
    void insert(const T* at, const T& value) {
        const auto index = static_cast<std::size_t>(at - begin());
        push_back(value);
        std::rotate(begin() + index, end() - 1, end());
    }
    void append(const T* first, const T* last) {
        reserve(size_ + static_cast<std::size_t>(last - first));
        size_ = static_cast<std::size_t>(std::copy(first, last, end()) - begin());
    }
    void erase(T* at) noexcept { erase(at, at + 1); }
    void erase(T* first, T* last) noexcept {
        size_ = static_cast<std::size_t>(std::copy(last, end(), first) - begin());
    }
    template <class Goes>
    void eraseIf(const Goes& goes) {
        erase(std::remove_if(begin(), end(), goes), end());
    }

  private:
    void reserve(std::size_t size) {
        if (size <= capacity_) return;
        capacity_ = std::max(size, 2 * capacity_);
        auto larger = std::make_unique_for_overwrite<T[]>(capacity_);
        std::copy(begin(), end(), larger.get());
        heap_ = std::move(larger);
    }
    void assign(const T* first, const T* last) {
        size_ = 0;
        append(first, last);
    }
    void take(InlineVector& other) noexcept {
        if (!other.heap_) return assign(other.begin(), other.end());
        heap_ = std::move(other.heap_);
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, N);
    }

    std::unique_ptr<T[]> heap_;  // null: in `room_`
    std::size_t size_ = 0;
    std::size_t capacity_ = N;
    T room_[N];
};

}  // namespace zqcore::platform
