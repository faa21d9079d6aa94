#ifndef VespermoorStandins_Magnum_Tags_h
#define VespermoorStandins_Magnum_Tags_h

/** @file Stands in for Magnum's initialization tags. */

#include "Corrade/Tags.h"

namespace Magnum {
inline namespace VespermoorStandins {

using Corrade::NoCreate;
using Corrade::NoCreateT;
using Corrade::NoInit;
using Corrade::NoInitT;

} // namespace VespermoorStandins
} // namespace Magnum

#endif
