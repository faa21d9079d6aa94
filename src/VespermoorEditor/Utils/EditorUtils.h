#ifndef VespermoorEditor_Utils_EditorUtils_h
#define VespermoorEditor_Utils_EditorUtils_h

#include "VespermoorEditor/Utils/visibility.h"
#include "VespermoorEngine/Corrade.h"

namespace VespermoorEngine {

/** @brief Services for the programs of the editor. */
namespace Utils {

/**
 * @brief Directory that holds the running executable, without a trailing slash unless it is `/`.
 *
 * Empty if the system cannot tell; `Corrade::Utility::Path::executableLocation()` then
 * prints why.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::String executablesPath();

/**
 * @brief Data root of the editor, as seen from the directory @p start.
 *
 * The nearest directory from @p start upwards that holds an entry named `shaders`, as @ref
 * Path::upwardsSearch() finds it; a relative @p start is searched up to its first component. If
 * there is none, the installed `../share/vespermoorengine` relative to @p start, made absolute, if
 * it exists, directory or not. No value if neither is found.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::Optional<Containers::String>
findEditorRoot(Containers::StringView start);

/**
 * @brief Data root of the editor, as seen from the directory that holds the running executable.
 *
 * Also no value if the system cannot tell which directory that is;
 * `Corrade::Utility::Path::executableLocation()` then prints why.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::Optional<Containers::String> findEditorRoot();

} // namespace Utils
} // namespace VespermoorEngine

#endif
