#ifndef VespermoorStandins_Corrade_Utility_Assert_h
#define VespermoorStandins_Corrade_Utility_Assert_h

#include <cstdlib>

#include "Corrade/Utility/Debug.h"

/** @file @brief Stands in for Corrade's assertions; the message never goes to a redirection. */

#define VESPERMOOR_STANDINS_STRING_(text) #text
#define VESPERMOOR_STANDINS_STRING(text) VESPERMOOR_STANDINS_STRING_(text)

/* The last argument is the real one's result in builds that go on after a failed assertion. */
#define CORRADE_ASSERT(condition, message, returnValue)                                   \
    do {                                                                                  \
        if (!(condition)) {                                                               \
            Corrade::Utility::Error{Corrade::Utility::Error::defaultOutput()} << message; \
            std::abort();                                                                 \
        }                                                                                 \
    } while (false)

#define CORRADE_INTERNAL_ASSERT(condition)                        \
    CORRADE_ASSERT(condition,                                     \
                   "Assertion " #condition " failed at " __FILE__ \
                   ":" VESPERMOOR_STANDINS_STRING(__LINE__), )

#endif
