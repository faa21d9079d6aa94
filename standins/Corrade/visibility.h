#ifndef VespermoorStandins_Corrade_visibility_h
#define VespermoorStandins_Corrade_visibility_h

/** Marks the interface of libVespermoorStandins.so; everything else in it is hidden. */
#define VESPERMOOR_STANDINS_EXPORT __attribute__((visibility("default")))

#endif
