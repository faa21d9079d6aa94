/* Reading JSON and stepping through it. */

#include "Naive.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace VespermoorEngine::Fuzz::Naive {

namespace {

std::string text(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength()};
}

bool hasPartOfMark(const std::string& json) {
    const std::string mark = "\xef\xbb\xbf";
    return !json.empty() && mark.find(json[0]) != std::string::npos &&
           json.compare(0, mark.size(), mark) != 0;
}

std::vector<const rapidjson::Value*> children(const rapidjson::Value& value) {
    std::vector<const rapidjson::Value*> result;
    if (value.IsArray()) {
        for (const rapidjson::Value& element : value.GetArray()) {
            result.push_back(&element);
        }
    } else if (value.IsObject()) {
        for (const auto& member : value.GetObject()) {
            result.push_back(&member.value);
        }
    }
    return result;
}

bool isTaken(const rapidjson::Value& value, const int levels) {
    if (value.IsArray() || value.IsObject()) {
        const auto nested = children(value);
        return levels != 0 && std::all_of(nested.begin(), nested.end(), [&](const auto* child) {
                   return isTaken(*child, levels - 1);
               });
    }
    return !value.IsDouble() || std::isfinite(value.GetDouble());
}

} // namespace

std::optional<rapidjson::Document> parse(const std::string& json) {
    rapidjson::MemoryStream memory{json.data(), json.size()};
    rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream{memory};
    rapidjson::Document document;
    document.ParseStream(stream);
    if (document.HasParseError() || hasPartOfMark(json) || json.find('\0') != std::string::npos ||
        !isTaken(document, 1024)) {
        return {};
    }
    return document;
}

std::string describe(const rapidjson::Value& value) {
    if (value.IsString()) {
        return std::to_string(value.GetStringLength()) + "'" + text(value) + "'";
    }
    if (value.IsDouble()) {
        char number[40];
        std::snprintf(number, sizeof number, "%a", value.GetDouble());
        return number;
    }
    if (value.IsNumber()) {
        return value.IsUint64() ? std::to_string(value.GetUint64())
                                : std::to_string(value.GetInt64());
    }
    if (value.IsArray() || value.IsObject()) {
        std::string result = value.IsArray() ? "[" : "{";
        unsigned i = 0;
        for (const rapidjson::Value* const nested : children(value)) {
            result += value.IsObject() ? describe(value.MemberBegin()[i++].name) : "";
            result += describe(*nested) + ",";
        }
        return result + ")";
    }
    return value.IsNull() ? "null" : value.IsTrue() ? "true" : "false";
}

const rapidjson::Value* child(const rapidjson::Value& value, const std::string& step) {
    if (value.IsObject()) {
        for (const auto& member : value.GetObject()) {
            if (text(member.name) == step) {
                return &member.value;
            }
        }
    }
    const bool isIndex = !step.empty() && (step == "0" || step.front() != '0') &&
                         step.find_first_not_of("0123456789") == std::string::npos;
    if (value.IsArray() && isIndex) {
        const unsigned long long index = std::strtoull(step.data(), nullptr, 10);
        return index < value.Size() ? &value[rapidjson::SizeType(index)] : nullptr;
    }
    return nullptr;
}

const rapidjson::Value* walk(const rapidjson::Value& root, const std::string& path) {
    const rapidjson::Value* value = &root;
    for (const std::string& step : split(path, "/")) {
        value = value ? child(*value, step) : nullptr;
    }
    return value;
}

const rapidjson::Value* walkPointer(const rapidjson::Value& root, const std::string& pointer) {
    std::vector<std::string> steps = split(pointer, "/");
    if (!steps[0].empty()) {
        return &root;
    }
    for (std::string& step : steps) {
        for (std::size_t i = 0; (i = step.find('~', i)) != std::string::npos; ++i) {
            const char escaped = i + 1 == step.size() ? 'x' : step[i + 1];
            if (escaped != '0' && escaped != '1') {
                return &root;
            }
            step.replace(i, 2, escaped == '0' ? "~" : "/");
        }
    }
    const rapidjson::Value* value = &root;
    for (auto step = steps.begin() + 1; step != steps.end() && value; ++step) {
        value = child(*value, *step);
    }
    return value;
}

std::vector<std::string> split(const std::string& text, const char* const separators) {
    std::vector<std::string> result;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find_first_of(separators, begin)) != std::string::npos;
         begin = end + 1) {
        result.push_back(text.substr(begin, end - begin));
    }
    result.push_back(text.substr(begin));
    return result;
}

} // namespace VespermoorEngine::Fuzz::Naive
