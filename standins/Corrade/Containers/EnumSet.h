#ifndef VespermoorStandins_Corrade_Containers_EnumSet_h
#define VespermoorStandins_Corrade_Containers_EnumSet_h

#include <type_traits>

#include "Corrade/Containers/Containers.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stand-in for Corrade's set of the flags of one enum class. */
template <class T, std::underlying_type_t<T> fullValue>
class EnumSet {
public:
    using Type = T;
    using UnderlyingType = std::underlying_type_t<T>;
    enum : UnderlyingType { FullValue = fullValue };

    constexpr EnumSet() noexcept : _value{} {}
    constexpr EnumSet(T value) noexcept : _value{UnderlyingType(value)} {}
    constexpr explicit EnumSet(UnderlyingType value) noexcept : _value{value} {}

    constexpr explicit operator bool() const { return _value != 0; }
    constexpr explicit operator UnderlyingType() const { return _value; }

    constexpr bool operator==(EnumSet other) const { return _value == other._value; }

    /* A superset, not a larger number */
    constexpr bool operator>=(EnumSet other) const { return (*this & other) == other; }

    /* Operators on small types give int */
    constexpr EnumSet operator~() const { return EnumSet{UnderlyingType(~_value & fullValue)}; }
    constexpr EnumSet operator|(EnumSet other) const {
        return EnumSet{UnderlyingType(_value | other._value)};
    }
    constexpr EnumSet operator&(EnumSet other) const {
        return EnumSet{UnderlyingType(_value & other._value)};
    }
    EnumSet& operator|=(EnumSet other) { return *this = *this | other; }

private:
    UnderlyingType _value;
};

/** Operators with a plain enum value on the left side, for a set named at namespace level. */
#define CORRADE_ENUMSET_OPERATORS(Set)            \
    constexpr Set operator|(Set::Type a, Set b) { \
        return Set{a} | b;                        \
    }                                             \
    constexpr Set operator&(Set::Type a, Set b) { \
        return Set{a} & b;                        \
    }                                             \
    constexpr Set operator~(Set::Type a) {        \
        return ~Set{a};                           \
    }

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
