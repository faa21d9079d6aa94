#ifndef VespermoorEngine_Function_h
#define VespermoorEngine_Function_h

#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

#include <Corrade/Tags.h>

namespace VespermoorEngine {

template <class Signature>
class Function;

/**
 * @brief Callable that is kept inside the object: never allocates, moves, isn't copied.
 *
 * The stored callable is moved by copying its bytes and without a call to its move constructor, so
 * it has to survive that: function pointers and captures of pointers, references and numbers do, a
 * capture that holds its own address (many standard strings and lists) does not. What it refers to
 * has to outlive it.
 */
template <class Result, class... Arguments>
class Function<Result(Arguments...)> {
public:
    /** @brief Bytes that a callable may take. */
    static constexpr std::size_t Capacity = 64;

    /** @brief Empty function, which is expected not to be called. */
    Function() noexcept = default;

    /**
     * @brief Stores @p callable, whose call operator is constant.
     *
     * One that is larger than @ref Capacity or aligned more strictly than @cpp std::max_align_t @ce
     * does not compile.
     */
    template <class Callable>
    explicit Function(Corrade::DefaultInitT, Callable callable)
        : _invoker{&invoke<Callable>}, _destroyer{&destroy<Callable>} {
        static_assert(sizeof(Callable) <= Capacity,
                      "the callable is larger than the 64 bytes that a Function stores in place");
        static_assert(alignof(Callable) <= alignof(std::max_align_t),
                      "the callable is aligned more strictly than a Function stores it");
        new (_storage) Callable(std::move(callable));
    }

    Function(const Function&) = delete;
    Function& operator=(const Function&) = delete;

    /** @brief Takes the callable over from @p other, which is empty afterwards. */
    Function(Function&& other) noexcept
        : _invoker{std::exchange(other._invoker, nullptr)},
          _destroyer{std::exchange(other._destroyer, nullptr)} {
        std::memcpy(_storage, other._storage, Capacity);
    }

    /** @brief Exchanges the callables of the two. */
    Function& operator=(Function&& other) noexcept {
        std::swap(_invoker, other._invoker);
        std::swap(_destroyer, other._destroyer);
        std::swap(_storage, other._storage);
        return *this;
    }

    ~Function() {
        if (_destroyer) {
            _destroyer(_storage);
        }
    }

    /** @brief Whether a callable is stored. */
    explicit operator bool() const noexcept { return _invoker; }

    /** @brief Calls the stored callable; expects that there is one. */
    Result operator()(Arguments... arguments) const {
        return _invoker(_storage, std::forward<Arguments>(arguments)...);
    }

private:
    template <class Callable>
    static Result invoke(const void* const storage, Arguments... arguments) {
        return (*std::launder(static_cast<const Callable*>(storage)))(
            std::forward<Arguments>(arguments)...);
    }

    template <class Callable>
    static void destroy(void* const storage) {
        std::launder(static_cast<Callable*>(storage))->~Callable();
    }

    Result (*_invoker)(const void*, Arguments...) = nullptr;
    void (*_destroyer)(void*) = nullptr;
    alignas(std::max_align_t) std::byte _storage[Capacity]{};
};

} // namespace VespermoorEngine

#endif
