#include "VespermoorEditor/Utils/RapidJsonUtils.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include "Json.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;
using namespace std::string_literals;
using namespace RapidJsonUtils;
using Containers::StringView;

constexpr Containers::StringViewFlags terminated = Containers::StringViewFlag::NullTerminated;

std::string printed(const rapidjson::Value& value, const int decimals = defaultMaxDecimalPlaces) {
    const Containers::Optional<Containers::String> json = jsonToString(value, decimals);
    return json ? text(*json) : "nothing";
}

TEST(RapidJsonUtilsTest, PrintsEveryMemberAndElementOnItsOwnLine) {
    const std::string json = R"({
    "z": [
        18446744073709551615,
        {
            "a": 1.0
        },
        [],
        null
    ],
    "z": "tab\t"
})";
    EXPECT_EQ(printed(parse(json)), json);
    std::ostringstream out;
    Corrade::Utility::Debug{&out} << "value:" << parse(json) << parse("2");
    EXPECT_EQ(out.str(), "value: " + json + " 2\n");
    EXPECT_EQ(printed(rapidjson::Value{"no UTF-8: \xff"}), "\"no UTF-8: \xff\"");
}

TEST(RapidJsonUtilsTest, PrintsDoubles) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::tuple<double, int, const char*> rows[]{{0.1, 324, "0.1"},
                                                      {-0.0, 324, "-0.0"},
                                                      {std::nan(""), 324, "0.0"},
                                                      {infinity, 324, "1.7976931348623157e308"},
                                                      {-infinity, 1, "-1.7976931348623157e308"},
                                                      {1.2399, 2, "1.23"},
                                                      {1.2004, 3, "1.2"},
                                                      {1.04, 1, "1.0"},
                                                      {0.0004, 3, "0.0"}};
    for (const auto& [number, decimals, expected] : rows) {
        EXPECT_EQ(printed(rapidjson::Value{number}, decimals), expected);
    }
    EXPECT_DEATH((void)jsonToString({}, 0),
                 "^RapidJsonUtils::jsonToString\\(\\): maxDecimalPlaces must be greater than 0\n$");
}

std::string nested(const int levels, const std::string& inner = "") {
    return std::string(levels, '[') + inner + std::string(levels, ']');
}

/* What the file holds, or why it is refused. */
std::string parsed(const std::string& path) {
    const ValueOrError<rapidjson::Document> result = parseJsonFile(path.data());
    return result ? compact(result.value()) : text(result.error());
}

TEST(RapidJsonUtilsTest, ParsesJsonAndNothingElse) {
    const TemporaryDirectory directory;
    const std::string path = directory / "a.json";
    const Messages messages;
    const auto parsedFrom = [&](const std::string& json) {
        writeFile(path, json);
        return parsed(path);
    };
    EXPECT_EQ(parsedFrom("{\"a\": [1, 2.5, \"x\"]}"), "{\"a\":[1,2.5,\"x\"]}");
    EXPECT_EQ(parsedFrom(" true\n"), "true");
    EXPECT_EQ(parsedFrom("\xef\xbb\xbf{}"), "{}");
    std::string wide = "[";
    for (int i = 0; i != maxNesting; ++i) {
        wide += "[],{},";
    }
    wide += "\"" + std::string(maxNesting, '[') + "\"]";
    for (const std::string& json : {wide, nested(maxNesting), "[1.7e308]"s, "[\"\xff\"]"s}) {
        EXPECT_EQ(parsedFrom(json), json);
    }

    const std::string invalid = "Invalid JSON in file: " + path;
    const auto refuses = [&](const auto&... json) {
        EXPECT_THAT((std::vector<std::string>{parsedFrom(json)...}), testing::Each(invalid));
    };
    refuses(nested(maxNesting + 1), nested(maxNesting, "{}"), std::string(1000000, '['));
    refuses("\xef\xbb\xbf", "\xef{}", "\xef\xbb{}", "\xef\xbf{}", "\xbb{}", "\xbf{}");
    refuses("[1e309]", "[8324234798232463278461.5e300]", "[-8324234798232463278461.5e300]");
    refuses("", "/* a */ {}", "[1,]", "[NaN]", "{} {}", "{\"a\": [1, 2", "{}\0"s, "[1]\0]"s);
    EXPECT_EQ(messages.text(), "");
    for (const std::string& unreadable : {directory / "missing.json", directory.path()}) {
        EXPECT_EQ(parsed(unreadable), "File does not exist: " + unreadable);
    }
}

TEST(RapidJsonUtilsTest, ResultIsMovableAndGuarded) {
    const TemporaryDirectory directory;
    const std::string json = "[\"a string longer than what a value holds in place\"]";
    writeFile(directory / "a.json", json);
    const Messages messages;
    ValueOrError<rapidjson::Document> success = parseJsonFile((directory / "a.json").data());
    ValueOrError<rapidjson::Document> result = parseJsonFile((directory / "b.json").data());
    EXPECT_DEATH((void)result.value(), "^ValueOrError::value\\(\\): No value\n$");
    ValueOrError<rapidjson::Document>& itself = result;
    result = std::move(itself);
    EXPECT_EQ(text(result.error()), "File does not exist: " + directory / "b.json");
    result = std::move(success);
    result = std::move(itself);
    EXPECT_DEATH((void)result.error(), "^ValueOrError::error\\(\\): No error\n$");
    ValueOrError<rapidjson::Document> moved{std::move(result)};
    EXPECT_EQ(compact(std::move(moved).value()), json);
}

/* The child as JSON after the name of a member. */
template <class Key>
std::string child(const char* const json, const Key key) {
    rapidjson::Document document = parse(json);
    const auto found = getSubValue(document, key);
    const StringView name = found.first();
    EXPECT_EQ(name.flags(), name.data() ? terminated : StringView{}.flags()) << json;
    return text(name) + (name.data() ? "=" : "") +
           (found.second() ? compact(*found.second()) : "nothing");
}

TEST(RapidJsonUtilsTest, SubValue) {
    const std::tuple<const char*, StringView, const char*> byName[]{
        {R"({"a": 1, "a": 2, "ab": 3})", "a", "a=1"},
        {R"({"a": 1, "ab": 3})", "ab", "ab=3"},
        {R"({"a/b": 1, "a": {"b": 2}})", "a/b", "a/b=1"},
        {R"({"a": 1})", "a\0x"_s, "nothing"},
        {R"({"a": 1, "": 2})", "", "=2"},
        {R"({"a": 1})", {}, "nothing"},
        {"[5, 6]", "1", "6"},
        {"[5, 6]", "2", "nothing"},
        {"[5, 6]", " +1st", "6"},
        {"[5, 6]", "-1", "nothing"},
        {"[5, 6]", "4294967296", "nothing"},
        {"\"a\"", "0", "nothing"}};
    const std::tuple<const char*, unsigned int, const char*> byIndex[]{
        {R"({"a": 1, "a": 2})", 1, "a=2"}, {R"({"a": 1})", 1, "nothing"}, {"[5, 6]", 1, "6"},
        {"[5, 6]", 2, "nothing"},          {"\"a\"", 0, "nothing"},
    };
    for (const auto& [json, key, expected] : byName) {
        EXPECT_EQ(child(json, key), expected) << json;
    }
    for (const auto& [json, key, expected] : byIndex) {
        EXPECT_EQ(child(json, key), expected) << json;
    }
    for (const StringView noNumber : {"x"_s, StringView{}}) {
        EXPECT_THROW(child("[5, 6]", noNumber), std::invalid_argument);
    }
    EXPECT_THROW(child("[5, 6]", "99999999999999999999"_s), std::out_of_range);
}

TEST(RapidJsonUtilsTest, MembersAreFoundByLengthAndBytesOrAdded) {
    rapidjson::Document document = parse(R"({"a": 1, "a": 2, "n\u0000m": 3})");
    const rapidjson::Document& constant = document;
    EXPECT_EQ(getMember(document, "a"_s)->GetInt(), 1);
    EXPECT_EQ(getMember(constant, "a"_s), getMember(document, rapidjson::Value{"a"}));
    EXPECT_EQ(getMember(document, "n\0m"_s)->GetInt(), 3);
    EXPECT_EQ(getMember(document, "n"_s), nullptr);
    EXPECT_EQ(getMember(document, "b"_s), nullptr);
    std::string name = "a name that ends before the document";
    for (int time = 0; time != 2; ++time) {
        EXPECT_EQ(getOrAddMember(document, "a", document.GetAllocator()).GetInt(), 1);
        getOrAddMember(document, name.data(), document.GetAllocator());
        getOrAddMember(document, {}, document.GetAllocator()) = "new";
    }
    name.assign(name.size(), 'x');
    EXPECT_EQ(compact(document),
              R"({"a":1,"a":2,"n\u0000m":3,"a name that ends before the document":{},"":"new"})");
}

TEST(RapidJsonUtilsTest, ValueByPointer) {
    rapidjson::Document document =
        parse(R"({"a": [0, {"b": 7}], "c/d": 8, "n": 1, "n\u0000x": 9, "n": 2})");
    const rapidjson::Document& constant = document;
    const std::string root = compact(document);
    const std::pair<std::string, std::string> rows[]{
        {"/a/1/b", "7"},      {"#/a/1/b", "7"},    {"/c~1d", "8"},        {"#/c%2Fd", "8"},
        {"/n", "1"},          {"#/n%00x", "9"},    {"#/n%00", "nothing"}, {"#/a%00/0", "nothing"},
        {"", root},           {"a/1", root},       {"#/a:b", root},       {"#/%C3", root},
        {"/a/2", "nothing"},  {"/a/-", "nothing"}, {"/a/01", "nothing"},  {"/x", "nothing"},
        {"/a/0/b", "nothing"}};
    for (const auto& [pointer, expected] : rows) {
        /* Nothing terminates it, so that the sanitizer tells when more than the view is read. */
        const std::vector<char> bytes{pointer.begin(), pointer.end()};
        const StringView view{bytes.data(), bytes.size()};
        const rapidjson::Value* const found = valueByPointer(constant, view);
        EXPECT_EQ(found ? compact(*found) : "nothing", expected) << pointer;
        EXPECT_EQ(valueByPointer(document, view), found) << pointer;
    }
}

} // namespace
} // namespace VespermoorEngine::Test
