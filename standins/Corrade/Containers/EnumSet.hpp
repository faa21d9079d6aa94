#ifndef VespermoorStandins_Corrade_Containers_EnumSet_hpp
#define VespermoorStandins_Corrade_Containers_EnumSet_hpp

#include <initializer_list>

#include "Corrade/Containers/EnumSet.h"
#include "Corrade/Utility/Debug.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stands in for Corrade's output of a flag set: its known flags, then what is left as one value.
 */
template <class T, std::underlying_type_t<T> fullValue>
Utility::Debug& enumSetDebugOutput(Utility::Debug& debug, EnumSet<T, fullValue> value,
                                   const char* empty, std::initializer_list<T> flags) {
    if (!value)
        return debug << empty;

    bool first = true;
    const auto print = [&](T flag) {
        if (!first)
            debug << Utility::Debug::nospace << "|" << Utility::Debug::nospace;
        debug << flag;
        first = false;
    };
    for (const T flag : flags) {
        if (value >= flag) {
            print(flag);
            value &=
                EnumSet<T, fullValue>{std::underlying_type_t<T>(~std::underlying_type_t<T>(flag))};
        }
    }
    if (value)
        print(T(std::underlying_type_t<T>(value)));
    return debug;
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
