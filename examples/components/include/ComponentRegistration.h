#pragma once

#include "Registry.h"

/** Registers the components with the editor. Written by hand, except for the text between tags. */
inline void registerComponents() {
    // [components]
    registerComponent<Light>("rendering");
    registerComponent<Mesh>("rendering");
    registerComponent<Wind>("physics");
    // [/components]
}

inline void registerProperties() {
    // [properties]
    registerProperty<Light, float>("intensity", 1.0000f);
    registerProperty<Wind, float>("strength", 0.5000f);
    // [/properties]
}
