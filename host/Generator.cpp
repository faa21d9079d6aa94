#include "Generator.h"

#include <algorithm>
#include <deque>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>
#include <VespermoorEditor/Utils/String.h>

#include "DocumentScope.h"
#include "Documents.h"
#include "ElementScope.h"
#include "Failure.h"
#include "Files.h"
#include "TagRegions.h"

namespace VespermoorEngine::Host {

namespace {

/* The roots of the data files, behind the element for which a template is rendered. */
class Scopes {
public:
    void add(rapidjson::Document& document) {
        roots.emplace_back(document);
        arrayAppend(references, Containers::Reference<JsonObject>{roots.back()});
    }

    Containers::ArrayView<const Containers::Reference<JsonObject>> all() const {
        return references;
    }

    /* All with `element` in front. */
    Containers::Array<Containers::Reference<JsonObject>> behind(JsonObject& element) const {
        Containers::Array<Containers::Reference<JsonObject>> result;
        arrayReserve(result, references.size() + 1);
        arrayAppend(result, Containers::Reference<JsonObject>{element});
        for (const Containers::Reference<JsonObject>& reference : references) {
            arrayAppend(result, reference);
        }
        return result;
    }

private:
    /* A deque, since the references point into it. */
    std::deque<DocumentScope> roots;
    Containers::Array<Containers::Reference<JsonObject>> references;
};

/* A template that renders to nothing whatever the data is one that another program is just writing
   anew, and what it stood for is not to be lost. */
NamedTemplate readGeneratorTemplate(const std::string& path) {
    const Containers::String source = readFile(path);
    if (source.isEmpty()) {
        throw Failure{path, "The template is empty"};
    }
    return compileTemplate(path, source);
}

std::string text(const Containers::StringView view) {
    return {view.data(), view.size()};
}

} // namespace

Generator::Generator(const Containers::StringView path) : files{readManifest(path)} {
    for (std::size_t i = 0; i != files.size(); ++i) {
        stale.insert(i);
        for (const std::string& input : files[i].inputs()) {
            dependents[input].insert(i);
        }
    }
}

std::set<std::string> Generator::inputs() const {
    std::set<std::string> paths;
    for (const auto& [path, indices] : dependents) {
        paths.insert(path);
    }
    for (const OutputFile& file : files) {
        if (!file.regions.empty()) {
            paths.insert(file.path);
        }
    }
    return paths;
}

void Generator::forget(const std::string& path) {
    documents.erase(path);
    templates.erase(path);
    failures.erase(path);
    const auto found = dependents.find(path);
    if (found != dependents.end()) {
        stale.insert(found->second.begin(), found->second.end());
    }
}

void Generator::lookAgain(const std::string& path) {
    for (std::size_t i = 0; i != files.size(); ++i) {
        if (!files[i].regions.empty() && files[i].path == path) {
            stale.insert(i);
        }
    }
}

Generator::Result Generator::update(const Mode mode) {
    Result result;
    /* What a file makes stale stands behind it. */
    while (!stale.empty()) {
        const std::size_t i = *stale.begin();
        stale.erase(stale.begin());
        try {
            if (updateFile(files[i], mode)) {
                result.changed.push_back(files[i].path);
            }
        } catch (const Failure& failure) {
            result.failures.insert(failure.what());
        }
    }
    return result;
}

bool Generator::updateFile(const OutputFile& file, const Mode mode) {
    const auto isOutOfDate = [&](const std::string& path) { return outOfDate.count(path) != 0; };
    if (std::none_of(file.data.begin(), file.data.end(), isOutOfDate)) {
        const std::string content = render(file);
        if (holds(file.path, content)) {
            return false;
        }
        if (mode == Mode::Write) {
            replaceFile(file.path, content);
        }
    }
    for (const std::string& path : file.asInput) {
        forget(path);
        if (mode == Mode::Check) {
            outOfDate.insert(path);
        }
    }
    return true;
}

/* What `read` makes of the file at `path`, made at the first use. */
template <class T, class Read>
T& Generator::keep(std::map<std::string, T>& kept, const std::string& path, const Read read) {
    const auto found = kept.find(path);
    if (found != kept.end()) {
        return found->second;
    }
    const auto failed = failures.find(path);
    if (failed != failures.end()) {
        throw Failure{failed->second};
    }
    try {
        return kept.emplace(path, read(path)).first->second;
    } catch (const Failure& failure) {
        failures.emplace(path, failure.what());
        throw;
    }
}

rapidjson::Document& Generator::document(const std::string& path) {
    return keep(documents, path, [](const std::string& file) { return readDocument(file); });
}

NamedTemplate& Generator::compiled(const std::string& path) {
    return keep(templates, path, readGeneratorTemplate);
}

std::string Generator::render(const OutputFile& file) {
    return file.regions.empty() ? render(file.whole, file.data) : fillRegions(file);
}

std::string Generator::render(const Rendering& rendering, const std::vector<std::string>& data) {
    NamedTemplate& source = compiled(rendering.templatePath);
    if (rendering.each) {
        return renderEach(source, *rendering.each, data);
    }
    Scopes scopes;
    for (const std::string& path : data) {
        scopes.add(document(path));
    }
    return text(Host::render(source, scopes.all()));
}

std::string Generator::renderEach(NamedTemplate& source, const std::string& pointer,
                                  const std::vector<std::string>& data) {
    Scopes scopes;
    rapidjson::Document* owner = nullptr;
    rapidjson::Value* list = nullptr;
    for (const std::string& path : data) {
        rapidjson::Document& candidate = document(path);
        scopes.add(candidate);
        if (!list) {
            owner = &candidate;
            list = RapidJsonUtils::valueByPointer(candidate, pointer);
        }
    }
    if (!list || !(list->IsArray() || list->IsObject())) {
        throw Failure{data.empty() ? source.path : Containers::String{data.front()},
                      (list ? "Neither an array nor an object at " : "Nothing at ") +
                          (pointer.empty() ? "the root" : pointer)};
    }
    std::string joined;
    const unsigned int count = list->IsArray() ? list->Size() : list->MemberCount();
    for (unsigned int i = 0; i != count; ++i) {
        const Containers::Pair<Containers::StringView, rapidjson::Value*> child =
            RapidJsonUtils::getSubValue(*list, i);
        ElementScope element{*owner, *child.second(), child.first()};
        joined += text(Host::render(source, scopes.behind(element)));
    }
    return joined;
}

std::string Generator::fillRegions(const OutputFile& file) {
    /* Reserved, since the views of the replacements point into it. */
    std::vector<std::string> contents;
    contents.reserve(file.regions.size());
    Containers::Array<Utils::TagReplacement> replacements;
    for (const Region& region : file.regions) {
        contents.push_back(render(region.content, file.data));
        arrayAppend(replacements, Utils::TagReplacement{region.start, region.end, contents.back()});
    }
    return text(replaceRegions(file.path, readFile(file.path), replacements));
}

} // namespace VespermoorEngine::Host
