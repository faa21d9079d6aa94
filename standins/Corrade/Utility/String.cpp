#include "Corrade/Utility/String.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace String {

void lowercaseInPlace(Containers::MutableStringView string) {
    for (char& c : string)
        if (c >= 'A' && c <= 'Z')
            c = char(c + ('a' - 'A'));
}

} // namespace String
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade
