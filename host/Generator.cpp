#include "Generator.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>
#include <VespermoorEditor/Utils/String.h>

#include "Documents.h"
#include "ElementScope.h"
#include "Files.h"
#include "LineDiff.h"
#include "OutputOrder.h"
#include "TagRegions.h"

namespace VespermoorEngine::Host {

namespace {

namespace fs = std::filesystem;

/* An empty template is most likely being rewritten at this moment; failing keeps the output. */
NamedTemplate readGeneratorTemplate(const std::string& path) {
    Containers::String source = readFile(path);
    if (source.isEmpty()) {
        throw Failure{path, "The template is empty"};
    }
    return compileTemplate(path, std::move(source));
}

std::string text(const Containers::StringView view) {
    return {view.data(), view.size()};
}

/* `name` as a step of a JSON Pointer. */
std::string pointerStep(const Containers::StringView name) {
    std::string step;
    for (const char c : name) {
        step += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return step;
}

std::string diffWith(const std::string& path, const std::string& content) {
    const bool exists = fs::exists(path);
    const Containers::String before = exists ? readFile(path) : Containers::String{};
    return "--- " + (exists ? escaped(path) : "/dev/null") + "\n+++ " + escaped(path) + "\n" +
           unifiedDiff({before.data(), before.size()}, content);
}

} // namespace

struct Generator::ElementList {
    const std::string& path;
    rapidjson::Document& owner;
    rapidjson::Value& value;

    unsigned int size() const { return value.IsArray() ? value.Size() : value.MemberCount(); }
};

Generator::Generator(const std::string& path) : files{inOrder(path, readManifest(path))} {
    for (std::size_t i = 0; i != files.size(); ++i) {
        stale.insert(stale.end(), i);
        outputsByPath.emplace(files[i].path, i);
        for (const std::string& input : files[i].inputs()) {
            dependents[input].push_back(i);
        }
    }
}

std::set<std::string> Generator::inputs() const {
    std::set<std::string> paths;
    for (const auto& [path, indices] : dependents) {
        if (outputsByPath.count(path) == 0) {
            paths.insert(path);
        }
    }
    return paths;
}

std::set<std::string> Generator::outputs() const {
    std::set<std::string> paths;
    for (const OutputFile& file : files) {
        if (file.regions.empty() && !isStream(file.path)) {
            paths.insert(file.path);
        }
    }
    return paths;
}

std::set<std::string> Generator::regionFiles() const {
    std::set<std::string> paths;
    for (const OutputFile& file : files) {
        if (!file.regions.empty()) {
            paths.insert(file.path);
        }
    }
    return paths;
}

void Generator::invalidate(const std::string& path) {
    if (const auto output = outputsByPath.find(path); output != outputsByPath.end()) {
        stale.insert(output->second);
    } else {
        invalidateInput(path);
    }
}

void Generator::invalidateInput(const std::string& path) {
    documents.invalidate(path);
    templates.invalidate(path);
    if (const auto found = dependents.find(path); found != dependents.end()) {
        stale.insert(found->second.begin(), found->second.end());
    }
}

Generator::Result Generator::update(const Mode mode, const Progress& progress) {
    Result result;
    /* An output makes only later outputs stale. */
    for (std::size_t done = 0; !stale.empty(); ++done) {
        if (progress) {
            progress(done, done + stale.size());
        }
        const OutputFile& file = files[*stale.begin()];
        stale.erase(stale.begin());
        try {
            updateFile(file, mode, result.changes);
        } catch (const Failure& failure) {
            result.failures.emplace_back(failure.what());
        }
    }
    return result;
}

void Generator::updateFile(const OutputFile& file, const Mode mode, std::vector<Change>& changes) {
    const auto isOutOfDate = [&](const std::string& path) { return outOfDate.count(path) != 0; };
    const bool hasOldData = std::any_of(file.data.begin(), file.data.end(), isOutOfDate);
    const std::string content = hasOldData ? "" : render(file);
    const Held held = mode == Mode::Write
                          ? replaceIfDifferent(file.path, content, MissingDirectories::Make)
                          : compareFile(file.path, content);
    if (held == Held::Stream || (held == Held::Same && !hasOldData)) {
        return;
    }
    const bool isCompared = mode == Mode::Compare && !hasOldData;
    changes.push_back({file.path, isCompared ? diffWith(file.path, content) : ""});
    for (const std::string& path : file.asInput) {
        invalidateInput(path);
        if (mode != Mode::Write) {
            outOfDate.insert(path);
        }
    }
}

rapidjson::Document& Generator::document(const std::string& path) {
    return documents.get(path, [](const std::string& file) { return readDocument(file); });
}

NamedTemplate& Generator::compiled(const std::string& path) {
    return templates.get(path, readGeneratorTemplate);
}

std::string Generator::render(const OutputFile& file) {
    return file.regions.empty() ? render(file.whole, file) : fillRegions(file);
}

std::string Generator::render(const Rendering& rendering, const OutputFile& file) {
    std::string element;
    PrintedErrors errors;
    try {
        /* First, so that an error in the template is reported even if the data is also wrong. */
        NamedTemplate& source = compiled(rendering.templatePath);
        Scopes scopes;
        for (const std::string& path : file.data) {
            scopes.add(document(path));
        }
        return rendering.each ? renderEach(rendering, file, scopes, errors, element)
                              : text(Host::render(source, scopes.all(), errors));
    } catch (const Failure& failure) {
        throw Failure{failure.what() + (", for " + file.path) + element};
    }
}

Generator::ElementList Generator::findElements(const Rendering& rendering, const OutputFile& file) {
    const std::string& pointer = *rendering.each;
    const std::string about = pointer.empty() ? "the root" : pointer;
    for (const std::string& path : file.data) {
        rapidjson::Document& owner = document(path);
        rapidjson::Value* const value = RapidJsonUtils::valueByPointer(owner, pointer);
        if (!value) {
            continue;
        }
        if (!value->IsArray() && !value->IsObject()) {
            throw Failure{path, "Neither an array nor an object at " + about};
        }
        return {path, owner, *value};
    }
    throw Failure{file.data.empty() ? rendering.templatePath : file.data.front(),
                  "Nothing at " + about};
}

std::string Generator::renderEach(const Rendering& rendering, const OutputFile& file,
                                  Scopes& scopes, PrintedErrors& errors, std::string& element) {
    NamedTemplate& source = compiled(rendering.templatePath);
    const ElementList list = findElements(rendering, file);
    std::string joined;
    /* Enough for most outputs; without it they would grow in several steps. */
    joined.reserve(4096);
    for (unsigned int i = 0; i != list.size(); ++i) {
        const Containers::Pair<Containers::StringView, rapidjson::Value*> child =
            RapidJsonUtils::getSubValue(list.value, i);
        ElementScope scope{list.owner, *child.second(), child.first()};
        if (i != 0) {
            joined += rendering.separator;
        }
        try {
            const Containers::String rendered =
                Host::render(source, scopes.withElement(scope), errors);
            joined.append(rendered.data(), rendered.size());
        } catch (const Failure&) {
            const std::string step =
                child.first().data() ? pointerStep(child.first()) : std::to_string(i);
            element = ", element " + *rendering.each + "/" + step + " of " + list.path;
            throw;
        }
    }
    return joined;
}

std::string Generator::fillRegions(const OutputFile& file) {
    /* Must not reallocate, since the replacements are views of its strings. */
    std::vector<std::string> contents;
    contents.reserve(file.regions.size());
    Containers::Array<Utils::TagReplacement> replacements;
    for (const Region& region : file.regions) {
        contents.push_back(render(region.content, file));
        arrayAppend(replacements, Utils::TagReplacement{region.start, region.end, contents.back()});
    }
    return text(replaceRegions(file.path, readFile(file.path), replacements));
}

} // namespace VespermoorEngine::Host
