#ifndef Vespermoor_Host_Failure_h
#define Vespermoor_Host_Failure_h

#include <stdexcept>
#include <string>

#include <Corrade/Containers/StringStl.h>

namespace VespermoorEngine::Host {

/** @brief Whether @p c is one that ends a line, moves the cursor or otherwise does not show. */
inline bool isControlByte(const char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

/** @brief @p text with each control byte as `\\x` and its two digits. */
inline std::string inOneLine(const std::string& text) {
    constexpr const char* digits = "0123456789abcdef";
    std::string line;
    for (const char c : text) {
        line += isControlByte(c) ? std::string{"\\x"} + digits[c >> 4] + digits[c & 15]
                                 : std::string(1, c);
    }
    return line;
}

/** @brief Bad input or a refusal of the system: one line for the user, and the end of a command. */
class Failure : public std::runtime_error {
public:
    /** @brief Failure that names the file or option it is @p about and the @p reason. */
    Failure(const Corrade::Containers::StringView about,
            const Corrade::Containers::StringView reason)
        : std::runtime_error{inOneLine(std::string{about.data(), about.size()} + ": " +
                                       std::string{reason.data(), reason.size()})} {}

    using std::runtime_error::runtime_error;
};

/** @brief The end of a command that failed and has said why, or has nothing to say. */
class SilentFailure {};

} // namespace VespermoorEngine::Host

#endif
