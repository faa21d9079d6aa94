#ifndef VespermoorStandins_Corrade_Containers_String_h
#define VespermoorStandins_Corrade_Containers_String_h

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Array.h"
#include "Corrade/Containers/StaticArray.h"
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

/** Asks for memory on the heap, which here every string that is not empty has anyway. */
struct AllocatedInitT {
    struct Init {};
    constexpr explicit AllocatedInitT(Init) {}
};
constexpr AllocatedInitT AllocatedInit{AllocatedInitT::Init{}};

/**
 * Stands in for Corrade's owning string, without its storage of small strings in place. The data
 * are never null and always NUL-terminated.
 */
class String {
public:
    using Deleter = void (*)(char*, std::size_t);

    /** Refers to the view's memory where it has the flags that the name asks for, copies else. */
    VESPERMOOR_STANDINS_EXPORT static String nullTerminatedView(StringView view);
    VESPERMOOR_STANDINS_EXPORT static String nullTerminatedGlobalView(StringView view);

    VESPERMOOR_STANDINS_EXPORT String() noexcept;
    VESPERMOOR_STANDINS_EXPORT String(const char* data, std::size_t size);
    String(StringView view) : String{view.data(), view.size()} {}
    String(MutableStringView view) : String{view.data(), view.size()} {}
    String(ArrayView<const char> view) : String{view.data(), view.size()} {}
    String(ArrayView<char> view) : String{view.data(), view.size()} {}
    template <class Text, class = Implementation::IfPointerTo<Text, const char>>
    String(Text data) : String{StringView{data}} {}
    template <class Other, class = decltype(Implementation::StringConverter<
                                            std::decay_t<Other>>::from(std::declval<Other>()))>
    String(Other&& other)
        : String{Implementation::StringConverter<std::decay_t<Other>>::from(
              std::forward<Other>(other))} {}

    VESPERMOOR_STANDINS_EXPORT explicit String(AllocatedInitT, const char* data, std::size_t size);
    explicit String(AllocatedInitT, StringView view)
        : String{AllocatedInit, view.data(), view.size()} {}
    explicit String(ValueInitT, std::size_t size) : String{DirectInit, size, '\0'} {}
    VESPERMOOR_STANDINS_EXPORT explicit String(NoInitT, std::size_t size);
    VESPERMOOR_STANDINS_EXPORT explicit String(DirectInitT, std::size_t size, char c);

    /** Takes memory over; expects a NUL after it. A null deleter means `delete[]`. */
    VESPERMOOR_STANDINS_EXPORT explicit String(char* data, std::size_t size,
                                               Deleter deleter) noexcept;
    explicit String(const char* data, std::size_t size, Deleter deleter) noexcept
        : String{const_cast<char*>(data), size, deleter} {}
    template <class Function,
              class = std::enable_if_t<std::is_convertible<Function, Deleter>::value &&
                                       !std::is_convertible<Function, std::size_t>::value>>
    explicit String(const char* data, Function deleter) noexcept
        : String{data, data ? std::strlen(data) : 0, deleter} {}

    String(const String& other) : String{other.data(), other.size()} {}
    String(String&& other) noexcept : String{} { swap(other); }
    String& operator=(const String& other) { return *this = String{other}; }
    String& operator=(String&& other) noexcept {
        swap(other);
        return *this;
    }
    ~String() {
        if (_deleter)
            _deleter(_data, size());
        else
            delete[] _data;
    }

    operator ArrayView<const char>() const noexcept { return {_data, size()}; }
    operator ArrayView<char>() noexcept { return {_data, size()}; }
    operator ArrayView<const void>() const noexcept { return {_data, size()}; }
    operator ArrayView<void>() noexcept { return {_data, size()}; }
    operator Array<char>() && {
        const std::size_t size = this->size();
        const Deleter deleter = _deleter;
        return Array<char>{release(), size, deleter};
    }
    template <class Other, class = decltype(Implementation::StringConverter<Other>::to(
                               std::declval<const String&>()))>
    operator Other() const {
        return Implementation::StringConverter<Other>::to(*this);
    }

    explicit operator bool() const { return size(); }

    /** `Global` is kept for a view of memory that lives on only. */
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
    const char* cbegin() const { return _data; }
    char* end() { return _data + size(); }
    const char* end() const { return _data + size(); }
    const char* cend() const { return _data + size(); }

    char& front() { return first(); }
    char front() const { return first(); }
    char& back() { return last(); }
    char back() const { return last(); }
    char& operator[](std::size_t i) { return at(i); }
    char operator[](std::size_t i) const { return at(i); }

    MutableStringView slice(std::size_t begin, std::size_t end) { return view().slice(begin, end); }
    StringView slice(std::size_t begin, std::size_t end) const { return view().slice(begin, end); }
    MutableStringView slice(char* begin, char* end) { return view().slice(begin, end); }
    StringView slice(const char* begin, const char* end) const { return view().slice(begin, end); }
    template <class Begin>
    MutableStringView sliceSize(Begin begin, std::size_t size) {
        return view().sliceSize(begin, size);
    }
    template <class Begin>
    StringView sliceSize(Begin begin, std::size_t size) const {
        return view().sliceSize(begin, size);
    }
    template <class End>
    MutableStringView prefix(End end) {
        return view().prefix(end);
    }
    template <class End>
    StringView prefix(End end) const {
        return view().prefix(end);
    }
    MutableStringView suffix(char* begin) { return view().suffix(begin); }
    StringView suffix(const char* begin) const { return view().suffix(begin); }
    MutableStringView exceptPrefix(std::size_t size) { return view().exceptPrefix(size); }
    StringView exceptPrefix(std::size_t size) const { return view().exceptPrefix(size); }
    MutableStringView exceptPrefix(StringView prefix) { return view().exceptPrefix(prefix); }
    StringView exceptPrefix(StringView prefix) const { return view().exceptPrefix(prefix); }
    MutableStringView exceptSuffix(std::size_t size) { return view().exceptSuffix(size); }
    StringView exceptSuffix(std::size_t size) const { return view().exceptSuffix(size); }
    MutableStringView exceptSuffix(StringView suffix) { return view().exceptSuffix(suffix); }
    StringView exceptSuffix(StringView suffix) const { return view().exceptSuffix(suffix); }

    /* The delimiter is a character or a text */
    template <class Text>
    Array<MutableStringView> split(const Text& delimiter) {
        return view().split(delimiter);
    }
    template <class Text>
    Array<StringView> split(const Text& delimiter) const {
        return view().split(delimiter);
    }
    Array<MutableStringView> splitWithoutEmptyParts(char delimiter) {
        return view().splitWithoutEmptyParts(delimiter);
    }
    Array<StringView> splitWithoutEmptyParts(char delimiter) const {
        return view().splitWithoutEmptyParts(delimiter);
    }
    Array<MutableStringView> splitOnAnyWithoutEmptyParts(StringView delimiters) {
        return view().splitOnAnyWithoutEmptyParts(delimiters);
    }
    Array<StringView> splitOnAnyWithoutEmptyParts(StringView delimiters) const {
        return view().splitOnAnyWithoutEmptyParts(delimiters);
    }
    Array<MutableStringView> splitOnWhitespaceWithoutEmptyParts() {
        return view().splitOnWhitespaceWithoutEmptyParts();
    }
    Array<StringView> splitOnWhitespaceWithoutEmptyParts() const {
        return view().splitOnWhitespaceWithoutEmptyParts();
    }
    template <class Text>
    Array3<MutableStringView> partition(const Text& separator) {
        return view().partition(separator);
    }
    template <class Text>
    Array3<StringView> partition(const Text& separator) const {
        return view().partition(separator);
    }
    template <class Text>
    Array3<MutableStringView> partitionLast(const Text& separator) {
        return view().partitionLast(separator);
    }
    template <class Text>
    Array3<StringView> partitionLast(const Text& separator) const {
        return view().partitionLast(separator);
    }
    String join(const StringIterable& strings) const { return view().join(strings); }
    String joinWithoutEmptyParts(const StringIterable& strings) const {
        return view().joinWithoutEmptyParts(strings);
    }

    bool hasPrefix(StringView prefix) const { return view().hasPrefix(prefix); }
    bool hasPrefix(char prefix) const { return view().hasPrefix(prefix); }
    bool hasSuffix(StringView suffix) const { return view().hasSuffix(suffix); }
    bool hasSuffix(char suffix) const { return view().hasSuffix(suffix); }

    MutableStringView trimmed(StringView characters) { return view().trimmed(characters); }
    StringView trimmed(StringView characters) const { return view().trimmed(characters); }
    MutableStringView trimmed() { return view().trimmed(); }
    StringView trimmed() const { return view().trimmed(); }
    MutableStringView trimmedPrefix(StringView characters) {
        return view().trimmedPrefix(characters);
    }
    StringView trimmedPrefix(StringView characters) const {
        return view().trimmedPrefix(characters);
    }
    MutableStringView trimmedPrefix() { return view().trimmedPrefix(); }
    StringView trimmedPrefix() const { return view().trimmedPrefix(); }
    MutableStringView trimmedSuffix(StringView characters) {
        return view().trimmedSuffix(characters);
    }
    StringView trimmedSuffix(StringView characters) const {
        return view().trimmedSuffix(characters);
    }
    MutableStringView trimmedSuffix() { return view().trimmedSuffix(); }
    StringView trimmedSuffix() const { return view().trimmedSuffix(); }

    /* What is searched for is a character or a text */
    template <class Text>
    MutableStringView find(const Text& text) {
        return view().find(text);
    }
    template <class Text>
    StringView find(const Text& text) const {
        return view().find(text);
    }
    template <class Text>
    MutableStringView findOr(const Text& text, char* fail) {
        return view().findOr(text, fail);
    }
    template <class Text>
    StringView findOr(const Text& text, const char* fail) const {
        return view().findOr(text, fail);
    }
    template <class Text>
    MutableStringView findLast(const Text& text) {
        return view().findLast(text);
    }
    template <class Text>
    StringView findLast(const Text& text) const {
        return view().findLast(text);
    }
    template <class Text>
    MutableStringView findLastOr(const Text& text, char* fail) {
        return view().findLastOr(text, fail);
    }
    template <class Text>
    StringView findLastOr(const Text& text, const char* fail) const {
        return view().findLastOr(text, fail);
    }
    MutableStringView findAny(StringView characters) { return view().findAny(characters); }
    StringView findAny(StringView characters) const { return view().findAny(characters); }
    MutableStringView findAnyOr(StringView characters, char* fail) {
        return view().findAnyOr(characters, fail);
    }
    StringView findAnyOr(StringView characters, const char* fail) const {
        return view().findAnyOr(characters, fail);
    }
    MutableStringView findLastAny(StringView characters) { return view().findLastAny(characters); }
    StringView findLastAny(StringView characters) const { return view().findLastAny(characters); }
    MutableStringView findLastAnyOr(StringView characters, char* fail) {
        return view().findLastAnyOr(characters, fail);
    }
    StringView findLastAnyOr(StringView characters, const char* fail) const {
        return view().findLastAnyOr(characters, fail);
    }
    bool contains(StringView text) const { return view().contains(text); }
    bool contains(char character) const { return view().contains(character); }
    bool containsAny(StringView characters) const { return view().containsAny(characters); }
    std::size_t count(char character) const { return view().count(character); }

    /** The caller frees the memory; take `deleter()` before, as the string is empty after. */
    VESPERMOOR_STANDINS_EXPORT char* release();

private:
    static constexpr std::size_t GlobalMask = std::size_t(StringViewFlag::Global);

    MutableStringView view() { return *this; }
    StringView view() const { return *this; }
    void swap(String& other) noexcept {
        std::swap(_data, other._data);
        std::swap(_sizeAndGlobal, other._sizeAndGlobal);
        std::swap(_deleter, other._deleter);
    }
    char& first() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(size(), "Containers::String::front(): string is empty");
        return _data[0];
    }
    char& last() const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(size(), "Containers::String::back(): string is empty");
        return _data[size() - 1];
    }
    char& at(std::size_t i) const {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(
            i <= size(),
            "Containers::String::operator[](): index %zu out of range for %zu null-terminated "
            "bytes",
            i, size());
        return _data[i];
    }

    char* _data;
    std::size_t _sizeAndGlobal;
    Deleter _deleter;
};

template <class T>
BasicStringView<T>::BasicStringView(String& string) noexcept
    : BasicStringView{string.data(), string.size(), string.viewFlags()} {}
template <class T>
template <class U, class>
BasicStringView<T>::BasicStringView(const String& string) noexcept
    : BasicStringView{string.data(), string.size(), string.viewFlags()} {}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
