// JSON objects that nothing separates.
#include "sources/openvswitch/json_stream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/refusal.h"

using namespace stpswitch;

namespace {

std::vector<std::string> objects_in(JsonStream *stream) {
  std::vector<std::string> objects;
  while (const auto object = stream->next()) {
    objects.push_back(*object);
  }
  return objects;
}

std::vector<std::string> objects_in(const std::string &text) {
  JsonStream stream;
  stream.add(text);
  return objects_in(&stream);
}

std::string refusal_of(JsonStream *stream, const std::string &text) {
  try {
    stream->add(text);
    objects_in(stream);
  } catch (const Refusal &refusal) {
    return refusal.what();
  }
  return "none";
}

using Texts = std::vector<std::string>;

TEST(JsonStreams, EndAnObjectAtItsLastBrace) {
  EXPECT_EQ(objects_in(R"({}{"a":1}{"b":{"c":[{}]}})"), Texts({"{}", R"({"a":1})", R"({"b":{"c":[{}]}})"}));
  EXPECT_EQ(objects_in(" \t\r\n{}\n\n {} \n"), Texts({"{}", "{}"}));
  EXPECT_EQ(objects_in(R"({}{"a":)"), Texts({"{}"}));
  EXPECT_EQ(objects_in(""), Texts());
}

TEST(JsonStreams, TakeBracesInStringsForText) {
  EXPECT_EQ(objects_in(R"({"}":"]["}{})"), Texts({R"({"}":"]["})", "{}"}));
  EXPECT_EQ(objects_in(R"({"a":"\"}"}{})"), Texts({R"({"a":"\"}"})", "{}"}));
  EXPECT_EQ(objects_in(R"({"a":"\\"}{})"), Texts({R"({"a":"\\"})", "{}"}));
  EXPECT_EQ(objects_in(R"({"a":"\\\""}{})"), Texts({R"({"a":"\\\""})", "{}"}));
  EXPECT_EQ(objects_in("{\"\xC3\xA9\":\"\xF0\x9F\x98\x80\"}"),
            Texts({"{\"\xC3\xA9\":\"\xF0\x9F\x98\x80\"}"}));
}

TEST(JsonStreams, TakeOctetsInWhateverPieces) {
  const std::string text = R"({"a\"}":["\\",{}]} {"b":"{"}{})";
  const Texts whole = {R"({"a\"}":["\\",{}]})", R"({"b":"{"})", "{}"};
  for (size_t piece = 1; piece <= text.size(); ++piece) {
    JsonStream stream;
    Texts objects;
    for (size_t at = 0; at < text.size(); at += piece) {
      stream.add(text.substr(at, piece));
      for (const std::string &object : objects_in(&stream)) {
        objects.push_back(object);
      }
    }
    EXPECT_EQ(objects, whole) << "in pieces of " << piece;
  }
}

TEST(JsonStreams, RefuseWhatIsNoObject) {
  for (const std::string text : {"[]", "1", "null", "\"{}\"", "}", "{}x", "\xEF\xBB\xBF{}"}) {
    JsonStream stream;
    EXPECT_EQ(refusal_of(&stream, text), "a message is no JSON object") << text;
  }
}

TEST(JsonStreams, RefuseAnObjectThatIsTooLarge) {
  constexpr size_t kMax = 16;
  JsonStream fits(kMax);
  EXPECT_EQ(refusal_of(&fits, R"({"a":"45678901"}{"a":"45678901"})"), "none");
  JsonStream too_large(kMax);
  EXPECT_EQ(refusal_of(&too_large, R"({"a":"456789012"})"), "a message is larger than 16 octets");
  JsonStream endless(kMax);
  EXPECT_EQ(refusal_of(&endless, "{\"" + std::string(1000, 'x')), "a message is larger than 16 octets");
}

TEST(JsonStreams, RefuseAnObjectThatIsTooDeep) {
  const auto nested = [](size_t levels) {
    return "{\"a\":" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
  };
  JsonStream fits;
  EXPECT_EQ(refusal_of(&fits, nested(64)), "none");
  JsonStream too_deep;
  EXPECT_EQ(refusal_of(&too_deep, nested(65)), "a message is nested deeper than 64 levels");
}

}  // namespace
