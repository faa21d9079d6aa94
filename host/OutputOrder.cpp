#include "OutputOrder.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <map>
#include <utility>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

namespace fs = std::filesystem;

/* For each output the others that it has to do with. */
using Relation = std::vector<std::set<std::size_t>>;

/* Where files lie when links are followed, whether they exist or not. */
class Places {
public:
    std::string operator()(const std::string& path) {
        const fs::path end = linkChain(path).back();
        const auto [parent, isNew] = parents.try_emplace(parentOf(end));
        if (isNew) {
            parent->second = withoutLinks(parent->first);
        }
        return parent->second / end.filename();
    }

private:
    static fs::path withoutLinks(const std::string& directory) {
        std::error_code refused;
        const fs::path absolute = fs::absolute(directory);
        const fs::path path = fs::weakly_canonical(absolute, refused);
        return refused ? absolute.lexically_normal() : path;
    }

    std::map<std::string, fs::path> parents;
};

[[noreturn]] void fail(const std::string& manifest, const std::size_t i,
                       const std::string& reason) {
    throw Failure{manifest, "/outputs/" + std::to_string(i) + ": " + reason};
}

/* The index of the output at each place. */
std::map<std::string, std::size_t> outputsByPlace(const std::string& manifest,
                                                  const std::vector<OutputFile>& outputs,
                                                  Places& placeOf) {
    const std::string own = placeOf(manifest);
    std::map<std::string, std::size_t> found;
    for (std::size_t i = 0; i != outputs.size(); ++i) {
        const std::string place = placeOf(outputs[i].path);
        if (place == own) {
            fail(manifest, i, "Is the manifest itself");
        }
        if (!found.emplace(place, i).second) {
            fail(manifest, i, "Another output is the same file");
        }
    }
    return found;
}

/* What each output is made from. */
Relation findSources(const std::string& manifest, std::vector<OutputFile>& outputs) {
    Places placeOf;
    const std::map<std::string, std::size_t> made = outputsByPlace(manifest, outputs, placeOf);
    Relation sources(outputs.size());
    for (std::size_t i = 0; i != outputs.size(); ++i) {
        for (const std::string& path : outputs[i].templates()) {
            if (const auto found = made.find(placeOf(path)); found != made.end()) {
                fail(manifest, found->second, "Is a template");
            }
        }
        for (const std::string& path : outputs[i].data) {
            if (const auto found = made.find(placeOf(path)); found != made.end()) {
                sources[i].insert(found->second);
                outputs[found->second].asInput.insert(path);
            }
        }
    }
    return sources;
}

/* Each of the `rest` is made from another one of them, so whoever goes on from one to the next
   comes by the same again. */
[[noreturn]] void failAtCircle(const std::string& manifest, const std::vector<OutputFile>& outputs,
                               const Relation& rest, std::size_t i) {
    std::vector<std::size_t> way;
    while (std::find(way.begin(), way.end(), i) == way.end()) {
        way.push_back(i);
        i = *rest[i].begin();
    }
    std::string circle = outputs[i].path;
    for (auto step = std::find(way.begin(), way.end(), i) + 1; step != way.end(); ++step) {
        circle += " from " + outputs[*step].path;
    }
    fail(manifest, i, "Made from itself: " + circle + " from " + outputs[i].path);
}

/* Takes the first one that waits for nothing, again and again. */
std::vector<std::size_t> orderBy(Relation sources, const std::string& manifest,
                                 const std::vector<OutputFile>& outputs) {
    Relation dependents(sources.size());
    std::set<std::size_t> ready;
    for (std::size_t i = 0; i != sources.size(); ++i) {
        for (const std::size_t source : sources[i]) {
            dependents[source].insert(i);
        }
        if (sources[i].empty()) {
            ready.insert(i);
        }
    }
    std::vector<std::size_t> order;
    while (!ready.empty()) {
        const std::size_t next = *ready.begin();
        ready.erase(ready.begin());
        order.push_back(next);
        for (const std::size_t i : dependents[next]) {
            sources[i].erase(next);
            if (sources[i].empty()) {
                ready.insert(i);
            }
        }
    }
    const auto waiting = std::find_if(sources.begin(), sources.end(),
                                      [](const auto& indices) { return !indices.empty(); });
    if (waiting != sources.end()) {
        failAtCircle(manifest, outputs, sources, waiting - sources.begin());
    }
    return order;
}

} // namespace

std::vector<OutputFile> inOrder(const std::string& path, std::vector<OutputFile> outputs) {
    const Relation sources = findSources(path, outputs);
    std::vector<OutputFile> ordered;
    for (const std::size_t i : orderBy(sources, path, outputs)) {
        ordered.push_back(std::move(outputs[i]));
    }
    return ordered;
}

} // namespace VespermoorEngine::Host
