#include "Corrade/Containers/StringView.h"

#include <algorithm>

#include "Corrade/Containers/EnumSet.hpp"
#include "Corrade/Containers/GrowableArray.h"
#include "Corrade/Containers/StaticArray.h"
#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringIterable.h"
#include "Corrade/Utility/Debug.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

Utility::Debug& operator<<(Utility::Debug& debug, StringViewFlag value) {
    debug << "Containers::StringViewFlag" << Utility::Debug::nospace;
    if (value == StringViewFlag::Global)
        return debug << "::Global";
    if (value == StringViewFlag::NullTerminated)
        return debug << "::NullTerminated";
    return debug << "(" << Utility::Debug::nospace << Utility::Debug::hex << std::size_t(value)
                 << Utility::Debug::nospace << ")";
}

Utility::Debug& operator<<(Utility::Debug& debug, StringViewFlags value) {
    return enumSetDebugOutput(debug, value, "Containers::StringViewFlags{}",
                              {StringViewFlag::Global, StringViewFlag::NullTerminated});
}

namespace {

/* Parts of the view between what `find` finds in its rest. A delimiter at the end is followed by an
   empty part, an empty view has no parts at all. */
template <class T, class Find>
Array<BasicStringView<T>> splitBy(BasicStringView<T> view, bool keepEmptyParts, Find find) {
    Array<BasicStringView<T>> parts;
    if (view.isEmpty())
        return parts;
    const auto append = [&](BasicStringView<T> part) {
        if (keepEmptyParts || !part.isEmpty())
            arrayAppend(parts, part);
    };
    while (const BasicStringView<T> delimiter = find(view)) {
        append(view.prefix(delimiter.begin()));
        view = view.suffix(delimiter.end());
    }
    append(view);
    return parts;
}

template <class T>
Array3<BasicStringView<T>> around(BasicStringView<T> view, BasicStringView<T> separator) {
    return {view.prefix(separator.begin()), separator, view.suffix(separator.end())};
}

String joinParts(StringView delimiter, const StringIterable& parts, bool keepEmptyParts) {
    const auto forEachPiece = [&](auto&& use) {
        bool first = true;
        for (const StringView part : parts) {
            if (!keepEmptyParts && part.isEmpty())
                continue;
            if (!first)
                use(delimiter);
            first = false;
            use(part);
        }
    };

    std::size_t size = 0;
    forEachPiece([&](StringView piece) { size += piece.size(); });
    String joined{NoInit, size};
    char* out = joined.data();
    forEachPiece([&](StringView piece) { out = std::copy(piece.begin(), piece.end(), out); });
    return joined;
}

std::string_view standard(StringView view) {
    return {view.data(), view.size()};
}

} // namespace

template <class T>
Array<BasicStringView<T>> BasicStringView<T>::split(char delimiter) const {
    return splitBy(*this, true, [&](BasicStringView rest) { return rest.find(delimiter); });
}
template <class T>
Array<BasicStringView<T>> BasicStringView<T>::split(StringView delimiter) const {
    VESPERMOOR_STANDINS_ASSERT(!delimiter.isEmpty(),
                               "Containers::StringView::split(): delimiter is empty");
    return splitBy(*this, true, [&](BasicStringView rest) { return rest.find(delimiter); });
}
template <class T>
Array<BasicStringView<T>> BasicStringView<T>::splitWithoutEmptyParts(char delimiter) const {
    return splitBy(*this, false, [&](BasicStringView rest) { return rest.find(delimiter); });
}
template <class T>
Array<BasicStringView<T>>
BasicStringView<T>::splitOnAnyWithoutEmptyParts(StringView delimiters) const {
    return splitBy(*this, false, [&](BasicStringView rest) { return rest.findAny(delimiters); });
}
template <class T>
Array<BasicStringView<T>> BasicStringView<T>::splitOnWhitespaceWithoutEmptyParts() const {
    return splitOnAnyWithoutEmptyParts(" \t\f\v\r\n");
}

/* Without the separator the whole is the first part, or the last one when searched from the end */
template <class T>
Array3<BasicStringView<T>> BasicStringView<T>::partition(char separator) const {
    const BasicStringView at = find(separator);
    return around(*this, at.data() ? at : exceptPrefix(size()));
}
template <class T>
Array3<BasicStringView<T>> BasicStringView<T>::partition(StringView separator) const {
    const BasicStringView at = find(separator);
    return around(*this, at.data() ? at : exceptPrefix(size()));
}
template <class T>
Array3<BasicStringView<T>> BasicStringView<T>::partitionLast(char separator) const {
    const BasicStringView at = findLast(separator);
    if (at.data())
        return around(*this, at);
    return {exceptPrefix(size()), exceptPrefix(size()), *this};
}
template <class T>
Array3<BasicStringView<T>> BasicStringView<T>::partitionLast(StringView separator) const {
    const BasicStringView at = findLast(separator);
    if (at.data())
        return around(*this, at);
    return {exceptPrefix(size()), exceptPrefix(size()), *this};
}

template <class T>
String BasicStringView<T>::join(const StringIterable& strings) const {
    return joinParts(*this, strings, true);
}
template <class T>
String BasicStringView<T>::joinWithoutEmptyParts(const StringIterable& strings) const {
    return joinParts(*this, strings, false);
}

template <class T>
BasicStringView<T> BasicStringView<T>::exceptPrefix(StringView prefix) const {
    VESPERMOOR_STANDINS_ASSERT(
        hasPrefix(prefix), "Containers::StringView::exceptPrefix(): string doesn't begin with %.*s",
        int(prefix.size()), prefix.data());
    return exceptPrefix(prefix.size());
}
template <class T>
BasicStringView<T> BasicStringView<T>::exceptSuffix(StringView suffix) const {
    VESPERMOOR_STANDINS_ASSERT(
        hasSuffix(suffix), "Containers::StringView::exceptSuffix(): string doesn't end with %.*s",
        int(suffix.size()), suffix.data());
    return exceptSuffix(suffix.size());
}

template <class T>
std::size_t BasicStringView<T>::count(char character) const {
    return std::count(begin(), end(), character);
}

template class BasicStringView<char>;
template class BasicStringView<const char>;

bool operator==(StringView a, StringView b) {
    return standard(a) == standard(b);
}
bool operator!=(StringView a, StringView b) {
    return standard(a) != standard(b);
}
bool operator<(StringView a, StringView b) {
    return standard(a) < standard(b);
}
bool operator<=(StringView a, StringView b) {
    return standard(a) <= standard(b);
}
bool operator>=(StringView a, StringView b) {
    return standard(a) >= standard(b);
}
bool operator>(StringView a, StringView b) {
    return standard(a) > standard(b);
}

String operator+(StringView a, StringView b) {
    return StringView{}.join({a, b});
}

String operator*(StringView string, std::size_t count) {
    String repeated{NoInit, string.size() * count};
    for (char* out = repeated.data(); count; --count)
        out = std::copy(string.begin(), string.end(), out);
    return repeated;
}
String operator*(std::size_t count, StringView string) {
    return string * count;
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade
