#include "keys/value.h"

#include <gtest/gtest.h>

#include "model/refusal.h"

using namespace stpswitch;

namespace {

std::string refusal_of(ValueType type, const std::string &text) {
  try {
    read_value(type, text);
  } catch (const Refusal &refusal) {
    return refusal.what();
  }
  return "taken";
}

TEST(Value, ReadsEachTypeAsItPrintsIt) {
  EXPECT_EQ(print_value(read_value(ValueType::kText, "a, b")), "a, b");
  EXPECT_EQ(print_value(read_value(ValueType::kInteger, "-12")), "-12");
  EXPECT_EQ(print_value(read_value(ValueType::kBoolean, "true")), "true");
  EXPECT_EQ(print_value(read_value(ValueType::kBoolean, "false")), "false");
  EXPECT_EQ(print_value(read_value(ValueType::kTextList, "guest,ops")), "guest,ops");
}

TEST(Value, SplitsListsAtCommas) {
  EXPECT_EQ(std::get<TextList>(read_value(ValueType::kTextList, "")), TextList{});
  EXPECT_EQ(std::get<TextList>(read_value(ValueType::kTextList, "a")), TextList{"a"});
  EXPECT_EQ(std::get<TextList>(read_value(ValueType::kTextList, "a,,b")), (TextList{"a", "", "b"}));
}

TEST(Value, RefusesWhatIsNoNumber) {
  EXPECT_EQ(refusal_of(ValueType::kInteger, "abc"), "'abc' is not a number");
  EXPECT_EQ(refusal_of(ValueType::kInteger, ""), "'' is not a number");
  EXPECT_EQ(refusal_of(ValueType::kInteger, "12x"), "'12x' is not a number");
  EXPECT_EQ(refusal_of(ValueType::kInteger, "99999999999999999999"),
            "'99999999999999999999' is not a number");
}

TEST(Value, RefusesWhatIsNoFlag) {
  EXPECT_EQ(refusal_of(ValueType::kBoolean, "yes"), "'yes' is neither true nor false");
  EXPECT_EQ(refusal_of(ValueType::kBoolean, ""), "'' is neither true nor false");
}

}  // namespace
