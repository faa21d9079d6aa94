#ifndef VespermoorStandins_Corrade_Containers_EnumSet_h
#define VespermoorStandins_Corrade_Containers_EnumSet_h

#include <type_traits>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Tags.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stands in for Corrade's set of the flags of one enum class. */
template <class T, std::underlying_type_t<T> fullValue>
class EnumSet {
public:
    using Type = T;
    using UnderlyingType = std::underlying_type_t<T>;
    enum : UnderlyingType { FullValue = fullValue };

    constexpr EnumSet() noexcept : _value{} {}
    constexpr EnumSet(T value) noexcept : _value{UnderlyingType(value)} {}
    constexpr explicit EnumSet(UnderlyingType value) noexcept : _value{value} {}
    explicit EnumSet(NoInitT) {}

    constexpr explicit operator bool() const { return _value != 0; }
    constexpr explicit operator UnderlyingType() const { return _value; }

    constexpr bool operator==(EnumSet other) const { return _value == other._value; }
    constexpr bool operator!=(EnumSet other) const { return _value != other._value; }

    /* A superset, not a larger number */
    constexpr bool operator>=(EnumSet other) const { return (*this & other) == other; }
    constexpr bool operator<=(EnumSet other) const { return other >= *this; }

    constexpr EnumSet operator~() const { return of(~_value & fullValue); }
    constexpr EnumSet operator|(EnumSet other) const { return of(_value | other._value); }
    constexpr EnumSet operator&(EnumSet other) const { return of(_value & other._value); }
    constexpr EnumSet operator^(EnumSet other) const { return of(_value ^ other._value); }
    EnumSet& operator|=(EnumSet other) { return *this = *this | other; }
    EnumSet& operator&=(EnumSet other) { return *this = *this & other; }
    EnumSet& operator^=(EnumSet other) { return *this = *this ^ other; }

private:
    /* Operators on small types give int */
    template <class Promoted>
    static constexpr EnumSet of(Promoted value) {
        return EnumSet{UnderlyingType(value)};
    }

    UnderlyingType _value;
};

template <class T, class = std::enable_if_t<std::is_enum<T>::value>>
constexpr std::underlying_type_t<T> enumCastUnderlyingType(T value) {
    return std::underlying_type_t<T>(value);
}

template <class T, std::underlying_type_t<T> fullValue>
constexpr std::underlying_type_t<T> enumCastUnderlyingType(EnumSet<T, fullValue> value) {
    return std::underlying_type_t<T>(value);
}

/** Operators with a plain enum value on the left side, for a set named at namespace level. */
#define CORRADE_ENUMSET_OPERATORS(Set)              \
    constexpr bool operator==(Set::Type a, Set b) { \
        return Set{a} == b;                         \
    }                                               \
    constexpr bool operator!=(Set::Type a, Set b) { \
        return Set{a} != b;                         \
    }                                               \
    constexpr bool operator>=(Set::Type a, Set b) { \
        return Set{a} >= b;                         \
    }                                               \
    constexpr bool operator<=(Set::Type a, Set b) { \
        return Set{a} <= b;                         \
    }                                               \
    constexpr Set operator|(Set::Type a, Set b) {   \
        return Set{a} | b;                          \
    }                                               \
    constexpr Set operator&(Set::Type a, Set b) {   \
        return Set{a} & b;                          \
    }                                               \
    constexpr Set operator^(Set::Type a, Set b) {   \
        return Set{a} ^ b;                          \
    }                                               \
    constexpr Set operator~(Set::Type a) {          \
        return ~Set{a};                             \
    }

/** The same for a set named inside a class, which may be a template. */
#define CORRADE_ENUMSET_FRIEND_OPERATORS(Set)                       \
    friend constexpr bool operator==(typename Set::Type a, Set b) { \
        return Set{a} == b;                                         \
    }                                                               \
    friend constexpr bool operator!=(typename Set::Type a, Set b) { \
        return Set{a} != b;                                         \
    }                                                               \
    friend constexpr bool operator>=(typename Set::Type a, Set b) { \
        return Set{a} >= b;                                         \
    }                                                               \
    friend constexpr bool operator<=(typename Set::Type a, Set b) { \
        return Set{a} <= b;                                         \
    }                                                               \
    friend constexpr Set operator|(typename Set::Type a, Set b) {   \
        return Set{a} | b;                                          \
    }                                                               \
    friend constexpr Set operator&(typename Set::Type a, Set b) {   \
        return Set{a} & b;                                          \
    }                                                               \
    friend constexpr Set operator^(typename Set::Type a, Set b) {   \
        return Set{a} ^ b;                                          \
    }                                                               \
    friend constexpr Set operator~(typename Set::Type a) {          \
        return ~Set{a};                                             \
    }

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
