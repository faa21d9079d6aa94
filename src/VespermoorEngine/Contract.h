#ifndef VespermoorEngine_Contract_h
#define VespermoorEngine_Contract_h

#include <cstdlib>

#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Debug.h>

#include "VespermoorEngine/Corrade.h"
#include "VespermoorEngine/Dependencies.h"

namespace VespermoorEngine {

/**
 * @brief Ends the process because its own code broke a contract.
 *
 * Writes @p items as one line, separated by single blanks, to the default output of
 * `Corrade::Utility::Error`, even if that stream is redirected, and calls `abort()`.
 */
template <class... T>
[[noreturn]] void breakContract(const T&... items) {
    {
        Utility::Error error{Utility::Error::defaultOutput()};
        (error << ... << items);
    }
    std::abort();
}

} // namespace VespermoorEngine

#endif
