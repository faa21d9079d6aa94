/* Input: a template, then JSON documents. Its scopes are these, then the fixed ones below. */

#include <deque>
#include <sstream>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Debug.h>
#include <VespermoorEditor/Utils/Template.h>

#include "DocumentScope.h"
#include "Harness.h"
#include "Naive.h"

namespace VespermoorEngine::Fuzz {
namespace {

const char* const fixedScopes[]{
    R"({"t": true, "f": false, "s": "text", "d": 2.5, "i": 2, "n": null, "e": "", "true": "true",
        "o": {"s": "below", "t": false, "o": {"d": -1e300}}, "l": ["first", true, {"s": "in list"}],
        "z": "zero\u0000byte", "z2": "zero\u0000bits", "tz": "true\u0000", "": {"": "no name"}})",
    R"({"s": "second", "t": "true", "only": 0.00005, "o": {"only": "here"}, "i": "hidden"})"};

struct Scopes {
    void add(rapidjson::Document&& document) {
        documents.push_back(std::move(document));
        scopes.emplace_back(documents.back());
        arrayAppend(references, Containers::Reference<JsonObject>{scopes.back()});
    }

    const rapidjson::Value* find(const std::string& name) const {
        for (const rapidjson::Document& document : documents) {
            if (const rapidjson::Value* const value = Naive::walk(document, name)) {
                return value;
            }
        }
        return nullptr;
    }

    std::deque<rapidjson::Document> documents;
    std::deque<Host::DocumentScope> scopes;
    Containers::Array<Containers::Reference<JsonObject>> references;
};

void run(const std::vector<std::string>& input) {
    Scopes scopes;
    for (std::size_t i = 1; i < input.size(); ++i) {
        if (std::optional<rapidjson::Document> document = Naive::parse(input[i])) {
            scopes.add(*std::move(document));
        }
    }
    for (const char* const json : fixedScopes) {
        scopes.add(*Naive::parse(json));
    }
    std::ostringstream messages;
    Corrade::Utility::Error redirected{&messages};
    const Containers::String source{input[0].data(), input[0].size()};
    Template compiled{source};
    const std::string compileMessages = messages.str();
    const Naive::Rendered expected =
        Naive::render(input[0], [&](const std::string& name) { return scopes.find(name); });
    for (int time = 0; time != 2; ++time) {
        messages.str(compileMessages);
        messages.seekp(0, std::ios::end);
        expectEqual("output", std::string{compiled.render(scopes.references)}, expected.text);
        expectEqual("messages", messages.str(), expected.messages);
    }
    for (const char* const name : {"s", "if", "end", "'text'", "o.s", "=="}) {
        expect(std::string{"hasEval() of "} + name,
               compiled.hasEval(name) == Naive::hasEval(input[0], name));
    }
}

} // namespace
} // namespace VespermoorEngine::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* const data, const std::size_t size) {
    VespermoorEngine::Fuzz::run(VespermoorEngine::Fuzz::pieces(data, size));
    return 0;
}
