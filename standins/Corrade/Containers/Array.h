#ifndef VespermoorStandins_Corrade_Containers_Array_h
#define VespermoorStandins_Corrade_Containers_Array_h

#include <cstddef>
#include <initializer_list>
#include <memory>
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

template <class T>
void destroyRaw(T* data, std::size_t size) {
    std::destroy_n(data, size);
    std::allocator<T>{}.deallocate(data, size);
}

} // namespace Implementation

/**
 * Stand-in for Corrade's owning array. A null function as the deleter means `delete[]`; growing
 * functions are in `Corrade/Containers/GrowableArray.h`.
 */
template <class T>
class Array {
public:
    using Deleter = void (*)(T*, std::size_t);

    Array(std::nullptr_t = nullptr) noexcept : _data{}, _size{}, _deleter{} {}
    explicit Array(T* data, std::size_t size, Deleter deleter = nullptr) noexcept
        : _data{data}, _size{size}, _deleter{deleter} {}
    explicit Array(ValueInitT, std::size_t size) : Array{size ? new T[size]() : nullptr, size} {}
    /** If the elements have a constructor, the caller has to construct them. */
    explicit Array(NoInitT, std::size_t size) : Array{} {
        if (!size)
            return;
        if constexpr (std::is_trivially_constructible<T>::value)
            *this = Array{new T[size], size};
        else
            *this = Array{std::allocator<T>{}.allocate(size), size, Implementation::destroyRaw<T>};
    }
    Array(InPlaceInitT, ArrayView<const T> list) : Array{NoInit, list.size()} {
        std::uninitialized_copy(list.begin(), list.end(), _data);
    }
    Array(InPlaceInitT, std::initializer_list<T> list) : Array{InPlaceInit, arrayView(list)} {}

    Array(const Array&) = delete;
    Array(Array&& other) noexcept : Array{} { *this = std::move(other); }
    Array& operator=(const Array&) = delete;
    Array& operator=(Array&& other) noexcept {
        std::swap(_data, other._data);
        std::swap(_size, other._size);
        std::swap(_deleter, other._deleter);
        return *this;
    }
    ~Array() {
        if (_deleter)
            _deleter(_data, _size);
        else
            delete[] _data;
    }

    explicit operator bool() const { return _data; }

    T* data() { return _data; }
    const T* data() const { return _data; }
    std::size_t size() const { return _size; }
    bool isEmpty() const { return !_size; }
    Deleter deleter() const { return _deleter; }
    T* begin() { return _data; }
    const T* begin() const { return _data; }
    T* end() { return _data + _size; }
    const T* end() const { return _data + _size; }

    const T& front() const { return first(); }
    T& back() { return last(); }
    const T& back() const { return last(); }
    T& operator[](std::size_t i) { return at(i); }
    const T& operator[](std::size_t i) const { return at(i); }

    ArrayView<T> prefix(std::size_t size) { return view().prefix(size); }
    ArrayView<const T> prefix(std::size_t size) const { return view().prefix(size); }
    ArrayView<T> exceptPrefix(std::size_t size) { return view().exceptPrefix(size); }

    /** The caller frees the memory; get `deleter()` first, since it is reset here. */
    T* release() {
        _size = 0;
        _deleter = nullptr;
        return std::exchange(_data, nullptr);
    }

private:
    friend struct Implementation::GrowableMemory<T>;

    ArrayView<T> view() const { return {_data, _size}; }
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
    Deleter _deleter;
};

namespace Implementation {

template <class T>
constexpr bool hasElements<Array<T>> = true;

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
