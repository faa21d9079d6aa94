#ifndef VespermoorStandins_Corrade_Containers_ArrayView_h
#define VespermoorStandins_Corrade_Containers_ArrayView_h

#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/Implementation/Assertion.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

/** Whether views of it can be made, as of a C array; specialized beside each container. */
template <class Container>
constexpr bool hasElements = false;
template <class T>
constexpr bool hasElements<ArrayView<T>> = true;

template <class Container>
using ElementOf = std::remove_pointer_t<decltype(std::declval<Container&>().data())>;

/* Only qualifiers may be added: elements of a view can't become smaller or larger ones */
template <class From, class To>
using IfSameElement = std::enable_if_t<std::is_convertible<From (*)[], To (*)[]>::value>;
template <class Container>
using IfElements = std::enable_if_t<hasElements<std::decay_t<Container>>>;

} // namespace Implementation

/** Stand-in for Corrade's view of elements that someone else owns. */
template <class T>
class ArrayView {
public:
    constexpr ArrayView(std::nullptr_t = nullptr) noexcept : _data{}, _size{} {}
    constexpr ArrayView(T* data, std::size_t size) noexcept : _data{data}, _size{size} {}
    template <class U, std::size_t size, class = Implementation::IfSameElement<U, T>>
    constexpr ArrayView(U (&data)[size]) noexcept : _data{data}, _size{size} {}
    template <class Container, class = Implementation::IfElements<Container>,
              class Element = Implementation::ElementOf<std::remove_reference_t<Container>>,
              class = Implementation::IfSameElement<Element, T>>
    constexpr ArrayView(Container&& container) noexcept
        : _data{container.data()}, _size{container.size()} {}

    constexpr explicit operator bool() const { return _data; }

    constexpr T* data() const { return _data; }
    constexpr std::size_t size() const { return _size; }
    constexpr bool isEmpty() const { return !_size; }
    constexpr T* begin() const { return _data; }
    constexpr T* end() const { return _data + _size; }

    constexpr T& front() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(_size, "Containers::ArrayView::front(): view is empty");
        return _data[0];
    }
    constexpr T& back() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(_size, "Containers::ArrayView::back(): view is empty");
        return _data[_size - 1];
    }
    constexpr T& operator[](std::size_t i) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            i < _size,
            "Containers::ArrayView::operator[](): index %zu out of range for %zu elements", i,
            _size);
        return _data[i];
    }

    constexpr ArrayView slice(std::size_t begin, std::size_t end) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            begin <= end && end <= _size,
            "Containers::ArrayView::slice(): slice [%zu:%zu] out of range for %zu elements", begin,
            end, _size);
        return {_data + begin, end - begin};
    }
    constexpr ArrayView prefix(std::size_t size) const { return slice(0, size); }
    constexpr ArrayView exceptPrefix(std::size_t size) const { return slice(size, _size); }
    constexpr ArrayView exceptSuffix(std::size_t size) const { return slice(0, _size - size); }

private:
    T* _data;
    std::size_t _size;
};

/** View of bytes, to which every view converts, with its size in bytes. */
template <>
class ArrayView<const void> {
public:
    constexpr ArrayView(std::nullptr_t = nullptr) noexcept : _data{}, _size{} {}
    constexpr ArrayView(const void* data, std::size_t size) noexcept : _data{data}, _size{size} {}
    template <class T, std::size_t size>
    constexpr ArrayView(T (&data)[size]) noexcept : _data{data}, _size{sizeof(data)} {}
    template <class Container, class = Implementation::IfElements<Container>>
    constexpr ArrayView(const Container& container) noexcept
        : _data{container.data()}, _size{container.size() * sizeof(*container.data())} {}

    constexpr const void* data() const { return _data; }
    constexpr std::size_t size() const { return _size; }

private:
    const void* _data;
    std::size_t _size;
};

template <class T>
constexpr ArrayView<T> arrayView(T* data, std::size_t size) {
    return {data, size};
}
template <std::size_t size, class T>
constexpr ArrayView<T> arrayView(T (&data)[size]) {
    return data;
}
/** The view lives as long as the list: to the end of the full expression. */
template <class T>
constexpr ArrayView<const T> arrayView(std::initializer_list<T> list) {
    return {list.begin(), list.size()};
}
template <class Container, class = Implementation::IfElements<Container>>
constexpr auto arrayView(Container&& container) {
    return arrayView(container.data(), container.size());
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
