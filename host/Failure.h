#ifndef Vespermoor_Host_Failure_h
#define Vespermoor_Host_Failure_h

#include <stdexcept>
#include <string>

#include <Corrade/Containers/StringStl.h>

namespace VespermoorEngine::Host {

/** @brief Bad input or a refusal of the system: one line for the user, and the end of a command. */
class Failure : public std::runtime_error {
public:
    /** @brief Failure that names the file or option it is @p about and the @p reason. */
    Failure(const Corrade::Containers::StringView about,
            const Corrade::Containers::StringView reason)
        : std::runtime_error{std::string{about.data(), about.size()} + ": " +
                             std::string{reason.data(), reason.size()}} {}

    using std::runtime_error::runtime_error;
};

/** @brief The end of a command that failed and has said why, or has nothing to say. */
class SilentFailure {};

} // namespace VespermoorEngine::Host

#endif
