#ifndef VespermoorStandins_Corrade_Utility_Debug_h
#define VespermoorStandins_Corrade_Utility_Debug_h

#include <cstddef>
#include <iosfwd>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/EnumSet.h"
#include "Corrade/Utility/Utility.h"
#include "Corrade/visibility.h"

/** @file @brief Stands in for Corrade::Utility::Debug, Warning, Error and Fatal. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

namespace Implementation {

struct DebugOstreamFallback;

template <class T, class = void>
constexpr bool IsIterable = false;
template <class T>
constexpr bool IsIterable<T, std::void_t<decltype(std::declval<const T&>().begin()),
                                         decltype(std::declval<const T&>().end())>> = true;

template <class T, class = void>
constexpr bool HasSubstr = false;
template <class T>
constexpr bool HasSubstr<T, std::void_t<decltype(std::declval<const T&>().substr(0))>> = true;

template <class T, class = void>
constexpr bool HasCString = false;
template <class T>
constexpr bool HasCString<T, std::void_t<decltype(std::declval<const T&>().c_str())>> = true;

template <class T>
constexpr bool IsStringLike =
    HasSubstr<T> || HasCString<T> || std::is_same_v<T, Containers::String> ||
    std::is_same_v<T, Containers::StringView> || std::is_same_v<T, Containers::MutableStringView>;

template <class T>
constexpr bool IsContainer = IsIterable<T> && !IsStringLike<T>;

} // namespace Implementation

class VESPERMOOR_STANDINS_EXPORT Debug {
public:
    enum class Flag : unsigned char {
        NoNewlineAtTheEnd = 1 << 0,
        NoSpace = 1 << 2,
        Packed = 1 << 3,
        Hex = 1 << 7
    };
    using Flags = Containers::EnumSet<Flag>;
    using Modifier = void (*)(Debug&);

    static void nospace(Debug& debug);
    static void newline(Debug& debug);
    static void space(Debug& debug);
    static void packed(Debug& debug);
    static void hex(Debug& debug);

    static std::ostream* defaultOutput();
    static std::ostream* output();

    explicit Debug(Flags flags = {});
    explicit Debug(std::ostream* output, Flags flags = {});
    explicit Debug(std::nullptr_t, Flags flags = {});
    explicit Debug(Containers::String* output, Flags flags = {});
    Debug(const Debug&) = delete;
    Debug& operator=(const Debug&) = delete;
    ~Debug();

    Flags flags() const { return _flags; }
    void setFlags(Flags flags) { _flags = flags; }
    Flags immediateFlags() const;
    void setImmediateFlags(Flags flags) { _immediateFlags = flags; }

    Debug& operator<<(Modifier modifier);
    Debug& operator<<(const char* value);
    Debug& operator<<(Containers::StringView value);
    Debug& operator<<(Containers::MutableStringView value);
    Debug& operator<<(const Containers::String& value);
    Debug& operator<<(const void* value);
    Debug& operator<<(std::nullptr_t);
    Debug& operator<<(bool value);
    Debug& operator<<(char value);
    Debug& operator<<(unsigned char value);
    Debug& operator<<(int value);
    Debug& operator<<(long value);
    Debug& operator<<(long long value);
    Debug& operator<<(unsigned value);
    Debug& operator<<(unsigned long value);
    Debug& operator<<(unsigned long long value);
    Debug& operator<<(float value);
    Debug& operator<<(double value);
    Debug& operator<<(long double value);

protected:
    enum class Channel : unsigned char { Debug, Warning, Error };

    explicit Debug(Channel channel, Flags flags);
    explicit Debug(Channel channel, std::ostream* output, Flags flags);
    explicit Debug(Channel channel, Containers::String* output, Flags flags);

    static std::ostream* output(Channel channel);
    void finish();

private:
    friend VESPERMOOR_STANDINS_EXPORT Debug& operator<<(Debug& debug,
                                                        Implementation::DebugOstreamFallback&&);

    template <class T>
    Debug& print(const T& value);
    template <class T>
    Debug& printInteger(T value);
    template <class T>
    Debug& printFloat(T value, int digits);

    std::ostream* _output;
    std::ostream* _previousOutput;
    std::ostream* _ownedOutput = nullptr;
    Channel _channel;
    bool _written = false;
    Flags _flags;
    Flags _immediateFlags;
};

CORRADE_ENUMSET_OPERATORS(Debug::Flags)

class VESPERMOOR_STANDINS_EXPORT Warning : public Debug {
public:
    static std::ostream* defaultOutput();
    static std::ostream* output();

    explicit Warning(Flags flags = {}) : Debug{Channel::Warning, flags} {}
    explicit Warning(std::ostream* output, Flags flags = {})
        : Debug{Channel::Warning, output, flags} {}
    explicit Warning(std::nullptr_t, Flags flags = {})
        : Warning{static_cast<std::ostream*>(nullptr), flags} {}
    explicit Warning(Containers::String* output, Flags flags = {})
        : Debug{Channel::Warning, output, flags} {}
};

class VESPERMOOR_STANDINS_EXPORT Error : public Debug {
public:
    static std::ostream* defaultOutput();
    static std::ostream* output();

    explicit Error(Flags flags = {}) : Debug{Channel::Error, flags} {}
    explicit Error(std::ostream* output, Flags flags = {}) : Debug{Channel::Error, output, flags} {}
    explicit Error(std::nullptr_t, Flags flags = {})
        : Error{static_cast<std::ostream*>(nullptr), flags} {}
    explicit Error(Containers::String* output, Flags flags = {})
        : Debug{Channel::Error, output, flags} {}
};

class VESPERMOOR_STANDINS_EXPORT Fatal : public Error {
public:
    explicit Fatal(int exitCode = 1, Flags flags = {}) : Error{flags}, _exitCode{exitCode} {}
    explicit Fatal(Flags flags) : Fatal{1, flags} {}
    explicit Fatal(std::ostream* output, int exitCode = 1, Flags flags = {})
        : Error{output, flags}, _exitCode{exitCode} {}
    [[noreturn]] ~Fatal();

private:
    int _exitCode;
};

/* Lets a temporary stream take the values whose operator is no member. */
template <class T>
inline Debug& operator<<(Debug&& debug, const T& value) {
    return debug << value;
}

template <class Iterable, std::enable_if_t<Implementation::IsContainer<Iterable>, int> = 0>
Debug& operator<<(Debug& debug, const Iterable& value) {
    constexpr bool nested = Implementation::IsContainer<std::decay_t<decltype(*value.begin())>>;
    const Debug::Flags flags = debug.flags();
    const bool packed = bool(debug.immediateFlags() & Debug::Flag::Packed);
    const char* const separator = packed ? (nested ? "\n" : "") : (nested ? ",\n " : ", ");

    /* What was asked for the next value holds for all elements of it, apart from the space. */
    debug.setFlags(flags | (debug.immediateFlags() & ~Debug::Flag::NoSpace));
    debug << (packed ? "" : "{");
    bool first = true;
    for (auto&& item : value) {
        debug << Debug::nospace << (first ? "" : separator) << Debug::nospace << item;
        first = false;
    }
    debug << Debug::nospace << (packed ? "" : "}");
    debug.setFlags(flags);
    return debug;
}

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
