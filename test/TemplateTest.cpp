#include "VespermoorEditor/Utils/Template.h"

#include <new>
#include <vector>

#include "DocumentScope.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;
using Host::DocumentScope;

constexpr const char* scopeJson = R"({
    "user": {"name": "guest", "tags": ["first", {"x": "deep"}]},
    "a/b": "a name with a slash",
    "admin": false, "flag": true, "yes": "yes", "trueText": "true",
    "ratio": 2.5, "third": 0.33336, "huge": 1e21, "negative": -0.00001,
    "count": 2, "nothing": null, "object": {}, "empty": "",
    "true": "not a literal", "nul": "a\u0000b", "nulOther": "a\u0000c", "trueNul": "true\u0000"
})";

struct RenderRow {
    const char* name;
    const char* source;
    Containers::StringView output;
    /* Everything printed, behind `Template::render(): `. */
    const char* printed = "";
};

class TemplateRenderTest : public testing::TestWithParam<RenderRow> {
protected:
    TemplateRenderTest() : scope{document} { document.Parse(scopeJson); }

    rapidjson::Document document;
    DocumentScope scope;
};

std::string withOperation(const std::string& lines) {
    std::string printed;
    std::istringstream stream{lines};
    for (std::string line; std::getline(stream, line);) {
        printed += "Template::render(): " + line + "\n";
    }
    return printed;
}

TEST_P(TemplateRenderTest, Renders) {
    const Messages messages;
    Template source{GetParam().source};
    EXPECT_TRUE(source.isValid());
    /* Twice, since a rendering has to leave the template as it was. */
    for (int i = 0; i != 2; ++i) {
        const Containers::String output = source.render(scope);
        EXPECT_EQ(text(output), text(GetParam().output));
        EXPECT_EQ(output.data()[output.size()], '\0');
    }
    EXPECT_EQ(messages.text(),
              withOperation(GetParam().printed) + withOperation(GetParam().printed));
}

INSTANTIATE_TEST_SUITE_P(Text, TemplateRenderTest,
                         testing::ValuesIn(std::initializer_list<RenderRow>{
                             {"empty", "", ""},
                             {"no directive", "a { b } }} c\n", "a { b } }} c\n"},
                             {"only a directive", "{{ flag }}", "true"},
                             {"adjacent directives", "{{flag}}{{admin}}", "truefalse"},
                             {"blanks outside stay", " \t{{ \tflag\t }} \n", " \ttrue \n"},
                             {"third brace opens the body", "{{{ a }}}", "",
                              "Number of tokens for expression unsupported: 2"},
                             {"single brace in a directive", "{{ a}b }}", "", "Undefined name a}b"},
                             {"line break is no blank", "{{ 'a\n'}}", "a\n"},
                             {"embedded quotes close at the braces", "{{ '}}' }}", "",
                              "Unterminated string literal"},
                             {"opening braces as a literal", "{{ '{{' }}", "{{"},
                             {"end alone", "x{{ end }}y", "xy"},
                             {"end with more tokens", "x{{ end of block }}y", "xy"},
                         }),
                         rowName<RenderRow>);

INSTANTIATE_TEST_SUITE_P(
    Values, TemplateRenderTest,
    testing::ValuesIn(std::initializer_list<RenderRow>{
        {"string", "<{{ user.name }}>", "<guest>"},
        {"slash in place of a dot", "{{ user/name }}", "guest"},
        {"array element", "{{ user.tags.1.x }}", "deep"},
        {"empty string", "<{{ empty }}>", "<>"},
        {"booleans", "{{ flag }} {{ admin }}", "true false"},
        {"double", "{{ ratio }} items", "2.5000 items"},
        {"double is rounded", "{{ third }}", "0.3334"},
        {"huge double", "{{ huge }}", "1000000000000000000000.0000"},
        {"negative zero", "{{ negative }}", "-0.0000"},
        {"integer", "a{{ count }}", "", "Unsupported type for count"},
        {"null", "{{ nothing }}", "", "Unsupported type for nothing"},
        {"object", "{{ object }}", "", "Unsupported type for object"},
        {"array", "{{ user.tags }}", "", "Unsupported type for user.tags"},
        {"undefined", "a{{ user.nam }}", "", "Undefined name user.nam"},
        {"nothing is a literal but quotes", "{{ true }}", "not a literal"},
        {"number is a name", "{{ 1.5 }}", "", "Undefined name 1.5"},
        {"double dot", "{{ user..name }}", "", "Undefined name user..name"},
        {"bytes behind a NUL become NUL", "<{{ nul }}>", "<a\0\0>"_s},
        {"single quotes", "{{ 'a\"b' }}", "a\"b"},
        {"double quotes", "{{ \"it's\" }}", "it's"},
        {"no escapes", "{{ 'a\\'' }}", "a\\'"},
        {"empty literal", "<{{ '' }}>", "<>"},
        {"lone quote", "{{ ' }}", "", "Unterminated string literal"},
        {"quotes of two kinds", "{{ 'abc\" }}", "", "Unterminated string literal"},
        {"literal with a blank", "{{ 'a b' }}", "",
         "Number of tokens for expression unsupported: 2"},
        {"four tokens", "{{ a b c d }}", "", "Number of tokens for expression unsupported: 4"},
    }),
    rowName<RenderRow>);

INSTANTIATE_TEST_SUITE_P(
    Comparisons, TemplateRenderTest,
    testing::ValuesIn(std::initializer_list<RenderRow>{
        {"equal", "{{ user.name == 'guest' }}", "true"},
        {"different", "{{ user.name == 'root' }}", "false"},
        {"any other word negates", "{{ 'a' x 'b' }} {{ 'a' != 'a' }}", "true false"},
        {"text of numbers", "{{ ratio == '2.5000' }} {{ ratio == '2.5' }}", "true false"},
        {"text of booleans", "{{ flag == 'true' }} {{ flag == trueText }}", "true true"},
        {"empty texts", "{{ '' == empty }}", "true"},
        {"prefix is not equal", "{{ 'gues' == user.name }}", "false"},
        {"up to the first NUL", "{{ nul == nulOther }} {{ nul == 'a' }}", "true true"},
        {"left fails", "{{ x == 'a' }}", "", "Undefined name x"},
        {"right fails", "{{ 'a' == x }}", "", "Undefined name x"},
        {"both fail and both say so", "{{ x ? 'y }}", "",
         "Undefined name x\nUnterminated string literal"},
    }),
    rowName<RenderRow>);

INSTANTIATE_TEST_SUITE_P(
    Conditions, TemplateRenderTest,
    testing::ValuesIn(std::initializer_list<RenderRow>{
        {"true", "{{ if flag }}a{{ end }}b", "ab"},
        {"false", "{{ if admin }}a{{ end }}b", "b"},
        {"text that spells true", "{{ if trueText }}a{{ end }}", "a"},
        {"true and a NUL", "{{ if trueNul }}a{{ end }}b", "b"},
        {"other text", "{{ if yes }}a{{ end }}b", "b"},
        {"double", "{{ if ratio }}a{{ end }}b", "b"},
        {"empty text", "{{ if empty }}a{{ end }}b", "b"},
        {"literal", "{{ if 'true' }}a{{ end }}", "a"},
        {"comparison", "{{ if user.name == 'guest' }}yes{{ end }}", "yes"},
        {"no blank", "{{if flag}}a{{end}}", "a"},
        {"undefined name is no false", "{{ if x }}a{{ end }}b", "", "Undefined name x"},
        {"no condition", "{{ if }}a{{ end }}", "",
         "Number of tokens for expression unsupported: 0"},
        {"two tokens", "{{ if a b }}", "", "Number of tokens for expression unsupported: 2"},
        {"keyword in capitals is a name", "{{ IF x }}", "",
         "Number of tokens for expression unsupported: 2"},
        {"keyword as a prefix is a name", "{{ iffy }}", "", "Undefined name iffy"},
        {"skips to the first end", "1{{ if admin }}2{{ if b }}3{{ end }}4{{ end }}5", "145"},
        {"inner false", "1{{ if flag }}2{{ if admin }}3{{ end }}4{{ end }}5", "1245"},
        {"skipped names neither fail nor print", "{{ if admin }}{{ x }}{{ count }}{{ end }}a", "a"},
        {"true needs no end", "{{ if flag }}x", "x"},
        {"false needs an end", "{{ if admin }}x", "", "Missing 'end'"},
        {"end in front does not count", "{{ end }}{{ if admin }}x", "", "Missing 'end'"},
        {"output is dropped on failure", "abc{{ flag }}{{ x }}{{ y }}", "", "Undefined name x"},
    }),
    rowName<RenderRow>);

TEST(TemplateTest, SyntaxErrorKeepsWhatStandsInFront) {
    struct Row {
        const char* source;
        const char* output;
    };
    const Row rows[]{
        {"abc {{ def", "abc "},    {"{{", ""},      {"a{{ \t", "a"},
        {"a{{ b }", "a"},          {"a{{}}b", "a"}, {"a{{ \t }}b{{ c", "a"},
        {"x{{ 'y' }}z{{ ", "xyz"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.source);
        const Messages messages;
        Template source{row.source};
        EXPECT_FALSE(source.isValid());
        EXPECT_EQ(messages.text(),
                  "Template::Template(): Syntax error: Unterminated template directive\n");
        EXPECT_EQ(
            text(source.render(Containers::ArrayView<const Containers::Reference<JsonObject>>{})),
            row.output);
    }
}

TEST(TemplateTest, OwnsItsTextAndEndsAtTheFirstNul) {
    std::string copy = "a{{ 'b' }}c";
    copy += '\0';
    copy += "{{ never compiled";
    Template source{Containers::StringView{copy.data(), copy.size(),
                                           Containers::StringViewFlag::NullTerminated}};
    copy.assign(copy.size(), 'x');
    EXPECT_TRUE(source.isValid());
    EXPECT_EQ(text(source.render({})), "abc");
}

TEST(TemplateTest, HasEvalComparesTheFirstTokenAsWritten) {
    Template source{"{{ a }}{{ b.c == 'x' }}{{ 'lit' }}{{ if d }}{{ y == e }}{{ end f }}"};
    for (const Containers::StringView name : {"a"_s, "b.c"_s, "'lit'"_s, "y"_s}) {
        EXPECT_TRUE(source.hasEval(name)) << text(name);
    }
    for (const Containers::StringView name :
         {"d"_s, "e"_s, "b/c"_s, "lit"_s, "if"_s, "end"_s, "=="_s, "f"_s, ""_s, "aa"_s}) {
        EXPECT_FALSE(source.hasEval(name)) << text(name);
    }
    EXPECT_FALSE(Template{""}.hasEval("a"));
}

/* Answers with one string for one path, and writes down which paths it is asked for. */
class RecordingScope : public JsonObject {
public:
    RecordingScope(std::vector<std::string>& asked, std::string name, std::string path)
        : asked{asked},
          name{std::move(name)},
          path{std::move(path)},
          string{this->name.data(), rapidjson::SizeType(this->name.size())} {}

    bool exists() override { return found; }
    Containers::Pointer<JsonObject> member(const Containers::StringView wanted) override {
        asked.push_back(name + ":" + text(wanted));
        EXPECT_EQ(wanted.flags(), Containers::StringViewFlag::NullTerminated);
        EXPECT_EQ(wanted.data()[wanted.size()], '\0');
        Containers::Pointer<RecordingScope> result{Corrade::InPlaceInit, asked, name, path};
        result->found = text(wanted) == path;
        return result;
    }
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override { std::abort(); }
    const rapidjson::Value& value() const override { return string; }
    rapidjson::Value& mutableValue() override { std::abort(); }

private:
    std::vector<std::string>& asked;
    std::string name;
    std::string path;
    rapidjson::Value string;
    bool found = false;
};

TEST(TemplateTest, ScopesAreAskedInOrderUntilOneHasTheName) {
    std::vector<std::string> asked;
    RecordingScope a{asked, "A", "x/y"};
    RecordingScope b{asked, "B", "z"};
    Template source{"{{ x.y }}{{ z }}"};
    EXPECT_EQ(text(source.render({a, b})), "AB");
    EXPECT_EQ(asked, (std::vector<std::string>{"A:x/y", "A:z", "B:z"}));
    asked.clear();

    RecordingScope both{asked, "C", "z"};
    EXPECT_EQ(text(Template{"{{ z == 'B' }}{{ z }}"}.render({b, both})), "trueB");
    asked.clear();

    const Messages messages;
    EXPECT_EQ(text(Template{"{{ .n. }}"}.render({a, b})), "");
    EXPECT_EQ(asked, (std::vector<std::string>{"A:/n/", "B:/n/"}));
    EXPECT_EQ(messages.text(), "Template::render(): Undefined name .n.\n");
}

/* All its accessors give one value, which the last one decided. */
class SharedScope : public JsonObject {
public:
    explicit SharedScope(rapidjson::Value& shared) : shared{shared} {}

    bool exists() override { return true; }
    Containers::Pointer<JsonObject> member(const Containers::StringView wanted) override {
        letter[0] = wanted[0];
        shared.SetString(rapidjson::StringRef(letter));
        return Containers::Pointer<SharedScope>{Corrade::InPlaceInit, shared};
    }
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override { std::abort(); }
    const rapidjson::Value& value() const override { return shared; }
    rapidjson::Value& mutableValue() override { std::abort(); }

private:
    char letter[2] = "?";
    rapidjson::Value& shared;
};

TEST(TemplateTest, AnOperandIsKeptWhileTheOtherIsEvaluated) {
    rapidjson::Value shared;
    SharedScope scope{shared};
    EXPECT_EQ(text(Template{"{{ a == b }} {{ a == a }}"}.render(scope)), "false true");
}

TEST(TemplateTest, AStringWithoutDataIsEmpty) {
    rapidjson::Document document{rapidjson::kObjectType};
    document.AddMember("x", rapidjson::Value{rapidjson::StringRef("", 0)}, document.GetAllocator());
    document["x"].SetString(rapidjson::StringRef(static_cast<const char*>(nullptr), 0));
    DocumentScope scope{document};
    EXPECT_EQ(text(Template{"<{{ x }}>"}.render(scope)), "<>");
}

TEST(TemplateTest, TheOutputIsNotCopied) {
    const Containers::String output =
        Template{"a text that no string holds in itself, neither here nor there"}.render({});
    /* What was copied has the deleter of a new string, which is none. */
    EXPECT_NE(output.deleter(), nullptr);
}

TEST(TemplateTest, ANameWithoutScopesIsUndefined) {
    const Messages messages;
    EXPECT_EQ(text(Template{"a{{ b }}"}.render({})), "");
    EXPECT_EQ(messages.text(), "Template::render(): Undefined name b\n");
}

TEST(TemplateTest, EvalDirectiveGivesTextAndTerminator) {
    rapidjson::Document document;
    document.Parse(scopeJson);
    DocumentScope scope{document};
    const Containers::Reference<JsonObject> scopes[]{scope};
    const auto eval = [&](const std::initializer_list<const char*> words) {
        StringArray tokens{0};
        for (const char* const word : words) {
            tokens.add(word);
        }
        return Template{""}.evalDirective(scopes, tokens);
    };
    const auto bytes = [](const Containers::Array<char>& value) {
        return value.data() ? std::string(value.data(), value.size()) : "failed";
    };
    EXPECT_EQ(bytes(eval({"user.name"})), std::string("guest\0", 6));
    EXPECT_EQ(bytes(eval({"''"})), std::string(1, '\0'));
    EXPECT_EQ(bytes(eval({"nul"})), std::string("a\0b\0", 4));
    EXPECT_EQ(bytes(eval({"ratio"})), std::string("2.5000\0", 7));
    EXPECT_EQ(bytes(eval({"'a'", "==", "'a'"})), std::string("true\0", 5));
    const Messages messages;
    EXPECT_EQ(bytes(eval({"x"})), "failed");
    EXPECT_EQ(bytes(eval({})), "failed");
    EXPECT_EQ(messages.text(),
              "Template::render(): Undefined name x\n"
              "Template::render(): Number of tokens for expression unsupported: 0\n");
}

TEST(TemplateDeathTest, SourceHasToBeTerminated) {
    EXPECT_DEATH(Template{"abc"_s.exceptSuffix(1)},
                 "^Assertion source.flags\\(\\) & Containers::StringViewFlag::NullTerminated "
                 "failed at \\.\\./src/VespermoorEditor/Utils/Template:140\n$");
    EXPECT_DEATH(Template{Containers::StringView{}}, "NullTerminated failed");
}

} // namespace
} // namespace VespermoorEngine::Test
