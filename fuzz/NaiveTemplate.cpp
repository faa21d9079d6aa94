/* The template language. */

#include "Naive.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace VespermoorEngine::Fuzz::Naive {

namespace {

/* A text and the tokens of the directive after it. The last piece has no directive. */
struct Piece {
    std::string text;
    std::vector<std::string> tokens;

    bool isEnd() const { return !tokens.empty() && tokens[0] == "end"; }
    bool isIf() const { return !tokens.empty() && tokens[0] == "if"; }
};

std::vector<std::string> splitTokens(const std::string& body) {
    std::vector<std::string> tokens = split(body, " \t");
    tokens.erase(std::remove(tokens.begin(), tokens.end(), ""), tokens.end());
    return tokens;
}

std::vector<Piece> compile(const std::string& source, std::string& messages) {
    std::vector<Piece> pieces;
    std::size_t cursor = 0;
    for (;;) {
        const std::size_t open = source.find("{{", cursor);
        pieces.push_back({source.substr(cursor, open - cursor), {}});
        if (open == std::string::npos) {
            return pieces;
        }
        const std::size_t body = source.find_first_not_of(" \t", open + 2);
        const std::size_t close = source.find("}}", body);
        if (close != std::string::npos) {
            pieces.back().tokens = splitTokens(source.substr(body, close - body));
        }
        if (pieces.back().tokens.empty()) {
            messages += "Template::Template(): Syntax error: Unterminated template directive\n";
            return pieces;
        }
        cursor = close + 2;
    }
}

class Expressions {
public:
    Expressions(const Lookup& lookup, std::string& messages) : lookup{lookup}, messages{messages} {}

    std::optional<std::string> evaluate(const std::vector<std::string>& tokens) {
        if (tokens.size() == 1) {
            return value(tokens[0]);
        }
        if (tokens.size() != 3) {
            return fail("Number of tokens for expression unsupported: " +
                        std::to_string(tokens.size()));
        }
        const std::optional<std::string> left = value(tokens[0]);
        const std::optional<std::string> right = value(tokens[2]);
        if (!left || !right) {
            return {};
        }
        const bool equal = std::strcmp(left->data(), right->data()) == 0;
        return equal == (tokens[1] == "==") ? "true" : "false";
    }

    std::optional<std::string> fail(const std::string& reason) {
        messages += "Template::render(): " + reason + "\n";
        return {};
    }

private:
    std::optional<std::string> value(const std::string& token) {
        if (token.front() == '\'' || token.front() == '"') {
            return token.size() < 2 || token.back() != token.front()
                       ? fail("Unterminated string literal")
                       : token.substr(1, token.size() - 2);
        }
        std::string path = token;
        std::replace(path.begin(), path.end(), '.', '/');
        const rapidjson::Value* const found = lookup(path);
        if (!found) {
            return fail("Undefined name " + token);
        }
        if (found->IsString()) {
            return std::string{found->GetString(), found->GetStringLength()};
        }
        if (found->IsBool()) {
            return found->GetBool() ? "true" : "false";
        }
        if (found->IsDouble()) {
            char number[400];
            std::snprintf(number, sizeof number, "%.4f", found->GetDouble());
            return number;
        }
        return fail("Unsupported type for " + token);
    }

    const Lookup& lookup;
    std::string& messages;
};

/* A zero byte ends the text of a value, and all bytes after it become zero. */
std::string printed(std::string value) {
    std::fill(std::find(value.begin(), value.end(), '\0'), value.end(), '\0');
    return value;
}

} // namespace

Rendered render(const std::string& source, const Lookup& lookup) {
    std::string output, messages;
    const std::vector<Piece> pieces = compile(source.data(), messages);
    Expressions expressions{lookup, messages};
    for (auto piece = pieces.begin(); piece != pieces.end(); ++piece) {
        output += piece->text;
        if (piece->tokens.empty() || piece->isEnd()) {
            continue;
        }
        const auto value =
            expressions.evaluate({piece->tokens.begin() + piece->isIf(), piece->tokens.end()});
        if (!value) {
            return {"", messages};
        }
        if (!piece->isIf()) {
            output += printed(*value);
        } else if (*value != "true") {
            piece = std::find_if(piece, pieces.end(), [](const Piece& p) { return p.isEnd(); });
            if (piece == pieces.end()) {
                expressions.fail("Missing 'end'");
                return {"", messages};
            }
        }
    }
    return {output, messages};
}

bool hasEval(const std::string& source, const std::string& name) {
    std::string messages;
    const std::vector<Piece> pieces = compile(source.data(), messages);
    return std::any_of(pieces.begin(), pieces.end(), [&](const Piece& piece) {
        return !piece.tokens.empty() && !piece.isEnd() && !piece.isIf() && piece.tokens[0] == name;
    });
}

} // namespace VespermoorEngine::Fuzz::Naive
