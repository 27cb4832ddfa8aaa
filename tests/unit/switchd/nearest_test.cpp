// What misspelt words are taken for.
#include "base/nearest.h"

#include <gtest/gtest.h>

using stpswitch::suggestion;

namespace {

const std::vector<std::string> kWords = {"show", "set", "reset", "ping", "fault", "loop_guard_default"};

TEST(Suggestions, FindAWordWithOneMistake) {
  for (const char *const word : {"sho", "shoow", "shpw", "hsow", "shwo"}) {
    EXPECT_EQ(suggestion(word, kWords), "; did you mean 'show'?") << word;
  }
}

TEST(Suggestions, AllowOneMistakeForEachThreeLetters) {
  EXPECT_EQ(suggestion("fau", {"fault"}), "");
  EXPECT_EQ(suggestion("faultxx", {"fault"}), "; did you mean 'fault'?");
  EXPECT_EQ(suggestion("faultxxx", {"fault"}), "");
  EXPECT_EQ(suggestion("lop_gurd_defalt", kWords), "; did you mean 'loop_guard_default'?");
  EXPECT_EQ(suggestion("x", {"y"}), "; did you mean 'y'?");
}

TEST(Suggestions, TakeTheNearestWordAndOfEquallyNearOnesTheFirst) {
  EXPECT_EQ(suggestion("rset", kWords), "; did you mean 'set'?");
  EXPECT_EQ(suggestion("reset1", {"reset", "reset11", "reset2"}), "; did you mean 'reset'?");
}

TEST(Suggestions, AllowTheLastPartOfAKeyItsOwnMistakesOnly) {
  EXPECT_EQ(suggestion("port.300.nmae", {"port.300.name"}), "; did you mean 'port.300.name'?");
  EXPECT_EQ(suggestion("prot.300.name", {"port.300.name"}), "; did you mean 'port.300.name'?");
  EXPECT_EQ(suggestion("port.300.number", {"port.300.name"}), "");
  EXPECT_EQ(suggestion("port.", {"port"}), "; did you mean 'port'?");
}

TEST(Suggestions, TakeTwoLettersForSwappedOnlyWhereBothAre) {
  EXPECT_EQ(suggestion("sa", {"as"}), "; did you mean 'as'?");
  EXPECT_EQ(suggestion("sa", {"bs"}), "");
  EXPECT_EQ(suggestion("as", {"sb"}), "");
}

TEST(Suggestions, AreNotMadeOutOfNothing) {
  EXPECT_EQ(suggestion("port", {"port"}), "");
  EXPECT_EQ(suggestion("restart", kWords), "");
  EXPECT_EQ(suggestion("show", {}), "");
  EXPECT_EQ(suggestion("", {"show"}), "");
  EXPECT_EQ(suggestion(std::string(201, 'x'), {std::string(200, 'x')}), "");
  EXPECT_NE(suggestion(std::string(200, 'x'), {std::string(199, 'x')}), "");
}

}  // namespace
