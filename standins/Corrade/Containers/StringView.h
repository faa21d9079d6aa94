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
namespace Containers {
namespace Implementation {

/** Converts other string types from and to views of `T`; specialized beside each of them. */
template <class T, class Other>
struct StringViewConverter;

/* Keeps a literal 0, which is a size, from being taken for a null pointer */
template <class Pointer, class T>
using IfPointerTo = std::enable_if_t<std::is_convertible<Pointer, T*>::value &&
                                     !std::is_convertible<Pointer, std::size_t>::value>;

} // namespace Implementation

/** Kept in the two highest bits of the size. */
enum class StringViewFlag : std::size_t {
    Global = std::size_t{1} << (sizeof(std::size_t) * 8 - 1),
    NullTerminated = std::size_t{1} << (sizeof(std::size_t) * 8 - 2)
};

using StringViewFlags = EnumSet<StringViewFlag, std::size_t{3} << (sizeof(std::size_t) * 8 - 2)>;
CORRADE_ENUMSET_OPERATORS(StringViewFlags)

/**
 * Stand-in for Corrade's view of bytes that someone else owns. A part keeps `Global`, and keeps
 * `NullTerminated` if it reaches the end.
 */
template <class T>
class BasicStringView {
    /* A view that is only read: named by T, as this class is not complete yet */
    using Text = BasicStringView<const T>;

public:
    constexpr BasicStringView() noexcept : BasicStringView{nullptr, 0, StringViewFlag::Global} {}
    template <class U, class = std::enable_if_t<std::is_same<U, std::nullptr_t>::value>>
    constexpr BasicStringView(U) noexcept : BasicStringView{} {}
    constexpr BasicStringView(T* data, std::size_t size, StringViewFlags flags = {}) noexcept
        : _data{data}, _sizeAndFlags{size | std::size_t(flags)} {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            !(flags & StringViewFlag::NullTerminated) || (data && !data[size]),
            "Containers::StringView: Containers::StringViewFlag::NullTerminated expects non-null "
            "null-terminated data");
    }
    /** Reads up to the NUL, which the form above does not need. */
    template <class Pointer, class = std::enable_if_t<std::is_pointer<Pointer>::value>,
              class = Implementation::IfPointerTo<Pointer, T>>
    BasicStringView(Pointer data, StringViewFlags flags = {}) noexcept
        : BasicStringView{data, data ? std::strlen(data) : 0,
                          flags |
                              (data ? StringViewFlag::NullTerminated : StringViewFlag::Global)} {}
    BasicStringView(String& string) noexcept;
    template <class U = T, class = std::enable_if_t<std::is_const<U>::value>>
    BasicStringView(const String& string) noexcept;
    /** A view of a temporary string is not marked as NUL-terminated. */
    template <class U = T, class = std::enable_if_t<std::is_const<U>::value>>
    BasicStringView(const String&& string) noexcept;
    template <class U, class = std::enable_if_t<std::is_same<const U, T>::value>>
    constexpr BasicStringView(BasicStringView<U> view) noexcept
        : BasicStringView{view.data(), view.size(), view.flags()} {}
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
    constexpr T* end() const { return _data + size(); }

    constexpr T& front() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(size(), "Containers::StringView::front(): view is empty");
        return _data[0];
    }
    constexpr T& back() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(size(), "Containers::StringView::back(): view is empty");
        return _data[size() - 1];
    }
    /** The terminator can be accessed too, if there is one. */
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

    /** An empty view has no parts; a delimiter at either end adds an empty one. */
    VESPERMOOR_STANDINS_EXPORT Array<BasicStringView> split(char delimiter) const;

    bool hasPrefix(Text prefix) const { return bytes().substr(0, prefix.size()) == prefix.bytes(); }
    bool hasPrefix(char prefix) const { return size() && _data[0] == prefix; }
    bool hasSuffix(Text suffix) const {
        return size() >= suffix.size() && bytes().substr(size() - suffix.size()) == suffix.bytes();
    }
    bool hasSuffix(char suffix) const { return size() && _data[size() - 1] == suffix; }

    /** A text that is not found is an empty view at `fail`. */
    BasicStringView findOr(Text text, T* fail) const {
        return found(bytes().find(text.bytes()), text.size(), fail);
    }
    BasicStringView findOr(char character, T* fail) const {
        return found(bytes().find(character), 1, fail);
    }
    BasicStringView findLastOr(char character, T* fail) const {
        return found(bytes().rfind(character), 1, fail);
    }
    BasicStringView find(Text text) const { return findOr(text, nullptr); }
    BasicStringView find(char character) const { return findOr(character, nullptr); }
    BasicStringView findLast(char character) const { return findLastOr(character, nullptr); }
    bool contains(Text text) const { return find(text).data(); }
    bool contains(char character) const { return find(character).data(); }

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

namespace Implementation {

template <class T>
constexpr bool hasElements<BasicStringView<T>> = true;

inline std::string_view standard(StringView view) {
    return {view.data(), view.size()};
}

} // namespace Implementation

inline bool operator==(StringView a, StringView b) {
    return Implementation::standard(a) == Implementation::standard(b);
}
inline bool operator!=(StringView a, StringView b) {
    return Implementation::standard(a) != Implementation::standard(b);
}
inline bool operator<(StringView a, StringView b) {
    return Implementation::standard(a) < Implementation::standard(b);
}
VESPERMOOR_STANDINS_EXPORT String operator+(StringView a, StringView b);

namespace Literals {
inline namespace StringLiterals {

constexpr StringView operator""_s(const char* data, std::size_t size) {
    return {data, size, StringViewFlag::Global | StringViewFlag::NullTerminated};
}

} // namespace StringLiterals
} // namespace Literals
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
