/* Rendering and compiling one template, compared with the same work done by hand and by other
   libraries.

   The template has 200 directives: 150 dotted names of two levels, and 25 pairs of `if` and `end`,
   10 of them with a comparison. All sides render the same 50 values and must give the same text.

   Costs of a rendering: every name makes an accessor, which is one allocation, and a path, which is
   copied to the stack; lookups in the document are linear scans over its members. The text of a
   value is copied once, from the document into the output. */

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>
#include <VespermoorEditor/Utils/Template.h>
#include <benchmark/benchmark.h>

#include "DocumentScope.h"
#include "Ratios.h"

#ifdef VESPERMOOR_WITH_CTEMPLATE
#include <ctemplate/template.h>
#endif
#ifdef VESPERMOOR_WITH_MUSTACHE
#include <kainjow/mustache.hpp>
#endif

namespace {

using VespermoorEngine::JsonObject;
using VespermoorEngine::Template;
using VespermoorEngine::Bench::allocationCount;
using VespermoorEngine::Host::DocumentScope;
namespace RapidJsonUtils = VespermoorEngine::RapidJsonUtils;

constexpr int groups = 10;
constexpr int membersPerGroup = 5;

std::string groupName(const int i) {
    return "group" + std::to_string(i);
}
std::string memberName(const int i) {
    return "member" + std::to_string(i);
}

/* The last member of each group is a boolean, the others are texts of 8 to 20 bytes. */
bool isFlag(const int member) {
    return member == membersPerGroup - 1;
}
bool flag(const int group) {
    return group % 3 != 0;
}
std::string valueOf(const int group, const int member) {
    return isFlag(member)
               ? (flag(group) ? "true" : "false")
               : "value " + std::string(std::size_t(2 + 3 * member), 'a') + std::to_string(group);
}

/* A piece of the template; each side's template is written from all of them. */
struct Piece {
    enum class Kind { Text, Value, If, IfEqual, End };

    Kind kind;
    std::string text;
    int group = 0;
    int member = 0;
    /* The right side of an `IfEqual`. */
    std::string other{};

    bool holds() const { return kind == Kind::If ? flag(group) : valueOf(group, member) == other; }
};

std::vector<Piece> makePieces() {
    std::vector<Piece> pieces;
    int next = 0;
    const auto text = [&] {
        pieces.push_back({Piece::Kind::Text, std::string(std::size_t(37 + next % 17), '.') + "\n"});
    };
    const auto value = [&] {
        pieces.push_back({Piece::Kind::Value, "", next % groups, next / groups % 4});
        ++next;
    };
    for (int block = 0; block != 25; ++block) {
        for (int i = 0; i != 5; ++i) {
            text();
            value();
        }
        text();
        const int group = block % groups;
        if (block % 5 < 2) {
            pieces.push_back(
                {Piece::Kind::IfEqual, "", group, 0, block % 2 == 0 ? valueOf(group, 0) : "other"});
        } else {
            pieces.push_back({Piece::Kind::If, "", group, membersPerGroup - 1});
        }
        text();
        value();
        pieces.push_back({Piece::Kind::End, ""});
    }
    return pieces;
}

/* The literal of a comparison cannot hold a blank, so names of values are compared instead. */
std::string makeSource(const std::vector<Piece>& pieces) {
    std::string source;
    for (const Piece& piece : pieces) {
        const std::string name = groupName(piece.group) + "." + memberName(piece.member);
        switch (piece.kind) {
        case Piece::Kind::Text:
            source += piece.text;
            break;
        case Piece::Kind::Value:
            source += "{{ " + name + " }}";
            break;
        case Piece::Kind::If:
            source += "{{ if " + name + " }}";
            break;
        case Piece::Kind::IfEqual:
            source +=
                "{{ if " + name + " == " + (piece.other == "other" ? "'other'" : name) + " }}";
            break;
        case Piece::Kind::End:
            source += "{{ end }}";
            break;
        }
    }
    return source;
}

rapidjson::Document makeDocument() {
    rapidjson::Document document{rapidjson::kObjectType};
    auto& allocator = document.GetAllocator();
    for (int group = 0; group != groups; ++group) {
        rapidjson::Value& object =
            RapidJsonUtils::getOrAddMember(document, groupName(group).data(), allocator);
        for (int member = 0; member != membersPerGroup; ++member) {
            rapidjson::Value& value =
                RapidJsonUtils::getOrAddMember(object, memberName(member).data(), allocator);
            if (isFlag(member)) {
                value.SetBool(flag(group));
            } else {
                value.SetString(valueOf(group, member).data(), allocator);
            }
        }
    }
    return document;
}

const std::vector<Piece>& pieces() {
    static const std::vector<Piece> result = makePieces();
    return result;
}

const std::string& source() {
    static const std::string result = makeSource(pieces());
    return result;
}

rapidjson::Document& document() {
    static rapidjson::Document result = makeDocument();
    return result;
}

/* The pieces compiled by hand: paths are split and texts copied. */
std::string renderByHand(const std::vector<Piece>& pieces,
                         const std::vector<std::pair<std::string, std::string>>& names) {
    std::string output;
    output.reserve(source().size());
    bool skipping = false;
    for (std::size_t i = 0; i != pieces.size(); ++i) {
        const Piece& piece = pieces[i];
        if (piece.kind == Piece::Kind::End) {
            skipping = false;
        }
        if (skipping || piece.kind == Piece::Kind::End) {
            continue;
        }
        if (piece.kind == Piece::Kind::Text) {
            output += piece.text;
            continue;
        }
        const Corrade::Containers::StringView group{names[i].first};
        const Corrade::Containers::StringView member{names[i].second};
        const rapidjson::Value& value =
            *RapidJsonUtils::getMember(*RapidJsonUtils::getMember(document(), group), member);
        if (piece.kind == Piece::Kind::Value) {
            output.append(value.GetString(), value.GetStringLength());
        } else if (piece.kind == Piece::Kind::If) {
            skipping = !value.IsTrue();
        } else {
            skipping = piece.other != value.GetString();
        }
    }
    return output;
}

std::vector<std::pair<std::string, std::string>> namesByHand() {
    std::vector<std::pair<std::string, std::string>> names;
    for (const Piece& piece : pieces()) {
        names.emplace_back(groupName(piece.group), memberName(piece.member));
    }
    return names;
}

/* Ends the program if two sides give different texts: their times would not be comparable. */
void expectSame(const char* const side, const std::string& output) {
    static const std::string expected = renderByHand(pieces(), namesByHand());
    if (output != expected) {
        std::fprintf(stderr, "TemplateBench: %s gives another output\n", side);
        std::exit(1);
    }
}

void renderOurs(benchmark::State& state) {
    Template compiled{
        {source().data(), source().size(), Corrade::Containers::StringViewFlag::NullTerminated}};
    DocumentScope scope{document()};
    const auto output = compiled.render(scope);
    expectSame("ours", {output.data(), output.size()});
    const std::size_t before = allocationCount();
    compiled.render(scope);
    state.counters["allocations"] = double(allocationCount() - before);
    state.counters["outputBytes"] = double(output.size());
    state.counters["sourceBytes"] = double(source().size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(compiled.render(scope));
    }
}
BENCHMARK(renderOurs);

void renderHand(benchmark::State& state) {
    const auto names = namesByHand();
    for (auto _ : state) {
        benchmark::DoNotOptimize(renderByHand(pieces(), names));
    }
}
BENCHMARK(renderHand);

void compileOurs(benchmark::State& state) {
    const Corrade::Containers::StringView text{source().data(), source().size(),
                                               Corrade::Containers::StringViewFlag::NullTerminated};
    const std::size_t before = allocationCount();
    { const Template compiled{text}; }
    state.counters["allocations"] = double(allocationCount() - before);
    for (auto _ : state) {
        Template compiled{text};
        benchmark::DoNotOptimize(compiled);
    }
}
BENCHMARK(compileOurs);

/* The least that a compilation can do: find the delimiters and copy each piece. */
void compileHand(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<std::string> parts;
        std::size_t cursor = 0;
        while (cursor != std::string::npos) {
            const std::size_t open = source().find("{{", cursor);
            parts.push_back(source().substr(cursor, open - cursor));
            if (open == std::string::npos) {
                break;
            }
            const std::size_t close = source().find("}}", open);
            parts.push_back(source().substr(open + 2, close - open - 2));
            cursor = close + 2;
        }
        benchmark::DoNotOptimize(parts);
    }
}
BENCHMARK(compileHand);

#ifdef VESPERMOOR_WITH_CTEMPLATE
std::string flatName(const Piece& piece) {
    return groupName(piece.group) + "_" + memberName(piece.member);
}

std::string ctemplateSource() {
    std::string result;
    std::string section;
    for (std::size_t i = 0; i != pieces().size(); ++i) {
        const Piece& piece = pieces()[i];
        switch (piece.kind) {
        case Piece::Kind::Text:
            result += piece.text;
            break;
        case Piece::Kind::Value:
            result += "{{" + flatName(piece) + "}}";
            break;
        case Piece::Kind::If:
        case Piece::Kind::IfEqual:
            section = "if" + std::to_string(i);
            result += "{{#" + section + "}}";
            break;
        case Piece::Kind::End:
            result += "{{/" + section + "}}";
            break;
        }
    }
    return result;
}

/* The input that a host prepares before each rendering: names, and a section per condition. */
struct CtemplateInput {
    CtemplateInput() {
        for (int group = 0; group != groups; ++group) {
            for (int member = 0; member != membersPerGroup - 1; ++member) {
                values.emplace_back(groupName(group) + "_" + memberName(member),
                                    valueOf(group, member));
            }
        }
        for (std::size_t i = 0; i != pieces().size(); ++i) {
            const Piece& piece = pieces()[i];
            if ((piece.kind == Piece::Kind::If || piece.kind == Piece::Kind::IfEqual) &&
                piece.holds()) {
                sections.push_back("if" + std::to_string(i));
            }
        }
    }

    void fill(ctemplate::TemplateDictionary& dictionary) const {
        for (const auto& [name, value] : values) {
            dictionary.SetValue(name, value);
        }
        for (const std::string& section : sections) {
            dictionary.ShowSection(section);
        }
    }

    std::vector<std::pair<std::string, std::string>> values;
    std::vector<std::string> sections;
};

void renderCtemplate(benchmark::State& state) {
    const std::string text = ctemplateSource();
    ctemplate::Template* const compiled =
        ctemplate::Template::StringToTemplate(text, ctemplate::DO_NOT_STRIP);
    const CtemplateInput input;
    std::string output;
    for (auto _ : state) {
        ctemplate::TemplateDictionary dictionary{"bench"};
        input.fill(dictionary);
        output.clear();
        compiled->Expand(&output, &dictionary);
        benchmark::DoNotOptimize(output);
    }
    expectSame("ctemplate", output);
    delete compiled;
}
BENCHMARK(renderCtemplate);

void compileCtemplate(benchmark::State& state) {
    const std::string text = ctemplateSource();
    for (auto _ : state) {
        ctemplate::Template* const compiled =
            ctemplate::Template::StringToTemplate(text, ctemplate::DO_NOT_STRIP);
        benchmark::DoNotOptimize(compiled);
        delete compiled;
    }
}
BENCHMARK(compileCtemplate);
#endif

#ifdef VESPERMOOR_WITH_MUSTACHE
std::string mustacheSource() {
    std::string result;
    std::string section;
    for (std::size_t i = 0; i != pieces().size(); ++i) {
        const Piece& piece = pieces()[i];
        const std::string name = groupName(piece.group) + "." + memberName(piece.member);
        switch (piece.kind) {
        case Piece::Kind::Text:
            result += piece.text;
            break;
        case Piece::Kind::Value:
            result += "{{{" + name + "}}}";
            break;
        case Piece::Kind::If:
        case Piece::Kind::IfEqual:
            section = "if" + std::to_string(i);
            result += "{{#" + section + "}}";
            break;
        case Piece::Kind::End:
            result += "{{/" + section + "}}";
            break;
        }
    }
    return result;
}

kainjow::mustache::data mustacheData() {
    kainjow::mustache::data root;
    for (int group = 0; group != groups; ++group) {
        kainjow::mustache::data object;
        for (int member = 0; member != membersPerGroup - 1; ++member) {
            object.set(memberName(member), valueOf(group, member));
        }
        root.set(groupName(group), object);
    }
    for (std::size_t i = 0; i != pieces().size(); ++i) {
        const Piece& piece = pieces()[i];
        if (piece.kind == Piece::Kind::If || piece.kind == Piece::Kind::IfEqual) {
            root.set("if" + std::to_string(i), piece.holds());
        }
    }
    return root;
}

void renderMustache(benchmark::State& state) {
    kainjow::mustache::mustache compiled{mustacheSource()};
    const kainjow::mustache::data data = mustacheData();
    expectSame("mustache", compiled.render(data));
    for (auto _ : state) {
        benchmark::DoNotOptimize(compiled.render(data));
    }
}
BENCHMARK(renderMustache);
#endif

} // namespace

int main(int argc, char** argv) {
    return VespermoorEngine::Bench::run(
        argc, argv,
        {{"render 200 directives", "ctemplate, its dictionary filled", "renderOurs",
          "renderCtemplate", 0.85},
         {"render 200 directives", "kainjow mustache", "renderOurs", "renderMustache", 0.15},
         {"render 200 directives", "pieces compiled by hand", "renderOurs", "renderHand"},
         {"compile 200 directives", "ctemplate", "compileOurs", "compileCtemplate", 0.38},
         {"compile 200 directives", "splitting by hand", "compileOurs", "compileHand"}});
}
