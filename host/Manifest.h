#ifndef Vespermoor_Host_Manifest_h
#define Vespermoor_Host_Manifest_h

#include <set>
#include <string>
#include <vector>

#include <Corrade/Containers/StringView.h>

namespace VespermoorEngine::Host {

namespace Containers = Corrade::Containers;

/** @brief A template, and what it is rendered for. */
struct Rendering {
    /** @brief Path of the template. */
    std::string templatePath;
    /**
     * @brief JSON Pointer to an array or object, in the first data file that has it.
     *
     * The template is rendered for every element and the results are joined. Empty where it is
     * rendered once.
     */
    std::string each;
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
    /** @brief Used where there are no regions. */
    Rendering whole;
    std::vector<Region> regions;

    /** @brief Paths of the data files and templates. */
    std::set<std::string> inputs() const;
};

/**
 * @brief Reads the manifest of generated files at @p path.
 *
 * It is an object whose member `outputs` is an array of objects with the members
 *
 * -    `file`: the generated file,
 * -    `data`: an array of JSON files,
 * -    `template` and optionally `each`, or `regions`: an array of objects with `start`, `end`,
 *      `template` and optionally `each`.
 *
 * Paths in it are relative to the manifest; those in the result begin as @p path does. Throws @ref
 * Failure with the file and the place in it where a member is missing, unknown or of the wrong
 * type, or where two outputs are the same file.
 */
std::vector<OutputFile> readManifest(Containers::StringView path);

} // namespace VespermoorEngine::Host

#endif
