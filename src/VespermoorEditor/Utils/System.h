#ifndef VespermoorEditor_Utils_System_h
#define VespermoorEditor_Utils_System_h

#include <cstdint>

#include <Corrade/Containers/EnumSet.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Path.h>

#include "VespermoorEngine/Corrade.h"
#include "VespermoorEngine/Function.h"

namespace VespermoorEngine {

/** @brief The entries that a walk of @ref VespermoorEngine::visitPath() expands and visits. */
enum class VisitFlag : std::uint8_t {
    /** The visitor is called for the start path too, last of all. */
    IncludeRoot = 1,
    /** Every directory is expanded, not only the start path. */
    Recursive = 2,
    /** A symbolic link that leads to a directory is expanded. */
    FollowSymlinks = 4
};

/** @brief Set of @ref VisitFlag. */
using VisitFlags = Containers::EnumSet<VisitFlag>;

CORRADE_ENUMSET_OPERATORS(VisitFlags)

/**
 * @brief Whether @p path itself is a symbolic link, dangling or not.
 *
 * If the system cannot tell, prints `isSymlink(): Unable to stat path <path> : <reason>` to `Error`
 * and returns false.
 */
bool isSymlink(Containers::StringView path);

/**
 * @brief Calls @p visitor for everything below @p path, children before their directory.
 *
 * The whole tree is listed before the first call, so the visitor may change it. Names within a
 * directory come in descending order, the start path last. @p listFlags select the entries, apart
 * from sorting, and must include `SkipDotAndDotDot`. The visitor gets the start path as passed, and
 * every other path prefixed with its directory, in a NUL-terminated view that lives during the
 * call. It returns whether to continue.
 *
 * A directory that cannot be listed is visited and not expanded. So is, under @ref
 * VisitFlag::FollowSymlinks, a link to a directory that the walk passed on its way from the start
 * path to the link, which ends a cycle of links. Links that form no cycle are all expanded, so
 * directories full of links to each other can make the walk exponentially long.
 *
 * Returns whether every call was made and returned true; false if @p path does not exist.
 */
bool visitPath(Containers::StringView path, Function<bool(Containers::StringView)> visitor,
               Utility::Path::ListFlags listFlags, VisitFlags visitFlags);

/**
 * @brief Walks as the other overload does, and calls @p enter on the way down.
 *
 * In a recursive walk @p enter is called for every path that will be visited, in the opposite
 * order: a directory is entered right before it is listed, and so before everything that it holds.
 * The second argument tells whether the path is a directory or a link to one.
 */
bool visitPath(Containers::StringView path, Function<void(Containers::StringView, bool)> enter,
               Function<bool(Containers::StringView)> visitor, Utility::Path::ListFlags listFlags,
               VisitFlags visitFlags);

/**
 * @brief Copies the directory @p source with its content to @p destination.
 *
 * Missing directories are made, and files replace those of the same name. Other entries of the
 * destination stay. Links are followed: the result holds directories and files in their place. A
 * link that would make a cycle, to a directory between @p source and the link, becomes an empty
 * directory. A destination inside the source is copied without itself and without the directories
 * made to hold it.
 *
 * If both paths are the same directory, does nothing and returns true. A named pipe in the source
 * blocks the copy until another process writes to it.
 *
 * Returns false as soon as a file cannot be copied; everything made so far stays. A file of the
 * destination that is a source file under another name, such as a link to it, cannot be replaced
 * and stays as it is. A directory that cannot be listed becomes an empty one, which is no failure.
 * Returns false for a plain file as @p source, since both paths get a trailing slash. Corrade's own
 * `Path::copy()` does not detect a full device: the result can then be true although files are cut
 * off. Its stand-in detects it.
 */
bool copyRecursive(Containers::StringView source, Containers::StringView destination);

/**
 * @brief Removes @p path with its content; links are removed as links.
 *
 * Returns false if nothing exists there, and as soon as an entry cannot be removed; entries removed
 * before are gone and the rest stays. If @p path itself is a dangling link, it counts as
 * nonexistent and stays. A link with a trailing slash names its target: the content of that
 * directory is removed, the link cannot be, and the result is false.
 */
bool deleteRecursive(Containers::StringView path);

/**
 * @brief Directory of the editor's files that belong to the current user.
 *
 * `.VespermoorEngine` in the home directory, whether it exists or not; it is not created. Empty
 * if there is no home directory, for which `Corrade::Utility::Path::homeDirectory()` prints
 * a message.
 */
Containers::String appDirectory();

/**
 * @brief Runs @p command in a login shell and captures its output.
 * @param[in] command           Placed between the single quotes of
 *      ``/bin/sh -lc '<command>' 2>&1``. Nothing is escaped, so it must not contain a single quote.
 * @param[out] output           Replaced by everything that the command wrote to its standard output
 * and standard error, byte for byte and in order. This includes the output of the login shell's
 * profile and of `cd`, which prints the directory if it was found through `CDPATH` or is `-`.
 * @param[in] workingDirectory  Placed between the double quotes of `cd "<directory>" && ` before
 *      that line; the current directory of the process stays. It must not contain a double
 *      quote, a `$`, a backquote or a backslash, which the shell would act on. Null or empty for no
 *      change of directory.
 * @return Wait status of the shell as `pclose()` gives it: an exit code of 3 is 768. 1
 *      if no shell could be started, with @p output untouched.
 *
 * Blocks until the command has ended and holds the whole output in memory. If the directory
 * cannot be entered, the command does not run: @p output is then empty, the status is not zero and
 * the shell's message goes to the standard error of the process.
 */
int runShellCommandCapture(Containers::StringView command, Containers::String& output,
                           Containers::StringView workingDirectory);

/**
 * @brief Sets variables in the environment of the process, each a name and a value.
 * @return 0, or the result of `setenv()` for the last one that could not be set.
 *
 * A variable that is already set keeps its value, which is no failure; of two pairs with the same
 * name the first counts. After a failure the others are still set. Programs started later inherit
 * them.
 */
int setShellEnvironment(
    const Containers::Array<Containers::Pair<Containers::String, Containers::String>>& environment);

/**
 * @brief Changes the current directory of the process.
 * @return The result of `chdir()`: 0, or -1 with the directory unchanged.
 */
int changeDirectory(Containers::StringView path);

/**
 * @brief Opens @p url in the desktop's browser.
 * @param url   Placed without quotes at the end of `xdg-open <url>`. Nothing is escaped, so it must
 * not contain blanks, quotes or any other character with a meaning in the shell, such as the `&`
 * between the fields of a query.
 *
 * Blocks until `xdg-open` has ended. Nothing tells whether it could be started.
 */
void openBrowser(Containers::StringView url);

/**
 * @brief Shows @p path in the desktop's file browser.
 * @param path  Placed between the double quotes of `xdg-open "<path>"`. Nothing is escaped, so it
 *      must not contain a double quote, a `$`, a backquote or a backslash.
 *
 * Blocks until `xdg-open` has ended. Nothing tells whether it could be started.
 */
void openWithSystemFilebrowser(Containers::StringView path);

/**
 * @brief Opens @p path with the desktop's program for its type.
 * @param path              Placed between the double quotes that end
 *      `cd "<directory>" && xdg-open "<path>"`. Nothing is escaped, so it must not contain a double
 *      quote, a `$`, a backquote or a backslash.
 * @param workingDirectory  Placed between the first double quotes of that line, under the same
 *      rule. Relative paths start there; the current directory of the process stays. It has to be
 *      a directory that can be entered, or nothing is opened; empty for the current one.
 *
 * Blocks until `xdg-open` has ended. Nothing tells whether it could be started.
 */
void openWithSystemDefault(Containers::StringView path, Containers::StringView workingDirectory);

/** @brief Random UUID (RFC 4122, version 4) of 36 characters, in groups of 8-4-4-4-12. */
Containers::String generateUUID();

/**
 * @brief Directory that receives the files that the user moves to the trash.
 *
 * The trash is `$XDG_DATA_HOME/Trash` if that variable is set and not empty, else `.Trash` in a
 * home directory of `/root` and `.local/share/Trash` in any other; only that one place counts. The
 * result is its `files` if that exists, else the trash directory itself. No value if there is
 * neither, or no home directory, for which `Corrade::Utility::Path::homeDirectory()` prints a
 * message. Nothing is created.
 */
Containers::Optional<Containers::String> findTrashPath();

/**
 * @brief Moves @p paths to the trash or, if there is none, deletes them for good.
 * @return Whether all of them were moved or deleted. The first that fails ends the operation:
 *      those before it are gone, it and those after it stay, apart from entries below it that a
 *      deletion has already removed.
 *
 * @ref findTrashPath() is called once for all paths. If there is no trash because there is no home
 * directory, prints its message and deletes everything. A directory goes as a whole. An entry whose
 * name is taken in the trash gets a UUID directly after its name, and that new name is not tested
 * again. The name of a dangling link counts as free, and a file moved there replaces the link. A
 * path with a trailing slash has an empty name, so its new name is just the UUID. The origin of an
 * entry is not recorded. An entry on another file system than the trash cannot be moved there and
 * stays. The move or removal of `Corrade::Utility::Path` that failed prints its message.
 */
bool moveToTrash(Containers::StringIterable paths);

/**
 * @brief Icon of a notification; the values are those of `pfd::icon`.
 *
 * The helpers have no question icon and show the information icon instead.
 */
enum class NotificationIcon : std::uint8_t { Info = 0, Warning = 1, Error = 2, Question = 3 };

/**
 * @brief Lets the user choose a folder.
 * @param title         Title of the dialog.
 * @param defaultPath   Directory the dialog starts in, passed on unchanged even if it does not
 * exist. It should be absolute: zenity and kdialog ignore a relative one. zenity opens the folder
 * above it, with this one selected.
 * @return Path of the folder. Empty if none was chosen, the dialog was cancelled, or none could be
 *      shown, and also for the root, since a slash at the end is dropped.
 *
 * Blocks until the dialog has closed.
 */
Containers::String openFolderDialog(Containers::StringView title,
                                    Containers::StringView defaultPath);

/**
 * @brief Lets the user choose existing files.
 * @param title         Title of the dialog.
 * @param defaultPath   The dialog starts at this file or directory or, if it does not exist, in its
 * nearest existing parent directory. It should be absolute: zenity and kdialog ignore a relative
 * one. If empty, the desktop decides.
 * @param filters       A label, the patterns that belong to it with blanks in between, the next
 *      label and so on. May be empty.
 * @param multiple      Whether more than one file may be chosen. If so, a name with a newline
 * arrives as two.
 * @return Paths in the order of the dialog, at most one unless @p multiple. Empty if none was
 * chosen, the dialog was cancelled, or none could be shown.
 *
 * Blocks until the dialog has closed.
 */
Containers::Array<Containers::String> openFileDialog(Containers::StringView title,
                                                     Containers::StringView defaultPath,
                                                     const Containers::StringIterable& filters,
                                                     bool multiple);

/**
 * @brief Lets the user choose where to save a file.
 * @param title         Title of the dialog.
 * @param defaultPath   As with @ref openFileDialog(), so a name that does not exist yet is not
 *      proposed.
 * @param filters       As with @ref openFileDialog().
 * @return Path of the file. Empty if none was chosen, the dialog was cancelled, or none could be
 *      shown.
 *
 * Blocks until the dialog has closed; the dialog itself asks before an existing file is chosen.
 */
Containers::String saveFileDialog(Containers::StringView title, Containers::StringView defaultPath,
                                  const Containers::StringIterable& filters);

/**
 * @brief Shows a notification of the desktop.
 *
 * Blocks until the helper program has ended. There is no way to tell whether the notification was
 * shown.
 */
void notification(Containers::StringView title, Containers::StringView message,
                  NotificationIcon icon);

} // namespace VespermoorEngine

#endif
