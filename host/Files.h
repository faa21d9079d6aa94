#ifndef Vespermoor_Host_Files_h
#define Vespermoor_Host_Files_h

#include <filesystem>
#include <string>
#include <vector>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

/**
 * @brief @p path, and where it is a link behind it what that leads to, and so on.
 *
 * The last one is where a read or a write ends, also where nothing exists there yet.
 */
std::vector<std::filesystem::path> linkChain(const std::filesystem::path& path);

/** @brief The directory that holds the entry @p path. */
std::string parentOf(const std::filesystem::path& path);

/** @brief Content of the file @p path; throws @ref Failure with the system's reason. */
Containers::String readFile(Containers::StringView path);

/**
 * @brief Makes @p path hold exactly @p content, as a whole or not at all.
 *
 * The content is written to a new file beside it, which then takes its name, its permissions and,
 * for root, its owner, so a reader sees the old file or the new one, also when the process is
 * killed in between. A link is followed first. A device or a pipe has nothing to lose and is
 * written to directly. Throws @ref Failure with the system's reason; the old file stands then.
 */
void replaceFile(Containers::StringView path, Containers::StringView content);

/** @brief Whether @p path is a regular file that can be read and holds exactly @p content. */
bool holds(Containers::StringView path, Containers::StringView content);

/** @brief Writes @p content to standard output at once; throws @ref Failure where that fails. */
void print(Containers::StringView content);

/** @brief @ref replaceFile() where @p path names a file, @ref print() where it is empty. */
void output(Containers::StringView path, Containers::StringView content);

} // namespace VespermoorEngine::Host

#endif
