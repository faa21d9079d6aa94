#ifndef VespermoorEditor_Utils_System_h
#define VespermoorEditor_Utils_System_h

#include <cstdint>

#include <Corrade/Containers/EnumSet.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Path.h>

#include "VespermoorEngine/Function.h"

namespace VespermoorEngine {

namespace Containers = Corrade::Containers;
namespace Utility = Corrade::Utility;

/** @brief What a walk of @ref visitPath() expands and visits. */
enum class VisitFlag : std::uint8_t {
    /** The visitor is called for the start path too, last of all. */
    IncludeRoot = 1,
    /** Every directory that is found is expanded, not the start path alone. */
    Recursive = 2,
    /** A symbolic link that leads to a directory is expanded. */
    FollowSymlinks = 4
};

/** @brief Set of @ref VisitFlag. */
using VisitFlags = Containers::EnumSet<VisitFlag>;

CORRADE_ENUMSET_OPERATORS(VisitFlags)

/**
 * @brief Whether @p path itself is a symbolic link, whatever it leads to.
 *
 * False, and `isSymlink(): Unable to stat path <path> : <reason>` on `Error`, where the system
 * cannot tell.
 */
bool isSymlink(Containers::StringView path);

/**
 * @brief Calls @p visitor for what lies below @p path, children before their directory.
 *
 * The whole tree is listed before the first call, so the visitor may change it. Names within a
 * directory come in descending order, the start path last. @p listFlags pick the entries that are
 * seen, sorting aside, and are expected to hold `SkipDotAndDotDot`. The visitor gets the start path
 * as it was passed and everything else with its directory's path in front, in a NUL-terminated view
 * that lives during the call; it returns whether to go on.
 *
 * A directory that cannot be listed is visited and not expanded. So is, under
 * @ref VisitFlag::FollowSymlinks, a link to a directory that the walk passed on its way from the
 * start path to the link, which ends a cycle of links.
 *
 * Returns whether every call was made and returned true; false where @p path does not exist.
 */
bool visitPath(Containers::StringView path, Function<bool(Containers::StringView)> visitor,
               Utility::Path::ListFlags listFlags, VisitFlags visitFlags);

/**
 * @brief Walks from @p path as @ref visitPath() does when it comes to it on a walk from @p start.
 *
 * @p path is expected to be one that a walk from @p start gives to its visitor. The difference to a
 * walk of its own is in the links that lead to a directory between the two, which are a cycle.
 */
bool visitPathBelow(Containers::StringView start, Containers::StringView path,
                    Function<bool(Containers::StringView)> visitor,
                    Utility::Path::ListFlags listFlags, VisitFlags visitFlags);

/**
 * @brief Copies the directory @p source with all it holds to @p destination.
 *
 * Directories are made where they are missing, and files replace those that bear their name; what
 * only the destination holds stays. Links are looked through: the result holds directories and
 * files in their place. A link to a directory that the copy passed on its way from @p source to
 * the link, which would make a cycle, becomes an empty directory. A destination inside the source
 * is copied without itself and without the directories made to hold it.
 *
 * Returns false as soon as a file cannot be copied, and what was made so far stays. A directory
 * that cannot be listed becomes an empty one, which is no failure. Where @p source is no directory
 * it is expected to be a path that may carry a trailing slash, since both paths are joined with an
 * empty one; for a plain file the result is false.
 */
bool copyRecursive(Containers::StringView source, Containers::StringView destination);

/**
 * @brief Removes @p path with all it holds; links are removed as links.
 *
 * Returns false where nothing is there, and as soon as something cannot be removed: what went
 * before is gone then and the rest stays.
 */
bool deleteRecursive(Containers::StringView path);

} // namespace VespermoorEngine

#endif
