/* Input: JSON, then JSON Pointers. The last eight bytes are also used as a number. */

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <limits>

#include <sys/mman.h>
#include <unistd.h>

#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Debug.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

#include "Harness.h"
#include "Naive.h"

namespace VespermoorEngine::Fuzz {
namespace {

using Containers::StringView;
using rapidjson::Value;

/* A file without a path, so that parallel runs do not share it. */
class MemoryFile {
public:
    explicit MemoryFile(const std::string& content) : descriptor{memfd_create("json", 0)} {
        expect("memory file",
               write(descriptor, content.data(), content.size()) == ssize_t(content.size()));
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
    int descriptor;
};

std::string print(const Value& value) {
    const auto printed = RapidJsonUtils::jsonToString(value);
    expect("printing", bool(printed));
    return {printed->data(), printed->size()};
}

void testPrinting(const Value& value) {
    const std::string printed = print(value);
    rapidjson::Document again;
    again.Parse<rapidjson::kParseFullPrecisionFlag>(printed.data(), printed.size());
    expect("printed text is JSON: " + printed, !again.HasParseError());
    expectEqual("value of the printed text", Naive::describe(again), Naive::describe(value));
}

void testNumber(const std::string& bytes) {
    double number;
    if (bytes.size() < sizeof number) {
        return;
    }
    std::memcpy(&number, bytes.data() + bytes.size() - sizeof number, sizeof number);
    const double largest = std::numeric_limits<double>::max();
    const double expected =
        std::isnan(number) ? 0.0 : std::fmax(-largest, std::fmin(largest, number));
    const double printed = std::strtod(print(Value{number}).data(), nullptr);
    expectEqual("number", Naive::describe(Value{printed}), Naive::describe(Value{expected}));
}

/* The URI fragment form of a pointer. */
std::string fragment(const std::string& pointer) {
    std::string result = "#";
    for (const char c : pointer) {
        char encoded[4];
        std::snprintf(encoded, sizeof encoded, "%%%02X", static_cast<unsigned char>(c));
        result += std::isalnum(c) || c == '/' || c == '~' ? std::string(1, c) : encoded;
    }
    return result;
}

std::string escaped(const Value& name) {
    std::string result;
    for (const char c : std::string{name.GetString(), name.GetStringLength()}) {
        result += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return result;
}

bool isAscii(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](const char c) { return c & 0x80; });
}

/* Reaches every value by a pointer and by every kind of step. */
void testSteps(Value& root, Value& value, const std::string& pointer) {
    expect("pointer " + pointer, RapidJsonUtils::valueByPointer(root, pointer) == &value);
    expect("fragment of " + pointer,
           !isAscii(pointer) || RapidJsonUtils::valueByPointer(root, fragment(pointer)) == &value);
    const unsigned count = value.IsArray()    ? value.Size()
                           : value.IsObject() ? value.MemberCount()
                                              : 0;
    expect("step past the last", !RapidJsonUtils::getSubValue(value, count).second());
    expect("pointer past the last",
           value.IsObject() ||
               !RapidJsonUtils::valueByPointer(root, pointer + "/" + std::to_string(count)));
    for (unsigned i = 0; i != count; ++i) {
        const auto step = RapidJsonUtils::getSubValue(value, i);
        if (value.IsArray()) {
            expect("element", step.second() == &value[i] && !step.first().data());
            testSteps(root, value[i], pointer + "/" + std::to_string(i));
            continue;
        }
        auto& member = value.MemberBegin()[i];
        const StringView name{member.name.GetString(), member.name.GetStringLength()};
        const Value* const first = Naive::child(value, name);
        expect("member", step.second() == &member.value && step.first() == name);
        expect("member by name", RapidJsonUtils::getMember(value, name) == first &&
                                     RapidJsonUtils::getMember(value, member.name) == first &&
                                     RapidJsonUtils::getSubValue(value, name).second() == first);
        if (first == &member.value) {
            testSteps(root, member.value, pointer + "/" + escaped(member.name));
        }
    }
}

void testPointer(const Value& root, const std::string& pointer) {
    /* Bytes without spare memory after them, so that the sanitizer detects reads past the end. */
    const std::vector<char> exact(pointer.begin(), pointer.end());
    const Value* const ours =
        RapidJsonUtils::valueByPointer(root, StringView{exact.data(), exact.size()});
    expect("pointer " + pointer,
           pointer.find('#') == 0 || ours == Naive::walkPointer(root, pointer));
}

void run(const std::vector<std::string>& input) {
    testNumber(input.back());
    const MemoryFile file{input[0]};
    Corrade::Utility::Error silent{nullptr};
    auto ours = RapidJsonUtils::parseJsonFile(file.path());
    std::optional<rapidjson::Document> expected = Naive::parse(input[0]);
    expectEqual("verdict on " + input[0], ours ? "taken" : std::string{ours.error()},
                expected ? "taken" : "Invalid JSON in file: " + file.path());
    if (!expected) {
        return;
    }
    Value& root = ours.value();
    expectEqual("document", Naive::describe(root), Naive::describe(*expected));
    testPrinting(root);
    testSteps(root, root, "");
    for (std::size_t i = 1; i < input.size(); ++i) {
        testPointer(root, input[i]);
    }
}

} // namespace
} // namespace VespermoorEngine::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* const data, const std::size_t size) {
    VespermoorEngine::Fuzz::run(VespermoorEngine::Fuzz::pieces(data, size));
    return 0;
}
