#include "VespermoorEditor/Utils/Template.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include <endian.h>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Format.h>
#include <VespermoorEngine/Contract.h>

#include "VespermoorEditor/Utils/JsonObject.h"
#include "VespermoorEditor/Utils/Text.h"

/* A template is compiled into text runs and directives that alternate: run i comes right before
   directive i, and a last run may follow. Both are copied into packed lists, so rendering never
   scans the template: it walks both lists by index, copies runs and evaluates directives. A false
   `if` moves the index to the next `end`.

   Cost: compilation is one scan for delimiters and one for blanks, plus one allocation for each
   directive of up to four tokens. Rendering copies each byte of output once and makes one accessor
   of the host for each name. */

namespace VespermoorEngine {

namespace {

using namespace Corrade::Containers::Literals;

using Scopes = Containers::ArrayView<const Containers::Reference<JsonObject>>;

/* Bytes that are examined at once. Texts in templates are short, so this is faster than calling the
   C library. It is also faster than a loop over bytes, whose exit the processor mispredicts. */
using Block = std::uint64_t;
constexpr std::size_t blockSize = sizeof(Block);
constexpr Block ones = 0x0101010101010101;
constexpr Block highBits = 0x80 * ones;

Block blockAt(const char* const bytes) {
    Block block;
    std::memcpy(&block, bytes, blockSize);
    return block;
}

/* Prints the reason for a failure and returns false. */
template <class... T>
bool fail(const T&... items) {
    Utility::Error error;
    (error << ... << items);
    return false;
}

/* First byte of the first pair of `byte` from `begin` on, or null if there is none. */
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

/* The delimiters of a directive; `close` is null if it is unterminated. */
struct Delimiters {
    const char* open;
    const char* close;
};

Containers::Array<Delimiters> findDirectives(const char* cursor, const char* const end) {
    Containers::Array<Delimiters> found;
    constexpr std::ptrdiff_t commonDistance = 32, maxReserved = 1024;
    arrayReserve(found, std::size_t(std::min((end - cursor) / commonDistance, maxReserved)));
    while (const char* const open = findPair(cursor, end, '{')) {
        const char* const close = findPair(open + 2, end, '}');
        arrayAppend(found, Delimiters{open, close});
        if (!close) {
            break;
        }
        cursor = close + 2;
    }
    return found;
}

Containers::StringView between(const char* const begin, const char* const end) {
    return {begin, std::size_t(end - begin)};
}

bool isBlank(const char byte) {
    return byte <= ' ' && (byte == ' ' || byte == '\t');
}

const char* skipBlanks(const char* cursor, const char* const end) {
    while (cursor != end && isBlank(*cursor)) {
        ++cursor;
    }
    return cursor;
}

/* Position of the first byte of a block that is a blank or below it, or the block's size. */
std::size_t findBlankOrControl(const char* const bytes) {
    const Block block = le64toh(blockAt(bytes));
    /* The subtraction sets the high bit of such bytes, and maybe of bytes after the first one. */
    const Block marks = (block - (' ' + 1) * ones) & ~block & highBits;
    return marks ? std::size_t(__builtin_ctzll(marks)) / 8 : blockSize;
}

/* The first blank from `cursor` on, or `end`. Reads whole blocks, which may reach past `end` but
   not past `readable`. */
const char* endOfToken(const char* cursor, const char* const end, const char* const readable) {
    while (cursor < end) {
        if (std::size_t(readable - cursor) >= blockSize) {
            const std::size_t position = findBlankOrControl(cursor);
            cursor += position;
            if (position == blockSize) {
                continue;
            }
        }
        if (isBlank(*cursor)) {
            break;
        }
        ++cursor;
    }
    return std::min(cursor, end);
}

/* A JSON string can hold NULs; the first one ends the text in comparisons and in the output. */
Containers::StringView upToNul(const Containers::StringView text) {
    return text.prefix(strnlen(text.data(), text.size()));
}

template <std::size_t size>
void copyBlockWithSlashes(const char* const from, char* const to) {
    char block[size];
    std::memcpy(block, from, size);
    for (char& c : block) {
        c = c == '.' ? '/' : c;
    }
    std::memcpy(to, block, size);
}

/* Copies a name with its dots replaced by slashes. The compiler turns each block into a few
   instructions, but only if this function is not inlined. The last block overlaps the one before
   it. */
[[gnu::noinline]] void copyWithSlashes(const char* const name, const std::size_t size,
                                       char* const path) {
    if (size < blockSize) {
        for (std::size_t i = 0; i != size; ++i) {
            copyBlockWithSlashes<1>(name + i, path + i);
        }
        return;
    }
    for (std::size_t i = 0; i + blockSize < size; i += blockSize) {
        copyBlockWithSlashes<blockSize>(name + i, path + i);
    }
    const std::size_t last = size - blockSize;
    copyBlockWithSlashes<blockSize>(name + last, path + last);
}

/* Copies a text and returns true unless it has a NUL. For texts of at least one block. */
bool copyWithoutNul(const char* const from, char* const to, const std::size_t size) {
    Block nuls = 0;
    const auto copy = [&](const std::size_t position) {
        const Block block = blockAt(from + position);
        nuls |= (block - ones) & ~block & highBits;
        std::memcpy(to + position, &block, blockSize);
    };
    for (std::size_t i = 0; i + blockSize < size; i += blockSize) {
        copy(i);
    }
    copy(size - blockSize);
    return !nuls;
}

/* Evaluates expressions against one list of scopes. The text of a value belongs to the accessor,
   which is destroyed after the evaluation. To save a copy, the text is passed to a function, `use`,
   instead of being returned. A failed evaluation prints the reason and returns false. */
class Evaluator {
public:
    explicit Evaluator(const Scopes scopes) : scopes{scopes} {}

    /* Evaluates the tokens from `first` on. */
    template <class Use>
    bool evalExpression(const StringArrayView& tokens, const std::size_t first, const Use& use) {
        const std::size_t count = tokens.size() - first;
        if (count == 1) {
            return evalSingleTokenExpr(tokens.get(first), use);
        }
        if (count == 3) {
            return evalComparison(tokens, first, use);
        }
        return fail("Template::render(): Number of tokens for expression unsupported:", count);
    }

private:
    template <class Use>
    bool evalSingleTokenExpr(const Containers::StringView token, const Use& use) {
        return token.front() == '\'' || token.front() == '"' ? evalLiteral(token, use)
                                                             : evalName(token, use);
    }

    template <class Use>
    bool evalComparison(const StringArrayView& tokens, std::size_t first, const Use& use);
    template <class Use>
    bool evalLiteral(Containers::StringView token, const Use& use);
    template <class Use>
    bool evalName(Containers::StringView token, const Use& use);

    Containers::StringView memberPath(Containers::StringView name);
    /* Not inlined, since names are almost always short. */
    [[gnu::noinline]] char* roomForPath(std::size_t size);

    Scopes scopes;
    /* Text of the left side of a comparison. */
    Containers::Array<char> left;
    char shortPath[64];
    Containers::Array<char> longPath;
};

/* The path for lookups in scopes: NUL-terminated, with slashes instead of dots. Valid until the
   next call. */
inline Containers::StringView Evaluator::memberPath(const Containers::StringView name) {
    const std::size_t size = name.size();
    char* const path = size < sizeof(shortPath) ? shortPath : roomForPath(size + 1);
    copyWithSlashes(name.data(), size, path);
    path[size] = '\0';
    return {path, size, Containers::StringViewFlag::NullTerminated};
}

char* Evaluator::roomForPath(const std::size_t size) {
    arrayResize(longPath, Corrade::NoInit, size);
    return longPath.data();
}

template <class Use>
bool Evaluator::evalComparison(const StringArrayView& tokens, const std::size_t first,
                               const Use& use) {
    /* Both sides are evaluated first, so that each failure prints its reason. The left text is
       copied, since the accessors of a host may share one value. */
    const bool hasLeft =
        evalSingleTokenExpr(tokens.get(first), [this](const Containers::StringView text) {
            const Containers::StringView visible = upToNul(text);
            arrayResize(left, Corrade::NoInit, visible.size());
            std::copy(visible.begin(), visible.end(), left.data());
        });
    bool equal = false;
    const bool hasRight = evalSingleTokenExpr(
        tokens.get(first + 2), [this, &equal](const Containers::StringView text) {
            equal = upToNul(text) == Containers::StringView{left.data(), left.size()};
        });
    if (!hasLeft || !hasRight) {
        return false;
    }
    const bool wanted = tokens.get(first + 1) == "=="_s;
    use(equal == wanted ? "true"_s : "false"_s);
    return true;
}

template <class Use>
bool Evaluator::evalLiteral(const Containers::StringView token, const Use& use) {
    if (token.size() < 2 || token.back() != token.front()) {
        return fail("Template::render(): Unterminated string literal");
    }
    use(token.slice(1, token.size() - 1));
    return true;
}

template <class Use>
bool Evaluator::evalName(const Containers::StringView token, const Use& use) {
    const Containers::StringView path = memberPath(token);
    Containers::Pointer<JsonObject> accessor;
    bool exists = false;
    for (const Containers::Reference<JsonObject>& scope : scopes) {
        accessor = scope->member(path);
        exists = accessor->exists();
        if (exists) {
            break;
        }
    }
    if (!exists) {
        return fail("Template::render(): Undefined name", token);
    }
    const rapidjson::Value& value = accessor->value();
    if (value.IsString()) {
        const char* const text = value.GetString();
        use(text ? Containers::StringView{text, value.GetStringLength()} : ""_s);
    } else if (value.IsBool()) {
        use(value.IsTrue() ? "true"_s : "false"_s);
    } else if (value.IsDouble()) {
        use(Utility::format("{:.4f}", value.GetDouble()));
    } else {
        return fail("Template::render(): Unsupported type for", token);
    }
    return true;
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

    /* A text ends at its first NUL, and is padded with NULs to its size. */
    void appendValue(const Containers::StringView text) {
        const std::size_t size = text.size();
        char* const end = grow(size);
        if (size < blockSize || size > maxInBlocks || !copyWithoutNul(text.data(), end, size)) {
            copyPadded(text.data(), end, size);
        }
    }

    Containers::String release() { return Implementation::takeString(buffer, size); }

private:
    /* The C library is faster for longer texts. */
    static constexpr std::size_t maxInBlocks = 64;

    static void copyPadded(const char* const from, char* const to, const std::size_t size) {
        const std::size_t visible = strnlen(from, size);
        std::memcpy(to, from, visible);
        std::memset(to + visible, '\0', size - visible);
    }

    /* Makes room for `added` bytes and a terminator and returns a pointer to them. */
    char* grow(const std::size_t added) {
        const std::size_t end = size;
        size += added;
        if (size >= buffer.size()) {
            growBuffer();
        }
        return buffer.data() + end;
    }

    /* Not inlined, since there is almost always room. */
    [[gnu::noinline]] void growBuffer() { arrayResize(buffer, Corrade::NoInit, size + 1); }

    Containers::Array<char> buffer;
    std::size_t size = 0;
};

} // namespace

inline void Template::addDirective(const char* cursor, const char* const end,
                                   const char* const readable) {
    Directive& directive = arrayAppend(directives, Corrade::InPlaceInit, std::size_t(end - cursor));
    while (cursor != end) {
        const char* const tokenEnd = endOfToken(cursor, end, readable);
        directive.tokens.add(between(cursor, tokenEnd));
        cursor = skipBlanks(tokenEnd, end);
    }
    const Containers::StringView keyword = directive.tokens.get(0);
    directive.type = keyword == "if"_s    ? Directive::Type::If
                     : keyword == "end"_s ? Directive::Type::End
                                          : Directive::Type::Eval;
}

Template::Template(const Containers::StringView source) : text{source.size() + 1}, valid{true} {
    if (!(source.flags() & Containers::StringViewFlag::NullTerminated)) {
        breakContract("Assertion source.flags() & Containers::StringViewFlag::NullTerminated "
                      "failed at ../src/VespermoorEditor/Utils/Template:140");
    }

    const char* cursor = source.data();
    const char* const end = cursor + std::strlen(cursor);
    const Containers::Array<Delimiters> found = findDirectives(cursor, end);
    arrayReserve(text.offsets, found.size() + 2);
    arrayReserve(directives, found.size());
    for (const auto& [open, close] : found) {
        text.add(between(cursor, open));
        const char* const body = close ? skipBlanks(open + 2, close) : nullptr;
        if (body == close) {
            valid = fail("Template::Template(): Syntax error: Unterminated template directive");
            return;
        }
        addDirective(body, close, end);
        cursor = close + 2;
    }
    if (cursor != end) {
        text.add(between(cursor, end));
    }
}

Template::~Template() = default;

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
    for (std::size_t i = 0; i != directives.size(); ++i) {
        output.append(text.get(i));
        const Directive& directive = directives[i];
        if (directive.type == Directive::Type::Eval) {
            const auto append = [&output](const Containers::StringView value) {
                output.appendValue(value);
            };
            if (!evaluator.evalExpression(directive.tokens, 0, append)) {
                return {};
            }
        } else if (directive.type == Directive::Type::If) {
            bool holds = false;
            const auto test = [&holds](const Containers::StringView value) {
                holds = value == "true"_s;
            };
            if (!evaluator.evalExpression(directive.tokens, 1, test)) {
                return {};
            }
            if (holds) {
                continue;
            }
            i = findEnd(i + 1);
            if (i == directives.size()) {
                fail("Template::render(): Missing 'end'");
                return {};
            }
        }
    }
    if (text.size() > directives.size()) {
        output.append(text.get(directives.size()));
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
    Containers::Array<char> value;
    Evaluator{scopes}.evalExpression(tokens, 0, [&value](const Containers::StringView text) {
        value = Containers::Array<char>{Corrade::NoInit, text.size() + 1};
        std::memcpy(value.data(), text.data(), text.size());
        value.back() = '\0';
    });
    return value;
}

} // namespace VespermoorEngine
