#ifndef VespermoorEditor_Utils_Template_h
#define VespermoorEditor_Utils_Template_h

#include <cstdint>
#include <initializer_list>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/Reference.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <VespermoorEngine/StringArray.h>

#include "VespermoorEditor/Utils/visibility.h"

namespace VespermoorEngine {

class JsonObject;

/**
 * @brief Text with directives, compiled once and rendered any number of times against JSON scopes.
 *
 * A directive is the text between `{{` and the next `}}`; blanks split it into tokens. `{{ name }}`
 * outputs a value. `{{ if name }}` continues if the value's text is `true`, and otherwise skips to
 * the next `{{ end }}`, without regard to nesting. Instead of a name, both take a quoted literal or
 * a comparison such as ``name == 'text'``; every middle token other than `==` compares for
 * inequality. Dots in a name are steps down. Text outside directives is output byte for byte.
 *
 * Values are text: strings as they are, booleans as `true` and `false`, numbers stored as doubles
 * with four decimals. Nothing else has a text; integers do not either.
 */
class Template {
public:
    /**
     * @brief Compiles @p source, which is expected to be NUL-terminated and is read up to its first
     * NUL.
     *
     * A view of a temporary string is not marked as NUL-terminated: store a string that a function
     * returns in a variable first. The template keeps no view of @p source. An unterminated or
     * empty directive prints `Template::Template(): Syntax error: Unterminated template directive`
     * to `Corrade::Utility::Error` and ends the compilation: the part before it can still be
     * rendered, and @ref isValid() is false.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT explicit Template(Containers::StringView source);

    VESPERMOOR_EDITOR_UTILS_EXPORT ~Template();

    Template(const Template&) = delete;
    Template& operator=(const Template&) = delete;

    /** @brief Whether the source compiled to its end. */
    bool isValid() const { return valid; }

    /**
     * @brief Whether some directive that outputs a value has @p name as its first token.
     *
     * The token is compared as written in the source, with its dots and quotes. A name that only an
     * `if` uses does not count.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT bool hasEval(Containers::StringView name);

    /**
     * @brief Renders against @p scopes. The first scope that has a name gives its value.
     *
     * The scopes are borrowed for the call and only read. The first directive that fails prints its
     * reason to `Corrade::Utility::Error`, as one of
     *
     * -    `Template::render(): Number of tokens for expression unsupported: 2`,
     * -    `Template::render(): Unterminated string literal`,
     * -    `Template::render(): Undefined name user.name`,
     * -    `Template::render(): Unsupported type for user.age`,
     * -    ``Template::render(): Missing 'end'``,
     *
     * and the result is empty; a failed comparison prints a line for each operand that failed. A
     * template that renders to nothing gives an empty result too, and prints nothing. Output has to
     * stay below 2 GiB.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT Containers::String
    render(Containers::ArrayView<const Containers::Reference<JsonObject>> scopes);
    /** @overload */
    VESPERMOOR_EDITOR_UTILS_EXPORT Containers::String
    render(std::initializer_list<const Containers::Reference<JsonObject>> scopes);
    /** @overload */
    VESPERMOOR_EDITOR_UTILS_EXPORT Containers::String render(JsonObject& scope);

    /**
     * @brief Value of the expression of 1 or 3 tokens in @p tokens.
     *
     * The result is owned by the caller and holds the value's text and one NUL, which its size
     * counts. On failure the reason is printed as in @ref render() and the result has null data.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT Containers::Array<char>
    evalDirective(Containers::ArrayView<const Containers::Reference<JsonObject>> scopes,
                  const StringArrayView& tokens);

private:
    struct Directive {
        enum class Type : std::uint8_t { Eval, If, End };

        explicit Directive(const std::size_t sizeHint) : type{}, tokens{sizeHint} {}

        Type type;
        StringArray tokens;
    };

    /* Compiles the directive whose body, which begins with a token, is from `cursor` to `end`. */
    void addDirective(const char* cursor, const char* end, const char* readable);

    /* Index of the first `end` from `directive` on, or the number of directives. */
    std::size_t findEnd(std::size_t directive) const;

    /* Run i is the text right before directive i; a last run may follow the last directive. */
    StringArray text;
    Containers::Array<Directive> directives;
    bool valid;
};

} // namespace VespermoorEngine

#endif
