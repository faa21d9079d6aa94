#ifndef VespermoorStandins_Corrade_Containers_Pointer_h
#define VespermoorStandins_Corrade_Containers_Pointer_h

#include <cstddef>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/Implementation/Assertion.h"
#include "Corrade/Tags.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stand-in for Corrade's owner of one object on the heap. */
template <class T>
class Pointer {
    static_assert(!std::is_array<T>::value, "use Containers::Array for arrays instead");

public:
    Pointer(std::nullptr_t = nullptr) noexcept : _pointer{} {}
    explicit Pointer(T* pointer) noexcept : _pointer{pointer} {}
    template <class... Args>
    explicit Pointer(InPlaceInitT, Args&&... args) : _pointer{new T{std::forward<Args>(args)...}} {}
    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    Pointer(Pointer<U>&& other) noexcept : _pointer{other.release()} {
        static_assert(std::is_trivially_destructible<U>::value ||
                          std::has_virtual_destructor<T>::value,
                      "deleting the derived type through its base needs a virtual destructor");
    }

    Pointer(const Pointer&) = delete;
    Pointer(Pointer&& other) noexcept : _pointer{other.release()} {}
    Pointer& operator=(const Pointer&) = delete;
    Pointer& operator=(Pointer&& other) noexcept {
        std::swap(_pointer, other._pointer);
        return *this;
    }
    ~Pointer() { delete _pointer; }

    explicit operator bool() const { return _pointer; }

    T* operator->() { return checked(); }
    const T* operator->() const { return checked(); }
    T& operator*() { return *checked(); }
    const T& operator*() const { return *checked(); }

    T* release() { return std::exchange(_pointer, nullptr); }

private:
    T* checked() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(_pointer, "Containers::Pointer: the pointer is null");
        return _pointer;
    }

    T* _pointer;
};

template <class T, class... Args>
Pointer<T> pointer(Args&&... args) {
    return Pointer<T>{InPlaceInit, std::forward<Args>(args)...};
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
