// JSON that comes back as it was written, and JSON that is none.
#include "base/json_reader.h"
#include "base/json_writer.h"

#include <gtest/gtest.h>

namespace ruvo {
namespace {

TEST(Json, ComesBackAsItWasWritten) {
    const std::string text = "a \"b\" \\ \x01 \xC2\x9B \xC3\xBC \xE2\x82\xAC \n{[,:]}";
    std::string out;
    CJsonWriter json(out);
    json.Open('{');
    json.Key("text").Text(text);
    json.Key("number").Number(18446744073709551615U);
    json.Key("yes").Bool(true);
    json.Key("items").Open('[');
    json.RelayText("\xFC\"");
    json.Open('{');
    json.Close('}');
    json.Null();
    json.Close(']');
    json.Close('}');
    const auto object = CJsonObject::Read(out);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->Text("text"), text);
    EXPECT_EQ(object->Number("number"), 18446744073709551615U);
    EXPECT_TRUE(object->IsTrue("yes"));
    EXPECT_EQ(JsonItems(object->Value("items")),
              (std::vector<std::string_view>{"\"\xC3\xBC\\\"\"", "{}", "null"}));
    EXPECT_EQ(object->Text("number") + object->Text("none"), "");
    EXPECT_EQ(object->Number("text"), std::nullopt);
    for (std::size_t size = 0; size < out.size(); ++size)
        EXPECT_FALSE(CJsonObject::Read(out.substr(0, size))) << size;
}

TEST(Json, WhatIsNoneIsRefused) {
    for (const char* text :
         {"", "[]", "{}}", "{\"a\"}", "{\"a\":}", "{a:1}", "{\"a\":1,}", "{\"a\":1 \"b\":2}", "{\"a\":[1}",
          "{\"a\":\"\\\"}", "{\"a\":[[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]]}"})
        EXPECT_FALSE(CJsonObject::Read(text)) << text;
    for (const char* text : {"[1", "[1,]", "[1]x", "{}", "1"})
        EXPECT_TRUE(JsonItems(text).empty()) << text;
    for (const auto& [escaped, meant] : {std::pair{"\\u00e4\\u20AC\\/", "\xC3\xA4\xE2\x82\xAC/"},
                                         {"\\uD800", "\xEF\xBF\xBD"},
                                         {"\\u12", "\x12"},
                                         {"\xFF", "\xC3\xBF"}})
        EXPECT_EQ(CJsonObject::Read("{\"t\":\"" + std::string(escaped) + "\"}")->Text("t"), meant);
}

} // namespace
} // namespace ruvo
