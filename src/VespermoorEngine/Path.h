#ifndef VespermoorEngine_Path_h
#define VespermoorEngine_Path_h

#include <Corrade/Containers/StringView.h>

#include "VespermoorEngine/Corrade.h"
#include "VespermoorEngine/visibility.h"

namespace VespermoorEngine {

/** @brief Operations on paths as text, beside those of `Corrade::Utility::Path`. */
namespace Path {

/**
 * @brief Absolute and normalised form of @p path.
 *
 * A relative path is taken from the current directory. `.` and `..` are resolved and doubled and
 * trailing slashes dropped as text: nothing is looked up, so links stay what they are and the path
 * need not exist. `..` at the root stays at the root. Empty if the path is relative and the
 * system cannot tell the current directory.
 */
VESPERMOOR_ENGINE_EXPORT Containers::String absolute(Containers::StringView path);

/**
 * @brief Whether @p path lies below @p directory, at any depth.
 *
 * The beginning of @p path is compared with @p directory as text, up to a slash, and @p directory
 * may end with slashes; `/` is above every other absolute path. Two equal paths do not lie below
 * one another, and nothing lies below an empty one.
 */
VESPERMOOR_ENGINE_EXPORT bool isParentPath(Containers::StringView directory,
                                           Containers::StringView path);

/**
 * @brief Nearest directory from @p directory upwards in which something named @p name exists.
 *
 * Goes from @p directory itself to the root, a relative one to its first component. Returns a
 * prefix of @p directory without trailing slashes (apart from the root's own), or a
 * default-constructed view if nothing was found.
 */
VESPERMOOR_ENGINE_EXPORT Containers::StringView upwardsSearch(Containers::StringView directory,
                                                              Containers::StringView name);

} // namespace Path
} // namespace VespermoorEngine

#endif
