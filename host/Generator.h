#ifndef Vespermoor_Host_Generator_h
#define Vespermoor_Host_Generator_h

#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include <VespermoorEditor/Utils/RapidJson.h>

#include "Failure.h"
#include "Manifest.h"
#include "Scopes.h"
#include "Templates.h"

namespace VespermoorEngine::Host {

/** @brief Inputs of one kind that were read, or why they could not be, by their paths. */
template <class Input>
class InputCache {
public:
    /** @brief The input @p path, by @p read at the first use; throws the same @ref Failure again.
     */
    template <class Read>
    Input& get(const std::string& path, const Read& read) {
        if (const auto found = inputs.find(path); found != inputs.end()) {
            return found->second;
        }
        if (const auto found = failures.find(path); found != failures.end()) {
            throw Failure{found->second};
        }
        try {
            return inputs.emplace(path, read(path)).first->second;
        } catch (const Failure& failure) {
            failures.emplace(path, failure.what());
            throw;
        }
    }

    /** @brief Has the input @p path read again at its next use. */
    void invalidate(const std::string& path) {
        inputs.erase(path);
        failures.erase(path);
    }

private:
    std::unordered_map<std::string, Input> inputs;
    std::unordered_map<std::string, std::string> failures;
};

/**
 * @brief Keeps the generated files of one manifest current.
 *
 * Data files are parsed and templates compiled at their first use, and again after
 * @ref invalidate().
 */
class Generator {
public:
    /** @brief What to do with an output that is out of date. */
    enum class Mode {
        /** @brief Write it. */
        Write,
        /** @brief Only report it. */
        Check,
        /** @brief Report it with the lines that would change. */
        Compare
    };

    /** @brief An output that was written, or is out of date. */
    struct Change {
        std::string path;
        /** @brief Unified diff, with @ref Mode::Compare. */
        std::string diff;
    };

    /** @brief The outcome of an update. */
    struct Result {
        std::vector<Change> changes;
        /** @brief One line for each output that could not be made. */
        std::vector<std::string> failures;
    };

    /** @brief Called before each output with the numbers of those done and of all. */
    using Progress = std::function<void(std::size_t done, std::size_t all)>;

    /** @brief Reads the manifest at @p path; throws @ref Failure. */
    explicit Generator(const std::string& path);

    /** @brief Paths of the data files and templates that are not outputs themselves. */
    std::set<std::string> inputs() const;

    /** @brief Paths of the outputs without regions and without streams. */
    std::set<std::string> outputs() const;

    /** @brief Paths of the outputs with regions, which are made from their own text as well. */
    std::set<std::string> regionFiles() const;

    /**
     * @brief Makes the outputs stale that depend on the file @p path, and has it read again.
     *
     * An output that others are made from only becomes stale itself, since they become stale
     * when it changes.
     */
    void invalidate(const std::string& path);

    /**
     * @brief Renders all stale outputs; at first every output is stale.
     *
     * An output whose text would not change is not touched. The others are replaced as a whole, and
     * their missing directories are made. An output that cannot be made stays as it is, and becomes
     * stale again when a file that it depends on is invalidated.
     *
     * Streams, such as `/dev/stdout`, hold nothing that could be out of date: they are always
     * written, and never reported.
     */
    Result update(Mode mode, const Progress& progress = {});

private:
    /* The elements that a template is rendered for. */
    struct ElementList;

    void invalidateInput(const std::string& path);
    void updateFile(const OutputFile& file, Mode mode, std::vector<Change>& changes);

    rapidjson::Document& document(const std::string& path);
    NamedTemplate& compiled(const std::string& path);
    ElementList findElements(const Rendering& rendering, const OutputFile& file);

    std::string render(const OutputFile& file);
    /* Failures name the output and the element. */
    std::string render(const Rendering& rendering, const OutputFile& file);
    /* Leaves the element that failed in `element`, as the end of a message. */
    std::string renderEach(const Rendering& rendering, const OutputFile& file, Scopes& scopes,
                           PrintedErrors& errors, std::string& element);
    std::string fillRegions(const OutputFile& file);

    std::vector<OutputFile> files;
    std::set<std::size_t> stale;
    /* Data files that are outputs and that a check found out of date. */
    std::set<std::string> outOfDate;
    /* The outputs that are made from each input, and the output at each path, by index. */
    std::unordered_map<std::string, std::vector<std::size_t>> dependents;
    std::unordered_map<std::string, std::size_t> outputsByPath;

    InputCache<rapidjson::Document> documents;
    InputCache<NamedTemplate> templates;
};

} // namespace VespermoorEngine::Host

#endif
