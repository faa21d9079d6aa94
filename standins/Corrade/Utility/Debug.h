#ifndef VespermoorStandins_Corrade_Utility_Debug_h
#define VespermoorStandins_Corrade_Utility_Debug_h

#include <iosfwd>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/EnumSet.h"
#include "Corrade/Utility/Utility.h"
#include "Corrade/visibility.h"

/** @file @brief Stand-in for Corrade::Utility::Debug, Warning and Error. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

class VESPERMOOR_STANDINS_EXPORT Debug {
public:
    enum class Flag : unsigned char { NoNewlineAtTheEnd = 1 };
    using Flags = Containers::EnumSet<Flag>;
    using Modifier = void (*)(Debug&);

    static void nospace(Debug& debug);
    static std::ostream* defaultOutput();

    explicit Debug(Flags flags = {}) : Debug{Channel::Debug, flags} {}
    explicit Debug(std::ostream* output, Flags flags = {}) : Debug{Channel::Debug, output, flags} {}
    Debug(const Debug&) = delete;
    Debug& operator=(const Debug&) = delete;
    ~Debug();

    Debug& operator<<(Modifier modifier);
    Debug& operator<<(const char* value);
    Debug& operator<<(Containers::StringView value);
    Debug& operator<<(bool value);
    Debug& operator<<(int value);
    Debug& operator<<(unsigned long value);
    Debug& operator<<(float value);
    /* Would convert to a boolean */
    Debug& operator<<(const void* value) = delete;

protected:
    enum class Channel : unsigned char { Debug, Warning, Error };

    explicit Debug(Channel channel, Flags flags);
    explicit Debug(Channel channel, std::ostream* output, Flags flags);

private:
    template <class T>
    Debug& print(const T& value);

    std::ostream* _output;
    std::ostream* _previousOutput;
    Channel _channel;
    Flags _flags;
    bool _written = false;
    bool _spaceBefore = false;
};

class VESPERMOOR_STANDINS_EXPORT Warning : public Debug {
public:
    static std::ostream* defaultOutput();

    explicit Warning(Flags flags = {}) : Debug{Channel::Warning, flags} {}
    explicit Warning(std::ostream* output, Flags flags = {})
        : Debug{Channel::Warning, output, flags} {}
};

class VESPERMOOR_STANDINS_EXPORT Error : public Debug {
public:
    static std::ostream* defaultOutput();

    explicit Error(Flags flags = {}) : Debug{Channel::Error, flags} {}
    explicit Error(std::ostream* output, Flags flags = {}) : Debug{Channel::Error, output, flags} {}
};

/* Lets a temporary stream take values whose operator is not a member. */
template <class T>
inline Debug& operator<<(Debug&& debug, const T& value) {
    return debug << value;
}

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
