#ifndef VespermoorEngine_Function_h
#define VespermoorEngine_Function_h

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include <Corrade/Tags.h>

namespace VespermoorEngine {

template <class Signature>
class Function;

/**
 * @brief Callable that is kept inside the object: never allocates, moves, isn't copied.
 *
 * The stored callable is moved by copying its bytes, without its move constructor, so it must
 * survive that: function pointers and captures of pointers, references and numbers do; a capture
 * that holds its own address (many standard strings and lists) does not. Everything it refers to
 * must outlive it.
 */
template <class Result, class... Arguments>
class Function<Result(Arguments...)> {
public:
    /** @brief Bytes that a callable may take. */
    static constexpr std::size_t Capacity = 64;

    /** @brief Empty function, which must not be called. */
    Function() noexcept : storage{} {}

    /**
     * @brief Stores @p callable, whose call operator is constant.
     *
     * Its result is dropped if the signature returns nothing. A callable larger than @ref Capacity
     * or aligned more strictly than `std::max_align_t` does not compile.
     */
    template <class Callable>
    Function(Corrade::DefaultInitT, Callable callable)
        : invoker{&invoke<Callable>}, destroyer{&destroy<Callable>}, storage{} {
        static_assert(sizeof(Callable) <= Capacity,
                      "the callable is larger than the 64 bytes that a Function stores in place");
        static_assert(alignof(Callable) <= alignof(std::max_align_t),
                      "the callable is aligned more strictly than a Function stores it");
        new (storage) Callable(std::move(callable));
    }

    Function(const Function&) = delete;
    Function& operator=(const Function&) = delete;

    /** @brief Takes the callable over from @p other, which is empty afterwards. */
    Function(Function&& other) noexcept : invoker{other.invoker}, destroyer{other.destroyer} {
        std::memcpy(storage, other.storage, Capacity);
        other.invoker = nullptr;
        other.destroyer = nullptr;
    }

    /** @brief Exchanges the callables of the two. */
    Function& operator=(Function&& other) noexcept {
        std::swap(invoker, other.invoker);
        std::swap(destroyer, other.destroyer);
        std::swap(storage, other.storage);
        return *this;
    }

    ~Function() {
        if (destroyer) {
            destroyer(storage);
        }
    }

    /** @brief Whether a callable is stored. */
    explicit operator bool() const noexcept { return invoker; }

    /** @brief Calls the stored callable; there has to be one. */
    Result operator()(Arguments... arguments) const {
        return invoker(storage, std::forward<Arguments>(arguments)...);
    }

private:
    template <class Callable>
    static Result invoke(const void* const callable, Arguments... arguments) {
        const Callable& stored = *std::launder(static_cast<const Callable*>(callable));
        if constexpr (std::is_void_v<Result>) {
            stored(std::forward<Arguments>(arguments)...);
        } else {
            return stored(std::forward<Arguments>(arguments)...);
        }
    }

    template <class Callable>
    static void destroy(void* const callable) {
        std::launder(static_cast<Callable*>(callable))->~Callable();
    }

    Result (*invoker)(const void*, Arguments...) = nullptr;
    void (*destroyer)(void*) = nullptr;
    alignas(std::max_align_t) std::byte storage[Capacity];
};

} // namespace VespermoorEngine

#endif
