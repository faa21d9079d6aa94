#ifndef Vespermoor_Host_Manifest_h
#define Vespermoor_Host_Manifest_h

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <Corrade/Containers/StringView.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

/** @brief A template, and the elements that it is rendered for. */
struct Rendering {
    /** @brief Path of the template. */
    std::string templatePath;
    /**
     * @brief JSON Pointer to an array or object, in the first data file that has it.
     *
     * The template is rendered once for every element, or, without a pointer, just once.
     */
    std::optional<std::string> each;
    /** @brief Text between the elements. */
    std::string separator;
};

/** @brief A rendering between two tags. */
struct Region {
    std::string start;
    std::string end;
    Rendering content;
};

/** @brief A generated file: one rendering for the whole, or one for each of its regions. */
struct OutputFile {
    std::string path;
    /** @brief Paths of the data files, in the order in which they are searched. */
    std::vector<std::string> data;
    /** @brief Used if there are no regions. */
    Rendering whole;
    std::vector<Region> regions;
    /** @brief The data paths of other outputs that lead to this file. */
    std::set<std::string> asInput;

    /** @brief Paths of the templates. */
    std::set<std::string> templates() const;
    /** @brief Paths of the data files and templates. */
    std::set<std::string> inputs() const;
};

/**
 * @brief Reads the manifest of generated files at @p path.
 *
 * A manifest is an object whose member `outputs` is an array of objects with the members
 *
 * -    `file`: the generated file,
 * -    `data`: an array of JSON files,
 * -    `template` and optionally `each` and `separator`, or `regions`: an array of objects with
 *      `start`, `end`, `template` and optionally `each` and `separator`.
 *
 * Its paths are relative to the manifest; those in the result begin as @p path does. The result has
 * the manifest's order. Throws @ref Failure with the file and the place in it if a member is
 * missing, unknown, repeated or of the wrong type.
 */
std::vector<OutputFile> readManifest(Containers::StringView path);

} // namespace VespermoorEngine::Host

#endif
