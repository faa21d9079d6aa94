#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <VespermoorEditor/Utils/String.h>
#include <benchmark/benchmark.h>
#ifdef VESPERMOOR_WITH_BOOST
#include <boost/algorithm/string/find.hpp>
#endif
#ifdef VESPERMOOR_WITH_PCRE2
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#endif

#include "Ratios.h"

namespace VespermoorEngine::Bench {
namespace {

constexpr std::size_t kilobyte = 1000;
constexpr std::size_t megabyte = 1000 * kilobyte;

Containers::StringView view(const std::string& text) {
    return {text.data(), text.size()};
}

/* Lines of words and marks as in a source file, the letters about as frequent as in English. */
std::string sourceText(const std::size_t size) {
    constexpr char letters[] =
        "eeeeeeeeetttttaaaaooooiiiinnnnssssrrrhhhlldddccuummffppggwyybvkxjqz";
    constexpr const char* marks[]{" ", " ", " ", ", ", "(", ")", " = ", ";\n    ", ";\n", " // "};
    std::mt19937 random{1};
    std::string text;
    while (text.size() < size) {
        for (std::size_t length = 1 + random() % 9; length != 0; --length) {
            text += letters[random() % (sizeof(letters) - 1)];
        }
        text += marks[random() % std::size(marks)];
    }
    text.resize(size);
    return text;
}

/* Tags of one shape, the start tag and the end tag of each region in turn. */
using Tags = std::vector<std::string> (*)(std::size_t regions);

std::vector<std::string> numbered(const std::size_t regions, const std::string& start,
                                  const std::string& end, const std::string& rest) {
    std::vector<std::string> tags;
    for (std::size_t i = 0; i != regions; ++i) {
        tags.push_back(start + std::to_string(i) + rest);
        tags.push_back(end + std::to_string(i) + rest);
    }
    return tags;
}

std::vector<std::string> marks(const std::size_t regions) {
    return numbered(regions, "/*[[Begin:", "/*[[End:", "]]*/");
}

std::vector<std::string> comments(const std::size_t regions) {
    return numbered(regions, "// begin ", "// end ", "\n");
}

template <std::size_t letters>
std::vector<std::string> words(const std::size_t regions) {
    std::mt19937 random{1};
    std::vector<std::string> tags = numbered(regions, "", "", ";");
    for (std::string& tag : tags) {
        for (std::size_t i = 0; i != letters; ++i) {
            tag.insert(tag.begin(), char('a' + random() % 26));
        }
    }
    return tags;
}

std::vector<std::string> numbers(const std::size_t regions) {
    std::vector<std::string> tags = numbered(regions, "", "", "[");
    for (std::size_t i = 1; i < tags.size(); i += 2) {
        tags[i].back() = ']';
    }
    return tags;
}

/* A text of about the size in the arguments, and new content for its regions. */
struct TaggedText {
    TaggedText(const benchmark::State& state, Tags makeTags,
               std::string (*makeSource)(std::size_t));

    std::string text;
    std::vector<std::string> tags;
    Containers::Array<Utils::TagReplacement> replacements;
};

TaggedText::TaggedText(const benchmark::State& state, const Tags makeTags,
                       std::string (*const makeSource)(std::size_t)) {
    const auto size = std::size_t(state.range(0));
    const auto regions = std::size_t(state.range(1));
    const std::string source = makeSource(size);
    const std::size_t step = size / regions;
    tags = makeTags(regions);
    for (std::size_t i = 0; i != regions; ++i) {
        text += source.substr(i * step, step * 9 / 10) + tags[2 * i];
        text += source.substr(i * step + step * 9 / 10, step / 20) + tags[2 * i + 1];
    }
    for (std::size_t i = regions; i-- != 0;) {
        arrayAppend(replacements, Corrade::InPlaceInit, view(tags[2 * i]), view(tags[2 * i + 1]),
                    Containers::StringView{"registerProperty(\"position\");"});
    }
}

/* Regions with other names. */
std::string lookalikes(const std::size_t size) {
    std::string text;
    while (text.size() < size) {
        text += "/*[[Begin:x]]*/ ";
    }
    text.resize(size);
    return text;
}

template <Tags tags, std::string (*source)(std::size_t) = sourceText>
void replaceTagContent(benchmark::State& state) {
    const TaggedText tagged{state, tags, source};
    for (auto _ : state) {
        const auto result = Utils::replaceTagContent(view(tagged.text), tagged.replacements);
        if (!result.second()) {
            state.SkipWithError("not replaced");
        }
        benchmark::DoNotOptimize(result.first().data());
    }
}

/* The texts of all tag shapes differ in size by a few bytes in a thousand. */
void copyText(benchmark::State& state) {
    const TaggedText tagged{state, marks, sourceText};
    std::string copy = tagged.text;
    for (auto _ : state) {
        std::memcpy(copy.data(), tagged.text.data(), copy.size());
        benchmark::ClobberMemory();
    }
}

template <Tags tags>
void searchPerTag(benchmark::State& state) {
    const TaggedText tagged{state, tags, sourceText};
    for (auto _ : state) {
        for (const std::string& tag : tagged.tags) {
            benchmark::DoNotOptimize(
                memmem(tagged.text.data(), tagged.text.size(), tag.data(), tag.size()));
        }
    }
}

constexpr const char* needle = "registration";
constexpr const char* sentence = "The quick brown fox jumps over the lazy dog.";

/* Long texts are source, and the one of 44 bytes is a sentence; none has the needle. */
std::string searchedText(const benchmark::State& state) {
    const auto size = std::size_t(state.range(0));
    return size == std::strlen(sentence) ? sentence : sourceText(size);
}

void searchIn(benchmark::State& state, const std::locale& locale) {
    const std::string text = searchedText(state);
    for (auto _ : state) {
        if (Utils::caseInsensitiveSearch(view(text), needle, locale) != ~std::uint64_t{0}) {
            state.SkipWithError("found");
        }
    }
}

void caseInsensitiveSearch(benchmark::State& state) {
    searchIn(state, std::locale::classic());
}

/* The locale that every Debian has in addition to the classic one. */
void caseInsensitiveSearchInCUtf8(benchmark::State& state) {
    searchIn(state, std::locale{"C.UTF-8"});
}

void glibcStrcasestr(benchmark::State& state) {
    const std::string text = searchedText(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(strcasestr(text.data(), needle));
    }
}

void standardSearch(benchmark::State& state) {
    const std::string text = searchedText(state);
    const std::locale locale = std::locale::classic();
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::search(text.begin(), text.end(), needle,
                                             needle + std::strlen(needle),
                                             Utils::CaseInsensitiveStringEqual{locale}));
    }
}

#ifdef VESPERMOOR_WITH_BOOST
void boostIfindFirst(benchmark::State& state) {
    const std::string text = searchedText(state);
    const std::locale locale = std::locale::classic();
    for (auto _ : state) {
        benchmark::DoNotOptimize(boost::algorithm::ifind_first(text, needle, locale).begin());
    }
}
#endif

#ifdef VESPERMOOR_WITH_PCRE2
void pcre2Jit(benchmark::State& state) {
    const std::string text = searchedText(state);
    int error = 0;
    std::size_t offset = 0;
    pcre2_code* const code =
        pcre2_compile(reinterpret_cast<PCRE2_SPTR>(needle), PCRE2_ZERO_TERMINATED, PCRE2_CASELESS,
                      &error, &offset, nullptr);
    pcre2_jit_compile(code, PCRE2_JIT_COMPLETE);
    pcre2_match_data* const match = pcre2_match_data_create_from_pattern(code, nullptr);
    for (auto _ : state) {
        benchmark::DoNotOptimize(pcre2_jit_match(code, reinterpret_cast<PCRE2_SPTR>(text.data()),
                                                 text.size(), 0, 0, match, nullptr));
    }
    pcre2_match_data_free(match);
    pcre2_code_free(code);
}
BENCHMARK(pcre2Jit)->Arg(44)->Arg(10 * megabyte);
#endif

void taggedTexts(benchmark::internal::Benchmark* const benchmark) {
    benchmark->Args({20 * kilobyte, 10});
    benchmark->Args({megabyte, 100});
    benchmark->Args({10 * megabyte, 1000});
}

BENCHMARK(copyText)->Apply(taggedTexts);
BENCHMARK_TEMPLATE(replaceTagContent, marks)->Apply(taggedTexts);
BENCHMARK_TEMPLATE(replaceTagContent, comments)->Apply(taggedTexts);
BENCHMARK_TEMPLATE(replaceTagContent, words<8>)->Apply(taggedTexts);
BENCHMARK_TEMPLATE(replaceTagContent, words<3>)->Apply(taggedTexts);
BENCHMARK_TEMPLATE(replaceTagContent, numbers)->Apply(taggedTexts);
BENCHMARK_TEMPLATE(replaceTagContent, marks, lookalikes)->Apply(taggedTexts);
BENCHMARK_TEMPLATE(searchPerTag, marks)->Args({20 * kilobyte, 10});
BENCHMARK_TEMPLATE(searchPerTag, comments)->Args({20 * kilobyte, 10});
BENCHMARK_TEMPLATE(searchPerTag, words<8>)->Args({20 * kilobyte, 10});
BENCHMARK(caseInsensitiveSearch)->Arg(44)->Arg(10 * megabyte);
BENCHMARK(caseInsensitiveSearchInCUtf8)->Arg(44)->Arg(10 * megabyte);
BENCHMARK(glibcStrcasestr)->Arg(44)->Arg(10 * megabyte);
BENCHMARK(standardSearch)->Arg(44)->Arg(10 * megabyte);
#ifdef VESPERMOOR_WITH_BOOST
BENCHMARK(boostIfindFirst)->Arg(44)->Arg(10 * megabyte);
#endif

/* Only ratios for realistic tags are `bounded` by goals. */
void addTagRatios(std::vector<Ratio>& ratios, const std::string& name, const std::string& tags,
                  const bool bounded) {
    const std::string ours = "replaceTagContent<" + tags + ">";
    const std::string work = "`replaceTagContent`, " + name;
    ratios.push_back({work + ", 1 MB, 100 regions", "`memcpy`", ours + "/1000000/100",
                      "copyText/1000000/100", bounded ? 20.0 : 0.0});
    ratios.push_back({work + ", 10 MB, 1,000 regions", "`memcpy`", ours + "/10000000/1000",
                      "copyText/10000000/1000", bounded ? 12.0 : 0.0});
    ratios.push_back({work + ", 20 KB, 10 regions", "a search per tag", ours + "/20000/10",
                      "searchPerTag<" + tags + ">/20000/10", bounded ? 1.0 : 0.0});
}

std::vector<Ratio> ratios() {
    std::vector<Ratio> ratios;
    addTagRatios(ratios, "marks", "marks", true);
    addTagRatios(ratios, "comments", "comments", true);
    addTagRatios(ratios, "words", "words<8>", true);
    addTagRatios(ratios, "short words", "words<3>", false);
    addTagRatios(ratios, "numbers", "numbers", false);
    addTagRatios(ratios, "marks among look-alikes", "marks, lookalikes", false);
    const std::vector<Ratio> others{
        {"`caseInsensitiveSearch` in 10 MB", "`strcasestr`", "caseInsensitiveSearch/10000000",
         "glibcStrcasestr/10000000", 0.5},
        {"`caseInsensitiveSearch` in 10 MB", "PCRE2 JIT", "caseInsensitiveSearch/10000000",
         "pcre2Jit/10000000"},
        {"`caseInsensitiveSearch` in 10 MB", "`std::search`", "caseInsensitiveSearch/10000000",
         "standardSearch/10000000"},
        {"`caseInsensitiveSearch` in 10 MB", "`boost::ifind_first`",
         "caseInsensitiveSearch/10000000", "boostIfindFirst/10000000"},
        {"`caseInsensitiveSearch` in 44 bytes", "`strcasestr`", "caseInsensitiveSearch/44",
         "glibcStrcasestr/44", 1.5},
        {"`caseInsensitiveSearch` in 44 bytes", "`std::search`", "caseInsensitiveSearch/44",
         "standardSearch/44"},
        {"`caseInsensitiveSearch` in 44 bytes, another locale", "`strcasestr`",
         "caseInsensitiveSearchInCUtf8/44", "glibcStrcasestr/44", 3},
    };
    ratios.insert(ratios.end(), others.begin(), others.end());
    return ratios;
}

} // namespace
} // namespace VespermoorEngine::Bench

int main(int argc, char** argv) {
    return VespermoorEngine::Bench::run(argc, argv, VespermoorEngine::Bench::ratios());
}
