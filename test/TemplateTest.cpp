#include "VespermoorEditor/Utils/Template.h"

#include "Json.h"
#include "Support.h"
#include "VespermoorEditor/Utils/JsonObject.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;
using Containers::StringView;
using testing::ElementsAre;

/* The lookups so far: the letter of the scope and the path. */
std::vector<std::string> asked;

/* A value that is only read, or none. All accessors share the value that they return. */
class Place : public JsonObject {
public:
    explicit Place(const rapidjson::Value* const found, std::string letter = "")
        : found{found}, letter{std::move(letter)} {}

    bool exists() override { return found; }
    Containers::Pointer<JsonObject> member(const StringView path) override {
        EXPECT_EQ(path.flags(), Containers::StringViewFlag::NullTerminated);
        EXPECT_EQ(path.data()[path.size()], '\0');
        asked.push_back(letter + text(path));
        const rapidjson::Pointer pointer{('/' + text(path)).data()};
        return Containers::Pointer<Place>{Corrade::InPlaceInit, pointer.Get(*found), letter};
    }
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override { std::abort(); }
    const rapidjson::Value& value() const override {
        static rapidjson::Document shared;
        shared.CopyFrom(*found, shared.GetAllocator());
        return shared;
    }
    rapidjson::Value& mutableValue() override { std::abort(); }

private:
    const rapidjson::Value* found;
    std::string letter;
};

/* The names that the tables use. */
struct Scope {
    Scope() {
        document["noData"].SetString(rapidjson::StringRef(static_cast<const char*>(nullptr), 0));
    }

    rapidjson::Document document = parse(R"({
        "user": {"name": "guest", "": {"x": "below"}},
        "admin": false, "flag": true, "yes": "yes", "trueText": "true", "true": "no literal",
        "ratio": 2.5, "third": 0.33336, "huge": 1e21, "negative": -0.00001, "count": 2,
        "nothing": null, "object": {}, "list": [], "empty": "", "nul": "a\u0000b",
        "nulOther": "a\u0000c", "trueNul": "true\u0000", "noData": 0, "long": "twelve\u0000bytes",
        "aNameThatIsMuchTooLong": {"forAPathThatIsKeptOnTheStack": {"ofTheEvaluation": "long"}}})");
    Place root{&document};
};

TEST(TemplateTest, Renders) {
    const std::pair<const char*, StringView> rows[]{
        {"", ""},
        {"a { b } }} c\n", "a { b } }} c\n"},
        {" \t{{ \tflag\t }}{{admin}} \n", " \ttruefalse \n"},
        {"{{ 'a\n'}}{{ '{{' }}", "a\n{{"},
        {"{{ 'twelve\nbytes'\t== 'twelve\nbytes'}}", "true"},
        {"x{{ end }}y{{ end of block }}z", "xyz"},
        /* Values */
        {"<{{ user.name }}>{{ user/name }}", "<guest>guest"},
        {"{{ user..x }} {{ true }}", "below no literal"},
        {"{{ aNameThatIsMuchTooLong.forAPathThatIsKeptOnTheStack.ofTheEvaluation }}", "long"},
        {"<{{ empty }}{{ noData }}{{ '' }}>", "<>"},
        {"{{ ratio }} {{ third }} {{ negative }}", "2.5000 0.3334 -0.0000"},
        {"{{ huge }}", "1000000000000000000000.0000"},
        {"<{{ nul }}{{ long }}>", "<a\0\0twelve\0\0\0\0\0\0>"_s},
        {"{{ 'a\"b' }} {{ \"it's\" }} {{ 'a\\'' }}", "a\"b it's a\\'"},
        /* Comparisons */
        {"{{ user.name == 'guest' }} {{ user.name == 'root' }}", "true false"},
        {"{{ 'a' x 'b' }} {{ 'a' != 'a' }}", "true false"},
        {"{{ '' == empty }} {{ 'gues' == user.name }}", "true false"},
        {"{{ ratio == '2.5000' }} {{ ratio == '2.5' }}", "true false"},
        {"{{ flag == 'true' }} {{ flag == trueText }}", "true true"},
        {"{{ nul == nulOther }} {{ nul == 'a' }}", "true true"},
        /* Conditions */
        {"{{ if flag }}a{{ end }}b{{ if admin }}c{{ end }}d", "abd"},
        {"{{ if trueText }}a{{ end }}{{if 'true'}}b{{end}}", "ab"},
        {"{{ if trueNul }}a{{ end }}b", "b"},
        {"{{ if user.name == 'guest' }}yes{{ end }}", "yes"},
        {"{{ if flag }}x", "x"},
        {"1{{ if admin }}2{{ if b }}3{{ end }}4{{ end }}5", "145"},
        {"1{{ if flag }}2{{ if admin }}3{{ end }}4{{ end }}5", "1245"},
    };
    Scope scope;
    const Messages messages;
    for (const auto& [source, expected] : rows) {
        Template compiled{source};
        EXPECT_TRUE(compiled.isValid()) << source;
        for (const char* const time : {"once", "again"}) {
            const Containers::String output = compiled.render(scope.root);
            EXPECT_EQ(text(output), text(expected)) << source << ' ' << time;
            EXPECT_EQ(output.data()[output.size()], '\0') << source;
        }
    }
    EXPECT_EQ(messages.text(), "");
}

/* A failure drops the output, but after a syntax error the text before it is rendered. */
TEST(TemplateTest, ReportsErrors) {
    const std::string syntax = "Template(): Syntax error: Unterminated template directive";
    const std::string literal = "render(): Unterminated string literal";
    const std::string x = "render(): Undefined name x";
    const std::string tokens = "render(): Number of tokens for expression unsupported: ";
    const std::string type = "render(): Unsupported type for ";
    struct Row {
        const char* source;
        std::string message;
        const char* output = "";
    };
    const Row rows[]{
        {"abc{{ flag }}{{ x }}{{ y }}", x},
        {"{{ if x }}a{{ end }}b", x},
        {"{{ 'a' == x }}", x},
        {"{{ x ? 'y }}", x + "\nTemplate::" + literal},
        {"{{ user..name }}", "render(): Undefined name user..name"},
        {"{{ iffy }}", "render(): Undefined name iffy"},
        {"{{ a}b }}", "render(): Undefined name a}b"},
        {"a{{ count }}", type + "count"},
        {"a{{ nothing }}", type + "nothing"},
        {"a{{ object }}", type + "object"},
        {"{{ ' }}", literal},
        {"{{ 'a\" }}", literal},
        {"{{ '}}' }}", literal},
        {"{{ 'a b' }}", tokens + "2"},
        {"{{ IF flag }}", tokens + "2"},
        {"{{ a b c d }}", tokens + "4"},
        {"{{ if }}a{{ end }}", tokens + "0"},
        {"{{ end }}{{ if admin }}x", "render(): Missing 'end'"},
        {"{{", syntax},
        {"abc {{ def", syntax, "abc "},
        {"a{{}}b", syntax, "a"},
        {"a{{ \t }}b{{ c", syntax, "a"},
        {"x{{ 'y' }}z{{ ", syntax, "xyz"},
    };
    Scope scope;
    for (const Row& row : rows) {
        const Messages messages;
        Template compiled{row.source};
        EXPECT_EQ(compiled.isValid(), row.message != syntax) << row.source;
        EXPECT_EQ(text(compiled.render(scope.root)), row.output) << row.source;
        EXPECT_EQ(messages.text(), "Template::" + row.message + '\n') << row.source;
    }
}

TEST(TemplateTest, OwnsItsTextEndsAtTheFirstNulAndDoesNotCopyItsOutput) {
    std::string copy =
        text("a text longer than a string holds {{ 'in' }} itself\0{{ never compiled"_s);
    Template compiled{
        StringView{copy.data(), copy.size(), Containers::StringViewFlag::NullTerminated}};
    copy.assign(copy.size(), 'x');
    EXPECT_TRUE(compiled.isValid());
    const Containers::String output = compiled.render({});
    EXPECT_EQ(text(output), "a text longer than a string holds in itself");
    /* A copy has the deleter of a new string, which is null. */
    EXPECT_NE(output.deleter(), nullptr);
}

TEST(TemplateTest, HasEvalComparesTheFirstTokenAsWritten) {
    Template compiled{"{{ a }}{{ b.c == 'x' }}{{ 'lit' }}{{ if d }}{{ y == e }}{{ end f }}"};
    for (const char* const name : {"a", "b.c", "'lit'", "y"}) {
        EXPECT_TRUE(compiled.hasEval(name)) << name;
    }
    for (const char* const name : {"d", "e", "b/c", "lit", "if", "end", "==", "f", "", "aa"}) {
        EXPECT_FALSE(compiled.hasEval(name)) << name;
    }
}

TEST(TemplateTest, FirstScopeWithTheNameGivesTheValue) {
    const rapidjson::Document first = parse(R"({"x": {"y": "1"}})");
    const rapidjson::Document second = parse(R"({"z": "2"})"), third = parse(R"({"z": "3"})");
    Place a{&first, "A:"}, b{&second, "B:"}, c{&third, "C:"};
    asked.clear();
    EXPECT_EQ(text(Template{"{{ x.y }} {{ z }}"}.render({a, b, c})), "1 2");
    EXPECT_THAT(asked, ElementsAre("A:x/y", "A:z", "B:z"));

    /* The text of the left operand outlives the lookup of the right one. */
    EXPECT_EQ(text(Template{"{{ z == x.y }} {{ z == z }}"}.render({a, b})), "false true");

    asked.clear();
    const Messages messages;
    EXPECT_EQ(text(Template{"a{{ .n. }}"}.render({a, b})), "");
    EXPECT_EQ(text(Template{"a{{ n }}"}.render({})), "");
    EXPECT_THAT(asked, ElementsAre("A:/n/", "B:/n/"));
    EXPECT_EQ(messages.text(), "Template::render(): Undefined name .n.\n"
                               "Template::render(): Undefined name n\n");
}

TEST(TemplateTest, EvalDirectiveGivesTextAndTerminator) {
    Scope scope;
    const Containers::Reference<JsonObject> scopes[]{scope.root};
    const std::pair<std::vector<const char*>, StringView> rows[]{
        {{"user.name"}, "guest\0"_s},       {{"nul"}, "a\0b\0"_s}, {{"ratio"}, "2.5000\0"_s},
        {{"'a'", "==", "'a'"}, "true\0"_s}, {{"x"}, ""},           {{}, ""},
    };
    const Messages messages;
    for (const auto& [words, expected] : rows) {
        StringArray tokens{0};
        for (const char* const word : words) {
            tokens.add(word);
        }
        const Containers::Array<char> value = Template{""}.evalDirective(scopes, tokens);
        EXPECT_EQ(std::string(value.data(), value.size()), text(expected));
    }
    EXPECT_EQ(messages.text(), "Template::render(): Undefined name x\n"
                               "Template::render(): Number of tokens for expression unsupported: "
                               "0\n");
}

TEST(TemplateDeathTest, SourceHasToBeTerminated) {
    EXPECT_DEATH(Template{"abc"_s.exceptSuffix(1)},
                 "^Assertion source.flags\\(\\) & Containers::StringViewFlag::NullTerminated "
                 "failed at \\.\\./src/VespermoorEditor/Utils/Template:140\n$");
    EXPECT_DEATH(Template{StringView{}}, "NullTerminated failed");
}

} // namespace
} // namespace VespermoorEngine::Test
