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
 * A relative path is taken from the current directory. `.` and `..` are resolved, and doubled and
 * trailing slashes dropped, as text: the file system is not read, so links are not followed and the
 * path need not exist. `..` at the root stays at the root. Empty if the path is relative and the
 * system cannot tell the current directory.
 */
VESPERMOOR_ENGINE_EXPORT Containers::String absolute(Containers::StringView path);

/**
 * @brief Whether @p path lies below @p directory, at any depth.
 *
 * Compares the components at the beginning of @p path with @p directory as text; @p directory may
 * end with slashes. `/` is above every other absolute path. A path is not below itself, and nothing
 * is below an empty one.
 */
VESPERMOOR_ENGINE_EXPORT bool isParentPath(Containers::StringView directory,
                                           Containers::StringView path);

/**
 * @brief Nearest directory from @p directory upwards that has an entry named @p name.
 *
 * Searches @p directory itself and its parents up to the root or, if it is relative, its first
 * component. Returns a prefix of @p directory without trailing slashes (apart from the root's own),
 * or a default-constructed view if there is none.
 */
VESPERMOOR_ENGINE_EXPORT Containers::StringView upwardsSearch(Containers::StringView directory,
                                                              Containers::StringView name);

} // namespace Path
} // namespace VespermoorEngine

#endif
