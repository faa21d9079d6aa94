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

/* Only qualifiers may be added: elements of a view can't become smaller or larger ones */
template <class From, class To>
using IsSameElement = std::is_convertible<std::remove_pointer_t<From> (*)[], To (*)[]>;

/** Makes a view of anything that has its elements behind `data()` and their count in `size()`. */
template <class T>
struct ArrayViewOfContainer {
    template <class Container, class = std::enable_if_t<IsSameElement<
                                   decltype(std::declval<Container&>().data()), T>::value>>
    static constexpr ArrayView<T> from(Container& container) {
        return {container.data(), container.size()};
    }
};

/** Says which containers convert to a view; specialized beside each of them. */
template <class T, class Container, class = void>
struct ArrayViewConverter;
template <class T, class U>
struct ArrayViewConverter<const T, ArrayView<U>> : ArrayViewOfContainer<const T> {};
/* A view of the same type is a copy */
template <class T>
struct ArrayViewConverter<const T, ArrayView<const T>>;

template <class T, class Container>
using ArrayViewFrom = decltype(ArrayViewConverter<T, std::decay_t<Container>>::from(
    std::declval<std::remove_reference_t<Container>&>()));

/* Keeps a literal 0, which is a size, from being taken for a null pointer */
template <class Pointer, class T>
using IfPointerTo = std::enable_if_t<std::is_convertible<Pointer, T*>::value &&
                                     !std::is_convertible<Pointer, std::size_t>::value>;

template <class Container>
using ElementOf = std::remove_pointer_t<decltype(std::declval<Container&>().data())>;

} // namespace Implementation

/** Stands in for Corrade's view of elements that someone else owns. */
template <class T>
class ArrayView {
public:
    using Type = T;

    constexpr ArrayView(std::nullptr_t = nullptr) noexcept : _data{}, _size{} {}
    constexpr ArrayView(T* data, std::size_t size) noexcept : _data{data}, _size{size} {}
    template <class U, std::size_t size,
              class = std::enable_if_t<Implementation::IsSameElement<U*, T>::value>>
    constexpr ArrayView(U (&data)[size]) noexcept : _data{data}, _size{size} {}
    template <class Container, class = Implementation::ArrayViewFrom<T, Container>>
    constexpr ArrayView(Container&& container) noexcept
        : _data{container.data()}, _size{container.size()} {}

    constexpr explicit operator bool() const { return _data; }

    constexpr T* data() const { return _data; }
    constexpr std::size_t size() const { return _size; }
    constexpr bool isEmpty() const { return !_size; }

    constexpr T* begin() const { return _data; }
    constexpr T* cbegin() const { return _data; }
    constexpr T* end() const { return _data + _size; }
    constexpr T* cend() const { return _data + _size; }

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
    constexpr ArrayView slice(T* begin, T* end) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            _data <= begin && begin <= end && end <= _data + _size,
            "Containers::ArrayView::slice(): slice [%td:%td] out of range for %zu elements",
            begin - _data, end - _data, _size);
        return {begin, std::size_t(end - begin)};
    }
    constexpr ArrayView sliceSize(std::size_t begin, std::size_t size) const {
        return slice(begin, begin + size);
    }
    template <class Pointer, class = Implementation::IfPointerTo<Pointer, T>>
    constexpr ArrayView sliceSize(Pointer begin, std::size_t size) const {
        return slice(begin, begin + size);
    }
    constexpr ArrayView prefix(std::size_t size) const { return slice(0, size); }
    template <class Pointer, class = Implementation::IfPointerTo<Pointer, T>>
    constexpr ArrayView prefix(Pointer end) const {
        return static_cast<T*>(end) ? slice(_data, end) : ArrayView{};
    }
    constexpr ArrayView suffix(T* begin) const {
        return _data && !begin ? ArrayView{} : slice(begin, end());
    }
    constexpr ArrayView exceptPrefix(std::size_t size) const { return slice(size, _size); }
    constexpr ArrayView exceptSuffix(std::size_t size) const { return slice(0, _size - size); }

private:
    T* _data;
    std::size_t _size;
};

/** View of bytes: a view of anything converts to it, with its size in bytes. */
template <>
class ArrayView<const void> {
public:
    using Type = const void;

    constexpr ArrayView(std::nullptr_t = nullptr) noexcept : _data{}, _size{} {}
    constexpr ArrayView(const void* data, std::size_t size) noexcept : _data{data}, _size{size} {}
    template <class T>
    constexpr ArrayView(const T* data, std::size_t size) noexcept
        : _data{data}, _size{size * sizeof(T)} {}
    template <class T, std::size_t size>
    constexpr ArrayView(T (&data)[size]) noexcept : _data{data}, _size{size * sizeof(T)} {}
    template <class T>
    constexpr ArrayView(ArrayView<T> view) noexcept : ArrayView{view.data(), view.size()} {}
    template <class Container, class T = Implementation::ElementOf<const Container>,
              class = Implementation::ArrayViewFrom<T, const Container>>
    constexpr ArrayView(const Container& container) noexcept
        : ArrayView{container.data(), container.size()} {}

    constexpr explicit operator bool() const { return _data; }
    constexpr const void* data() const { return _data; }
    constexpr std::size_t size() const { return _size; }
    constexpr bool isEmpty() const { return !_size; }

private:
    const void* _data;
    std::size_t _size;
};

/** The same for bytes that may be written. */
template <>
class ArrayView<void> {
public:
    using Type = void;

    constexpr ArrayView(std::nullptr_t = nullptr) noexcept : _data{}, _size{} {}
    constexpr ArrayView(void* data, std::size_t size) noexcept : _data{data}, _size{size} {}
    template <class T>
    constexpr ArrayView(T* data, std::size_t size) noexcept
        : _data{data}, _size{size * sizeof(T)} {}
    template <class T, std::size_t size, class = std::enable_if_t<!std::is_const<T>::value>>
    constexpr ArrayView(T (&data)[size]) noexcept : _data{data}, _size{size * sizeof(T)} {}
    template <class T, class = std::enable_if_t<!std::is_const<T>::value>>
    constexpr ArrayView(ArrayView<T> view) noexcept : ArrayView{view.data(), view.size()} {}
    template <class Container, class T = Implementation::ElementOf<Container>,
              class = std::enable_if_t<!std::is_const<T>::value>,
              class = Implementation::ArrayViewFrom<T, Container>>
    constexpr ArrayView(Container&& container) noexcept
        : ArrayView{container.data(), container.size()} {}

    constexpr explicit operator bool() const { return _data; }
    constexpr void* data() const { return _data; }
    constexpr std::size_t size() const { return _size; }
    constexpr bool isEmpty() const { return !_size; }

    constexpr operator ArrayView<const void>() const noexcept { return {_data, _size}; }

private:
    void* _data;
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
template <class T>
constexpr ArrayView<T> arrayView(ArrayView<T> view) {
    return view;
}
/** The view lives as long as the list, that is to the end of the full expression. */
template <class T>
constexpr ArrayView<const T> arrayView(std::initializer_list<T> list) {
    return {list.begin(), list.size()};
}
template <class Container, class T = Implementation::ElementOf<Container>,
          class = Implementation::ArrayViewFrom<T, Container>>
constexpr ArrayView<T> arrayView(Container&& container) {
    return std::forward<Container>(container);
}

/** Sees the same bytes as elements of another type; expects that they make whole elements. */
template <class U, class T>
ArrayView<U> arrayCast(ArrayView<T> view) {
    static_assert(std::is_standard_layout<T>::value && std::is_standard_layout<U>::value,
                  "both types have to be standard layout");
    const std::size_t bytes = view.size() * sizeof(T);
    VESPERMOOR_STANDINS_ASSERT(
        bytes % sizeof(U) == 0,
        "Containers::arrayCast(): can't reinterpret %zu %zu-byte items into a %zu-byte type",
        view.size(), sizeof(T), sizeof(U));
    return {reinterpret_cast<U*>(view.data()), bytes / sizeof(U)};
}

template <std::size_t size, class T>
constexpr std::size_t arraySize(T (&)[size]) {
    return size;
}
template <class T>
constexpr std::size_t arraySize(ArrayView<T> view) {
    return view.size();
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
