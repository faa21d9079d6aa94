#ifndef VespermoorEngine_visibility_h
#define VespermoorEngine_visibility_h

#include "VespermoorEngine/Dependencies.h"

/** @brief Marks what libVespermoorEngine exports; everything else is hidden. */
#define VESPERMOOR_ENGINE_EXPORT __attribute__((visibility("default")))

#endif
