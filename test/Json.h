#ifndef Vespermoor_Test_Json_h
#define Vespermoor_Test_Json_h

#include <string>

#include <VespermoorEditor/Utils/RapidJson.h>
#include <gtest/gtest.h>

namespace VespermoorEngine::Test {

/** @brief Document of the text @p json; fails the test if that is not JSON. */
inline rapidjson::Document parse(const std::string& json) {
    rapidjson::Document document;
    document.Parse(json.data(), json.size());
    EXPECT_FALSE(document.HasParseError()) << json;
    return document;
}

/** @brief Text of @p value without blanks and line breaks. */
inline std::string compact(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

} // namespace VespermoorEngine::Test

#endif
