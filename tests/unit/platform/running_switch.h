// A switch program with the library's code beside it.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/program.h"
#include "support/temporary_folder.h"

class RunningSwitchTest : public testing::Test {
 protected:
  // Starts it, and makes the library ask it.
  explicit RunningSwitchTest(const std::string &scenario);
  ~RunningSwitchTest() override;

  // What its operator sets. Returns the control program's error, empty when it has done so.
  std::string set(const std::string &key, const std::string &value) const;

  TemporaryFolder folder_;
  std::string socket_ = folder_.path("switch.sock");
  std::string control_ = folder_.path("control.sock");
  Program switch_;
};
