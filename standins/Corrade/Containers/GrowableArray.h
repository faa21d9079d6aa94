#ifndef VespermoorStandins_Corrade_Containers_GrowableArray_h
#define VespermoorStandins_Corrade_Containers_GrowableArray_h

/** @file Stand-in for Corrade's functions that make an `Array` grow and shrink. */

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>

#include "Corrade/Containers/Array.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

/**
 * Memory with its capacity stored before the first element. The deleter identifies an array that
 * owns such memory, so it is an ordinary array that can be released and passed on.
 */
template <class T>
struct GrowableMemory {
    static constexpr std::size_t Offset = std::max(alignof(T), sizeof(std::size_t));
    static_assert(alignof(T) <= alignof(std::max_align_t), "malloc aligns for standard types only");

    static std::size_t& capacity(T* data) { return *reinterpret_cast<std::size_t*>(base(data)); }
    static void deleter(T* data, std::size_t size) {
        std::destroy_n(data, size);
        std::free(base(data));
    }
    static bool owns(const Array<T>& array) { return array._deleter == deleter; }

    /** Moves the elements to memory for exactly `capacity` of them, dropping elements past that. */
    static void reallocate(Array<T>& array, std::size_t capacity) {
        const std::size_t size = std::min(array._size, capacity);
        if constexpr (std::is_trivially_copyable<T>::value) {
            if (owns(array)) {
                array._data = allocate(base(array._data), capacity);
                array._size = size;
                return;
            }
        }
        static_assert(std::is_nothrow_move_constructible<T>::value,
                      "growing needs a move that can't fail halfway");
        T* const data = allocate(nullptr, capacity);
        std::uninitialized_move_n(array._data, size, data);
        array = Array<T>{data, size, deleter};
    }

    /** Sets the size; the caller constructs added elements. */
    static void resize(Array<T>& array, std::size_t size) {
        if (size == array._size)
            return;
        if (!owns(array) || capacity(array._data) < size)
            reallocate(array, size);
        if (size < array._size)
            std::destroy(array._data + size, array._data + array._size);
        array._size = size;
    }

    /** Adds room for `count` elements at the end, which the caller constructs. */
    static ArrayView<T> grow(Array<T>& array, std::size_t count) {
        const std::size_t size = array._size;
        const std::size_t current = owns(array) ? capacity(array._data) : 0;
        if (count && size + count > current)
            reallocate(array, std::max({size + count, current + current / 2, 16 / sizeof(T)}));
        array._size += count;
        return array.exceptPrefix(size);
    }

private:
    /* By address: as far as the language knows, nothing comes before an array */
    static char* base(T* data) {
        return reinterpret_cast<char*>(reinterpret_cast<std::uintptr_t>(data) - Offset);
    }

    static T* allocate(char* previous, std::size_t capacity) {
        const std::size_t bytes = Offset + capacity * sizeof(T);
        char* const memory = static_cast<char*>(std::realloc(previous, bytes));
        VESPERMOOR_STANDINS_ASSERT(
            memory, "Containers::ArrayMallocAllocator: can't allocate %zu bytes", bytes);
        *reinterpret_cast<std::size_t*>(memory) = capacity;
        return reinterpret_cast<T*>(memory + Offset);
    }
};

/* Keeps an argument from deciding what T is */
template <class T>
struct Exactly {
    using Type = T;
};

template <class T>
bool isWithin(Array<T>& array, const T* element) {
    return !std::less<>{}(element, array.data()) &&
           std::less<>{}(element, array.data() + arrayCapacity(array));
}

} // namespace Implementation

template <class T>
std::size_t arrayCapacity(Array<T>& array) {
    return Implementation::GrowableMemory<T>::owns(array)
               ? Implementation::GrowableMemory<T>::capacity(array.data())
               : array.size();
}

/** Reserves room for exactly `capacity` elements unless there is more, and returns the capacity. */
template <class T>
std::size_t arrayReserve(Array<T>& array, std::size_t capacity) {
    if (arrayCapacity(array) < capacity)
        Implementation::GrowableMemory<T>::reallocate(array, capacity);
    return arrayCapacity(array);
}

template <class T>
void arrayResize(Array<T>& array, NoInitT, std::size_t size) {
    Implementation::GrowableMemory<T>::resize(array, size);
}

template <class T>
void arrayResize(Array<T>& array, ValueInitT, std::size_t size) {
    const std::size_t previous = std::min(array.size(), size);
    arrayResize(array, NoInit, size);
    std::uninitialized_value_construct(array.begin() + previous, array.end());
}

template <class T>
void arrayResize(Array<T>& array, std::size_t size) {
    arrayResize(array, ValueInit, size);
}

template <class T>
ArrayView<T> arrayAppend(Array<T>& array, NoInitT, std::size_t count) {
    return Implementation::GrowableMemory<T>::grow(array, count);
}

template <class T, class... Args>
T& arrayAppend(Array<T>& array, InPlaceInitT, Args&&... args) {
    T* const added = arrayAppend(array, NoInit, 1).data();
    return *new (added) T{std::forward<Args>(args)...};
}

template <class T>
T& arrayAppend(Array<T>& array, const typename Implementation::Exactly<T>::Type& value) {
    VESPERMOOR_STANDINS_DEBUG_ASSERT(!Implementation::isWithin(array, &value),
                                     "Containers::arrayAppend(): use the list variant to append "
                                     "values from within the array itself");
    return arrayAppend(array, InPlaceInit, value);
}

template <class T>
T& arrayAppend(Array<T>& array, typename Implementation::Exactly<T>::Type&& value) {
    VESPERMOOR_STANDINS_DEBUG_ASSERT(!Implementation::isWithin(array, &value),
                                     "Containers::arrayAppend(): use the list variant to append "
                                     "values from within the array itself");
    return arrayAppend(array, InPlaceInit, std::move(value));
}

/** The values may be elements of the array itself. */
template <class T>
ArrayView<T> arrayAppend(Array<T>& array,
                         typename Implementation::Exactly<ArrayView<const T>>::Type values) {
    const bool within = Implementation::isWithin(array, values.data());
    const std::ptrdiff_t offset = within ? values.data() - array.data() : 0;
    const ArrayView<T> added = arrayAppend(array, NoInit, values.size());
    std::uninitialized_copy_n(within ? array.data() + offset : values.data(), values.size(),
                              added.data());
    return added;
}

template <class T>
void arrayRemoveSuffix(Array<T>& array, std::size_t count = 1) {
    VESPERMOOR_STANDINS_DEBUG_ASSERT(
        count <= array.size(),
        "Containers::arrayRemoveSuffix(): can't remove %zu elements from an array of size %zu",
        count, array.size());
    arrayResize(array, NoInit, array.size() - count);
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
