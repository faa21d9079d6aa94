#ifndef VespermoorStandins_Magnum_Magnum_h
#define VespermoorStandins_Magnum_Magnum_h

/** @file Stand-in for Magnum's names of the common math types. */

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

template <class T>
class Vector2;
template <class T>
class Vector3;
template <class T>
class Vector4;
template <class T>
class Matrix4;
template <class T>
class Quaternion;

} // namespace Math

using Vector2 = Math::Vector2<float>;
using Vector3 = Math::Vector3<float>;
using Vector4 = Math::Vector4<float>;
using Vector2i = Math::Vector2<int>;
using Matrix4 = Math::Matrix4<float>;
using Quaternion = Math::Quaternion<float>;

} // namespace VespermoorStandins
} // namespace Magnum

#endif
