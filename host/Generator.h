#ifndef Vespermoor_Host_Generator_h
#define Vespermoor_Host_Generator_h

#include <map>
#include <set>
#include <string>
#include <vector>

#include <VespermoorEditor/Utils/RapidJson.h>

#include "Manifest.h"
#include "Templates.h"

namespace VespermoorEngine::Host {

/**
 * @brief Keeps the generated files of one manifest current.
 *
 * Data files are parsed and templates compiled once, when first used, and again after
 * @ref forget() was told that they changed.
 */
class Generator {
public:
    /** @brief What to do with a file whose text would change. */
    enum class Mode { Write, Check };

    /** @brief What became of the generated files. */
    struct Result {
        /** @brief Paths of those whose text changed, or would. */
        std::vector<std::string> changed;
        /** @brief A line for each reason why one or more could not be made. */
        std::set<std::string> failures;
    };

    /** @brief Reads the manifest at @p path; throws @ref Failure. */
    explicit Generator(Containers::StringView path);

    /** @brief Paths of everything that the generated files are made from, those with regions
     * included.
     */
    std::set<std::string> inputs() const;

    /**
     * @brief Drops what is kept of the input @p path, and makes the files that depend on it stale.
     */
    void forget(const std::string& path);

    /** @brief Makes the generated file @p path stale, where it has regions: others may save it. */
    void lookAgain(const std::string& path);

    /**
     * @brief Renders all files that are stale, as all of them are at first.
     *
     * A file whose text would not change is not touched; the others are replaced as a whole. A file
     * that cannot be made stays as it is and is tried again when one of its inputs is forgotten.
     */
    Result update(Mode mode);

private:
    /* Whether its text changed, or would. */
    bool updateFile(const OutputFile& file, Mode mode);

    template <class T, class Read>
    T& keep(std::map<std::string, T>& kept, const std::string& path, Read read);
    rapidjson::Document& document(const std::string& path);
    NamedTemplate& compiled(const std::string& path);

    std::string render(const OutputFile& file);
    std::string render(const Rendering& rendering, const std::vector<std::string>& data);
    std::string renderEach(NamedTemplate& source, const std::string& pointer,
                           const std::vector<std::string>& data);
    std::string fillRegions(const OutputFile& file);

    std::vector<OutputFile> files;
    std::set<std::size_t> stale;
    /* Inputs that a check found to be so. */
    std::set<std::string> outOfDate;
    /* The files that are made from each input, by their index. */
    std::map<std::string, std::set<std::size_t>> dependents;

    std::map<std::string, rapidjson::Document> documents;
    std::map<std::string, NamedTemplate> templates;
    /* Why an input could not be used, so that not every file that needs it tries again. */
    std::map<std::string, std::string> failures;
};

} // namespace VespermoorEngine::Host

#endif
