#ifndef Vespermoor_Host_ChangeFormat_h
#define Vespermoor_Host_ChangeFormat_h

#include <string>

#include "WatchedPaths.h"

namespace VespermoorEngine::Host {

/** @brief How a change is printed. */
enum class ChangeFormat {
    /** `Modify` or `Remove` and the escaped path, as a line. */
    Text,
    /** The same with the exact path, terminated by a NUL. */
    Null,
    /**
     * An object with `event` and `path`, as a line. A path that is not UTF-8 is the member
     * `pathBase64` instead.
     */
    Json
};

/** @brief @p change in @p format, terminator included. */
std::string formatted(const Change& change, ChangeFormat format);

} // namespace VespermoorEngine::Host

#endif
