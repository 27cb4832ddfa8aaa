#include "platform/bridge_mib.h"

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

TEST(BitmapPrint, NoListingIsUnderWay) { EXPECT_EQ(printf_curr_idx, 0); }

}  // namespace
