#ifndef Vespermoor_Host_Files_h
#define Vespermoor_Host_Files_h

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

/** @brief The name of standard input or standard output in place of a file. */
constexpr const char* standardStream = "-";

/**
 * @brief @p path, the target if it is a link, the target of that, and so on.
 *
 * A read or a write of @p path ends at the last one, even if nothing exists there yet.
 */
std::vector<std::string> linkChain(const std::string& path);

/** @brief The directory that holds the entry @p path. */
std::string parentOf(const std::string& path);

/**
 * @brief Device, inode and birth time of a directory.
 *
 * A new directory often gets the inode of the one deleted last.
 */
using Identity = std::array<std::uint64_t, 5>;

/** @brief The identity of @p directory. Empty, with `errno` set, if the system cannot tell. */
std::optional<Identity> identityOf(const std::string& directory);

/**
 * @brief Content of the file @p path; throws @ref Failure with the system's reason.
 *
 * A device or a pipe may never end, so more than 2 GiB are an error.
 */
Containers::String readFile(Containers::StringView path);

/** @brief A text and the name for it in messages. */
struct Input {
    std::string name;
    Containers::String content;
};

/** @brief @ref readFile() if @p path is the name of a file, standard input if it is `-`. */
Input readInput(Containers::StringView path);

/** @brief What to do if the directory of a new file does not exist. */
enum class MissingDirectories { Fail, Make };

/**
 * @brief Makes @p path hold exactly @p content, as a whole or not at all.
 *
 * The content is written to a new file, which then takes the place of the old one with its
 * permissions and, for root, its owner. So a reader sees the old file or the new one, even if the
 * process is killed in between. Links are followed first. A file that the user may not write is
 * refused. A device or a pipe is written to directly, since it holds no old content, and a
 * descriptor of this process (`/dev/stdout`, `/dev/fd/3`) is written to without opening it again.
 * Throws
 * @ref Failure with the system's reason and leaves the old file.
 */
void replaceFile(Containers::StringView path, Containers::StringView content,
                 MissingDirectories missing = MissingDirectories::Fail);

/** @brief What a path holds, in comparison with a text. */
enum class Held {
    /** @brief It is a regular file that can be read and holds exactly the text. */
    Same,
    Other,
    /** @brief It is a stream, see @ref isStream(). */
    Stream
};

/** @brief Compares the file @p path, which need not exist, with @p content. */
Held compareFile(Containers::StringView path, Containers::StringView content);

/** @brief @ref replaceFile() if @p path does not hold @p content; returns what it held before. */
Held replaceIfDifferent(Containers::StringView path, Containers::StringView content,
                        MissingDirectories missing);

/**
 * @brief Whether @p path is a device, a pipe or a descriptor of this process, so that nothing that
 * was written can be found there again.
 */
bool isStream(Containers::StringView path);

/** @brief Writes @p content to standard output at once; throws @ref Failure if that fails. */
void print(Containers::StringView content);

/** @brief @ref replaceFile() if @p path names a file, @ref print() if it is empty or `-`. */
void output(Containers::StringView path, Containers::StringView content);

/** @brief Colours of text, by their codes for a terminal. */
enum class Colour { Red = 31, Green = 32, Magenta = 35, Cyan = 36 };

/**
 * @brief Whether standard output is a terminal that shows colours.
 *
 * Not if `NO_COLOR` is set to anything or `TERM` is `dumb`.
 */
bool printsColours();

/** @brief @p text in @p colour if @ref printsColours(), else @p text. */
std::string coloured(Colour colour, const std::string& text);

} // namespace VespermoorEngine::Host

#endif
