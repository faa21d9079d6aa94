#ifndef VespermoorEditor_Utils_visibility_h
#define VespermoorEditor_Utils_visibility_h

#include "VespermoorEngine/Dependencies.h"

/** @brief Exports a symbol from libVespermoorEditorUtils; all others are hidden. */
#define VESPERMOOR_EDITOR_UTILS_EXPORT __attribute__((visibility("default")))

#endif
