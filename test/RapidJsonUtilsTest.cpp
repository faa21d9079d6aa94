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
        {
            "a": 18446744073709551615
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
                                                      {1.04, 1, "1.0"}};
    for (const auto& [number, decimals, expected] : rows) {
        EXPECT_EQ(printed(rapidjson::Value{number}, decimals), expected);
    }
    EXPECT_DEATH((void)jsonToString({}, 0),
                 "^RapidJsonUtils::jsonToString\\(\\): maxDecimalPlaces must be greater than 0\n$");
}

std::string nested(const int levels, const std::string& inner = "") {
    return std::string(levels, '[') + inner + std::string(levels, ']');
}

/* The content of the file, or the reason for its refusal. */
std::string parsed(const std::string& path) {
    const ValueOrError<rapidjson::Document> result = parseJsonFile(path.data());
    return result ? compact(result.value()) : text(result.error());
}

TEST(RapidJsonUtilsTest, ParsesJsonAndNothingElse) {
    const TemporaryDirectory directory;
    const std::string path = directory / "a.json";
    const Messages messages;
    std::string wide = "[";
    for (int i = 0; i != maxNesting; ++i) {
        wide += "[],{},";
    }
    wide += "\"" + std::string(maxNesting, '[') + "\"]";
    for (const std::string& json :
         {wide, nested(maxNesting), "{\"a\":[1,2.5,\"x\"]}"s, "[1.7e308]"s, "[\"\xff\"]"s}) {
        writeFile(path, "\xef\xbb\xbf " + json + '\n');
        EXPECT_EQ(parsed(path), json);
    }
    for (const std::string& json :
         {nested(maxNesting + 1), nested(maxNesting, "{}"), std::string(1000000, '['),
          "\xef\xbb\xbf"s, "\xef{}"s, "\xef\xbb{}"s, "[1e309]"s, "[8324234798232463278461.5e300]"s,
          ""s, "/* a */ {}"s, "[1,]"s, "[NaN]"s, "{} {}"s, "{\"a\": [1, 2"s, "{}\0"s, "[1]\0]"s}) {
        writeFile(path, json);
        EXPECT_EQ(parsed(path), "Invalid JSON in file: " + path) << json.substr(0, 100);
    }
    EXPECT_EQ(messages.text(), "");
    EXPECT_EQ(parsed(directory.path()), "File does not exist: " + directory.path());
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

/* The name of a member, if it is one, and the child as JSON. */
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
    const char* const object = R"({"a": 1, "a": 2, "ab": 3, "bb": 4, "": 5, "a/b": 6})";
    const std::pair<StringView, const char*> members[]{
        {"a", "a=1"}, {"bb", "bb=4"}, {"a/b", "a/b=6"}, {"a\0x"_s, "nothing"}, {{}, "=5"}};
    const std::pair<StringView, const char*> elements[]{
        {"1", "6"}, {"2", "nothing"}, {" +1st", "6"}, {"-1", "nothing"}, {"4294967296", "nothing"}};
    for (const auto& [key, expected] : members) {
        EXPECT_EQ(child(object, key), expected) << key.data();
    }
    for (const auto& [key, expected] : elements) {
        EXPECT_EQ(child("[5, 6]", key), expected) << key.data();
    }
    EXPECT_EQ(child("\"a\"", "0"_s) + child("{\"a\": 1}", ""_s), "nothingnothing");
    EXPECT_THROW(child("[5, 6]", StringView{}), std::invalid_argument);
    EXPECT_THROW(child("[5, 6]", "99999999999999999999"_s), std::out_of_range);
    EXPECT_EQ(child(object, 1u), "a=2");
    EXPECT_EQ(child("[5, 6]", 1u), "6");
    EXPECT_EQ(child(object, 6u) + child("[5, 6]", 2u) + child("\"a\"", 0u),
              "nothingnothingnothing");
}

TEST(RapidJsonUtilsTest, MembersAreFoundByLengthAndBytesOrAdded) {
    rapidjson::Document document = parse(R"({"a": 1, "a": 2, "n\u0000m": 3})");
    const rapidjson::Document& constant = document;
    EXPECT_EQ(getMember(document, "a"_s)->GetInt(), 1);
    EXPECT_EQ(getMember(constant, "a"_s), getMember(document, rapidjson::Value{"a"}));
    EXPECT_EQ(getMember(document, "n\0m"_s)->GetInt(), 3);
    EXPECT_EQ(getMember(document, "n"_s), nullptr);
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
        /* Not terminated, so that the sanitizer detects reads past the view. */
        const std::vector<char> bytes{pointer.begin(), pointer.end()};
        const StringView view{bytes.data(), bytes.size()};
        const rapidjson::Value* const found = valueByPointer(constant, view);
        EXPECT_EQ(found ? compact(*found) : "nothing", expected) << pointer;
        EXPECT_EQ(valueByPointer(document, view), found) << pointer;
    }
}

} // namespace
} // namespace VespermoorEngine::Test
