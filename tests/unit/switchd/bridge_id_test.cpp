#include "model/bridge_id.h"

#include <gtest/gtest.h>

#include "model/refusal.h"

using namespace stpswitch;

namespace {

TEST(BridgeId, IsReadAndPrinted) {
  const BridgeId id = parse_bridge_id("80fE.00005E0053aB");
  EXPECT_EQ(id.priority, 0x80FE);
  EXPECT_EQ(id.address, (MacAddress{0x00, 0x00, 0x5E, 0x00, 0x53, 0xAB}));
  EXPECT_EQ(print_bridge_id(id), "80fe.00005e0053ab");
  EXPECT_EQ(print_bridge_id({}), "0000.000000000000");
}

TEST(BridgeId, IsRefusedInAnyOtherForm) {
  for (const char *const text :
       {"", "8000", "8000.", ".00005e005300", "800.00005e005300", "80000.00005e005300", "8000:00005e005300",
        "8000.00005e00530", "8000.00005e0053000", "8000.00:00:5e:00:53:00", "8g00.00005e005300",
        "8000.00005e00530g", " 8000.00005e005300", "8000.00005e005300 "}) {
    try {
      parse_bridge_id(text);
      ADD_FAILURE() << text;
    } catch (const Refusal &refusal) {
      EXPECT_EQ(refusal.what(),
                "'" + std::string(text) + "' is not a bridge identifier such as 8000.00005e005300");
    }
  }
}

}  // namespace
