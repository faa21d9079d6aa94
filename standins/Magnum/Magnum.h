#ifndef VespermoorStandins_Magnum_Magnum_h
#define VespermoorStandins_Magnum_Magnum_h

/** @file Stands in for Magnum's names of the common math types. */

#include "Corrade/Containers/Containers.h"
#include "Corrade/Utility/Utility.h"
#include "Magnum/Math/Math.h"
#include "Magnum/Tags.h"
#include "Magnum/Types.h"

namespace Magnum {
inline namespace VespermoorStandins {

using namespace Corrade;

using Corrade::Utility::Debug;
using Corrade::Utility::Error;
using Corrade::Utility::Fatal;
using Corrade::Utility::Warning;

using Vector2 = Math::Vector2<Float>;
using Vector3 = Math::Vector3<Float>;
using Vector4 = Math::Vector4<Float>;
using Vector2i = Math::Vector2<Int>;
using Vector3i = Math::Vector3<Int>;
using Vector4i = Math::Vector4<Int>;
using Matrix4 = Math::Matrix4<Float>;
using Quaternion = Math::Quaternion<Float>;

} // namespace VespermoorStandins
} // namespace Magnum

#endif
