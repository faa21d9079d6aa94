#ifndef Vespermoor_Host_Manifest_h
#define Vespermoor_Host_Manifest_h

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <Corrade/Containers/StringView.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

/** @brief A template, and the elements to render it for. */
struct Rendering {
    /** @brief Path of the template. */
    std::string templatePath;
    /**
     * @brief JSON Pointer to an array or object, in the first data file that has it.
     *
     * The template is rendered for every element, or once if there is no pointer.
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

/** @brief A generated file: one rendering for the whole file, or one per region. */
struct OutputFile {
    std::string path;
    /** @brief Paths of the data files, in search order. */
    std::vector<std::string> data;
    /** @brief Used if there are no regions. */
    Rendering whole;
    std::vector<Region> regions;
    /** @brief The data paths by which other outputs name this file. */
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
 * Paths in it are relative to the manifest; paths in the result begin with the directory of @p
 * path. The result keeps the manifest's order. Throws @ref Failure with the file and the place in
 * it if a member is missing, unknown, repeated or of the wrong type.
 */
std::vector<OutputFile> readManifest(Containers::StringView path);

} // namespace VespermoorEngine::Host

#endif
