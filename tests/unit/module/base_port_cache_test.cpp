// The cache of the bridge ports that are members of any VLAN: when it is filled, and what it hands out.
#include "search/base_port.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "base_port_trace.h"
#include "ledger.h"
#include "search_test.h"

namespace {

using stpsnmp::search::cached_members;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

struct Free {
  void operator()(vlan_mgr_baseport_bmp *record) const {
    std::free(record);
    fake::taken_trace();
  }
};
using Record = std::unique_ptr<vlan_mgr_baseport_bmp, Free>;

constexpr char kRefresh[] = "vlan_mgr_get_baseport_membership_range(1,4094)";
constexpr uint32_t kSize = 8192;

std::string rejection(const std::string &text) {
  return logged_rejection("stp_get_cached_baseport_bitmap_all_vlans" + text + "\\n");
}

std::vector<uint32_t> ports_of(const Record &record) {
  std::vector<uint32_t> ports;
  for (uint32_t octet = 0; octet < kSize; ++octet) {
    for (uint32_t bit = 0; record->bits[octet] != 0 && bit < 8; ++bit) {
      if ((record->bits[octet] & 0x80U >> bit) != 0) {
        ports.push_back(8 * octet + bit);
      }
    }
  }
  return ports;
}

class BasePortCache : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    empty_base_port_cache();
    vlans_.bits[0] = 0x40;
    vlans_.bits[511] = 0x02;
  }

  Record get() { return Record(cached_members(&vlans_)); }

  static Trace refreshed() { return {"time(NULL)", kRefresh, "malloc(8196)", "time(NULL)"}; }

  // Fills the cache at this time.
  void fill(int64_t clock, std::vector<uint32_t> ports) {
    fake::platform().clock = clock;
    fake::platform().next_base_ports = {{.ports = std::move(ports)}};
    const Record record = get();
    ASSERT_NE(record, nullptr);
    ASSERT_THAT(fake::taken_trace(), ElementsAreArray(refreshed()));
  }

  // Asks at a time at which the cache must hold these ports, or must be filled again with them.
  void expect_cached(int64_t clock, const std::vector<uint32_t> &ports) {
    expect_handed_out(clock, ports, base_ports_copied());
  }
  void expect_refreshed(int64_t clock, const std::vector<uint32_t> &ports) {
    fake::platform().next_base_ports = {{.ports = ports}};
    expect_handed_out(clock, ports, refreshed());
  }

  stp_vlan_bmp vlans_{STP_VLAN_BITMAP_SIZE, {}};  // VLANs 1 and 4094

 private:
  void expect_handed_out(int64_t clock, const std::vector<uint32_t> &ports, const Trace &trace) {
    fake::platform().clock = clock;
    const Record record = get();
    ASSERT_NE(record, nullptr);
    EXPECT_THAT(fake::taken_trace(), ElementsAreArray(trace)) << "at " << clock;
    EXPECT_EQ(record->size, kSize);
    EXPECT_EQ(ports_of(record), ports) << "at " << clock;
  }
};

TEST_F(BasePortCache, FirstRequestFillsIt) {
  fake::platform().next_base_ports = {{.ports = {0, 129, 4097, 65535}}};
  const Record record = get();
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(fake::taken_trace(), ElementsAre("time(NULL)", "vlan_mgr_get_baseport_membership_range(1,4094)",
                                               "malloc(8196)", "time(NULL)"));
  EXPECT_EQ(record->size, kSize);
  EXPECT_THAT(ports_of(record), ElementsAre(0, 129, 4097, 65535));
}

TEST_F(BasePortCache, LaterRequestsAreAnsweredWithCopies) {
  fill(1000, {0, 129, 4097, 65535});
  for (const int64_t clock : {1000, 1001, 1009, 1010}) {
    expect_cached(clock, {0, 129, 4097, 65535});
  }
}

TEST_F(BasePortCache, IsFilledAgainMoreThanTenSecondsAfterItWasFilled) {
  fill(1000, {129});
  expect_cached(1009, {129});
  expect_cached(1010, {129});
  expect_refreshed(1011, {130});
  expect_cached(1021, {130});
  expect_refreshed(1022, {});
  expect_cached(1032, {});
}

TEST_F(BasePortCache, CopiesDoNotProlongIt) {
  fill(1000, {129});
  for (int64_t clock = 1001; clock <= 1010; ++clock) {
    expect_cached(clock, {129});
  }
  expect_refreshed(1011, {130});
}

TEST_F(BasePortCache, EveryFillReplacesAllPorts) {
  fill(1000, {0, 1, 129, 65535});
  expect_refreshed(1011, {2, 130, 65534});
  expect_cached(1012, {2, 130, 65534});
}

TEST_F(BasePortCache, AgeCountsFromTheReadingBehindTheFill) {
  fake::platform().next_clocks = {1000, 1005};
  fake::platform().next_base_ports = {{.ports = {129}}};
  EXPECT_NE(get(), nullptr);
  expect_cached(1015, {129});
  expect_refreshed(1016, {130});
}

TEST_F(BasePortCache, ClockThatWasSetBackKeepsIt) {
  fill(1000, {129});
  expect_cached(1, {129});
  expect_cached(0, {129});
  expect_cached(1010, {129});
}

// Where a time has 32 bits, there is none ten seconds later: nothing fills the cache again, so it is that of
// another process.
TEST_F(BasePortCache, IsKeptInTheLastSecondsOfTimesOf32Bits) {
  const auto fill_and_ask = [this] {
    constexpr int64_t kLast = INT32_MAX;
    fill(kLast - 1, {129});
    expect_cached(kLast - 1, {129});
    expect_cached(kLast, {129});
    std::_Exit(HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
  };
  EXPECT_EXIT(fill_and_ask(), testing::ExitedWithCode(EXIT_SUCCESS), testing::_);
}

TEST_F(BasePortCache, FillAtTimeZeroCountsAsNone) {
  fill(0, {129});
  expect_refreshed(0, {130});
  expect_refreshed(1, {131});
  expect_cached(11, {131});
}

TEST_F(BasePortCache, FailedFillOfAnEmptyCache) {
  fake::platform().next_base_ports = {{.is_null = true}};
  EXPECT_EQ(get(), nullptr);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("time(NULL)", "vlan_mgr_get_baseport_membership_range(1,4094)",
                          rejection(":LINE vlan_mgr_get_baseport_membership_range returns NULL ")));
  expect_refreshed(1000, {129});
}

TEST_F(BasePortCache, FailedFillKeepsPortsAndAge) {
  fill(1000, {129, 131});
  for (const int64_t clock : {1011, 1020}) {
    fake::platform().clock = clock;
    fake::platform().next_base_ports = {{.is_null = true}};
    EXPECT_EQ(get(), nullptr);
    EXPECT_THAT(fake::taken_trace(),
                ElementsAre("time(NULL)", kRefresh,
                            rejection(":LINE vlan_mgr_get_baseport_membership_range returns NULL ")));
  }
  expect_cached(1010, {129, 131});
  expect_refreshed(1020, {130});
}

TEST_F(BasePortCache, NoVlansAreRefusedAfterTheClockWasRead) {
  EXPECT_EQ(cached_members(nullptr), nullptr);
  EXPECT_THAT(fake::taken_trace(), ElementsAre("time(NULL)", rejection("(LINE): Null Pointer")));
  fill(1000, {129});
  EXPECT_EQ(cached_members(nullptr), nullptr);
  EXPECT_THAT(fake::taken_trace(), ElementsAre("time(NULL)", rejection("(LINE): Null Pointer")));
  expect_cached(1010, {129});
}

TEST_F(BasePortCache, CopyThatCannotBeAllocated) {
  fill(1000, {129});
  ledger::fail_next_malloc();
  EXPECT_EQ(get(), nullptr);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("time(NULL)", "malloc(8196)", rejection("(LINE): Failed to malloc baseport_bmp")));
  expect_cached(1010, {129});
}

TEST_F(BasePortCache, FillHandsOutTheVlanManagersRecordAsItIs) {
  for (const uint32_t size : {0U, 1U, 8191U, 0xFFFFFFFFU}) {
    empty_base_port_cache();
    fake::platform().next_base_ports = {{.ports = {129}, .size = size}};
    const Record record = get();
    ASSERT_NE(record, nullptr);
    EXPECT_THAT(fake::taken_trace(), ElementsAreArray(refreshed())) << "one record is allocated";
    EXPECT_EQ(record->size, size);
    EXPECT_THAT(ports_of(record), ElementsAre(129));
    expect_cached(1000, {129});
  }
}

TEST_F(BasePortCache, RecordsAreTheCallers) {
  fake::platform().next_base_ports = {{.ports = {129}}};
  for (int i = 0; i < 3; ++i) {
    const Record record = get();
    const Record other = get();
    ASSERT_NE(record, nullptr);
    ASSERT_NE(other, nullptr);
    EXPECT_NE(record, other);
    std::fill(std::begin(record->bits), std::end(record->bits), 0xFF);
    record->size = 7;
    EXPECT_EQ(other->size, kSize);
    EXPECT_THAT(ports_of(other), ElementsAre(129));
  }
  fake::taken_trace();
  expect_cached(1000, {129});
}

TEST_F(BasePortCache, OtherVlansAreAnsweredWithTheSamePorts) {
  fill(1000, {129});
  vlans_ = {STP_VLAN_BITMAP_SIZE, {}};
  expect_cached(1010, {129});
  vlans_.bits[2] = 0x80;
  fake::platform().clock = 1011;
  fake::platform().next_base_ports = {{.ports = {130}}};
  EXPECT_THAT(ports_of(get()), ElementsAre(130));
  vlans_.bits[2] = 0;
  fake::taken_trace();
  expect_cached(1011, {130});
}

}  // namespace
