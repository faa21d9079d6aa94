#include "Manifest.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <utility>

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

#include "Documents.h"
#include "Failure.h"

namespace VespermoorEngine::Host {

namespace {

/* A value of the manifest and, for messages, its JSON Pointer. */
class Entry {
public:
    Entry(const std::string& manifestPath, const rapidjson::Value& json, std::string pointer)
        : manifest{manifestPath}, value{json}, place{std::move(pointer)} {}

    [[noreturn]] void fail(const std::string& reason) const {
        throw Failure{manifest, (place.empty() ? "" : place + ": ") + reason};
    }

    void expectMembers(std::initializer_list<const char*> known) const;
    bool has(const char* const name) const {
        return RapidJsonUtils::getMember(value, name) != nullptr;
    }
    Entry member(const char* name) const;
    std::vector<Entry> elements() const;
    std::string string() const;
    std::string tag() const;
    /* A file path, resolved against the manifest's directory. */
    std::string path() const;

private:
    const std::string& manifest;
    const rapidjson::Value& value;
    std::string place;
};

void Entry::expectMembers(const std::initializer_list<const char*> known) const {
    if (!value.IsObject()) {
        fail("Not an object");
    }
    for (const auto& member : value.GetObject()) {
        const std::string name{member.name.GetString(), member.name.GetStringLength()};
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            fail("Unknown member " + name);
        }
        if (&member.value != RapidJsonUtils::getMember(value, name)) {
            fail("Member " + name + " twice");
        }
    }
}

Entry Entry::member(const char* const name) const {
    const rapidjson::Value* const found = RapidJsonUtils::getMember(value, name);
    if (!found) {
        fail(std::string{"Missing member "} + name);
    }
    return {manifest, *found, place + "/" + name};
}

std::vector<Entry> Entry::elements() const {
    if (!value.IsArray()) {
        fail("Not an array");
    }
    std::vector<Entry> result;
    for (const rapidjson::Value& element : value.GetArray()) {
        result.emplace_back(manifest, element, place + "/" + std::to_string(result.size()));
    }
    return result;
}

std::string Entry::string() const {
    if (!value.IsString()) {
        fail("Not a string");
    }
    return {value.GetString(), value.GetStringLength()};
}

std::string Entry::tag() const {
    std::string name = string();
    if (name.empty()) {
        fail("Empty tag");
    }
    return name;
}

std::string Entry::path() const {
    const std::string relative = string();
    if (relative.empty()) {
        fail("Empty path");
    }
    if (std::any_of(relative.begin(), relative.end(),
                    [](const unsigned char c) { return std::iscntrl(c); })) {
        fail("Control byte in a path");
    }
    return relative.front() == '/' ? relative
                                   : manifest.substr(0, manifest.rfind('/') + 1) + relative;
}

/* Excludes the form that begins with #, which is for URIs. */
std::string readPointer(const Entry& entry) {
    std::string pointer = entry.string();
    if ((!pointer.empty() && pointer.front() != '/') ||
        !rapidjson::Pointer{pointer.data(), pointer.size()}.IsValid()) {
        entry.fail("No JSON Pointer");
    }
    return pointer;
}

Rendering readRendering(const Entry& entry) {
    Rendering rendering;
    rendering.templatePath = entry.member("template").path();
    if (entry.has("each")) {
        rendering.each = readPointer(entry.member("each"));
    }
    if (entry.has("separator")) {
        if (!rendering.each) {
            entry.fail("Takes separator only beside each");
        }
        rendering.separator = entry.member("separator").string();
    }
    return rendering;
}

Region readRegion(const Entry& entry) {
    entry.expectMembers({"start", "end", "template", "each", "separator"});
    return {entry.member("start").tag(), entry.member("end").tag(), readRendering(entry)};
}

OutputFile readOutput(const Entry& entry) {
    entry.expectMembers({"file", "data", "template", "each", "separator", "regions"});
    OutputFile output;
    output.path = entry.member("file").path();
    for (const Entry& data : entry.member("data").elements()) {
        output.data.push_back(data.path());
    }
    if (entry.has("regions") == entry.has("template")) {
        entry.fail("Takes either template or regions");
    }
    if (entry.has("template")) {
        output.whole = readRendering(entry);
        return output;
    }
    for (const char* const name : {"each", "separator"}) {
        if (entry.has(name)) {
            entry.fail(std::string{"Takes "} + name + " only beside template");
        }
    }
    for (const Entry& region : entry.member("regions").elements()) {
        output.regions.push_back(readRegion(region));
    }
    if (output.regions.empty()) {
        entry.fail("Has no regions");
    }
    return output;
}

} // namespace

std::set<std::string> OutputFile::templates() const {
    std::set<std::string> paths;
    if (regions.empty()) {
        paths.insert(whole.templatePath);
    }
    for (const Region& region : regions) {
        paths.insert(region.content.templatePath);
    }
    return paths;
}

std::set<std::string> OutputFile::inputs() const {
    std::set<std::string> paths = templates();
    paths.insert(data.begin(), data.end());
    return paths;
}

std::vector<OutputFile> readManifest(const Containers::StringView path) {
    const rapidjson::Document document = readDocument(path);
    const std::string name = path;
    const Entry root{name, document, ""};
    root.expectMembers({"outputs"});
    std::vector<OutputFile> outputs;
    for (const Entry& entry : root.member("outputs").elements()) {
        outputs.push_back(readOutput(entry));
    }
    return outputs;
}

} // namespace VespermoorEngine::Host
