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
  constexpr int kLongest = 40;
  for (int begin = 0; begin < 8; ++begin) {
    for (int length = 0; length <= kLongest; ++length) {
      // What is behind the string, and before it, does not count.
      std::vector<uint8_t> octets(8 + kLongest + 8, 0xFF);
      uint8_t *const string = octets.data() + begin;
      std::fill_n(string, length, uint8_t{0});
      EXPECT_EQ(dot1d_stringNonZeroLength(string, length), 0);
      for (int last = 0; last < length; ++last) {
        string[last] = 0x01;
        ASSERT_EQ(dot1d_stringNonZeroLength(string, length), last + 1) << length << " octets from " << begin;
        string[last] = 0;
      }
    }
  }
}

TEST(BitmapPrint, NoListingIsUnderWay) { EXPECT_EQ(printf_curr_idx, 0); }

}  // namespace
