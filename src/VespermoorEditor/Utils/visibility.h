#ifndef VespermoorEditor_Utils_visibility_h
#define VespermoorEditor_Utils_visibility_h

#include "VespermoorEngine/Dependencies.h"

/** @brief Marks what libVespermoorEditorUtils exports; everything else is hidden. */
#define VESPERMOOR_EDITOR_UTILS_EXPORT __attribute__((visibility("default")))

#endif
