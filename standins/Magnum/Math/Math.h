#ifndef VespermoorStandins_Magnum_Math_Math_h
#define VespermoorStandins_Magnum_Math_Math_h

/** @file Stands in for the forward declarations of Magnum's math types. */

#include <cstddef>

#include "Magnum/Types.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

template <std::size_t size, class T>
class Vector;
template <class T>
class Vector2;
template <class T>
class Vector3;
template <class T>
class Vector4;
template <std::size_t cols, std::size_t rows, class T>
class RectangularMatrix;
template <class T>
class Matrix4;
template <class T>
class Quaternion;

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
