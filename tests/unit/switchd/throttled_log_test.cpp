// Lines that clients cause in whatever number.
#include "server/throttled_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

using namespace stpswitch;

namespace {

constexpr std::chrono::milliseconds kShort{1};
constexpr std::chrono::milliseconds kLong{3'600'000};

std::string lines(int count) {
  std::string text;
  for (int i = 1; i <= count; ++i) {
    text += "stp-switchd: subject: line " + std::to_string(i) + "\n";
  }
  return text;
}

void log(ThrottledLog *log, int count) {
  for (int i = 1; i <= count; ++i) {
    log->log("line " + std::to_string(i));
  }
}

TEST(ThrottledLogs, LetTenLinesThrough) {
  EventLoop loop;
  testing::internal::CaptureStderr();
  {
    ThrottledLog throttled(&loop, "subject", kLong);
    log(&throttled, 10);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), lines(10));
}

TEST(ThrottledLogs, CountTheRestAtTheLatestWhenTheyEnd) {
  EventLoop loop;
  testing::internal::CaptureStderr();
  auto throttled = std::make_unique<ThrottledLog>(&loop, "subject", kLong);
  log(throttled.get(), 1234);
  event_base_loop(loop.base(), EVLOOP_NONBLOCK);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), lines(10));
  testing::internal::CaptureStderr();
  throttled.reset();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: subject: lines about clients that were left out: 1224\n");
}

// The loop, and with it the end of a period, runs in the second half only.
TEST(ThrottledLogs, CountTheRestAtTheEndOfAPeriodAndBeginAnew) {
  EventLoop loop;
  ThrottledLog throttled(&loop, "subject", kShort);
  testing::internal::CaptureStderr();
  log(&throttled, 12);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), lines(10));
  testing::internal::CaptureStderr();
  event_base_loop(loop.base(), EVLOOP_ONCE);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "stp-switchd: subject: lines about clients that were left out: 2\n");
  testing::internal::CaptureStderr();
  log(&throttled, 11);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), lines(10));
}

}  // namespace
