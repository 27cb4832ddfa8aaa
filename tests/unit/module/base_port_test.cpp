// Bridge ports of the tables that are indexed by them alone: the exact check, and the walk through a set of
// ports that the VLAN manager knows, with its listing.
#include "search/base_port.h"

#include <algorithm>
#include <bitset>
#include <random>

#include "base_port_trace.h"
#include "platform/bitmap_print.h"
#include "search_test.h"

namespace {

using stpsnmp::search::find_base_port;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr uint32_t kPort129 = 0x1A000001;
constexpr uint32_t kPort130 = 0x1A000002;
constexpr uint32_t kPort131 = 0x1A000003;
constexpr uint32_t kChannel3 = 0x16000003;

constexpr uint32_t kGiven = 7777;  // what the interface index holds before a call

std::string line(const std::string &text) {
  return logged("validate_port_id_for_snmp_search_new" + text + "\\n");
}

std::string rejection(const std::string &text) {
  return logged_rejection("validate_port_id_for_snmp_search_new" + text + "\\n");
}

class BasePort : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    empty_base_port_cache();
    printf_curr_idx = 0;
    vlans_.bits[1] = 0x20;
  }

  int validate(uint32_t mode, uint16_t port, uint8_t selector = 0, bool use_cache = false) {
    port_ = port;
    if_index_ = kGiven;
    return find_base_port(static_cast<cmd_action>(mode), selector, &vlans_, use_cache, &port_, &if_index_)
               ? 0
               : -1;
  }

  static void members_are(std::vector<uint32_t> ports) {
    fake::platform().next_base_ports = {{.ports = std::move(ports)}};
  }

  void expect_found(uint16_t port, uint32_t if_index) const {
    EXPECT_EQ(port_, port);
    EXPECT_EQ(if_index_, if_index);
  }

  void expect_unchanged(uint16_t port) const {
    EXPECT_EQ(port_, port);
    EXPECT_EQ(if_index_, kGiven);
  }

  stp_vlan_bmp vlans_{STP_VLAN_BITMAP_SIZE, {}};  // VLAN 10
  uint16_t port_ = 0;
  uint32_t if_index_ = 0;
};

// Exact.

class ExactBasePort : public BasePort {
 protected:
  int validate_exact(uint16_t port) { return validate(kGet, port); }
};

TEST_F(ExactBasePort, StandAlonePortIsAccepted) {
  fake::platform().interfaces = {{kPort129, 129}, {.if_index = kChannel3, .port = 4099, .type = 22}};
  EXPECT_EQ(validate_exact(129), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x1A000001)",
                          "pcm_get_pc_for_port(0x1A000001)"));
  expect_found(129, kPort129);
  EXPECT_EQ(validate_exact(4099), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("stp_dot1dportnum2ifindex(4099)", "stp_valid_if_index(0x16000003)",
                          "pcm_get_pc_for_port(0x16000003)"));
  expect_found(4099, kChannel3);
}

TEST_F(ExactBasePort, LowestAndHighestPort) {
  for (const uint16_t port : std::initializer_list<uint16_t>{1, 65535}) {
    fake::platform().interfaces = {{kPort129, port}};
    EXPECT_EQ(validate_exact(port), 0);
    expect_found(port, kPort129);
  }
}

TEST_F(ExactBasePort, WalksRulesDoNotMatter) {
  fake::platform().interfaces = {
      {.if_index = kPort129, .port = 129, .is_base_port = false, .oper_status = 2}};
  for (const bool use_cache : {false, true}) {
    EXPECT_EQ(validate(kGet, 129, 1, use_cache), 0);
    EXPECT_THAT(fake::taken_trace(), ElementsAreArray(exact_port(129, kPort129)));
    expect_found(129, kPort129);
  }
}

TEST_F(ExactBasePort, NeedsNoVlans) {
  fake::platform().interfaces = {{kPort129, 129}};
  uint16_t port = 129;
  EXPECT_TRUE(find_base_port(CMD_ACTION_GET, 0, nullptr, false, &port, &if_index_));
  EXPECT_TRUE(find_base_port(CMD_ACTION_GET, 0, nullptr, true, &port, &if_index_));
  EXPECT_EQ(if_index_, kPort129);
}

TEST_F(ExactBasePort, PortZeroFailsWithoutAnyCall) {
  fake::platform().next_if_indexes = {kPort129};
  fake::platform().interfaces = {{kPort129, 129}};
  EXPECT_EQ(validate_exact(0), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(logged_rejection("\\nvalidate_port_id_for_snmp_search_new(LINE): returning FAILURE.\\n")));
  expect_unchanged(0);
}

TEST_F(ExactBasePort, PortWithoutAnInterface) {
  EXPECT_EQ(validate_exact(129), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("stp_dot1dportnum2ifindex(129)",
                  logged_rejection("\\nvalidate_port_id_for_snmp_search_new(LINE): returning FAILURE.\\n")));
  expect_unchanged(129);
}

TEST_F(ExactBasePort, PortOfAnUnusableInterface) {
  fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .is_usable = false}};
  EXPECT_EQ(validate_exact(129), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x1A000001)",
                  logged_rejection("\\nvalidate_port_id_for_snmp_search_new(LINE): returning FAILURE.\\n")));
  expect_unchanged(129);
}

TEST_F(ExactBasePort, PortOfInterfaceZero) {
  fake::platform().interfaces = {{0, 129}};
  EXPECT_EQ(validate_exact(129), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x00000000)",
                  logged_rejection("\\nvalidate_port_id_for_snmp_search_new(LINE): ifindex == 0\\n")));
  expect_unchanged(129);
}

TEST_F(ExactBasePort, MembershipThatCannotBeToldFails) {
  fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .is_known_to_channels = false}};
  EXPECT_EQ(validate_exact(129), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x1A000001)",
                  "pcm_get_pc_for_port(0x1A000001)",
                  logged_rejection("stp_is_member_port_of_pc(LINE): Failed to read pcm ifdb for 436207617 "
                                   "Error: 9\\n"),
                  rejection("(LINE): Failed to check member port in PC. ifindex 0x1a000001")));
  expect_unchanged(129);
}

TEST_F(ExactBasePort, MemberOfAChannelIsNoRow) {
  fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .channel_if_index = kChannel3}};
  EXPECT_EQ(validate_exact(129), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre(
          "stp_dot1dportnum2ifindex(129)", "stp_valid_if_index(0x1A000001)",
          "pcm_get_pc_for_port(0x1A000001)",
          logged_rejection("stp_is_member_port_of_pc(LINE): 0x1a000001 is part of port-channel 0x16000003"),
          line("(LINE): Port 0x1a000001 is a member of PC, return no such inst")));
  expect_unchanged(129);
}

// Next.

class NextBasePort : public BasePort {
 protected:
  int validate_next(uint16_t port, uint8_t selector = 0) { return validate(kGetNext, port, selector); }

  static Trace fetched() { return {"vlan_mgr_get_baseport_membership_range(10)", "malloc(8196)"}; }

  static Trace listed(const std::string &list) {
    return {rejection(":LINE Printing baseport bitset"), logged_rejection(list + "\\n")};
  }

  // The question whether a port of the set may be shown.
  static Trace candidate(int port, uint32_t if_index, int selector = 0) {
    return {
        "stp_dot1dportnum2ifindex(" + std::to_string(port) + ")",
        line("(LINE) found next port ifindex: " + std::to_string(if_index)),
        "check_if_valid_base_port_ifindex(" + fake::hex(if_index) + ", " + std::to_string(selector) + ")"};
  }

  static Trace found(int port, uint32_t if_index) {
    const std::string index = std::to_string(if_index);
    return {rejection("(LINE) found what we wanted ifindex: " + index), "free(8196)",
            logged("\\nvalidate_port_id_for_snmp_search_new(LINE): return SUCCESS with  port_id(" +
                   std::to_string(port) + "), in_if_index(" + index + "), ret_if_index(" + index + ")\\n")};
  }

  static Trace nothing_left() {
    return {rejection("(LINE) No next port available in bitmap, return FAILURE"), "free(8196)"};
  }
};

TEST_F(NextBasePort, FromPortZeroIsTheLowestMember) {
  fake::platform().interfaces = {{kPort130, 130}, {kPort129, 129}};
  members_are({130, 129, 131});
  EXPECT_EQ(validate_next(0), 0);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("vlan_mgr_get_baseport_membership_range(10)", "malloc(8196)",
                          rejection(":LINE Printing baseport bitset"), logged_rejection("129-131\\n"),
                          rejection("(LINE) found next port : 129"), "stp_dot1dportnum2ifindex(129)",
                          line("(LINE) found next port ifindex: 436207617"),
                          "check_if_valid_base_port_ifindex(0x1A000001, 0)",
                          rejection("(LINE) found what we wanted ifindex: 436207617"), "free(8196)",
                          logged("\\nvalidate_port_id_for_snmp_search_new(LINE): return SUCCESS with  "
                                 "port_id(129), in_if_index(436207617), ret_if_index(436207617)\\n")));
  expect_found(129, kPort129);
}

TEST_F(NextBasePort, OfTheCachedSet) {
  fake::platform().interfaces = {{kPort129, 129}};
  members_are({129});
  const Trace walk = walked_to(129, kPort129, "129");
  for (const uint32_t use_cache : {1U, 2U, 0x80000000U}) {
    const Trace bitmap = use_cache == 1 ? Trace{"time(NULL)", "vlan_mgr_get_baseport_membership_range(10)",
                                                "malloc(8196)", "time(NULL)"}
                                        : Trace{"time(NULL)", "malloc(8196)"};
    EXPECT_EQ(validate(kGetNext, 0, 0, use_cache), 0);
    EXPECT_THAT(fake::taken_trace(), ElementsAreArray(bitmap + walk));
    expect_found(129, kPort129);
  }
}

TEST_F(NextBasePort, WithoutTheCacheTheVlanManagerIsAskedEachTimeAndTheCacheIsLeftAlone) {
  fake::platform().interfaces = {{kPort129, 129}, {kPort130, 130}};
  fake::platform().next_base_ports = {{{129}}, {{130}}, {{131}}};
  EXPECT_EQ(validate_next(0), 0);
  expect_found(129, kPort129);
  EXPECT_EQ(validate(kGetNext, 0, 0, 1), 0);
  expect_found(130, kPort130);
  EXPECT_EQ(validate_next(0), -1);
  fake::taken_trace();
  EXPECT_EQ(validate(kGetNext, 0, 0, 1), 0);
  expect_found(130, kPort130);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(base_ports_copied() + walked_to(130, kPort130, "130")));
}

TEST_F(NextBasePort, IsAboveTheGivenOne) {
  fake::platform().interfaces = {{kPort129, 129}, {kPort130, 130}, {kPort131, 140}};
  const std::vector<std::pair<uint16_t, uint16_t>> steps{{1, 129},   {127, 129}, {128, 129}, {129, 130},
                                                         {130, 140}, {131, 140}, {139, 140}};
  for (const auto &[port, next] : steps) {
    members_are({129, 130, 140});
    EXPECT_EQ(validate_next(port), 0) << port;
    EXPECT_EQ(port_, next) << "behind " << port;
  }
}

TEST_F(NextBasePort, NoneBehindTheLast) {
  fake::platform().interfaces = {{kPort129, 129}};
  for (const uint16_t port : std::initializer_list<uint16_t>{129, 130, 4095, 65534, 65535}) {
    members_are({129});
    EXPECT_EQ(validate_next(port), -1);
    EXPECT_THAT(
        fake::taken_trace(),
        ElementsAre("vlan_mgr_get_baseport_membership_range(10)", "malloc(8196)",
                    rejection(":LINE Printing baseport bitset"), logged_rejection("129\\n"),
                    rejection("(LINE) found next port : -1"),
                    rejection("(LINE) No next port available in bitmap, return FAILURE"), "free(8196)"));
    expect_unchanged(port);
  }
}

TEST_F(NextBasePort, NoneInAnEmptySet) {
  members_are({});
  EXPECT_EQ(validate_next(0), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(fetched() + listed("") + Trace{rejection("(LINE) found next port : -1")} +
                               nothing_left()));
  expect_unchanged(0);
}

TEST_F(NextBasePort, PortZeroNeverComesOut) {
  fake::platform().interfaces = {{kPort129, 129}};
  fake::platform().next_if_indexes = {kPort129};
  members_are({0});
  EXPECT_EQ(validate_next(0), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(fetched() + listed("0") + Trace{rejection("(LINE) found next port : -1")} +
                               nothing_left()));
  expect_unchanged(0);
}

TEST_F(NextBasePort, NoneBehindPort65535WhateverTheSetHolds) {
  fake::platform().interfaces = {{kPort129, 1}, {kPort130, 65535}};
  members_are({0, 1, 65535});
  EXPECT_EQ(validate_next(65535), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(fetched() + listed("0-1,65535") +
                               Trace{rejection("(LINE) found next port : -1")} + nothing_left()));
  expect_unchanged(65535);
}

TEST_F(NextBasePort, EveryPlaceOfTheSetIsSearched) {
  for (const uint16_t port : std::initializer_list<uint16_t>{
           1,   7,    8,    9,    15,   16,    30,    31,    32,    33,    63,   64,
           127, 4095, 4096, 8191, 8192, 32767, 32768, 65503, 65504, 65534, 65535}) {
    fake::platform().interfaces = {{kPort129, port}};
    for (const int from : {0, port / 2, port - 32, port - 1}) {
      if (from < 0) {
        continue;
      }
      members_are({port});
      EXPECT_EQ(validate_next(static_cast<uint16_t>(from)), 0) << port << " behind " << from;
      expect_found(port, kPort129);
    }
    members_are({port});
    EXPECT_EQ(validate_next(port), -1) << port;
    expect_unchanged(port);
  }
}

TEST_F(NextBasePort, PortsThatCannotBeConvertedAreSteppedOver) {
  fake::platform().interfaces = {{kPort131, 140}};
  members_are({129, 131, 140});
  EXPECT_EQ(validate_next(0), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(fetched() + listed("129,131,140") +
                       Trace{rejection("(LINE) found next port : 129"), "stp_dot1dportnum2ifindex(129)",
                             line("(LINE) Invalid stp port ifindex: 0"), line("(LINE) found next port : 131"),
                             "stp_dot1dportnum2ifindex(131)", line("(LINE) Invalid stp port ifindex: 0"),
                             line("(LINE) found next port : 140")} +
                       candidate(140, kPort131) + found(140, kPort131)));
  expect_found(140, kPort131);
}

TEST_F(NextBasePort, PortsThatMayNotBeShownAreSteppedOver) {
  fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .is_base_port = false},
                                 {.if_index = kPort130, .port = 130, .is_base_port = false},
                                 {kPort131, 131}};
  members_are({129, 130, 131});
  EXPECT_EQ(validate_next(0), 0);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAreArray(fetched() + listed("129-131") + Trace{rejection("(LINE) found next port : 129")} +
                       candidate(129, kPort129) + Trace{line("(LINE) found next port : 130")} +
                       candidate(130, kPort130) + Trace{line("(LINE) found next port : 131")} +
                       candidate(131, kPort131) + found(131, kPort131)));
  expect_found(131, kPort131);
}

TEST_F(NextBasePort, FailedConversionIsLoggedWithTheInterfaceOfThePortBefore) {
  fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .is_base_port = false}};
  members_are({129, 130});
  EXPECT_EQ(validate_next(0), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(fetched() + listed("129-130") +
                               Trace{rejection("(LINE) found next port : 129")} + candidate(129, kPort129) +
                               Trace{line("(LINE) found next port : 130"), "stp_dot1dportnum2ifindex(130)",
                                     line("(LINE) Invalid stp port ifindex: 436207617"),
                                     line("(LINE) found next port : -1")} +
                               nothing_left()));
  expect_unchanged(0);
}

TEST_F(NextBasePort, NoneWhereTheLastMayNotBeShown) {
  fake::platform().interfaces = {{.if_index = kPort129, .port = 65535, .is_base_port = false}};
  members_are({65535});
  EXPECT_EQ(validate_next(65534), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(
                  fetched() + listed("65535") + Trace{rejection("(LINE) found next port : 65535")} +
                  candidate(65535, kPort129) + Trace{line("(LINE) found next port : -1")} + nothing_left()));
  expect_unchanged(65534);
}

TEST_F(NextBasePort, SelectorDecidesAndIsPassedOnUnchanged) {
  fake::platform().interfaces = {{.if_index = kPort129, .port = 129, .oper_status = 2}, {kPort130, 130}};
  members_are({129, 130});
  EXPECT_EQ(validate_next(0, 0), 0);
  expect_found(129, kPort129);
  fake::taken_trace();
  for (const int selector : {1, 2, 255}) {
    members_are({129, 130});
    EXPECT_EQ(validate_next(0, static_cast<uint8_t>(selector)), 0);
    EXPECT_THAT(
        fake::taken_trace(),
        ElementsAreArray(fetched() + listed("129-130") + Trace{rejection("(LINE) found next port : 129")} +
                         candidate(129, kPort129, selector) + Trace{line("(LINE) found next port : 130")} +
                         candidate(130, kPort130, selector) + found(130, kPort130)));
    expect_found(130, kPort130);
  }
}

TEST_F(NextBasePort, NeitherUsabilityNorMembershipIsAskedFor) {
  fake::platform().interfaces = {
      {.if_index = kPort129, .port = 129, .is_usable = false, .channel_if_index = kChannel3}};
  members_are({129});
  EXPECT_EQ(validate_next(0), 0);
  const Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Each(Not(StartsWith("stp_valid_if_index"))));
  EXPECT_THAT(trace, Each(Not(StartsWith("pcm_get_pc_for_port"))));
  expect_found(129, kPort129);
}

TEST_F(NextBasePort, InterfacesAreShownSigned) {
  fake::platform().interfaces = {{.if_index = 0xFFFFFFFE, .port = 129, .is_base_port = false},
                                 {0x80000000, 131}};
  members_are({129, 130, 131});
  EXPECT_EQ(validate_next(0), 0);
  const Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Contains(line("(LINE) found next port ifindex: -2")));
  EXPECT_THAT(trace, Contains(line("(LINE) Invalid stp port ifindex: -2")));
  EXPECT_THAT(trace, Contains(rejection("(LINE) found what we wanted ifindex: -2147483648")));
  EXPECT_EQ(trace.back(),
            logged("\\nvalidate_port_id_for_snmp_search_new(LINE): return SUCCESS with  port_id(131), "
                   "in_if_index(-2147483648), ret_if_index(-2147483648)\\n"));
}

TEST_F(NextBasePort, EveryModeButOneMeansNext) {
  fake::platform().interfaces = {{kPort129, 129}, {kPort130, 130}};
  for (const uint32_t mode : {0U, 2U, 3U, 4U, 0x80000001U, 0xFFFFFFFFU}) {
    members_are({129, 130});
    EXPECT_EQ(validate(mode, 129), 0);
    expect_found(130, kPort130);
  }
}

TEST_F(NextBasePort, VlanManagerWithoutAnAnswer) {
  fake::platform().next_base_ports = {{.is_null = true}};
  EXPECT_EQ(validate_next(128), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("vlan_mgr_get_baseport_membership_range(10)",
                          rejection(":LINE vlan_mgr_get_baseport_membership_range returns NULL ")));
  expect_unchanged(128);
}

TEST_F(NextBasePort, CacheWithoutAnAnswer) {
  fake::platform().next_base_ports = {{.is_null = true}};
  EXPECT_EQ(validate(kGetNext, 128, 0, 1), -1);
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("time(NULL)", "vlan_mgr_get_baseport_membership_range(10)",
                  logged_rejection("stp_get_cached_baseport_bitmap_all_vlans:LINE "
                                   "vlan_mgr_get_baseport_membership_range returns NULL \\n"),
                  rejection(":LINE  Failed to get stp_get_cached_baseport_bitmap_all_vlans, baseport 0x0")));
  expect_unchanged(128);
}

TEST_F(NextBasePort, WithoutVlans) {
  uint16_t port = 128;
  EXPECT_FALSE(find_base_port(CMD_ACTION_GET_NEXT, 0, nullptr, false, &port, &if_index_));
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("vlan_mgr_get_baseport_membership_range(NULL)",
                          rejection(":LINE vlan_mgr_get_baseport_membership_range returns NULL ")));
  EXPECT_FALSE(find_base_port(CMD_ACTION_GET_NEXT, 0, nullptr, true, &port, &if_index_));
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("time(NULL)",
                  logged_rejection("stp_get_cached_baseport_bitmap_all_vlans(LINE): Null Pointer\\n"),
                  rejection(":LINE  Failed to get stp_get_cached_baseport_bitmap_all_vlans, baseport 0x0")));
  EXPECT_EQ(port, 128);
}

TEST_F(NextBasePort, RecordOfSizeZeroFailsUncachedAndOnARefresh) {
  fake::platform().interfaces = {{kPort129, 129}};
  const Trace refused{rejection("(LINE): baseport_bmp size is 0, no next port"), "free(8196)"};
  fake::platform().next_base_ports = {{.ports = {129}, .size = 0}, {.ports = {129}, .size = 0}};
  EXPECT_EQ(validate_next(0), -1);
  EXPECT_THAT(fake::taken_trace(), ElementsAreArray(fetched() + refused));
  expect_unchanged(0);
  EXPECT_EQ(validate(kGetNext, 0, 0, 1), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAreArray(Trace{"time(NULL)"} + fetched() + Trace{"time(NULL)"} + refused));
  expect_unchanged(0);
  EXPECT_EQ(validate(kGetNext, 0, 0, 1), 0) << "copies have another size";
  expect_found(129, kPort129);
}

TEST_F(NextBasePort, OtherSizesDoNotLimitTheSearch) {
  fake::platform().interfaces = {{kPort129, 65535}};
  for (const uint32_t size : {1U, 4U, 8191U, 8193U, 0xFFFFFFFFU}) {
    fake::platform().next_base_ports = {{.ports = {65535}, .size = size}};
    EXPECT_EQ(validate_next(0), 0);
    EXPECT_THAT(fake::taken_trace(), Contains(logged_rejection("65535\\n")));
    expect_found(65535, kPort129);
  }
}

// The listing.

class BasePortListing : public BasePort {
 protected:
  // The lines that list the set, and what printf_curr_idx was when they were logged.
  struct Listing {
    std::vector<std::string> lines;
    std::vector<int> indexes;
  };

  Listing list(std::vector<uint32_t> ports) {
    members_are(std::move(ports));
    std::vector<int> indexes;
    fake::platform().before_log = [&indexes] { indexes.push_back(printf_curr_idx); };
    EXPECT_EQ(validate(kGetNext, 65535), -1);
    fake::platform().before_log = nullptr;
    EXPECT_EQ(printf_curr_idx, 0);
    return listing_of(fake::taken_trace(), indexes);
  }

  static std::vector<std::string> lines(BasePortListing *test, std::vector<uint32_t> ports) {
    return test->list(std::move(ports)).lines;
  }

 private:
  static Listing listing_of(const Trace &trace, const std::vector<int> &indexes) {
    const std::string begins = logged_rejection("");
    const size_t text_at = begins.size() - 1;
    Listing listing;
    size_t logs = 0;
    bool is_listing = false;
    for (const std::string &entry : trace) {
      if (!entry.starts_with("log")) {
        continue;
      }
      const int index = indexes.at(logs++);
      if (entry == rejection("(LINE) found next port : -1")) {
        is_listing = false;
      } else if (is_listing) {
        EXPECT_EQ(entry, logged_rejection(entry.substr(text_at, entry.size() - text_at - 3) + "\\n"));
        listing.lines.push_back(entry.substr(text_at, entry.size() - text_at - 3));
        listing.indexes.push_back(index);
      } else if (entry == rejection(":LINE Printing baseport bitset")) {
        is_listing = true;
      }
    }
    return listing;
  }
};

std::vector<uint32_t> every_second(uint32_t first, size_t count) {
  std::vector<uint32_t> ports;
  for (uint32_t port = first; ports.size() < count; port += 2) {
    ports.push_back(port);
  }
  return ports;
}

std::vector<uint32_t> joined(std::vector<uint32_t> first, const std::vector<uint32_t> &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

constexpr char kFifteenPorts[] = "1001,1003,1005,1007,1009,1011,1013,1015,1017,1019,1021,1023,1025,1027,1029";
constexpr size_t kLongestLine = 79;

TEST_F(BasePortListing, ShowsRunsOfPorts) {
  EXPECT_THAT(list({1, 2, 3, 5}).lines, ElementsAre("1-3,5"));
  EXPECT_THAT(list({129}).lines, ElementsAre("129"));
  EXPECT_THAT(list({129, 130}).lines, ElementsAre("129-130"));
  EXPECT_THAT(list({129, 131}).lines, ElementsAre("129,131"));
  EXPECT_THAT(list({1, 3, 4, 6, 7, 8, 10}).lines, ElementsAre("1,3-4,6-8,10"));
  EXPECT_THAT(list({31, 32, 63, 65, 4095, 4096}).lines, ElementsAre("31-32,63,65,4095-4096"));
}

TEST_F(BasePortListing, EmptySetIsOneEmptyLine) { EXPECT_THAT(list({}).lines, ElementsAre("")); }

TEST_F(BasePortListing, FirstAndLastBit) {
  EXPECT_THAT(list({0}).lines, ElementsAre("0"));
  EXPECT_THAT(list({65535}).lines, ElementsAre("65535"));
  EXPECT_THAT(list({0, 65535}).lines, ElementsAre("0,65535"));
  EXPECT_THAT(list({0, 1, 65534, 65535}).lines, ElementsAre("0-1,65534-65535"));
}

TEST_F(BasePortListing, FullSetIsOneItem) {
  std::vector<uint32_t> ports(65536);
  for (uint32_t port = 0; port < ports.size(); ++port) {
    ports[port] = port;
  }
  EXPECT_THAT(list(ports).lines, ElementsAre("0-65535"));
}

TEST_F(BasePortListing, ItemThatFitsExactlyEndsTheLine) {
  const Listing listing = list(every_second(1001, 16));
  EXPECT_THAT(listing.lines, ElementsAre(kFifteenPorts + std::string(",1031")));
  EXPECT_THAT(listing.lines[0], SizeIs(kLongestLine));
}

TEST_F(BasePortListing, LineBehindAFullOneBeginsWithoutAComma) {
  const Listing listing = list(every_second(1001, 18));
  EXPECT_THAT(listing.lines, ElementsAre(kFifteenPorts + std::string(",1031"), "1033,1035"));
  EXPECT_EQ(listing.indexes[0], 1031) << "the last port of the line";
}

TEST_F(BasePortListing, RunThatFitsExactlyEndsTheLine) {
  const Listing listing = list(joined(every_second(1001, 14), {1031, 1032, 1034}));
  EXPECT_THAT(
      listing.lines,
      ElementsAre("1001,1003,1005,1007,1009,1011,1013,1015,1017,1019,1021,1023,1025,1027,1031-1032", "1034"));
  EXPECT_THAT(listing.lines[0], SizeIs(kLongestLine));
  EXPECT_EQ(listing.indexes[0], 1032) << "the last port of the run";
}

TEST_F(BasePortListing, ItemThatIsTooLongByOneBeginsTheNextLine) {
  const Listing listing = list(joined(every_second(1001, 15), {10001}));
  EXPECT_THAT(listing.lines, ElementsAre(kFifteenPorts, "10001"));
  EXPECT_EQ(listing.indexes[0], 1029);
}

TEST_F(BasePortListing, RunsAreNotSplit) {
  const Listing listing = list(joined(every_second(1001, 15), {1031, 1032, 1033, 1034, 1036}));
  EXPECT_THAT(listing.lines, ElementsAre(kFifteenPorts, "1031-1034,1036"));
  EXPECT_EQ(listing.indexes[0], 1029);
}

TEST_F(BasePortListing, LastItemOfALineMayBeARunOfThousands) {
  std::vector<uint32_t> ports = every_second(1001, 15);
  for (uint32_t port = 2000; port <= 60000; ++port) {
    ports.push_back(port);
  }
  EXPECT_THAT(list(joined(ports, {60002})).lines, ElementsAre(kFifteenPorts, "2000-60000,60002"));
}

// Lines are as long as they can be, and together they list every run once.
TEST_F(BasePortListing, RandomSetsLoseNothing) {
  constexpr unsigned kSets = 40;
  for (unsigned seed = 0; seed < kSets && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    const auto below = [&generator](uint32_t bound) { return static_cast<uint32_t>(generator() % bound); };
    const uint32_t range = seed == 0 ? 65536 : 65536U >> below(9);
    std::vector<uint32_t> ports;
    for (uint32_t port = below(3); port < range; port += 1 + below(1 + range / 256)) {
      ports.push_back(port);
    }
    std::string expected;
    for (size_t first = 0; first < ports.size();) {
      size_t last = first;
      while (last + 1 < ports.size() && ports[last + 1] == ports[last] + 1) {
        ++last;
      }
      expected += (first == 0 ? "" : ",") + std::to_string(ports[first]) +
                  (last == first ? "" : "-" + std::to_string(ports[last]));
      first = last + 1;
    }
    const Listing listing = list(ports);
    std::string all = listing.lines.at(0);
    for (size_t i = 1; i < listing.lines.size(); ++i) {
      const std::string &before = listing.lines[i - 1];
      const std::string item = listing.lines[i].substr(0, listing.lines[i].find(','));
      EXPECT_LE(before.size(), kLongestLine);
      EXPECT_GT(before.size() + 1 + item.size(), kLongestLine) << before;
      EXPECT_EQ(listing.indexes[i - 1], std::stoi(before.substr(before.find_last_of(",-") + 1)));
      all += "," + listing.lines[i];
    }
    EXPECT_LE(listing.lines.back().size(), kLongestLine);
    EXPECT_EQ(all, expected);
  }
}

TEST_F(BasePortListing, BeginsAtTheFirstPortWhateverWasListedBefore) {
  for (const int index : {1, 5, 130, 65535, -1}) {
    printf_curr_idx = index;
    EXPECT_THAT(list({0, 1, 5, 129, 130, 131}).lines, ElementsAre("0-1,5,129-131"));
  }
}

TEST_F(BasePortListing, EndsAtZeroThoughNobodyTakesIt) {
  fake::platform().history_answers = {{100, 1}, {101, 1}};
  fake::platform().interfaces = {{kPort129, 129}};
  for (const std::vector<uint32_t> &ports : {std::vector<uint32_t>{129}, every_second(129, 40), {}}) {
    printf_curr_idx = 500;
    members_are(ports);
    EXPECT_EQ(validate(kGetNext, 0), ports.empty() ? -1 : 0);
    EXPECT_THAT(fake::taken_trace(), Each(Not(StartsWith("log"))));
    EXPECT_EQ(printf_curr_idx, 0) << "there was a listing";
  }
}

// Every port that is listed is the index for a moment: who is asked in between sees it.
TEST_F(BasePortListing, AsksBothSinksForEachLineWhoeverTakesIt) {
  struct Open {
    bool history, print;
  };
  for (const Open open : {Open{false, false}, Open{true, false}, Open{false, true}, Open{true, true}}) {
    SCOPED_TRACE("history " + std::to_string(open.history) + ", print " + std::to_string(open.print));
    fake::platform().history_answers = {{100, open.history ? 0 : 1}, {101, 1}};
    fake::platform().print_answers = {{100, open.print ? 0 : 1}, {101, 1}};
    std::vector<int> indexes;
    fake::platform().before_level_check = [&indexes] { indexes.push_back(printf_curr_idx); };
    printf_curr_idx = 500;
    members_are(every_second(1001, 40));
    EXPECT_EQ(validate(kGetNext, 65535), -1);
    // The text before the listing, its three lines, and the two texts behind it.
    EXPECT_THAT(indexes, ElementsAre(500, 500, 1031, 1031, 1063, 1063, 1079, 1079, 0, 0, 0, 0));
  }
}

TEST_F(BasePortListing, GoesOnWhereTheSinksCloseMeanwhile) {
  members_are(every_second(1001, 40));
  std::vector<int> indexes;
  fake::platform().before_level_check = [&indexes] { indexes.push_back(printf_curr_idx); };
  fake::platform().before_log = [] {
    if (printf_curr_idx != 0) {  // the first line has been made
      fake::platform().history_answers = {{100, 1}, {101, 1}};
    }
  };
  EXPECT_EQ(validate(kGetNext, 65535), -1);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("vlan_mgr_get_baseport_membership_range(10)", "malloc(8196)",
                          rejection(":LINE Printing baseport bitset"),
                          logged_rejection(kFifteenPorts + std::string(",1031\\n")), "free(8196)"));
  EXPECT_THAT(indexes, ElementsAre(0, 0, 1031, 1031, 1063, 1063, 1079, 1079, 0, 0, 0, 0));
}

TEST_F(BasePortListing, IsLoggedForThePrintAlone) {
  fake::platform().history_answers = {{100, 1}, {101, 1}};
  fake::platform().print_answers = {{100, 1}, {101, 0}};
  members_are(every_second(1001, 17));
  EXPECT_EQ(validate(kGetNext, 65535), -1);
  const Trace trace = fake::taken_trace();
  EXPECT_THAT(trace, Contains("dbgprint(1, FAKE, 0) \"" + std::string(kFifteenPorts) + ",1031\\n\""));
  EXPECT_THAT(trace, Contains("dbgprint(1, FAKE, 0) \"1033\\n\""));
}

TEST_F(BasePortListing, IsNotMadeInExactMode) {
  printf_curr_idx = 500;
  fake::platform().interfaces = {{kPort129, 129}};
  EXPECT_EQ(validate(kGet, 129), 0);
  EXPECT_EQ(printf_curr_idx, 500);
}

}  // namespace
