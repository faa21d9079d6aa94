#ifndef VespermoorStandins_Corrade_Containers_Array_h
#define VespermoorStandins_Corrade_Containers_Array_h

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/ArrayView.h"
#include "Corrade/Tags.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

template <class T>
struct GrowableMemory;

/** Makes an element at an address that holds none, aggregates included. */
template <class T, class... Args>
void construct(T* where, Args&&... args) {
    new (where) T{std::forward<Args>(args)...};
}

/** Elements of a size that is known only later are made one by one in this raw memory. */
template <class T>
struct RawMemory {
    static constexpr bool Trivial = std::is_trivially_constructible<T>::value;

    static T* allocate(std::size_t size) {
        if constexpr (Trivial)
            return size ? new T[size] : nullptr;
        else
            return size ? std::allocator<T>{}.allocate(size) : nullptr;
    }
    static void destroy(T* data, std::size_t size) {
        if (!data)
            return;
        std::destroy_n(data, size);
        std::allocator<T>{}.deallocate(data, size);
    }
    /* Trivial elements are freed by the array's default */
    static constexpr auto deleter() -> void (*)(T*, std::size_t) {
        return Trivial ? nullptr : destroy;
    }
};

} // namespace Implementation

/**
 * Stands in for Corrade's owning array. A null function as the deleter means `delete[]`; growing
 * functions are in `Corrade/Containers/GrowableArray.h`.
 */
template <class T, class D>
class Array {
public:
    using Type = T;
    using Deleter = D;

    Array(std::nullptr_t = nullptr) noexcept : _data{}, _size{}, _deleter{} {}
    explicit Array(ValueInitT, std::size_t size)
        : _data{size ? new T[size]() : nullptr}, _size{size}, _deleter{} {}
    explicit Array(NoInitT, std::size_t size)
        : _data{Implementation::RawMemory<T>::allocate(size)},
          _size{size},
          _deleter{Implementation::RawMemory<T>::deleter()} {}
    template <class... Args>
    explicit Array(DirectInitT, std::size_t size, Args&&... args) : Array{NoInit, size} {
        for (T& element : *this)
            Implementation::construct(&element, args...);
    }
    Array(InPlaceInitT, ArrayView<const T> list) : Array{NoInit, list.size()} {
        std::uninitialized_copy(list.begin(), list.end(), _data);
    }
    Array(InPlaceInitT, std::initializer_list<T> list) : Array{InPlaceInit, arrayView(list)} {}
    explicit Array(T* data, std::size_t size, D deleter = {}) noexcept
        : _data{data}, _size{size}, _deleter(deleter) {}
    explicit Array(ArrayView<T> view, D deleter) noexcept
        : Array{view.data(), view.size(), deleter} {}

    Array(const Array&) = delete;
    Array(Array&& other) noexcept
        : _data{std::exchange(other._data, nullptr)},
          _size{std::exchange(other._size, 0)},
          _deleter{std::exchange(other._deleter, D{})} {}
    Array& operator=(const Array&) = delete;
    Array& operator=(Array&& other) noexcept {
        std::swap(_data, other._data);
        std::swap(_size, other._size);
        std::swap(_deleter, other._deleter);
        return *this;
    }
    ~Array() {
        if constexpr (std::is_same<D, void (*)(T*, std::size_t)>::value) {
            if (!_deleter) {
                delete[] _data;
                return;
            }
        }
        _deleter(_data, _size);
    }

    explicit operator bool() const { return _data; }

    T* data() { return _data; }
    const T* data() const { return _data; }
    std::size_t size() const { return _size; }
    bool isEmpty() const { return !_size; }
    D deleter() const { return _deleter; }

    T* begin() { return _data; }
    const T* begin() const { return _data; }
    const T* cbegin() const { return _data; }
    T* end() { return _data + _size; }
    const T* end() const { return _data + _size; }
    const T* cend() const { return _data + _size; }

    T& front() { return first(); }
    const T& front() const { return first(); }
    T& back() { return last(); }
    const T& back() const { return last(); }
    T& operator[](std::size_t i) { return at(i); }
    const T& operator[](std::size_t i) const { return at(i); }

    ArrayView<T> slice(std::size_t begin, std::size_t end) { return view().slice(begin, end); }
    ArrayView<const T> slice(std::size_t begin, std::size_t end) const {
        return view().slice(begin, end);
    }
    ArrayView<T> slice(T* begin, T* end) { return view().slice(begin, end); }
    ArrayView<const T> slice(const T* begin, const T* end) const {
        return view().slice(begin, end);
    }
    template <class Begin>
    ArrayView<T> sliceSize(Begin begin, std::size_t size) {
        return view().sliceSize(begin, size);
    }
    template <class Begin>
    ArrayView<const T> sliceSize(Begin begin, std::size_t size) const {
        return view().sliceSize(begin, size);
    }
    template <class End>
    ArrayView<T> prefix(End end) {
        return view().prefix(end);
    }
    template <class End>
    ArrayView<const T> prefix(End end) const {
        return view().prefix(end);
    }
    ArrayView<T> suffix(T* begin) { return view().suffix(begin); }
    ArrayView<const T> suffix(const T* begin) const { return view().suffix(begin); }
    ArrayView<T> exceptPrefix(std::size_t size) { return view().exceptPrefix(size); }
    ArrayView<const T> exceptPrefix(std::size_t size) const { return view().exceptPrefix(size); }
    ArrayView<T> exceptSuffix(std::size_t size) { return view().exceptSuffix(size); }
    ArrayView<const T> exceptSuffix(std::size_t size) const { return view().exceptSuffix(size); }

    /** The caller frees the memory; take `deleter()` before, as it is reset here. */
    T* release() {
        _size = 0;
        _deleter = D{};
        return std::exchange(_data, nullptr);
    }

private:
    template <class>
    friend struct Implementation::GrowableMemory;

    ArrayView<T> view() { return {_data, _size}; }
    ArrayView<const T> view() const { return {_data, _size}; }
    T& first() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(_size, "Containers::Array::front(): array is empty");
        return _data[0];
    }
    T& last() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(_size, "Containers::Array::back(): array is empty");
        return _data[_size - 1];
    }
    T& at(std::size_t i) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            i < _size, "Containers::Array::operator[](): index %zu out of range for %zu elements",
            i, _size);
        return _data[i];
    }

    T* _data;
    std::size_t _size;
    D _deleter;
};

namespace Implementation {

template <class T, class U, class D>
struct ArrayViewConverter<T, Array<U, D>> : ArrayViewOfContainer<T> {};

} // namespace Implementation

template <class T>
Array<T> array(std::initializer_list<T> list) {
    return Array<T>{InPlaceInit, list};
}
template <class T>
Array<T> array(ArrayView<const T> list) {
    return Array<T>{InPlaceInit, list};
}

template <class U, class T, class D>
ArrayView<U> arrayCast(Array<T, D>& array) {
    return arrayCast<U>(arrayView(array));
}
template <class U, class T, class D>
ArrayView<const U> arrayCast(const Array<T, D>& array) {
    return arrayCast<const U>(arrayView(array));
}
template <class T>
std::size_t arraySize(const Array<T>& array) {
    return array.size();
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
