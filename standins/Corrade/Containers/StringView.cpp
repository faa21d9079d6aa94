#include "Corrade/Containers/StringView.h"

#include <algorithm>

#include "Corrade/Containers/GrowableArray.h"
#include "Corrade/Containers/String.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

template <class T>
Array<BasicStringView<T>> BasicStringView<T>::split(const char delimiter) const {
    Array<BasicStringView> parts;
    if (isEmpty())
        return parts;
    BasicStringView rest = *this;
    while (const BasicStringView found = rest.find(delimiter)) {
        arrayAppend(parts, rest.prefix(found.begin()));
        rest = rest.suffix(found.end());
    }
    arrayAppend(parts, rest);
    return parts;
}

template class BasicStringView<char>;
template class BasicStringView<const char>;

String operator+(const StringView a, const StringView b) {
    String joined{NoInit, a.size() + b.size()};
    std::copy(b.begin(), b.end(), std::copy(a.begin(), a.end(), joined.data()));
    return joined;
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade
