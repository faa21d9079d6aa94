/* Input: a repeat count, a filler, a text, then strings used as tags, contents and search texts.
   The filler is repeated before the text, to make it long enough for the fast paths. */

#include <algorithm>
#include <locale>

#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/String.h>
#include <VespermoorEditor/Utils/TagSearch.h>

#include "Harness.h"
#include "Naive.h"

namespace VespermoorEngine::Fuzz {
namespace {

using Containers::StringView;

/* Bytes without spare memory after them, so that the sanitizer detects reads past the end. */
class Exact {
public:
    explicit Exact(const std::string& text) : bytes(text.begin(), text.end()) {
        bytes.shrink_to_fit();
    }

    operator StringView() const { return {bytes.data(), bytes.size()}; }

private:
    std::vector<char> bytes;
};

/* Converts single bytes to upper case with a function, and leaves ranges of bytes unchanged. */
class FunctionFacet : public std::ctype<char> {
public:
    explicit FunctionFacet(int (*const function)(int)) : upperCase{function} {}

protected:
    char do_toupper(const char c) const override {
        return char(upperCase(static_cast<unsigned char>(c)));
    }
    const char* do_toupper(char*, const char* const end) const override { return end; }

private:
    int (*upperCase)(int);
};

const std::locale locales[]{
    std::locale::classic(),
    {std::locale::classic(), new std::ctype_byname<char>{"C.UTF-8"}},
    {std::locale::classic(), new FunctionFacet{[](int c) { return c; }}},      // no case
    {std::locale::classic(), new FunctionFacet{[](int c) { return c % 86; }}}, // three are equal
};

std::string text(const StringView view) {
    return {view.data(), view.size()};
}

void testNames(const std::string& name) {
    expectEqual("kebap case", text(Utils::toKebapCase(Exact{name})), Naive::toKebapCase(name));
    expectEqual("camel case", text(Utils::toBigCamelCase(Exact{name})),
                Naive::toBigCamelCase(name));
}

void testSearch(const std::string& whole, const std::string& part) {
    for (const std::locale& locale : locales) {
        const auto match = std::search(whole.begin(), whole.end(), part.begin(), part.end(),
                                       Utils::CaseInsensitiveStringEqual{locale});
        const bool found = part.empty() || match != whole.end();
        expectEqual(
            "search for " + part,
            std::to_string(Utils::caseInsensitiveSearch(Exact{whole}, Exact{part}, locale)),
            std::to_string(found ? std::uint64_t(match - whole.begin()) : ~std::uint64_t{0}));
    }
}

void testFirstOccurrences(const std::string& whole, const std::vector<std::string>& tags) {
    const Exact haystack{whole};
    const StringView all = haystack;
    const std::vector<Exact> exact(tags.begin(), tags.end());
    std::vector<StringView> places(tags.size());
    std::vector<Utils::SoughtTag> sought;
    for (std::size_t i = 0; i != tags.size(); ++i) {
        sought.push_back({exact[i], &places[i]});
    }
    Utils::findFirstOccurrences(all, {sought.data(), sought.size()});
    for (std::size_t i = 0; i != tags.size(); ++i) {
        const std::size_t place = Naive::findTag(whole, tags[i]);
        const bool found = place != std::string::npos;
        expect("first occurrence of " + tags[i],
               places[i].data() == (found ? all.data() + place : nullptr) &&
                   places[i].size() == (found ? tags[i].size() : 0));
    }
}

/* Every three strings make a region. There are at most 15, since the order of equal regions would
   be unspecified with more. */
void testRegions(const std::string& whole, const std::vector<std::string>& strings) {
    std::vector<Naive::Region> regions;
    std::vector<Utils::TagReplacement> replacements;
    for (std::size_t i = 0; i + 2 < strings.size() && regions.size() != 15; i += 3) {
        regions.push_back({strings[i], strings[i + 1], strings[i + 2]});
        replacements.emplace_back(strings[i], strings[i + 1], strings[i + 2]);
    }
    const auto ours =
        Utils::replaceTagContent(Exact{whole}, {replacements.data(), replacements.size()});
    const auto [result, succeeds] = Naive::replaceTagContent(whole, regions);
    expectEqual("regions", text(ours.first()), result);
    expect("success of regions", ours.second() == succeeds);
}

void run(std::vector<std::string> input) {
    input.resize(std::max<std::size_t>(input.size(), 3));
    std::string whole;
    for (int i = input[0].empty() ? 0 : input[0][0] & 63; i != 0; --i) {
        whole += input[1];
    }
    whole += input[2];
    const std::vector<std::string> strings{input.begin() + 3, input.end()};
    testNames(input[2]);
    for (const std::string& part : strings) {
        testNames(part);
        testSearch(whole, part);
    }
    testFirstOccurrences(whole, strings);
    testRegions(whole, strings);
}

} // namespace
} // namespace VespermoorEngine::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* const data, const std::size_t size) {
    VespermoorEngine::Fuzz::run(VespermoorEngine::Fuzz::pieces(data, size));
    return 0;
}
