#ifndef VespermoorStandins_Corrade_Containers_StringView_h
#define VespermoorStandins_Corrade_Containers_StringView_h

#include <cstddef>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/ArrayView.h"
#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/EnumSet.h"
#include "Corrade/Containers/Implementation/Assertion.h"
#include "Corrade/visibility.h"

namespace Corrade {
inline namespace VespermoorStandins {

namespace Utility {
class Debug;
}

namespace Containers {
namespace Implementation {

/** Converts other string types from and to views of `T`; specialized beside each of them. */
template <class T, class Other>
struct StringViewConverter;

template <class T>
struct IsStringView : std::false_type {};
template <class T>
struct IsStringView<BasicStringView<T>> : std::true_type {};

template <class T, class Container>
using IfArrayOf =
    std::enable_if_t<!IsStringView<std::decay_t<Container>>::value, ArrayViewFrom<T, Container>>;

} // namespace Implementation

/** Kept in the two highest bits of the size. */
enum class StringViewFlag : std::size_t {
    Global = std::size_t{1} << (sizeof(std::size_t) * 8 - 1),
    NullTerminated = std::size_t{1} << (sizeof(std::size_t) * 8 - 2)
};

CORRADE_ENUMSET_OPERATORS(StringViewFlags)

VESPERMOOR_STANDINS_EXPORT Utility::Debug& operator<<(Utility::Debug& debug, StringViewFlag value);
VESPERMOOR_STANDINS_EXPORT Utility::Debug& operator<<(Utility::Debug& debug, StringViewFlags value);

/**
 * Stands in for Corrade's view of bytes that someone else owns. A part keeps `Global`, and keeps
 * `NullTerminated` when it reaches to the end.
 */
template <class T>
class BasicStringView {
public:
    constexpr BasicStringView() noexcept : BasicStringView{nullptr, 0, StringViewFlag::Global} {}
    template <class U, class = std::enable_if_t<std::is_same<U, std::nullptr_t>::value>>
    constexpr BasicStringView(U) noexcept : BasicStringView{} {}
    constexpr BasicStringView(T* data, std::size_t size, StringViewFlags flags = {}) noexcept
        : _data{data}, _sizeAndFlags{size | std::size_t(flags & ~StringViewFlags{})} {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            !(flags & StringViewFlag::NullTerminated) || (data && !data[size]),
            "Containers::StringView: Containers::StringViewFlag::NullTerminated expects non-null "
            "null-terminated data");
    }
    /** Reads up to the NUL, which need not be there in the two forms above. */
    template <class Pointer, class = std::enable_if_t<std::is_pointer<Pointer>::value>,
              class = Implementation::IfPointerTo<Pointer, T>>
    BasicStringView(Pointer data, StringViewFlags flags = {}) noexcept
        : BasicStringView{data, data ? std::strlen(data) : 0,
                          flags |
                              (data ? StringViewFlag::NullTerminated : StringViewFlag::Global)} {}
    BasicStringView(String& string) noexcept;
    template <class U = T, class = std::enable_if_t<std::is_const<U>::value>>
    BasicStringView(const String& string) noexcept;
    template <class U, class = std::enable_if_t<std::is_same<const U, T>::value>>
    constexpr BasicStringView(BasicStringView<U> view) noexcept
        : BasicStringView{view.data(), view.size(), view.flags()} {}
    constexpr BasicStringView(ArrayView<T> data, StringViewFlags flags = {}) noexcept
        : BasicStringView{data.data(), data.size(), flags} {}
    template <class Container, class = Implementation::IfArrayOf<T, Container>>
    constexpr BasicStringView(Container&& data, StringViewFlags flags = {}) noexcept
        : BasicStringView{data.data(), data.size(), flags} {}
    template <class Other, class = decltype(Implementation::StringViewConverter<
                                            T, std::decay_t<Other>>::from(std::declval<Other>()))>
    constexpr BasicStringView(Other&& other) noexcept
        : BasicStringView{Implementation::StringViewConverter<T, std::decay_t<Other>>::from(
              std::forward<Other>(other))} {}

    template <class Other, class = decltype(Implementation::StringViewConverter<T, Other>::to(
                               std::declval<BasicStringView>()))>
    constexpr operator Other() const {
        return Implementation::StringViewConverter<T, Other>::to(*this);
    }

    constexpr explicit operator bool() const { return _data && size(); }

    constexpr StringViewFlags flags() const { return StringViewFlags{_sizeAndFlags & FlagMask}; }
    constexpr T* data() const { return _data; }
    constexpr std::size_t size() const { return _sizeAndFlags & ~FlagMask; }
    constexpr bool isEmpty() const { return !size(); }

    constexpr T* begin() const { return _data; }
    constexpr T* cbegin() const { return _data; }
    constexpr T* end() const { return _data + size(); }
    constexpr T* cend() const { return _data + size(); }

    constexpr T& front() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(size(), "Containers::StringView::front(): view is empty");
        return _data[0];
    }
    constexpr T& back() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(size(), "Containers::StringView::back(): view is empty");
        return _data[size() - 1];
    }
    /** The terminator can be accessed too where there is one. */
    constexpr T& operator[](std::size_t i) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            i < size() + isNullTerminated(),
            "Containers::StringView::operator[](): index %zu out of range for %zu %s", i, size(),
            isNullTerminated() ? "null-terminated bytes" : "bytes");
        return _data[i];
    }

    constexpr BasicStringView slice(std::size_t begin, std::size_t end) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            begin <= end && end <= size(),
            "Containers::StringView::slice(): slice [%zu:%zu] out of range for %zu elements", begin,
            end, size());
        return part(_data + begin, end - begin);
    }
    constexpr BasicStringView slice(T* begin, T* end) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            _data <= begin && begin <= end && end <= this->end(),
            "Containers::StringView::slice(): slice [%td:%td] out of range for %zu elements",
            begin - _data, end - _data, size());
        return part(begin, std::size_t(end - begin));
    }
    constexpr BasicStringView sliceSize(std::size_t begin, std::size_t size) const {
        return slice(begin, begin + size);
    }
    template <class Pointer, class = Implementation::IfPointerTo<Pointer, T>>
    constexpr BasicStringView sliceSize(Pointer begin, std::size_t size) const {
        return slice(begin, begin + size);
    }
    constexpr BasicStringView prefix(std::size_t size) const { return slice(0, size); }
    template <class Pointer, class = Implementation::IfPointerTo<Pointer, T>>
    constexpr BasicStringView prefix(Pointer end) const {
        return static_cast<T*>(end) ? slice(_data, end) : BasicStringView{};
    }
    constexpr BasicStringView suffix(T* begin) const {
        return _data && !begin ? BasicStringView{} : slice(begin, end());
    }
    constexpr BasicStringView exceptPrefix(std::size_t size) const {
        return slice(size, this->size());
    }
    constexpr BasicStringView exceptSuffix(std::size_t size) const {
        return slice(0, this->size() - size);
    }
    /** Expects that the string begins or ends with the text. */
    VESPERMOOR_STANDINS_EXPORT BasicStringView exceptPrefix(StringView prefix) const;
    VESPERMOOR_STANDINS_EXPORT BasicStringView exceptSuffix(StringView suffix) const;

    VESPERMOOR_STANDINS_EXPORT Array<BasicStringView> split(char delimiter) const;
    VESPERMOOR_STANDINS_EXPORT Array<BasicStringView> split(StringView delimiter) const;
    VESPERMOOR_STANDINS_EXPORT Array<BasicStringView> splitWithoutEmptyParts(char delimiter) const;
    VESPERMOOR_STANDINS_EXPORT Array<BasicStringView>
    splitOnAnyWithoutEmptyParts(StringView delimiters) const;
    VESPERMOOR_STANDINS_EXPORT Array<BasicStringView> splitOnWhitespaceWithoutEmptyParts() const;
    VESPERMOOR_STANDINS_EXPORT Array3<BasicStringView> partition(char separator) const;
    VESPERMOOR_STANDINS_EXPORT Array3<BasicStringView> partition(StringView separator) const;
    VESPERMOOR_STANDINS_EXPORT Array3<BasicStringView> partitionLast(char separator) const;
    VESPERMOOR_STANDINS_EXPORT Array3<BasicStringView> partitionLast(StringView separator) const;
    VESPERMOOR_STANDINS_EXPORT String join(const StringIterable& strings) const;
    VESPERMOOR_STANDINS_EXPORT String joinWithoutEmptyParts(const StringIterable& strings) const;

    bool hasPrefix(StringView prefix) const;
    bool hasPrefix(char prefix) const { return size() && _data[0] == prefix; }
    bool hasSuffix(StringView suffix) const;
    bool hasSuffix(char suffix) const { return size() && _data[size() - 1] == suffix; }

    BasicStringView trimmed(StringView characters) const {
        return trimmedPrefix(characters).trimmedSuffix(characters);
    }
    BasicStringView trimmed() const { return trimmedPrefix().trimmedSuffix(); }
    BasicStringView trimmedPrefix(StringView characters) const;
    BasicStringView trimmedPrefix() const;
    BasicStringView trimmedSuffix(StringView characters) const;
    BasicStringView trimmedSuffix() const;

    /** What is not found is an empty view at `fail`. */
    BasicStringView find(StringView text) const { return findOr(text, nullptr); }
    BasicStringView find(char character) const { return findOr(character, nullptr); }
    BasicStringView findOr(StringView text, T* fail) const;
    BasicStringView findOr(char character, T* fail) const;
    BasicStringView findLast(StringView text) const { return findLastOr(text, nullptr); }
    BasicStringView findLast(char character) const { return findLastOr(character, nullptr); }
    BasicStringView findLastOr(StringView text, T* fail) const;
    BasicStringView findLastOr(char character, T* fail) const;
    BasicStringView findAny(StringView characters) const { return findAnyOr(characters, nullptr); }
    BasicStringView findAnyOr(StringView characters, T* fail) const;
    BasicStringView findLastAny(StringView characters) const {
        return findLastAnyOr(characters, nullptr);
    }
    BasicStringView findLastAnyOr(StringView characters, T* fail) const;

    bool contains(StringView text) const { return find(text).data(); }
    bool contains(char character) const { return find(character).data(); }
    bool containsAny(StringView characters) const { return findAny(characters).data(); }
    VESPERMOOR_STANDINS_EXPORT std::size_t count(char character) const;

private:
    static constexpr std::size_t FlagMask = StringViewFlags::FullValue;

    constexpr std::string_view bytes() const { return {_data, size()}; }
    constexpr bool isNullTerminated() const {
        return bool(flags() & StringViewFlag::NullTerminated);
    }
    constexpr BasicStringView part(T* begin, std::size_t size) const {
        const StringViewFlags lost =
            begin + size == end() ? StringViewFlags{} : StringViewFlag::NullTerminated;
        return {begin, size, flags() & ~lost};
    }
    constexpr BasicStringView found(std::size_t position, std::size_t size, T* fail) const {
        return position == std::string_view::npos || !_data ? BasicStringView{fail, 0}
                                                            : part(_data + position, size);
    }

    template <class>
    friend class BasicStringView;

    T* _data;
    std::size_t _sizeAndFlags;
};

template <class T>
bool BasicStringView<T>::hasPrefix(StringView prefix) const {
    return bytes().substr(0, prefix.size()) == prefix.bytes();
}
template <class T>
bool BasicStringView<T>::hasSuffix(StringView suffix) const {
    return size() >= suffix.size() && bytes().substr(size() - suffix.size()) == suffix.bytes();
}

template <class T>
BasicStringView<T> BasicStringView<T>::trimmedPrefix(StringView characters) const {
    const std::size_t kept = bytes().find_first_not_of(characters.bytes());
    return exceptPrefix(kept == std::string_view::npos ? size() : kept);
}
template <class T>
BasicStringView<T> BasicStringView<T>::trimmedSuffix(StringView characters) const {
    /* Without a find this wraps around to 0 */
    return prefix(bytes().find_last_not_of(characters.bytes()) + 1);
}
template <class T>
BasicStringView<T> BasicStringView<T>::trimmedPrefix() const {
    return trimmedPrefix(" \t\f\v\r\n");
}
template <class T>
BasicStringView<T> BasicStringView<T>::trimmedSuffix() const {
    return trimmedSuffix(" \t\f\v\r\n");
}

template <class T>
BasicStringView<T> BasicStringView<T>::findOr(StringView text, T* fail) const {
    return found(bytes().find(text.bytes()), text.size(), fail);
}
template <class T>
BasicStringView<T> BasicStringView<T>::findOr(char character, T* fail) const {
    return found(bytes().find(character), 1, fail);
}
template <class T>
BasicStringView<T> BasicStringView<T>::findLastOr(StringView text, T* fail) const {
    return found(bytes().rfind(text.bytes()), text.size(), fail);
}
template <class T>
BasicStringView<T> BasicStringView<T>::findLastOr(char character, T* fail) const {
    return found(bytes().rfind(character), 1, fail);
}
template <class T>
BasicStringView<T> BasicStringView<T>::findAnyOr(StringView characters, T* fail) const {
    return found(bytes().find_first_of(characters.bytes()), 1, fail);
}
template <class T>
BasicStringView<T> BasicStringView<T>::findLastAnyOr(StringView characters, T* fail) const {
    return found(bytes().find_last_of(characters.bytes()), 1, fail);
}

VESPERMOOR_STANDINS_EXPORT bool operator==(StringView a, StringView b);
VESPERMOOR_STANDINS_EXPORT bool operator!=(StringView a, StringView b);
VESPERMOOR_STANDINS_EXPORT bool operator<(StringView a, StringView b);
VESPERMOOR_STANDINS_EXPORT bool operator<=(StringView a, StringView b);
VESPERMOOR_STANDINS_EXPORT bool operator>=(StringView a, StringView b);
VESPERMOOR_STANDINS_EXPORT bool operator>(StringView a, StringView b);
VESPERMOOR_STANDINS_EXPORT String operator+(StringView a, StringView b);
VESPERMOOR_STANDINS_EXPORT String operator*(StringView string, std::size_t count);
VESPERMOOR_STANDINS_EXPORT String operator*(std::size_t count, StringView string);

namespace Literals {
inline namespace StringLiterals {

constexpr StringView operator""_s(const char* data, std::size_t size) {
    return {data, size, StringViewFlag::Global | StringViewFlag::NullTerminated};
}

} // namespace StringLiterals
} // namespace Literals

namespace Implementation {

template <class T, class U>
struct ArrayViewConverter<T, BasicStringView<U>> : ArrayViewOfContainer<T> {};

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
