#ifndef Vespermoor_Host_Failure_h
#define Vespermoor_Host_Failure_h

#include <stdexcept>
#include <string>

#include <Corrade/Containers/StringStl.h>
#include <Corrade/Containers/StringView.h>
#include <VespermoorEngine/Corrade.h>

namespace VespermoorEngine::Host {

/**
 * @brief @p text for a message, safe to print to a terminal and always one line.
 *
 * The bytes of control characters, U+0080 to U+009F included, of line and paragraph separators and
 * of marks that change the direction of text are written as `\x` and two hexadecimal digits. All
 * other bytes stay, invalid UTF-8 included.
 */
std::string escaped(Containers::StringView text);

/** @brief Prints @p message to standard error as the program's own line, escaped. */
void printError(Containers::StringView message);

/** @brief Bad input or a failed system call: one line for the user, and the end of the command. */
class Failure : public std::runtime_error {
public:
    /** @brief Failure that names the file or option it is @p about and the @p reason. */
    Failure(Containers::StringView about, Containers::StringView reason);

    using std::runtime_error::runtime_error;
};

/** @brief Ends a command that failed and has nothing more to print. */
struct SilentFailure {
    /** @brief The exit code of the program. */
    int exitCode = 1;
};

} // namespace VespermoorEngine::Host

#endif
