#include "VespermoorEditor/Utils/RapidJsonUtils.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;
using RapidJsonUtils::getMember;
using RapidJsonUtils::getOrAddMember;
using RapidJsonUtils::getSubValue;
using RapidJsonUtils::jsonToString;
using RapidJsonUtils::parseJsonFile;
using RapidJsonUtils::valueByPointer;

rapidjson::Document parse(const char* const json) {
    rapidjson::Document document;
    document.Parse(json);
    EXPECT_FALSE(document.HasParseError()) << json;
    return document;
}

std::string printed(const rapidjson::Value& value, const int decimals = 324) {
    const Containers::Optional<Containers::String> json = jsonToString(value, decimals);
    return json ? text(*json) : "nothing";
}

struct PrintRow {
    const char* name;
    rapidjson::Value (*value)();
    int decimals;
    const char* expected;
};

template <class T>
constexpr auto infinity = std::numeric_limits<T>::infinity();

class JsonToStringTest : public testing::TestWithParam<PrintRow> {};

TEST_P(JsonToStringTest, Prints) {
    EXPECT_EQ(printed(GetParam().value(), GetParam().decimals), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    , JsonToStringTest,
    testing::ValuesIn(std::initializer_list<PrintRow>{
        {"integer", [] { return rapidjson::Value{1}; }, 324, "1"},
        {"double", [] { return rapidjson::Value{1.0}; }, 324, "1.0"},
        {"large integer", [] { return rapidjson::Value{18446744073709551615u}; }, 324,
         "18446744073709551615"},
        {"negative zero", [] { return rapidjson::Value{-0.0}; }, 324, "-0.0"},
        {"not a number", [] { return rapidjson::Value{std::nan("")}; }, 324, "0.0"},
        {"negative not a number", [] { return rapidjson::Value{-std::nan("")}; }, 324, "0.0"},
        {"infinity", [] { return rapidjson::Value{infinity<double>}; }, 324,
         "1.7976931348623157e308"},
        {"negative infinity", [] { return rapidjson::Value{-infinity<double>}; }, 324,
         "-1.7976931348623157e308"},
        {"digits are cut not rounded", [] { return rapidjson::Value{1.2399}; }, 2, "1.23"},
        {"zeros left by the cut go", [] { return rapidjson::Value{1.2004}; }, 3, "1.2"},
        {"one digit stays", [] { return rapidjson::Value{1.04}; }, 1, "1.0"},
        {"too small for the limit", [] { return rapidjson::Value{0.0004}; }, 3, "0.0"},
        {"empty object", [] { return rapidjson::Value{rapidjson::kObjectType}; }, 324, "{}"},
        {"empty array", [] { return rapidjson::Value{rapidjson::kArrayType}; }, 324, "[]"},
    }),
    rowName<PrintRow>);

TEST(RapidJsonUtilsTest, PrintsEveryMemberAndElementOnItsOwnLine) {
    const char* const json = R"({
    "z": [
        1,
        {
            "a": null,
            "a": true
        },
        []
    ],
    "b": "tab\tquote\""
})";
    EXPECT_EQ(printed(parse(json)), json);
}

TEST(RapidJsonUtilsTest, PrintsIntoAStream) {
    std::ostringstream out;
    {
        Corrade::Utility::Debug debug{&out};
        Corrade::Utility::Debug& same = debug << "value:" << parse("[0.1]");
        EXPECT_EQ(&same, &debug);
        debug << parse("2");
    }
    EXPECT_EQ(out.str(), "value: [\n    0.1\n] 2\n");
}

TEST(RapidJsonUtilsDeathTest, DecimalPlacesBelowOne) {
    const rapidjson::Value value;
    for (const int decimals : {0, -1}) {
        EXPECT_DEATH((void)jsonToString(value, decimals),
                     "^RapidJsonUtils::jsonToString\\(\\): maxDecimalPlaces must be greater than "
                     "0\n$");
    }
}

std::string nested(const int levels) {
    return std::string(std::size_t(levels), '[') + std::string(std::size_t(levels), ']');
}

struct ParseRow {
    const char* name;
    std::string json;
    /* Empty where the text is refused. */
    std::string expected;
};

class ParseJsonFileTest : public testing::TestWithParam<ParseRow> {};

TEST_P(ParseJsonFileTest, AcceptsJsonAndNothingElse) {
    const TemporaryDirectory directory;
    const std::string path = directory / "a.json";
    writeFile(path, GetParam().json);
    const Messages messages;
    const ValueOrError<rapidjson::Document> result = parseJsonFile(path.data());
    ASSERT_EQ(bool(result), !GetParam().expected.empty());
    if (result) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
        result.value().Accept(writer);
        EXPECT_EQ(buffer.GetString(), GetParam().expected);
    } else {
        EXPECT_EQ(text(result.error()), "Invalid JSON in file: " + path);
    }
    EXPECT_EQ(messages.text(), "");
}

INSTANTIATE_TEST_SUITE_P(
    , ParseJsonFileTest,
    testing::ValuesIn(std::initializer_list<ParseRow>{
        {"object", "{\"a\": [1, 2.5, \"x\"]}", "{\"a\":[1,2.5,\"x\"]}"},
        {"array at the root", " [1] \n", "[1]"},
        {"scalar at the root", "true", "true"},
        {"byte order mark", "\xef\xbb\xbf{}", "{}"},
        {"empty", "", ""},
        {"only a byte order mark", "\xef\xbb\xbf", ""},
        {"comment", "/* a */ {}", ""},
        {"NUL behind the root", std::string("{}\0", 3), ""},
        {"NUL and more behind the root", std::string("[1]\0]", 5), ""},
        {"trailing comma", "[1,]", ""},
        {"not a number literal", "[NaN]", ""},
        {"more behind the root", "{} {}", ""},
        {"half a document", "{\"a\": [1, 2", ""},
        {"as deep as allowed", nested(1024), nested(1024)},
        {"too deep", nested(1025), ""},
        {"far too deep and never closed", std::string(1000000, '['), ""},
        {"objects count too", "{\"a\":" + nested(1024) + "}", ""},
        {"wide is not deep", "[" + std::string(3000, ' ') + "[],[],[]]", "[[],[],[]]"},
        {"brackets in strings", "[\"" + std::string(3, '[') + "\\\"[{\"]", "[\"[[[\\\"[{\"]"},
    }),
    rowName<ParseRow>);

TEST(RapidJsonUtilsTest, BracketsInStringsDoNotNest) {
    const TemporaryDirectory directory;
    writeFile(directory / "a.json", "[\"" + std::string(5000, '[') + "\"]");
    const ValueOrError<rapidjson::Document> result = parseJsonFile((directory / "a.json").data());
    ASSERT_TRUE(result);
    EXPECT_EQ(result.value()[0].GetStringLength(), 5000u);
}

TEST(RapidJsonUtilsTest, ParseJsonFileThatCannotBeRead) {
    const TemporaryDirectory directory;
    for (const std::string& path : {directory / "missing.json", directory.path()}) {
        const Messages messages;
        const ValueOrError<rapidjson::Document> result = parseJsonFile(path.data());
        ASSERT_FALSE(result);
        EXPECT_EQ(text(result.error()), "File does not exist: " + path);
    }
}

TEST(RapidJsonUtilsTest, ResultIsMovableAndGuarded) {
    const TemporaryDirectory directory;
    writeFile(directory / "a.json", "[\"a string longer than what a value holds in place\"]");
    ValueOrError<rapidjson::Document> success =
        parseJsonFile((directory / "a.json").data(), rapidjson::kArrayType);
    const ValueOrError<rapidjson::Document> moved{std::move(success)};
    EXPECT_STREQ(moved.value()[0].GetString(), "a string longer than what a value holds in place");

    Messages messages;
    ValueOrError<rapidjson::Document> failure = parseJsonFile((directory / "b.json").data());
    EXPECT_DEATH((void)failure.value(), "^ValueOrError::value\\(\\): No value\n$");
    EXPECT_DEATH((void)moved.error(), "^ValueOrError::error\\(\\): No error\n$");
    failure = parseJsonFile((directory / "a.json").data());
    const rapidjson::Document taken = std::move(failure).value();
    EXPECT_EQ(taken.Size(), 1u);
}

/* The child as JSON behind its name, or the reason why there is none. */
template <class Key>
std::string child(rapidjson::Value& value, const Key key) {
    try {
        const Containers::Pair<Containers::StringView, rapidjson::Value*> found =
            getSubValue(value, key);
        if (!found.second()) {
            return found.first().data() ? "a name without a value" : "nothing";
        }
        const bool named = found.first().data();
        if (named && found.first().flags() != Containers::StringViewFlag::NullTerminated) {
            return "a name with other flags";
        }
        return (named ? text(found.first()) + "=" : "") + printed(*found.second());
    } catch (const std::invalid_argument&) {
        return "invalid argument";
    } catch (const std::out_of_range&) {
        return "out of range";
    }
}

TEST(RapidJsonUtilsTest, SubValueByKey) {
    struct Row {
        const char* json;
        Containers::StringView key;
        const char* expected;
    };
    const Row rows[]{
        {R"({"a": 1, "ab": 2})", "ab", "ab=2"},
        {R"({"a": 1, "a": 2})", "a", "a=1"},
        {R"({"a/b.c": 1, "a": {"b": 2}})", "a/b.c", "a/b.c=1"},
        {R"({"a": 1})", "a\0x"_s, "nothing"},
        {R"({"a": 1, "": 2})", "", "=2"},
        {R"({"a": 1})", {}, "nothing"},
        {"[5, 6, 7]", "1", "6"},
        {"[5, 6, 7]", "3", "nothing"},
        {"[5, 6, 7]", " +2nd", "7"},
        {"[5, 6, 7]", "-1", "nothing"},
        {"[5, 6, 7]", "x", "invalid argument"},
        {"[5, 6, 7]", "", "invalid argument"},
        {"[5, 6, 7]", {}, "invalid argument"},
        {"[5, 6, 7]", "99999999999999999999", "out of range"},
        {"null", "0", "nothing"},
        {"true", "0", "nothing"},
        {"1", "0", "nothing"},
        {"\"a\"", "0", "nothing"},
    };
    for (const Row& row : rows) {
        rapidjson::Document document = parse(row.json);
        EXPECT_EQ(child(document, row.key), row.expected) << row.json << " " << text(row.key);
    }
}

TEST(RapidJsonUtilsTest, SubValueByIndex) {
    struct Row {
        const char* json;
        unsigned int index;
        const char* expected;
    };
    const Row rows[]{
        {R"({"a": 1, "a": 2})", 1, "a=2"}, {R"({"a": 1})", 1, "nothing"}, {"[5, 6]", 1, "6"},
        {"[5, 6]", 2, "nothing"},          {"[]", 4294967295, "nothing"}, {"null", 0, "nothing"},
        {"\"a\"", 0, "nothing"},           {"7", 0, "nothing"},
    };
    for (const Row& row : rows) {
        rapidjson::Document document = parse(row.json);
        EXPECT_EQ(child(document, row.index), row.expected) << row.json << " " << row.index;
    }
}

TEST(RapidJsonUtilsTest, MembersAreFoundByLengthAndBytes) {
    rapidjson::Document document = parse(R"({"name": 1, "name": 2, "n\u0000m": 3})");
    const rapidjson::Document& constant = document;
    EXPECT_EQ(getMember(document, "name"_s)->GetInt(), 1);
    EXPECT_EQ(getMember(constant, "name"_s), getMember(document, rapidjson::Value{"name"}));
    EXPECT_EQ(getMember(document, "n\0m"_s)->GetInt(), 3);
    EXPECT_EQ(getMember(document, "nam"_s), nullptr);
    EXPECT_EQ(getMember(constant, "names"_s), nullptr);
    EXPECT_EQ(getMember(document, rapidjson::Value{"x"}), nullptr);
}

TEST(RapidJsonUtilsTest, GetOrAddMemberAddsOnce) {
    rapidjson::Document document = parse(R"({"a": 1})");
    EXPECT_EQ(getOrAddMember(document, "a", document.GetAllocator()).GetInt(), 1);
    {
        const std::string name = "a name that ends before the document";
        EXPECT_TRUE(getOrAddMember(document, name.data(), document.GetAllocator()).IsObject());
    }
    getOrAddMember(document, "a name that ends before the document", document.GetAllocator())
        .SetInt(2);
    getOrAddMember(document, {}, document.GetAllocator());
    EXPECT_EQ(printed(document),
              "{\n    \"a\": 1,\n    \"a name that ends before the document\": 2,"
              "\n    \"\": {}\n}");
    EXPECT_EQ(
        getOrAddMember(document, "a name that ends before the document", document.GetAllocator())
            .GetInt(),
        2);
}

TEST(RapidJsonUtilsTest, ValueByPointer) {
    struct Row {
        Containers::StringView pointer;
        const char* expected;
    };
    const Row rows[]{
        {"/a/1/b", "7"},     {"#/a/1/b", "7"},
        {"/c~1d", "8"},      {"/a/1/bc"_s.exceptSuffix(1), "7"},
        {"", "root"},        {{}, "root"},
        {"a/1", "root"},     {"/a/2", "nothing"},
        {"/a/-", "nothing"}, {"/a/01", "nothing"},
        {"/x", "nothing"},
    };
    rapidjson::Document document = parse(R"({"a": [0, {"b": 7}], "c/d": 8})");
    const rapidjson::Document& constant = document;
    for (const Row& row : rows) {
        const rapidjson::Value* const found = valueByPointer(constant, row.pointer);
        EXPECT_EQ(valueByPointer(document, row.pointer), found);
        EXPECT_EQ(!found               ? "nothing"
                  : found == &document ? "root"
                                       : printed(*found),
                  row.expected)
            << text(row.pointer);
    }
}

} // namespace
} // namespace VespermoorEngine::Test
