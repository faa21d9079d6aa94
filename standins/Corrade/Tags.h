#ifndef VespermoorStandins_Corrade_Tags_h
#define VespermoorStandins_Corrade_Tags_h

/** @file Stand-in for Corrade's initialization tags. */

namespace Corrade {
inline namespace VespermoorStandins {

/* The constructor of each tag takes an argument, so that `{}` never converts to one. */
struct DefaultInitT {
    struct Init {};
    constexpr explicit DefaultInitT(Init) {}
};
struct ValueInitT {
    struct Init {};
    constexpr explicit ValueInitT(Init) {}
};
struct NoInitT {
    struct Init {};
    constexpr explicit NoInitT(Init) {}
};
struct InPlaceInitT {
    struct Init {};
    constexpr explicit InPlaceInitT(Init) {}
};

constexpr DefaultInitT DefaultInit{DefaultInitT::Init{}};
constexpr ValueInitT ValueInit{ValueInitT::Init{}};
constexpr NoInitT NoInit{NoInitT::Init{}};
constexpr InPlaceInitT InPlaceInit{InPlaceInitT::Init{}};

} // namespace VespermoorStandins
} // namespace Corrade

#endif
