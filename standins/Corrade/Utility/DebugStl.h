#ifndef VespermoorStandins_Corrade_Utility_DebugStl_h
#define VespermoorStandins_Corrade_Utility_DebugStl_h

#include <ostream>
#include <string>
#include <type_traits>

#include "Corrade/Containers/StringView.h"
#include "Corrade/Utility/Debug.h"

/** @file @brief Stands in for Corrade's printing of std::string and of what std::ostream prints. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

/* A template, so that nothing converts to std::string on the way here. */
template <class T, std::enable_if_t<std::is_same_v<T, std::string>, int> = 0>
Debug& operator<<(Debug& debug, const T& value) {
    return debug << Containers::StringView{value.data(), value.size()};
}

namespace Implementation {

/* Takes any value by a conversion, so each operator<< made for its type is a better match. */
struct DebugOstreamFallback {
    template <class T>
    /*implicit*/ DebugOstreamFallback(const T& object)
        : value{&object}, print{[](std::ostream& stream, const void* pointer) {
              stream << *static_cast<const T*>(pointer);
          }} {}

    const void* value;
    void (*print)(std::ostream&, const void*);
};

inline std::ostream& operator<<(std::ostream& stream, const DebugOstreamFallback& fallback) {
    fallback.print(stream, fallback.value);
    return stream;
}

} // namespace Implementation

VESPERMOOR_STANDINS_EXPORT Debug& operator<<(Debug& debug,
                                             Implementation::DebugOstreamFallback&& value);

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
