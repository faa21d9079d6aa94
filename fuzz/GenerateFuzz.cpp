/* Input: the contents of the files below, the manifest first. The files are in a directory of their
   own. Manifests with paths that lead out of it are skipped. */

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <sys/stat.h>

#include <Corrade/Containers/StringStl.h>

#include "Failure.h"
#include "Generator.h"
#include "Harness.h"
#include "Manifest.h"
#include "Naive.h"

namespace VespermoorEngine::Fuzz {
namespace {

namespace fs = std::filesystem;
using rapidjson::Value;

const std::string names[]{"manifest.json", "a.json", "b.json", "t.tmpl", "u.tmpl", "out/regions"};

/* The text of the file, or nothing if it does not exist. */
std::optional<std::string> read(const fs::path& path) {
    std::ifstream file{path, std::ios::binary};
    std::ostringstream content;
    if (!fs::is_regular_file(path) || !(content << file.rdbuf() || content.str().empty())) {
        return {};
    }
    return content.str();
}

/* The working area: the files, and next to them the current directory, which must stay empty. */
class Scratch {
public:
    Scratch() {
        std::string name = fs::temp_directory_path() / "generate-XXXXXX";
        expect("temporary directory", mkdtemp(name.data()));
        root = fs::canonical(name);
        fs::create_directory(root / "elsewhere");
        fs::current_path(root / "elsewhere");
    }
    ~Scratch() { fs::remove_all(root); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    void fill(const std::vector<std::string>& contents) const {
        fs::remove_all(tree());
        fs::create_directories(tree() / "out");
        fs::create_directory_symlink("out", tree() / "same");
        fs::create_symlink("b.json", tree() / "link.json");
        for (std::size_t i = 0; i != std::min(contents.size(), std::size(names)); ++i) {
            std::ofstream{tree() / names[i], std::ios::binary} << contents[i];
        }
    }

    fs::path tree() const { return root / "tree"; }
    std::string manifest() const { return tree() / names[0]; }

    /* The path of a file with links resolved. */
    static fs::path place(const fs::path& path) {
        std::error_code error;
        return fs::weakly_canonical(path, error);
    }

    bool contains(const fs::path& path) const {
        const std::string inside = tree().string() + "/";
        return place(path).string().compare(0, inside.size(), inside) == 0;
    }

    /* All entries, with a state that changes if a file is touched. */
    std::map<fs::path, std::string> everything() const {
        std::map<fs::path, std::string> entries;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator{root}) {
            struct stat status {};
            lstat(entry.path().c_str(), &status);
            entries[entry.path()] = S_ISREG(status.st_mode)
                                        ? std::to_string(status.st_ino) + "," +
                                              std::to_string(status.st_mtim.tv_sec) + "," +
                                              std::to_string(status.st_mtim.tv_nsec)
                                        : "no file";
        }
        return entries;
    }

private:
    fs::path root;
};

/* `text` with the line ends of the first line of `model`. */
std::string withLineEndsOf(const std::string& model, const std::string& text) {
    const std::size_t end = model.find('\n');
    const bool hasCarriageReturns = end != std::string::npos && end != 0 && model[end - 1] == '\r';
    std::string result;
    for (const char c : text) {
        if (c == '\n' && end != std::string::npos) {
            result.erase(result.size() - (!result.empty() && result.back() == '\r'));
            result += hasCarriageReturns ? "\r" : "";
        }
        result += c;
    }
    return result;
}

/* The text with the regions replaced, or nothing if a region is missing or the next run could not
   find it again. */
std::optional<std::string> replaceRegions(const std::string& text,
                                          std::vector<Naive::Region> regions) {
    for (Naive::Region& region : regions) {
        for (std::string* const part : {&region.start, &region.end, &region.content}) {
            *part = withLineEndsOf(text, *part);
        }
        const std::size_t start = Naive::findTag(text, region.start);
        const std::size_t end = Naive::findTag(text, region.end);
        if (std::max(start, end) == std::string::npos || end < start + region.start.size()) {
            return {};
        }
    }
    for (const Naive::Region& region : regions) {
        for (const Naive::Region& other : regions) {
            if (region.content.find(other.start) != std::string::npos ||
                region.content.find(other.end) != std::string::npos) {
                return {};
            }
        }
    }
    const auto [result, succeeds] = Naive::replaceTagContent(text, regions);
    return succeeds ? std::optional{result} : std::nullopt;
}

/* The expected text of one output, made afresh from the current files. Empty if the output must
   fail. */
class Expected {
public:
    explicit Expected(const Host::OutputFile& output) : file{output} {
        for (const std::string& path : output.data) {
            const std::optional<std::string> json = read(path);
            std::optional<rapidjson::Document> document =
                json ? Naive::parse(*json) : std::optional<rapidjson::Document>{};
            allRead = allRead && document;
            data.push_back(document ? *std::move(document) : rapidjson::Document{});
        }
    }

    std::optional<std::string> text(const std::optional<std::string>& before) const {
        if (!allRead) {
            return {};
        }
        return file.regions.empty() ? render(file.whole) : fillRegions(before);
    }

private:
    std::optional<std::string> render(const Host::Rendering& rendering) const {
        const std::optional<std::string> source = read(rendering.templatePath);
        if (!source || source->empty() || source->find('\0') != std::string::npos) {
            return {};
        }
        if (!rendering.each) {
            return render(*source, nullptr, nullptr);
        }
        const Value* list = nullptr;
        for (auto document = data.begin(); document != data.end() && !list; ++document) {
            list = Naive::walkPointer(*document, *rendering.each);
        }
        if (!list || !(list->IsArray() || list->IsObject())) {
            return {};
        }
        std::string joined;
        const unsigned count = list->IsArray() ? list->Size() : list->MemberCount();
        for (unsigned i = 0; i != count; ++i) {
            const auto* const member = list->IsObject() ? &list->MemberBegin()[i] : nullptr;
            const std::optional<std::string> part = render(
                *source, member ? &member->value : &(*list)[i], member ? &member->name : nullptr);
            if (!part) {
                return {};
            }
            joined += (i == 0 ? "" : rendering.separator) + *part;
        }
        return joined;
    }

    std::optional<std::string> render(const std::string& source, const Value* const element,
                                      const Value* const key) const {
        const Naive::Rendered rendered = Naive::render(source, [&](const std::string& name) {
            const Value* value = name == "@value" && element ? element
                                 : name == "@key" && key     ? key
                                 : element                   ? Naive::walk(*element, name)
                                                             : nullptr;
            for (auto document = data.begin(); document != data.end() && !value; ++document) {
                value = Naive::walk(*document, name);
            }
            return value;
        });
        return rendered.messages.empty() ? std::optional{rendered.text} : std::nullopt;
    }

    std::optional<std::string> fillRegions(const std::optional<std::string>& before) const {
        std::vector<Naive::Region> regions;
        for (const Host::Region& region : file.regions) {
            const std::optional<std::string> content = render(region.content);
            if (!before || !content) {
                return {};
            }
            regions.push_back({region.start, region.end, *content});
        }
        const std::optional<std::string> result = replaceRegions(*before, regions);
        return result && replaceRegions(*result, regions) == result ? result : std::nullopt;
    }

    const Host::OutputFile& file;
    bool allRead = true;
    std::vector<rapidjson::Document> data;
};

/* Whether no file can be made at `place`, because it is a directory or its parent is not one. */
bool isBlocked(const fs::path& place) {
    return fs::is_directory(place) || !fs::is_directory(place.parent_path());
}

using Outputs = std::map<fs::path, Host::OutputFile>;

/* Whether `path` is a directory above one of the outputs that were made. */
bool isAboveOutput(const fs::path& path, const std::map<fs::path, std::string>& entries,
                   const Outputs& outputs) {
    return std::any_of(outputs.begin(), outputs.end(), [&](const auto& output) {
        return entries.count(output.first) != 0 &&
               output.first.native().rfind(path.native() + '/', 0) == 0;
    });
}

void expectOnlyOutputsChanged(const std::map<fs::path, std::string>& before,
                              const std::map<fs::path, std::string>& after,
                              const Outputs& outputs) {
    for (const auto& [path, state] : after) {
        const auto was = before.find(path);
        const bool changed = was == before.end() || was->second != state;
        expect("change of " + path.string(),
               !changed || outputs.count(path) != 0 || isAboveOutput(path, after, outputs));
    }
    for (const auto& [path, state] : before) {
        expect("loss of " + path.string(), after.count(path) != 0);
    }
}

void testGeneration(const Scratch& scratch, const std::vector<Host::OutputFile>& files) {
    Outputs outputs;
    std::map<fs::path, std::optional<std::string>> contents;
    for (const Host::OutputFile& file : files) {
        const fs::path place = Scratch::place(file.path);
        outputs.emplace(place, file);
        contents[place] = read(place);
    }
    const auto before = scratch.everything();
    const auto result = Host::Generator{scratch.manifest()}.update(Host::Generator::Mode::Write);
    const auto after = scratch.everything();
    expectOnlyOutputsChanged(before, after, outputs);

    bool blocked = false;
    std::size_t failed = 0;
    for (const auto& [place, file] : outputs) {
        const auto expected = Expected{file}.text(contents[place]);
        blocked = blocked || isBlocked(place);
        failed += !expected || isBlocked(place);
        const auto& rest = expected && !isBlocked(place) ? expected : contents[place];
        expectEqual("text of " + file.path, read(place).value_or("none"), rest.value_or("none"));
    }
    expect("one failure for each output that cannot be made", failed == result.failures.size());

    const auto check = Host::Generator{scratch.manifest()}.update(Host::Generator::Mode::Check);
    expect("nothing out of date after a run", blocked || check.changes.empty());
    expect("the same failures", blocked || check.failures == result.failures);
    (void)Host::Generator{scratch.manifest()}.update(Host::Generator::Mode::Write);
    expect("nothing touched by a check and a second run", scratch.everything() == after);
}

void run(const std::vector<std::string>& input) {
    static const Scratch scratch;
    scratch.fill(input);
    const auto before = scratch.everything();
    try {
        const std::vector<Host::OutputFile> files = Host::readManifest(scratch.manifest());
        for (const Host::OutputFile& file : files) {
            const std::set<std::string> inputs = file.inputs();
            if (!scratch.contains(file.path) ||
                !std::all_of(inputs.begin(), inputs.end(),
                             [](const std::string& path) { return scratch.contains(path); })) {
                return;
            }
        }
        testGeneration(scratch, files);
    } catch (const Host::Failure&) {
        expect("nothing changed", scratch.everything() == before);
    }
}

} // namespace
} // namespace VespermoorEngine::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* const data, const std::size_t size) {
    VespermoorEngine::Fuzz::run(VespermoorEngine::Fuzz::pieces(data, size));
    return 0;
}
