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

template <class T>
using IfString =
    std::enable_if_t<std::is_same<T, StringView>::value || std::is_same<T, String>::value ||
                     std::is_same<T, const char*>::value>;

} // namespace Implementation

/** Stand-in for Corrade's read-only view of contiguous strings of any type. */
class StringIterable {
public:
    class Iterator;

    StringIterable(std::nullptr_t = nullptr) noexcept
        : StringIterable{ArrayView<const StringView>{}} {}
    /** The list lives to the end of the full expression. */
    StringIterable(std::initializer_list<StringView> list) noexcept
        : StringIterable{arrayView(list)} {}
    template <class T, std::size_t size, class = Implementation::IfString<std::remove_const_t<T>>>
    StringIterable(T (&data)[size]) noexcept : StringIterable{arrayView(data)} {}
    template <class Container, class = Implementation::IfElements<Container>,
              class T = Implementation::ElementOf<const Container>,
              class = Implementation::IfString<std::remove_const_t<T>>>
    StringIterable(const Container& container) noexcept
        : _data{container.data()}, _size{container.size()}, _access{access<const T>} {}

    std::size_t size() const { return _size; }
    bool isEmpty() const { return !_size; }
    Iterator begin() const;
    Iterator end() const;

    StringView operator[](std::size_t i) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            i < _size,
            "Containers::StringIterable::operator[](): index %zu out of range for %zu elements", i,
            _size);
        return _access(_data, i);
    }

private:
    template <class T>
    static StringView access(const void* data, std::size_t i) {
        return static_cast<T*>(data)[i];
    }

    const void* _data;
    std::size_t _size;
    StringView (*_access)(const void*, std::size_t);
};

class StringIterable::Iterator {
public:
    Iterator(const StringIterable& strings, std::size_t i) noexcept : _strings{strings}, _i{i} {}
    bool operator!=(const Iterator& other) const { return _i != other._i; }
    Iterator& operator++() {
        ++_i;
        return *this;
    }
    StringView operator*() const { return _strings[_i]; }

private:
    StringIterable _strings;
    std::size_t _i;
};

inline StringIterable::Iterator StringIterable::begin() const {
    return {*this, 0};
}
inline StringIterable::Iterator StringIterable::end() const {
    return {*this, _size};
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
