// Which characters a terminal may be shown.
#include "base/printable.h"

#include <gtest/gtest.h>

using namespace stpswitch;

namespace {

TEST(PrintableCharacters, HaveOneToFourOctets) {
  EXPECT_EQ(printable_length(" "), 1U);
  EXPECT_EQ(printable_length("~x"), 1U);
  EXPECT_EQ(printable_length("\xC2\xA0x"), 2U);
  EXPECT_EQ(printable_length("\xDF\xBF"), 2U);
  EXPECT_EQ(printable_length("\xE0\xA0\x80"), 3U);
  EXPECT_EQ(printable_length("\xED\x9F\xBF"), 3U);
  EXPECT_EQ(printable_length("\xEE\x80\x80"), 3U);
  EXPECT_EQ(printable_length("\xF0\x90\x80\x80"), 4U);
  EXPECT_EQ(printable_length("\xF4\x8F\xBF\xBFx"), 4U);
}

TEST(PrintableCharacters, AreNoControlCharacters) {
  for (const std::string &text :
       {std::string(1, '\0'), std::string("\n"), std::string("\x1B"), std::string("\x1F"),
        std::string("\x7F"), std::string("\xC2\x80"), std::string("\xC2\x9B"), std::string("\xC2\x9F")}) {
    EXPECT_EQ(printable_length(text), 0U);
  }
}

TEST(PrintableCharacters, AreWholeAndShortestUtf8) {
  EXPECT_EQ(printable_length(""), 0U);
  for (const std::string text :
       {"\x80", "\xBF", "\xC2", "\xC2x", "\xC1\xBF", "\xE2\x82", "\xE2\x82x", "\xE0\x9F\xBF", "\xED\xA0\x80",
        "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"}) {
    EXPECT_EQ(printable_length(text), 0U) << testing::PrintToString(text);
  }
}

TEST(PrintableTexts, HoldNothingElse) {
  EXPECT_TRUE(is_printable(""));
  EXPECT_TRUE(is_printable("B\xC3\xBCro 1"));
  EXPECT_FALSE(is_printable("a\tb"));
  EXPECT_FALSE(is_printable("a\xC2\x9B"));
}

TEST(TextsMadePrintable, KeepWhatCanBePrinted) {
  EXPECT_EQ(made_printable("", 9), "");
  EXPECT_EQ(made_printable("veth0 \xC3\xA9", 9), "veth0 \xC3\xA9");
  EXPECT_EQ(made_printable("a\nb\x1B\xC2\x9B", 9), "a?b???");
  EXPECT_EQ(made_printable("\xFF\xC3", 9), "??");
}

TEST(TextsMadePrintable, EndBehindAWholeCharacter) {
  EXPECT_EQ(made_printable("abcd", 3), "abc");
  EXPECT_EQ(made_printable("ab\xC3\xA9", 3), "ab");
  EXPECT_EQ(made_printable("ab\xC3\xA9", 4), "ab\xC3\xA9");
  EXPECT_EQ(made_printable("a", 0), "");
}

}  // namespace
