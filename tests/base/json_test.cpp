// JSON that comes back as it was written, and JSON that is none.
#include "base/json_reader.h"
#include "base/json_writer.h"

#include <gtest/gtest.h>

#include <limits>

namespace ruvo {
namespace {

TEST(Json, ComesBackAsItWasWritten) {
    const std::string text = "a \"b\" \\ \x01 \xC2\x9B \xC3\xBC \xE2\x82\xAC \n{[,:]}";
    std::string out;
    CJsonWriter json(out);
    json.Open('{');
    json.Key("text").Text(text);
    json.Key("number").Number(18446744073709551615U);
    json.Key("least").Signed(std::numeric_limits<std::int64_t>::min());
    json.Key("yes").Bool(true);
    json.Key("no").Bool(false);
    json.Key("controls").Text("\x1F\x7F\xC2\x80\xC2\xA0\xC2\x9F");
    json.Key("items").Open('[');
    json.RelayText("\xFC\"\x7F\x80");
    json.Open('{');
    json.Close('}');
    json.Null();
    json.Close(']');
    json.Close('}');
    const auto object = CJsonObject::Read(out);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->Text("text"), text);
    EXPECT_EQ(object->Number("number"), 18446744073709551615U);
    EXPECT_EQ(object->Value("least"), "-9223372036854775808");
    EXPECT_TRUE(object->IsTrue("yes") && object->Value("no") == "false");
    EXPECT_EQ(object->Value("controls"), "\"\\u001F\\u007F\\u0080\xC2\xA0\\u009F\"");
    EXPECT_EQ(JsonItems(object->Value("items")),
              (std::vector<std::string_view>{"\"\xC3\xBC\\\"\\u007F\xE2\x82\xAC\"", "{}", "null"}));
    EXPECT_EQ(object->Text("number") + object->Text("none"), "");
    EXPECT_FALSE(object->Number("text") || object->Number("least") || object->Number("none"));
    for (std::size_t size = 0; size < out.size(); ++size)
        EXPECT_FALSE(CJsonObject::Read(out.substr(0, size))) << size;
}

TEST(Json, BlanksMayStandBetween) {
    const auto object = CJsonObject::Read(" { \"a\" : [ 1,\t2 ] ,\r\n\"b\" : \"\" } \n");
    ASSERT_TRUE(object && object->Value("b") == "\"\"");
    EXPECT_EQ(JsonItems(object->Value("a")), (std::vector<std::string_view>{"1", "2"}));
    std::string_view rest = " {\"b\":{\"c\":1}} \n2";
    EXPECT_EQ(TakeJsonValue(rest), "{\"b\":{\"c\":1}}");
    EXPECT_EQ(rest, "2") << "blanks behind it go, too";
}

TEST(Json, WhatIsNoneIsRefused) {
    for (const char* text :
         {"", "[]", "{}}", "{\"a\"}", "{\"a\":}", "{a:1}", "{\"a\":1,}", "{\"a\":1 \"b\":2}", "{\"a\":[1}",
          "{\"a\":\"\\\"}", "{\"a\":[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]}"})
        EXPECT_FALSE(CJsonObject::Read(text)) << text;
    EXPECT_TRUE(CJsonObject::Read("{\"a\":" + std::string(16, '[') + std::string(16, ']') + "}"));
    for (const char* text : {"[1", "[1,]", "[1]x", "{}", "1", "1]"})
        EXPECT_TRUE(JsonItems(text).empty()) << text;
    for (std::string_view part : {"", "\"a", "[1,]", "{\"a\"}", "{\"a\":}"})
        EXPECT_FALSE(TakeJsonValue(part)) << part;
    for (const char* number : {"1.5", "18446744073709551616"})
        EXPECT_FALSE(CJsonObject::Read("{\"n\":" + std::string(number) + "}")->Number("n")) << number;
    for (const auto& [escaped, meant] :
         {std::pair<const char*, std::string>{"\\u00e4\\u20AC\\/", "\xC3\xA4\xE2\x82\xAC/"},
          {"\\uD800", "\xEF\xBF\xBD"},
          {"\\b\\f\\n\\r\\t\\u0041B", "\b\f\n\r\tAB"},
          {"\\u12", "\x12"},
          {"\\uG", {'\0', 'G'}},
          {"\xFF", "\xC3\xBF"}})
        EXPECT_EQ(CJsonObject::Read("{\"t\":\"" + std::string(escaped) + "\"}")->Text("t"), meant);
}

} // namespace
} // namespace ruvo
