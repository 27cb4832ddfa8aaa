#include "platform/bridge_mib.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bitmap_print.h"

namespace {

TEST(StringNonZeroLength, CountsUpToTheLastOctetThatIsNotZero) {
  const uint8_t octets[] = {0, 1, 0, 0, 2, 0, 0};
  EXPECT_EQ(dot1d_stringNonZeroLength(octets, 7), 5);
  EXPECT_EQ(dot1d_stringNonZeroLength(octets, 5), 5);
  EXPECT_EQ(dot1d_stringNonZeroLength(octets, 4), 2);
  EXPECT_EQ(dot1d_stringNonZeroLength(octets, 1), 0);
  EXPECT_EQ(dot1d_stringNonZeroLength(octets, 0), 0);
  EXPECT_EQ(dot1d_stringNonZeroLength(octets, -1), 0);
  EXPECT_EQ(dot1d_stringNonZeroLength(nullptr, 7), 0);
}

TEST(StringNonZeroLength, OfEachLengthWithTheLastOctetAnywhere) {
  constexpr size_t kLongest = 40;
  constexpr size_t kAround = 8;
  for (const uint8_t around : {uint8_t{0x00}, uint8_t{0xFF}}) {
    for (size_t length = 0; length <= kLongest; ++length) {
      std::vector<uint8_t> octets(kAround + length + kAround, around);
      uint8_t *const string = octets.data() + kAround;
      std::fill_n(string, length, uint8_t{0});
      EXPECT_EQ(dot1d_stringNonZeroLength(string, static_cast<int>(length)), 0);
      for (size_t last = 0; last < length; ++last) {
        string[last] = 0x01;
        ASSERT_EQ(dot1d_stringNonZeroLength(string, static_cast<int>(length)), last + 1) << length;
        string[last] = 0;
      }
    }
  }
}

TEST(BitmapPrint, NoListingIsUnderWay) { EXPECT_EQ(printf_curr_idx, 0); }

}  // namespace
