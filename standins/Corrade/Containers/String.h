#ifndef VespermoorStandins_Corrade_Containers_String_h
#define VespermoorStandins_Corrade_Containers_String_h

#include <cstddef>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Array.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/Tags.h"
#include "Corrade/visibility.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

/** Converts other string types from and to `String`; specialized beside each of them. */
template <class Other>
struct StringConverter;

} // namespace Implementation

/**
 * Stand-in for Corrade's owning string, without its storage of small strings in place. The data are
 * never null and always NUL-terminated. Queries return read-only views.
 */
class String {
public:
    using Deleter = void (*)(char*, std::size_t);

    /** Refers to the view's memory if that is NUL-terminated, and copies it otherwise. */
    VESPERMOOR_STANDINS_EXPORT static String nullTerminatedView(StringView view);

    String() noexcept : _data{emptyText}, _sizeAndGlobal{}, _deleter{} {}
    VESPERMOOR_STANDINS_EXPORT String(const char* data, std::size_t size);
    String(StringView view) : String{view.data(), view.size()} {}
    template <class Text, class = Implementation::IfPointerTo<Text, const char>>
    String(Text data) : String{StringView{data}} {}
    template <class Other, class = decltype(Implementation::StringConverter<
                                            std::decay_t<Other>>::from(std::declval<Other>()))>
    String(Other&& other)
        : String{Implementation::StringConverter<std::decay_t<Other>>::from(
              std::forward<Other>(other))} {}
    VESPERMOOR_STANDINS_EXPORT explicit String(NoInitT, std::size_t size);

    /** Takes memory over; expects a NUL after it. A null deleter means `delete[]`. */
    VESPERMOOR_STANDINS_EXPORT explicit String(char* data, std::size_t size,
                                               Deleter deleter) noexcept;

    String(const String& other) : String{other.data(), other.size()} {}
    String(String&& other) noexcept
        : _data{std::exchange(other._data, emptyText)},
          _sizeAndGlobal{std::exchange(other._sizeAndGlobal, 0)},
          _deleter{std::exchange(other._deleter, nullptr)} {}
    String& operator=(const String& other) { return *this = String{other}; }
    String& operator=(String&& other) noexcept {
        std::swap(_data, other._data);
        std::swap(_sizeAndGlobal, other._sizeAndGlobal);
        std::swap(_deleter, other._deleter);
        return *this;
    }
    ~String() {
        if (_deleter)
            _deleter(_data, size());
        else if (_data != emptyText)
            delete[] _data;
    }

    template <class Other, class = decltype(Implementation::StringConverter<Other>::to(
                               std::declval<const String&>()))>
    operator Other() const {
        return Implementation::StringConverter<Other>::to(*this);
    }

    explicit operator bool() const { return size(); }

    /** Keeps `Global` only for a view of memory that outlives the string. */
    StringViewFlags viewFlags() const {
        return StringViewFlags{_sizeAndGlobal & GlobalMask} | StringViewFlag::NullTerminated;
    }
    char* data() { return _data; }
    const char* data() const { return _data; }
    Deleter deleter() const { return _deleter; }
    std::size_t size() const { return _sizeAndGlobal & ~GlobalMask; }
    bool isEmpty() const { return !size(); }
    char* begin() { return _data; }
    const char* begin() const { return _data; }
    const char* end() const { return _data + size(); }

    StringView prefix(std::size_t size) const { return StringView{*this}.prefix(size); }

private:
    static constexpr std::size_t GlobalMask = std::size_t(StringViewFlag::Global);

    /* The text of every empty string. Not constant because a caller may write the NUL again. */
    VESPERMOOR_STANDINS_EXPORT static char emptyText[1];

    char* _data;
    std::size_t _sizeAndGlobal;
    Deleter _deleter;
};

template <class T>
BasicStringView<T>::BasicStringView(String& string) noexcept
    : BasicStringView{string.data(), string.size(), string.viewFlags()} {}
template <class T>
template <class U, class>
BasicStringView<T>::BasicStringView(const String&& string) noexcept
    : BasicStringView{string.data(), string.size()} {}
template <class T>
template <class U, class>
BasicStringView<T>::BasicStringView(const String& string) noexcept
    : BasicStringView{string.data(), string.size(), string.viewFlags()} {}

namespace Implementation {

template <>
inline constexpr bool hasElements<String> = true;

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
