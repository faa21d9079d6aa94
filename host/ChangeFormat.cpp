#include "ChangeFormat.h"

#include <VespermoorEditor/Utils/RapidJson.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace VespermoorEngine::Host {

namespace {

using Utf8 = rapidjson::UTF8<>;
using ValidatingWriter =
    rapidjson::Writer<rapidjson::StringBuffer, Utf8, Utf8, rapidjson::CrtAllocator,
                      rapidjson::kWriteValidateEncodingFlag>;

const char* nameOf(const FileWatch::Event event) {
    return event == FileWatch::Event::Remove ? "Remove" : "Modify";
}

std::string base64(const std::string& bytes) {
    constexpr const char* digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = i; j != i + 3; ++j) {
            group = group << 8 | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0u);
        }
        for (int shift = 18; shift >= 0; shift -= 6) {
            text += digits[group >> shift & 63];
        }
    }
    const std::size_t padding = (3 - bytes.size() % 3) % 3;
    return text.replace(text.size() - padding, padding, padding, '=');
}

/* Returns whether `path` is UTF-8. */
bool writeObject(rapidjson::StringBuffer& buffer, const Change& change, const char* const member,
                 const std::string& path) {
    ValidatingWriter writer{buffer};
    writer.StartObject();
    writer.Key("event");
    writer.String(nameOf(change.event));
    writer.Key(member);
    return writer.String(path.data(), rapidjson::SizeType(path.size())) && writer.EndObject();
}

std::string jsonLine(const Change& change) {
    rapidjson::StringBuffer buffer;
    if (!writeObject(buffer, change, "path", change.path)) {
        buffer.Clear();
        writeObject(buffer, change, "pathBase64", base64(change.path));
    }
    return buffer.GetString() + std::string{'\n'};
}

} // namespace

std::string formatted(const Change& change, const ChangeFormat format) {
    if (format == ChangeFormat::Json) {
        return jsonLine(change);
    }
    const std::string name = nameOf(change.event) + std::string{' '};
    return format == ChangeFormat::Null ? name + change.path + '\0'
                                        : name + escaped(change.path) + '\n';
}

} // namespace VespermoorEngine::Host
