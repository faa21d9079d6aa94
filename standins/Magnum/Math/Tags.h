#ifndef VespermoorStandins_Magnum_Math_Tags_h
#define VespermoorStandins_Magnum_Math_Tags_h

/** @file Stands in for the tags of Magnum's math types. */

#include "Magnum/Tags.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

struct ZeroInitT {
    struct Init {};
    constexpr explicit ZeroInitT(Init) {}
};
struct IdentityInitT {
    struct Init {};
    constexpr explicit IdentityInitT(Init) {}
};

constexpr ZeroInitT ZeroInit{ZeroInitT::Init{}};
constexpr IdentityInitT IdentityInit{IdentityInitT::Init{}};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
