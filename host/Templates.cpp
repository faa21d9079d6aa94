/* Finds the place of a template's failure, which the library's messages do not give.

   A prefix of a template that ends after a directive fails for the same reason as the whole
   template if and only if it includes the directive that fails: the directives before that one
   succeed, and those after it are never reached. So bisection finds the shortest prefix that fails
   for that reason. It costs a logarithmic number of compilations and renderings, and only after a
   failure.

   Two failures need care. A prefix also lacks an 'end' if it ends in text that the whole template
   skips; but no skipped text goes past the last `end`, so only the directives after that one are
   searched. An unterminated directive is not in any prefix; the scan for directives finds it. */

#include "Templates.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <VespermoorEditor/Utils/JsonObject.h>

#include "Failure.h"
#include "Files.h"
#include "TextPlace.h"

namespace VespermoorEngine::Host {

namespace {

using ScopeList = Containers::ArrayView<const Containers::Reference<JsonObject>>;

constexpr const char* missingEnd = "Missing 'end'";

/* Range of a directive in the source, delimiters included. */
struct Directive {
    std::size_t begin;
    std::size_t end;
    bool isEnd;
};

/* All directives of `source`; one that is unterminated or empty is the last. */
std::vector<Directive> directivesOf(const std::string_view source) {
    constexpr std::size_t none = std::string_view::npos;
    std::vector<Directive> directives;
    std::size_t begin = source.find("{{");
    while (begin != none) {
        const std::size_t body =
            std::min(source.find_first_not_of(" \t", begin + 2), source.size());
        const std::size_t close = source.find("}}", body);
        if (close == none || close == body) {
            directives.push_back({begin, source.size(), false});
            break;
        }
        const std::string_view text = source.substr(body, close - body);
        directives.push_back(
            {begin, close + 2, text.substr(0, text.find_first_of(" \t")) == "end"});
        begin = source.find("{{", close + 2);
    }
    return directives;
}

/* Adds a remedy to library messages that puzzle users of other template languages. */
std::string explained(const std::string& reason) {
    if (reason == "Undefined name else") {
        return reason + " (templates have no else; write a second if)";
    }
    if (reason.rfind("Unsupported type for ", 0) == 0) {
        return reason + " (integers, null, arrays and objects have no text; write a string)";
    }
    return reason;
}

/* Joins the library's lines into one reason, without the names of its functions. */
std::string reasonFrom(const std::string& printed) {
    std::istringstream lines{printed};
    std::string reason;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t function = line.find("(): ");
        reason += reason.empty() ? "" : "; ";
        reason += explained(function == std::string::npos ? line : line.substr(function + 4));
    }
    return reason;
}

/* The reason why `action` failed, or nothing. Only the messages tell: empty output can be a
   success. */
template <class Action>
std::string failureOf(const Action& action) {
    PrintedErrors errors;
    action();
    return errors.takeReason();
}

std::string failureOfPrefix(const NamedTemplate& source, const std::size_t size,
                            const ScopeList scopes) {
    const Containers::String prefix{source.source.prefix(size)};
    return failureOf([&] { Template{prefix}.render(scopes); });
}

/* Offset of the directive that makes rendering `source` fail with `reason`. */
std::size_t findFailure(const NamedTemplate& source, const ScopeList scopes,
                        const std::string& reason) {
    const std::vector<Directive> directives =
        directivesOf({source.source.data(), source.source.size()});
    auto first = directives.begin();
    if (reason == missingEnd) {
        first =
            std::find_if(directives.rbegin(), directives.rend(), [](const Directive& directive) {
                return directive.isEnd;
            }).base();
    }
    return std::partition_point(first, directives.end(),
                                [&](const Directive& directive) {
                                    return failureOfPrefix(source, directive.end, scopes) != reason;
                                })
        ->begin;
}

} // namespace

NamedTemplate readTemplate(const Containers::StringView path) {
    return compileTemplate(path, readFile(path));
}

/* The library silently ends a template at a NUL. */
NamedTemplate compileTemplate(const Containers::StringView path, Containers::String source) {
    const std::string_view text{source.data(), source.size()};
    const std::size_t zero = text.find('\0');
    if (zero != std::string_view::npos) {
        throw Failure{textPlace(path, source, zero), "Contains a zero byte"};
    }
    Containers::Pointer<Template> compiled;
    const std::string reason = failureOf([&] { compiled = Containers::pointer<Template>(source); });
    if (!reason.empty()) {
        throw Failure{textPlace(path, source, directivesOf(text).back().begin), reason};
    }
    return {path, std::move(source), std::move(compiled)};
}

std::string PrintedErrors::takeReason() {
    if (printed.tellp() == 0) {
        return {};
    }
    const std::string lines = printed.str();
    printed.str({});
    return reasonFrom(lines);
}

Containers::String render(NamedTemplate& source, const ScopeList scopes, PrintedErrors& errors) {
    Containers::String result = source.compiled->render(scopes);
    /* A failure leaves nothing. This is the quick test. */
    if (!result.isEmpty()) {
        return result;
    }
    const std::string reason = errors.takeReason();
    if (!reason.empty()) {
        const std::size_t offset = findFailure(source, scopes, reason);
        throw Failure{textPlace(source.path, source.source, offset), reason};
    }
    return result;
}

} // namespace VespermoorEngine::Host
