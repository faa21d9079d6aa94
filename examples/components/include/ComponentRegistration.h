#pragma once

#include "Registry.h"

/** Makes the components known to the editor. Written by hand but for what stands between tags. */
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
