/* The order of outputs that depend on each other: a topological sort that keeps the manifest's
   order as far as possible.

   Outputs are indices, and `sources[i]` holds the outputs that output i is made from. They are
   found by comparing real paths, since one file can be spelled in many ways. The sort repeatedly
   takes the lowest index without unfinished sources, in O(log n) per output and source. If outputs
   are left over, each depends on another of them, so following their sources must revisit one. The
   message shows that cycle. */

#include "OutputOrder.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>

#include "Failure.h"
#include "Files.h"
#include "RealPaths.h"

namespace VespermoorEngine::Host {

namespace {

/* Indices of other outputs, for each output. */
using Relation = std::vector<std::set<std::size_t>>;

[[noreturn]] void fail(const std::string& manifest, const std::size_t i,
                       const std::string& reason) {
    throw Failure{manifest, "/outputs/" + std::to_string(i) + ": " + reason};
}

/* The index of the output at each real path. */
std::unordered_map<std::string, std::size_t> outputsByPath(const std::string& manifest,
                                                           const std::vector<OutputFile>& outputs,
                                                           RealPaths& paths) {
    const std::string own = paths.file(manifest);
    std::unordered_map<std::string, std::size_t> found;
    for (std::size_t i = 0; i != outputs.size(); ++i) {
        const std::string path = paths.file(outputs[i].path);
        if (path == own) {
            fail(manifest, i, "Is the manifest itself");
        }
        /* Standard output and standard error are often the same terminal. */
        if (!found.emplace(path, i).second && !isStream(outputs[i].path)) {
            fail(manifest, i, "Another output is the same file");
        }
    }
    return found;
}

/* The outputs that each output is made from. */
Relation findSources(const std::string& manifest, std::vector<OutputFile>& outputs) {
    RealPaths paths;
    const std::unordered_map<std::string, std::size_t> made =
        outputsByPath(manifest, outputs, paths);
    Relation sources(outputs.size());
    for (std::size_t i = 0; i != outputs.size(); ++i) {
        for (const std::string& path : outputs[i].templates()) {
            if (const auto found = made.find(paths.file(path)); found != made.end()) {
                fail(manifest, found->second, "Is a template");
            }
        }
        for (const std::string& path : outputs[i].data) {
            if (const auto found = made.find(paths.file(path)); found != made.end()) {
                sources[i].insert(found->second);
                outputs[found->second].asInput.insert(path);
            }
        }
    }
    return sources;
}

/* Follows the `unfinished` sources from output i on and reports the cycle. */
[[noreturn]] void failAtCycle(const std::string& manifest, const std::vector<OutputFile>& outputs,
                              const Relation& unfinished, std::size_t i) {
    std::vector<std::size_t> visited;
    while (std::find(visited.begin(), visited.end(), i) == visited.end()) {
        visited.push_back(i);
        i = *unfinished[i].begin();
    }
    std::string cycle = outputs[i].path;
    for (auto step = std::find(visited.begin(), visited.end(), i) + 1; step != visited.end();
         ++step) {
        cycle += " from " + outputs[*step].path;
    }
    fail(manifest, i, "Made from itself: " + cycle + " from " + outputs[i].path);
}

std::vector<std::size_t> sort(Relation sources, const std::string& manifest,
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
        failAtCycle(manifest, outputs, sources, std::size_t(waiting - sources.begin()));
    }
    return order;
}

} // namespace

std::vector<OutputFile> inOrder(const std::string& path, std::vector<OutputFile> outputs) {
    const Relation sources = findSources(path, outputs);
    std::vector<OutputFile> ordered;
    for (const std::size_t i : sort(sources, path, outputs)) {
        ordered.push_back(std::move(outputs[i]));
    }
    return ordered;
}

} // namespace VespermoorEngine::Host
