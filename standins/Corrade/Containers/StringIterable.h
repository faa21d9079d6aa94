#ifndef VespermoorStandins_Corrade_Containers_StringIterable_h
#define VespermoorStandins_Corrade_Containers_StringIterable_h

#include <cstddef>
#include <initializer_list>
#include <type_traits>

#include "Corrade/Containers/ArrayView.h"
#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

/** Reads one stored string as a view; specialized for each type that can be iterated over. */
template <class T>
struct StringIterableConverter;

template <class T>
struct ConvertibleStringIterableConverter {
    static StringView accessor(const void* data, const void*, std::ptrdiff_t, std::size_t) {
        return *static_cast<const T*>(data);
    }
};
template <>
struct StringIterableConverter<StringView> : ConvertibleStringIterableConverter<StringView> {};
template <>
struct StringIterableConverter<MutableStringView>
    : ConvertibleStringIterableConverter<MutableStringView> {};
template <>
struct StringIterableConverter<String> : ConvertibleStringIterableConverter<String> {};
template <>
struct StringIterableConverter<const char*> : ConvertibleStringIterableConverter<const char*> {};
template <>
struct StringIterableConverter<char*> : ConvertibleStringIterableConverter<char*> {};

template <class T>
using IfStringLike = decltype(StringIterableConverter<std::remove_cv_t<T>>::accessor);

} // namespace Implementation

/** Stands in for Corrade's read-only view of any strings that lie at a fixed distance. */
class StringIterable {
public:
    using Accessor = StringView (*)(const void* data, const void* context, std::ptrdiff_t stride,
                                    std::size_t index);

    StringIterable(std::nullptr_t = nullptr) noexcept
        : StringIterable{nullptr, nullptr, 0, 0, nullptr} {}
    explicit StringIterable(const void* data, const void* context, std::size_t size,
                            std::ptrdiff_t stride, Accessor accessor) noexcept
        : _data{static_cast<const char*>(data)},
          _context{context},
          _size{size},
          _stride{stride},
          _accessor{accessor} {}
    /** The list lives to the end of the full expression. */
    StringIterable(std::initializer_list<StringView> list) noexcept
        : StringIterable{arrayView(list)} {}
    template <class T, class = Implementation::IfStringLike<T>>
    StringIterable(ArrayView<T> view) noexcept
        : StringIterable{view.data(), nullptr, view.size(), sizeof(T),
                         Implementation::StringIterableConverter<std::remove_cv_t<T>>::accessor} {}
    template <class T, std::size_t size, class = Implementation::IfStringLike<T>>
    StringIterable(T (&data)[size]) noexcept : StringIterable{arrayView(data)} {}
    template <class Container, class T = Implementation::ElementOf<const Container>,
              class = Implementation::ArrayViewFrom<T, const Container>,
              class = Implementation::IfStringLike<T>>
    StringIterable(const Container& container) noexcept : StringIterable{arrayView(container)} {}

    explicit operator bool() const { return _size; }
    const void* data() const { return _data; }
    const void* context() const { return _context; }
    std::size_t size() const { return _size; }
    std::ptrdiff_t stride() const { return _stride; }
    bool isEmpty() const { return !_size; }

    StringIterableIterator begin() const;
    StringIterableIterator cbegin() const;
    StringIterableIterator end() const;
    StringIterableIterator cend() const;

    StringView front() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(_size,
                                         "Containers::StringIterable::front(): view is empty");
        return at(0);
    }
    StringView back() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(_size,
                                         "Containers::StringIterable::back(): view is empty");
        return at(_size - 1);
    }
    StringView operator[](std::size_t i) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            i < _size,
            "Containers::StringIterable::operator[](): index %zu out of range for %zu elements", i,
            _size);
        return at(i);
    }

private:
    friend StringIterableIterator;

    StringView at(std::size_t i) const {
        return _accessor(_data + std::ptrdiff_t(i) * _stride, _context, _stride, i);
    }

    const char* _data;
    const void* _context;
    std::size_t _size;
    std::ptrdiff_t _stride;
    Accessor _accessor;
};

/** Stands in for Corrade's iterator of the above. */
class StringIterableIterator {
public:
    bool operator==(const StringIterableIterator& other) const {
        return _strings.data() == other._strings.data() &&
               _strings.context() == other._strings.context() &&
               _strings.stride() == other._strings.stride() && _i == other._i;
    }
    bool operator!=(const StringIterableIterator& other) const { return !operator==(other); }
    std::ptrdiff_t operator-(const StringIterableIterator& other) const {
        return std::ptrdiff_t(_i - other._i);
    }
    StringIterableIterator operator+(std::ptrdiff_t i) const { return {_strings, _i + i}; }
    StringIterableIterator operator-(std::ptrdiff_t i) const { return {_strings, _i - i}; }
    StringIterableIterator& operator++() {
        ++_i;
        return *this;
    }
    StringIterableIterator& operator--() {
        --_i;
        return *this;
    }
    StringView operator*() const { return _strings.at(_i); }

private:
    friend StringIterable;

    StringIterableIterator(const StringIterable& strings, std::size_t i) noexcept
        : _strings{strings}, _i{i} {}

    StringIterable _strings;
    std::size_t _i;
};

inline StringIterableIterator StringIterable::begin() const {
    return {*this, 0};
}
inline StringIterableIterator StringIterable::cbegin() const {
    return {*this, 0};
}
inline StringIterableIterator StringIterable::end() const {
    return {*this, _size};
}
inline StringIterableIterator StringIterable::cend() const {
    return {*this, _size};
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
