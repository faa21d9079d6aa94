#ifndef VespermoorStandins_Corrade_Containers_Implementation_Assertion_h
#define VespermoorStandins_Corrade_Containers_Implementation_Assertion_h

#include "Corrade/visibility.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

/** Prints the `printf`-like message as a line to the standard error stream and aborts. */
[[noreturn]] VESPERMOOR_STANDINS_EXPORT void abortWithMessage(const char* format, ...)
    __attribute__((format(printf, 1, 2)));

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

/** Contract that is checked in every build. The message is a `printf` format with its arguments. */
#define VESPERMOOR_STANDINS_ASSERT(condition, ...)                                \
    do {                                                                          \
        if (!(condition))                                                         \
            ::Corrade::Containers::Implementation::abortWithMessage(__VA_ARGS__); \
    } while (false)

/** Contract that is checked unless `NDEBUG` is defined: the ones on the hot paths. */
#ifdef NDEBUG
#define VESPERMOOR_STANDINS_DEBUG_ASSERT(condition, ...) static_cast<void>(0)
#else
#define VESPERMOOR_STANDINS_DEBUG_ASSERT(condition, ...) \
    VESPERMOOR_STANDINS_ASSERT(condition, __VA_ARGS__)
#endif

#endif
