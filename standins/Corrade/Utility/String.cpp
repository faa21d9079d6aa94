#include "Corrade/Utility/String.h"

#include <algorithm>
#include <utility>

#include "Corrade/Containers/Array.h"
#include "Corrade/Containers/StringIterable.h"
#include "Corrade/Utility/Assert.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace String {

namespace {

/* ASCII alone, whatever the locale says. */
char lower(char c) {
    return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c;
}
char upper(char c) {
    return c >= 'a' && c <= 'z' ? char(c - ('a' - 'A')) : c;
}

/* A string with a deleter may be no more than a view of memory that belongs to someone else. */
Containers::String owned(Containers::String&& string) {
    return string.deleter() ? Containers::String{Containers::StringView{string}}
                            : std::move(string);
}

} // namespace

void lowercaseInPlace(Containers::MutableStringView string) {
    std::transform(string.begin(), string.end(), string.begin(), lower);
}

void uppercaseInPlace(Containers::MutableStringView string) {
    std::transform(string.begin(), string.end(), string.begin(), upper);
}

Containers::String lowercase(Containers::String string) {
    Containers::String result = owned(std::move(string));
    lowercaseInPlace(result);
    return result;
}

Containers::String lowercase(Containers::StringView string) {
    return lowercase(Containers::String{string});
}

Containers::String uppercase(Containers::String string) {
    Containers::String result = owned(std::move(string));
    uppercaseInPlace(result);
    return result;
}

Containers::String uppercase(Containers::StringView string) {
    return uppercase(Containers::String{string});
}

Containers::String replaceFirst(Containers::StringView string, Containers::StringView search,
                                Containers::StringView replace) {
    const Containers::StringView found = string.find(search);
    if (!found.data())
        return string;
    return string.prefix(found.begin()) + replace + string.suffix(found.end());
}

Containers::String replaceAll(Containers::StringView string, Containers::StringView search,
                              Containers::StringView replace) {
    CORRADE_ASSERT(
        !search.isEmpty(),
        "Utility::String::replaceAll(): empty search string would cause an infinite loop", {});
    return replace.join(string.split(search));
}

Containers::String replaceAll(Containers::String string, char search, char replace) {
    Containers::String result = owned(std::move(string));
    replaceAllInPlace(result, search, replace);
    return result;
}

void replaceAllInPlace(Containers::MutableStringView string, char search, char replace) {
    std::replace(string.begin(), string.end(), search, replace);
}

} // namespace String
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade
