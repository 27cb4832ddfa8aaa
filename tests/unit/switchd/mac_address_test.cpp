#include "model/mac_address.h"

#include <gtest/gtest.h>

#include "model/refusal.h"
#include "support/octets.h"

using namespace stpswitch;

namespace {

TEST(MacAddresses, AreReadInAnyCase) {
  EXPECT_EQ(hex(parse_mac_address("00:00:5e:00:53:2a")), "00005e00532a");
  EXPECT_EQ(hex(parse_mac_address("AB:cD:Ef:01:89:FF")), "abcdef0189ff");
}

TEST(MacAddresses, ArePrintedInLowerCase) {
  EXPECT_EQ(print_mac_address({0x00, 0x0A, 0xB1, 0x00, 0x53, 0xFF}), "00:0a:b1:00:53:ff");
}

TEST(MacAddresses, AreRefusedInAnyOtherForm) {
  for (const char *const text : {"",
                                 ":",
                                 "00",
                                 "00:00:5e:00:53",
                                 "00:00:5e:00:53:",
                                 ":00:00:5e:00:53:00",
                                 "00:00:5e:00:53:00:",
                                 "00:00:5e:00:53:00:00",
                                 "0:0:5e:0:53:0",
                                 "00:00:5e:00:53:0",
                                 "00:00:5e:00:53:000",
                                 "000:00:5e:00:53:00",
                                 "00-00-5e-00-53-00",
                                 "00:00:5e:00-53:00",
                                 "00005e005300",
                                 "0000.5e00.5300",
                                 "00:00:5g:00:53:00",
                                 "00:00:5e:00:53:-1",
                                 "00:00:5e:00:53:+1",
                                 "00:00:5e:00:53:0x",
                                 "00:00:5e:00:53: 1",
                                 " 00:00:5e:00:53:00",
                                 "00:00:5e:00:53:00 ",
                                 "00::00:5e:00:53:00"}) {
    try {
      parse_mac_address(text);
      ADD_FAILURE() << text;
    } catch (const Refusal &refusal) {
      EXPECT_EQ(refusal.what(), "'" + std::string(text) + "' is not a MAC address such as 00:00:5e:00:53:00");
    }
  }
}

}  // namespace
