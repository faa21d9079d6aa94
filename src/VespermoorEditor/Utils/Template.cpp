#include "VespermoorEditor/Utils/Template.h"

#include <cstring>
#include <utility>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Format.h>
#include <VespermoorEngine/Contract.h>

#include "VespermoorEditor/Utils/JsonObject.h"

namespace VespermoorEngine {

namespace {

using namespace Corrade::Containers::Literals;

using Scopes = Containers::ArrayView<const Containers::Reference<JsonObject>>;

/* First byte of the first pair of `byte` from `begin` on, or null where the text ends before. */
const char* findPair(const char* begin, const char* const end, const char byte) {
    while (begin != end) {
        const auto* const found =
            static_cast<const char*>(std::memchr(begin, byte, std::size_t(end - begin)));
        if (!found || found[1] == byte) {
            return found;
        }
        begin = found + 1;
    }
    return nullptr;
}

/* Counting the directives costs less than moving them each time their array grows. */
std::size_t countDirectives(const char* cursor, const char* const end) {
    std::size_t count = 0;
    while ((cursor = findPair(cursor, end, '{')) && (cursor = findPair(cursor + 2, end, '}'))) {
        cursor += 2;
        ++count;
    }
    return count;
}

bool isBlank(const char byte) {
    return byte == ' ' || byte == '\t';
}

StringArray splitTokens(const Containers::StringView body) {
    StringArray tokens{body.size()};
    const char* cursor = body.begin();
    while (cursor != body.end()) {
        const char* const begin = cursor;
        while (cursor != body.end() && !isBlank(*cursor)) {
            ++cursor;
        }
        if (cursor == begin) {
            ++cursor;
        } else {
            tokens.add({begin, std::size_t(cursor - begin)});
        }
    }
    return tokens;
}

/* A value is its text and one NUL. */
Containers::Array<char> makeValue(const Containers::StringView text) {
    Containers::Array<char> value{Corrade::NoInit, text.size() + 1};
    std::memcpy(value.data(), text.data(), text.size());
    value.back() = '\0';
    return value;
}

/* What a token or an expression stands for: its text, and what keeps that text alive. A failure,
   which has printed its reason, has a text with null data. */
struct Evaluation {
    Containers::StringView text;
    Containers::Pointer<JsonObject> accessor;
    Containers::Array<char> formatted;

    explicit operator bool() const { return text.data(); }
};

Containers::Array<char> makeValue(const Evaluation& evaluation) {
    return evaluation ? makeValue(evaluation.text) : Containers::Array<char>{};
}

Evaluation evalLiteral(const Containers::StringView token) {
    if (token.size() < 2 || token.back() != token.front()) {
        Utility::Error{} << "Template::render(): Unterminated string literal";
        return {};
    }
    return {token.slice(1, token.size() - 1), {}, {}};
}

/* JSON strings can hold NUL bytes, which end a text in comparisons and in the output. */
Containers::StringView upToNul(const Containers::StringView text) {
    return text.prefix(text.findOr('\0', text.end()).begin());
}

/* Evaluates expressions against one list of scopes. */
class Evaluator {
public:
    explicit Evaluator(const Scopes searched) : scopes{searched} {}

    Evaluation evalExpression(const StringArrayView& tokens) {
        switch (tokens.size()) {
        case 1:
            return evalSingleTokenExpr(tokens.get(0));
        case 3:
            return evalComparison(tokens);
        default:
            Utility::Error{} << "Template::render(): Number of tokens for expression unsupported:"
                             << tokens.size();
            return {};
        }
    }

private:
    Evaluation evalSingleTokenExpr(const Containers::StringView token) {
        return token.front() == '\'' || token.front() == '"' ? evalLiteral(token) : evalName(token);
    }

    Evaluation evalComparison(const StringArrayView& tokens);
    Evaluation evalName(Containers::StringView token);
    Containers::Pointer<JsonObject> findMember(Containers::StringView name);
    Containers::StringView memberPath(Containers::StringView name);

    Scopes scopes;
    /* Room for the paths that scopes are asked for, so that not every name allocates its own. */
    Containers::Array<char> path;
};

Evaluation Evaluator::evalComparison(const StringArrayView& tokens) {
    /* Both sides first, so that each one that fails says so. The left text is copied, since the
       accessors of a host may share the value that they give. */
    const Containers::Array<char> left = makeValue(evalSingleTokenExpr(tokens.get(0)));
    const Evaluation right = evalSingleTokenExpr(tokens.get(2));
    if (!left.data() || !right) {
        return {};
    }
    const bool equal = Containers::StringView{left.data()} == upToNul(right.text);
    const bool wanted = tokens.get(1) == "=="_s;
    return {equal == wanted ? "true"_s : "false"_s, {}, {}};
}

Evaluation Evaluator::evalName(const Containers::StringView token) {
    Containers::Pointer<JsonObject> accessor = findMember(token);
    if (!accessor || !accessor->exists()) {
        Utility::Error{} << "Template::render(): Undefined name" << token;
        return {};
    }
    const rapidjson::Value& value = accessor->value();
    if (value.IsString()) {
        const Containers::StringView text = accessor->asString();
        return {text.data() ? text : ""_s, std::move(accessor), {}};
    }
    if (value.IsBool()) {
        return {value.IsTrue() ? "true"_s : "false"_s, {}, {}};
    }
    if (value.IsDouble()) {
        Containers::Array<char> formatted = makeValue(Utility::format("{:.4f}", value.GetDouble()));
        const Containers::StringView text{formatted.data(), formatted.size() - 1};
        return {text, {}, std::move(formatted)};
    }
    Utility::Error{} << "Template::render(): Unsupported type for" << token;
    return {};
}

/* `name` with a slash in place of each dot, NUL-terminated. The view lives until the next call. */
Containers::StringView Evaluator::memberPath(const Containers::StringView name) {
    arrayResize(path, Corrade::NoInit, name.size() + 1);
    char* const end = path.data() + name.size();
    std::memcpy(path.data(), name.data(), name.size());
    *end = '\0';
    for (char* dot = path.data();
         (dot = static_cast<char*>(std::memchr(dot, '.', std::size_t(end - dot)))); ++dot) {
        *dot = '/';
    }
    return {path.data(), name.size(), Containers::StringViewFlag::NullTerminated};
}

/* The accessor from the first scope that has `name`, or else the one from the last scope. */
Containers::Pointer<JsonObject> Evaluator::findMember(const Containers::StringView name) {
    const Containers::StringView memberName = memberPath(name);
    Containers::Pointer<JsonObject> accessor;
    for (JsonObject& scope : scopes) {
        accessor = scope.member(memberName);
        if (accessor->exists()) {
            break;
        }
    }
    return accessor;
}

/* The tokens of an `if` behind the keyword, in the place where they are stored. */
MutableStringArrayView conditionOf(const StringArray& tokens) {
    return MutableStringArrayView{tokens.characters.exceptPrefix(tokens.offsets[1]),
                                  tokens.size() - 1};
}

/* Output under construction. Past the reserved room it grows to the exact size needed. */
class Output {
public:
    explicit Output(const std::size_t reserved) {
        arrayResize(buffer, Corrade::NoInit, reserved + 1);
    }

    void append(const Containers::StringView text) {
        std::memcpy(grow(text.size()), text.data(), text.size());
    }

    /* A text that a NUL ends early is filled up with NULs to its size. */
    void appendValue(const Containers::StringView text) {
        char* const end = grow(text.size());
        const Containers::StringView visible = upToNul(text);
        std::memcpy(end, visible.data(), visible.size());
        std::memset(end + visible.size(), '\0', text.size() - visible.size());
    }

    Containers::String release() {
        buffer[size] = '\0';
        const auto deleter = buffer.deleter();
        return Containers::String{buffer.release(), size, deleter};
    }

private:
    /* Makes room for `added` bytes and a terminator and returns where they begin. */
    char* grow(const std::size_t added) {
        const std::size_t end = size;
        size += added;
        if (size >= buffer.size()) {
            arrayResize(buffer, Corrade::NoInit, size + 1);
        }
        return buffer.data() + end;
    }

    Containers::Array<char> buffer;
    std::size_t size = 0;
};

} // namespace

Template::Template(const Containers::StringView source) : text{source.size() + 1}, valid{true} {
    if (!(source.flags() & Containers::StringViewFlag::NullTerminated)) {
        breakContract("Assertion source.flags() & Containers::StringViewFlag::NullTerminated "
                      "failed at ../src/VespermoorEditor/Utils/Template:140");
    }

    const char* cursor = source.data();
    const char* const end = cursor + std::strlen(cursor);
    arrayReserve(directives, countDirectives(cursor, end));
    while (cursor != end) {
        const char* const open = findPair(cursor, end, '{');
        text.add({cursor, std::size_t((open ? open : end) - cursor)});
        if (!open) {
            return;
        }
        const char* const close = addDirective(open + 2, end);
        if (!close) {
            Utility::Error{}
                << "Template::Template(): Syntax error: Unterminated template directive";
            valid = false;
            return;
        }
        cursor = close;
    }
}

Template::~Template() = default;

const char* Template::addDirective(const char* begin, const char* const end) {
    while (isBlank(*begin)) {
        ++begin;
    }
    const char* const close = findPair(begin, end, '}');
    if (!close) {
        return nullptr;
    }
    StringArray tokens = splitTokens({begin, std::size_t(close - begin)});
    if (tokens.size() == 0) {
        return nullptr;
    }
    const Containers::StringView keyword = tokens.get(0);
    const Directive::Type type = keyword == "if"_s    ? Directive::Type::If
                                 : keyword == "end"_s ? Directive::Type::End
                                                      : Directive::Type::Eval;
    arrayAppend(directives, Directive{type, std::move(tokens)});
    return close + 2;
}

bool Template::hasEval(const Containers::StringView name) {
    for (const Directive& directive : directives) {
        if (directive.type == Directive::Type::Eval && directive.tokens.get(0) == name) {
            return true;
        }
    }
    return false;
}

Containers::String Template::render(const Scopes scopes) {
    Evaluator evaluator{scopes};
    Output output{text.dataSize};
    const std::size_t pieces = text.size() + directives.size();
    for (std::size_t piece = 0; piece < pieces; ++piece) {
        const std::size_t index = piece / 2;
        if (piece % 2 == 0) {
            output.append(text.get(index));
            continue;
        }
        const Directive& directive = directives[index];
        if (directive.type == Directive::Type::Eval) {
            const Evaluation value = evaluator.evalExpression(directive.tokens);
            if (!value) {
                return {};
            }
            output.appendValue(value.text);
        } else if (directive.type == Directive::Type::If) {
            const Evaluation condition = evaluator.evalExpression(conditionOf(directive.tokens));
            if (!condition) {
                return {};
            }
            if (condition.text == "true"_s) {
                continue;
            }
            const std::size_t next = findEnd(index + 1);
            if (next == directives.size()) {
                Utility::Error{} << "Template::render(): Missing 'end'";
                return {};
            }
            piece = 2 * next + 1;
        }
    }
    return output.release();
}

std::size_t Template::findEnd(std::size_t directive) const {
    while (directive != directives.size() && directives[directive].type != Directive::Type::End) {
        ++directive;
    }
    return directive;
}

Containers::String
Template::render(const std::initializer_list<const Containers::Reference<JsonObject>> scopes) {
    return render(Scopes{scopes.begin(), scopes.size()});
}

Containers::String Template::render(JsonObject& scope) {
    const Containers::Reference<JsonObject> scopes[]{scope};
    return render(Scopes{scopes, 1});
}

Containers::Array<char> Template::evalDirective(const Scopes scopes,
                                                const StringArrayView& tokens) {
    return makeValue(Evaluator{scopes}.evalExpression(tokens));
}

} // namespace VespermoorEngine
