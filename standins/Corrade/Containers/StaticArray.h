#ifndef VespermoorStandins_Corrade_Containers_StaticArray_h
#define VespermoorStandins_Corrade_Containers_StaticArray_h

#include <cstddef>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/ArrayView.h"
#include "Corrade/Tags.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stands in for Corrade's array of a size that the type says. */
template <std::size_t size_, class T>
class StaticArray {
public:
    using Type = T;
    enum : std::size_t { Size = size_ };

    constexpr StaticArray() : _data{} {}
    constexpr explicit StaticArray(ValueInitT) : _data{} {}
    template <class First, class... Next,
              class = std::enable_if_t<std::is_convertible<First&&, T>::value>>
    constexpr StaticArray(First&& first, Next&&... next)
        : _data{std::forward<First>(first), std::forward<Next>(next)...} {
        static_assert(sizeof...(Next) + 1 == size_, "wrong number of initializers");
    }
    template <class... Args>
    constexpr explicit StaticArray(InPlaceInitT, Args&&... args)
        : _data{std::forward<Args>(args)...} {
        static_assert(sizeof...(Args) == size_, "wrong number of initializers");
    }

    constexpr explicit operator bool() const { return true; }
    constexpr T* data() { return _data; }
    constexpr const T* data() const { return _data; }
    constexpr std::size_t size() const { return size_; }
    constexpr bool isEmpty() const { return !size_; }
    constexpr T* begin() { return _data; }
    constexpr const T* begin() const { return _data; }
    constexpr T* end() { return _data + size_; }
    constexpr const T* end() const { return _data + size_; }
    constexpr T& front() { return _data[0]; }
    constexpr const T& front() const { return _data[0]; }
    constexpr T& back() { return _data[size_ - 1]; }
    constexpr const T& back() const { return _data[size_ - 1]; }
    constexpr T& operator[](std::size_t i) { return _data[checked(i)]; }
    constexpr const T& operator[](std::size_t i) const { return _data[checked(i)]; }

private:
    static constexpr std::size_t checked(std::size_t i) {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            i < size_,
            "Containers::StaticArray::operator[](): index %zu out of range for %zu elements", i,
            size_);
        return i;
    }

    T _data[size_];
};

namespace Implementation {

template <class T, std::size_t size, class U>
struct ArrayViewConverter<T, StaticArray<size, U>> : ArrayViewOfContainer<T> {};

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
