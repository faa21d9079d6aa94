#ifndef VespermoorEngine_Corrade_h
#define VespermoorEngine_Corrade_h

#include <Corrade/Containers/Containers.h>
#include <Corrade/Utility/Utility.h>

/** @brief Libraries and programs of the Vespermoor engine. */
namespace VespermoorEngine {

/* The short names of Corrade's namespaces, for everything in and below this one. */
namespace Containers = Corrade::Containers;
namespace Utility = Corrade::Utility;

} // namespace VespermoorEngine

#endif
