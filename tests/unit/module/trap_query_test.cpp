// The trap query by its class codes. It is no export, so the program holds a copy of its own; this is that
// copy's first and only reading of the file.
#include <gtest/gtest.h>

#include "fake_platform.h"
#include "loaded_module.h"
#include "trap_enable.h"

namespace {

TEST(TrapQuery, AnswersForTheThreeClassCodesAndZeroForAnyOther) {
  fake::reset();
  fake_agent() = FakeAgent();
  fake_agent().trap_enable_text = "5";
  EXPECT_EQ(stpsnmp::stp_trap_enable_configured(0x400000), 1);
  EXPECT_EQ(stpsnmp::stp_trap_enable_configured(16777216), 1);
  EXPECT_EQ(stpsnmp::stp_trap_enable_configured(4194304), 1);
  EXPECT_EQ(stpsnmp::stp_trap_enable_configured(8388608), 0);
  for (const uint32_t other : {0U, 1U, 2U, 4U, 5U, 0x200000U, 0x2000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(stpsnmp::stp_trap_enable_configured(other), 0) << other;
  }
  EXPECT_EQ(fake_agent().trap_enable_file_opened, 1);
}

}  // namespace
