#ifndef VespermoorStandins_Magnum_Types_h
#define VespermoorStandins_Magnum_Types_h

/** @file Stands in for Magnum's names of the builtin types. */

#include <cstdint>

namespace Magnum {
inline namespace VespermoorStandins {

using UnsignedByte = std::uint8_t;
using Byte = std::int8_t;
using UnsignedShort = std::uint16_t;
using Short = std::int16_t;
using UnsignedInt = std::uint32_t;
using Int = std::int32_t;
using UnsignedLong = std::uint64_t;
using Long = std::int64_t;
using Float = float;
using Double = double;

} // namespace VespermoorStandins
} // namespace Magnum

#endif
