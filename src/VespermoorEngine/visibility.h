#ifndef VespermoorEngine_visibility_h
#define VespermoorEngine_visibility_h

#include "VespermoorEngine/Dependencies.h"

/** @brief Exports a symbol from libVespermoorEngine; all others are hidden. */
#define VESPERMOOR_ENGINE_EXPORT __attribute__((visibility("default")))

#endif
