#pragma once

#include <concepts>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace zqcore::platform {

/// A piece of work, made from anything that can be called without arguments. It runs once. An exception that
/// leaves it ends the process, as it would leave a thread, so that crash capture sees it.
/// One cache line: what is captured lies inside up to 56 bytes and on the heap above. Threads: a value, used
/// by one thread at a time. Lifetime: moving leaves it empty; what it captured ends when it is reset or ends.
/// Failure: calling an empty one is a fault of the caller.
class DispatchBlock final {
  public:
    DispatchBlock() noexcept = default;
    DispatchBlock(std::nullptr_t) noexcept {}

    template <class F>
    requires(!std::same_as<std::decay_t<F>, DispatchBlock> && std::invocable<std::decay_t<F>&>)
        DispatchBlock(F&& callable) {
        using Callable = std::decay_t<F>;
        if constexpr (kInline<Callable>) {
            ::new (static_cast<void*>(storage_)) Callable(std::forward<F>(callable));
            operations_ = &kInlineOperations<Callable>;
        } else {
            ::new (static_cast<void*>(storage_)) Callable*(new Callable(std::forward<F>(callable)));
            operations_ = &kHeapOperations<Callable>;
        }
    }

    DispatchBlock(DispatchBlock&& other) noexcept { take(other); }
    DispatchBlock& operator=(DispatchBlock&& other) noexcept {
        if (this != &other) {
            reset();
            take(other);
        }
        return *this;
    }
    ~DispatchBlock() { reset(); }

    [[nodiscard]] explicit operator bool() const noexcept { return operations_ != nullptr; }
    void operator()() { operations_->invoke(storage_); }

    /// Ends what was captured.
    void reset() noexcept {
        // Empty first: a destructor of the captured may come back here.
        const Operations* operations = std::exchange(operations_, nullptr);
        if (operations && operations->destroy) operations->destroy(storage_);
    }

  private:
    // Keeps the blocks of a queue in a closer packing.
    friend class BlockList;

    static constexpr std::size_t kInlineSize = 56;
    static constexpr std::size_t kAlignment = alignof(void*);

    struct Operations {
        // Of what lies in the storage.
        std::size_t size;
        void (*invoke)(void* storage);
        // Null: the bytes may be copied, and nothing has to end.
        void (*relocate)(void* from, void* to) noexcept;
        void (*destroy)(void* storage) noexcept;
    };

    template <class C>
    static constexpr bool kInline = sizeof(C) <= kInlineSize &&
                                    alignof(C) <= kAlignment&& std::is_nothrow_move_constructible_v<C>;
    template <class C>
    static constexpr bool kTrivial = std::is_trivially_copyable_v<C>;

    template <class C>
    static void invokeInline(void* storage) {
        (void)(*std::launder(static_cast<C*>(storage)))();
    }
    template <class C>
    static void relocateInline(void* from, void* to) noexcept {
        C* source = std::launder(static_cast<C*>(from));
        ::new (to) C(std::move(*source));
        source->~C();
    }
    template <class C>
    static void destroyInline(void* storage) noexcept {
        std::launder(static_cast<C*>(storage))->~C();
    }
    template <class C>
    static void invokeHeap(void* storage) {
        (void)(**std::launder(static_cast<C**>(storage)))();
    }
    template <class C>
    static void destroyHeap(void* storage) noexcept {
        delete *std::launder(static_cast<C**>(storage));
    }

    template <class C>
    static constexpr Operations kInlineOperations{sizeof(C), &invokeInline<C>,
                                                  kTrivial<C> ? nullptr : &relocateInline<C>,
                                                  kTrivial<C> ? nullptr : &destroyInline<C>};
    template <class C>
    static constexpr Operations kHeapOperations{sizeof(C*), &invokeHeap<C>, nullptr, &destroyHeap<C>};

    static void relocate(const Operations& operations, void* from, void* to) noexcept {
        if (operations.relocate) {
            operations.relocate(from, to);
        } else {
            std::memcpy(to, from, operations.size);
        }
    }
    void take(DispatchBlock& other) noexcept {
        operations_ = std::exchange(other.operations_, nullptr);
        if (operations_) relocate(*operations_, other.storage_, storage_);
    }

    alignas(kAlignment) std::byte storage_[kInlineSize];
    const Operations* operations_ = nullptr;
};

}  // namespace zqcore::platform
