#include "Corrade/Containers/StringView.h"

#include <algorithm>

#include "Corrade/Containers/String.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

String operator+(const StringView a, const StringView b) {
    String joined{NoInit, a.size() + b.size()};
    std::copy(b.begin(), b.end(), std::copy(a.begin(), a.end(), joined.data()));
    return joined;
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade
