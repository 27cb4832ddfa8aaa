// The shared image as a reader finds it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <optional>

#include "keys/keys.h"
#include "model/numbering.h"
#include "publisher/image_publisher.h"
#include "sources/scenario/consistency.h"
#include "sources/scenario/loader.h"
#include "support/mapped_image.h"
#include "support/states.h"

using namespace stpswitch;
namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;

namespace {

constexpr char kScenario[] = R"(
[switch]
mode = "mst"
[[mst.instance]]
id = 1
vlans = "10-19"
[[mst.instance]]
id = 4094
vlans = "4094"
[[port]]
number = 3
vlans = "1,10"
[[port]]
number = 4
link = "down"
channel = 2
vlans = "50"
[[port]]
number = 1
channel = 2
[[port]]
number = 7
switchport = false
vlans = "60"
[[port_channel]]
number = 2
vlans = "1-100"
[[port_channel]]
number = 9
)";

// The VLANs of a bitmap, as its documentation reads them.
std::vector<unsigned> vlans_in(const uint8_t (&octets)[STP_VLAN_BITMAP_SIZE]) {
  std::vector<unsigned> vlans;
  for (unsigned vlan = 0; vlan < 4096; ++vlan) {
    if ((octets[vlan / 8] & (0x80U >> (vlan % 8))) != 0) {
      vlans.push_back(vlan);
    }
  }
  return vlans;
}

// The VLANs that the interface at a position is a member of.
std::vector<unsigned> vlans_of(const answers::Image &image, uint32_t position) {
  std::vector<unsigned> vlans;
  for (unsigned vlan = 0; vlan < 4096; ++vlan) {
    if ((image.members_of(vlan)[position / 32] & (1U << (position % 32))) != 0) {
      vlans.push_back(vlan);
    }
  }
  return vlans;
}

class PublishedImage : public testing::Test {
 protected:
  void set(const std::string &key, const std::string &text) {
    replace(with_value(switch_.state(), key, text));
  }

  void replace(const SwitchState &state) {
    switch_.replace(state);
    publisher_.publish();
  }

  const wire::ImageInterface &interface(uint32_t position) const {
    return reader_.view().interfaces()[position];
  }

  Switch switch_{parse_scenario(kScenario, "test.toml")};
  ImagePublisher publisher_{&switch_};
  MappedImage reader_{publisher_.fd(), publisher_.size()};
};

TEST_F(PublishedImage, TellsItsLayout) {
  EXPECT_EQ(reader_.head().magic, 0x53545049U);
  EXPECT_EQ(reader_.head().version, 2U);
  EXPECT_EQ(reader_.head().size, publisher_.size());
  EXPECT_EQ(reader_.head().slot_size % 8, 0U);
  EXPECT_EQ(publisher_.size(), 40 + 2 * reader_.head().slot_size);
  struct stat file {};
  ASSERT_EQ(::fstat(publisher_.fd(), &file), 0);
  EXPECT_EQ(file.st_size, static_cast<off_t>(publisher_.size()));
  EXPECT_TRUE(reader_.view().is_sound());
}

// The room for more costs nothing until it is used.
TEST_F(PublishedImage, TakesNoMoreMemoryThanItsInterfacesDo) {
  constexpr blkcnt_t kBlocksPerOctets = 512;
  struct stat file {};
  ASSERT_EQ(::fstat(publisher_.fd(), &file), 0);
  EXPECT_LT(file.st_blocks * kBlocksPerOctets, 256 * 1024);
}

// Whoever has mapped it sees ports that come, and no others when they are gone.
TEST_F(PublishedImage, FollowsPortsThatComeAndGo) {
  const SwitchState before = switch_.state();
  SwitchState state = before;
  for (uint32_t number = 1; number <= 100; ++number) {
    port(state, number);
  }
  replace(state);
  ASSERT_EQ(reader_.view().interfaces().count, 102U);
  EXPECT_EQ(interface(101).if_index, 0x1A000064U);
  EXPECT_EQ(reader_.slot().interface_of_port[228], 102);
  replace(before);
  EXPECT_EQ(reader_.view().interfaces().count, 6U);
  EXPECT_EQ(reader_.slot().interface_of_port[228], 0);
  EXPECT_EQ(reader_.head().flags.load(), 0U);
}

class GrowingImage : public PublishedImage {
 protected:
  // As many interfaces as any switch can have.
  void outgrow() {
    SwitchState state = switch_.state();
    for (uint32_t number = 1; number <= 3967; ++number) {
      port(state, number);
    }
    for (uint32_t number = 1; number <= 4095; ++number) {
      channel(state, number);
    }
    replace(state);
  }
};

TEST_F(GrowingImage, IsAnotherOne) {
  outgrow();
  const MappedImage larger(publisher_.fd(), publisher_.size());
  const answers::Image view = larger.view();
  ASSERT_TRUE(view.is_sound());
  ASSERT_EQ(view.interfaces().count, 8062U);
  EXPECT_EQ(view.interfaces()[0].if_index, 0x16000001U);
  EXPECT_EQ(view.interfaces()[4095].if_index, 0x1A000001U);
  EXPECT_EQ(view.interfaces()[8061].if_index, 0x1A000F7FU);
  EXPECT_EQ(larger.slot().interface_of_port[4095], 8062);
  EXPECT_EQ(larger.slot().interface_of_port[8191], 4095);
  EXPECT_EQ(publisher_.view().interfaces().count, 8062U);
}

TEST_F(GrowingImage, LeavesTheOldOneMarkedAsItWasWithoutALease) {
  publisher_.renew_lease();
  publisher_.ask_me(true);
  const uint64_t lease_end = reader_.head().lease_end.load();
  EXPECT_NE(lease_end, 0U);
  outgrow();
  EXPECT_EQ(reader_.head().flags.load(), 2U);
  EXPECT_EQ(reader_.head().lease_end.load(), 0U);
  EXPECT_EQ(reader_.head().generation.load(), 1U);
  EXPECT_EQ(reader_.view().interfaces().count, 6U);
  const MappedImage larger(publisher_.fd(), publisher_.size());
  EXPECT_EQ(larger.head().flags.load(), 1U);
  EXPECT_EQ(larger.head().lease_end.load(), lease_end);
  EXPECT_EQ(larger.head().generation.load(), 2U);
}

TEST_F(PublishedImage, SaysThatTheSwitchIsToBeAsked) {
  EXPECT_EQ(reader_.head().flags.load(), 0U);
  publisher_.ask_me(true);
  EXPECT_EQ(reader_.head().flags.load(), 1U);
  publisher_.ask_me(false);
  EXPECT_EQ(reader_.head().flags.load(), 0U);
}

TEST(ImageOfASwitchThatHasGone, HasNoLease) {
  const Switch the_switch(empty_switch());
  std::optional<ImagePublisher> publisher(std::in_place, &the_switch);
  const MappedImage reader(publisher->fd(), publisher->size());
  publisher->renew_lease();
  EXPECT_NE(reader.head().lease_end.load(), 0U);
  publisher.reset();
  EXPECT_EQ(reader.head().lease_end.load(), 0U);
}

TEST_F(PublishedImage, LeavesOutMembersThatItHasNoRoomFor) {
  SwitchState state = switch_.state();
  for (uint32_t number = 10'000; number < 20'000; ++number) {
    Port &member = state.ports[number];
    member.numbers = member_numbers(number);
    member.channel = 2;
  }
  replace(state);
  const auto interfaces = publisher_.view().interfaces();
  ASSERT_EQ(interfaces.count, 8062U);
  EXPECT_EQ(interfaces[5].if_index, 0x1A000007U);
  EXPECT_EQ(interfaces[8061].if_index, 0x1A000000U + 10'000 + 8055);
}

// A member that is no bridge port itself.
TEST_F(PublishedImage, HasInterfacesWithoutABridgePortNumber) {
  SwitchState state = switch_.state();
  port(state, 1).numbers.bridge_port = 0;
  replace(state);
  EXPECT_EQ(interface(2).if_index, 0x1A000001U);
  EXPECT_EQ(interface(2).base_port, 0);
  EXPECT_EQ(reader_.slot().interface_of_port[0], 0);
  EXPECT_EQ(reader_.slot().interface_of_port[129], 0);
}

TEST_F(PublishedImage, HasNoBridgePortsWhereNoSpanningTreeRuns) {
  SwitchState state = switch_.state();
  state.settings.mode.reset();
  replace(state);
  ASSERT_EQ(reader_.view().interfaces().count, 6U);
  for (uint32_t i = 0; i < 6; ++i) {
    EXPECT_EQ(interface(i).base_port, 0);
    EXPECT_TRUE(vlans_of(reader_.view(), i).empty());
  }
  const auto &positions = reader_.slot().interface_of_port;
  EXPECT_EQ(std::count(std::begin(positions), std::end(positions), 0), 8192);
}

TEST_F(PublishedImage, IsSealed) {
  EXPECT_EQ(::fcntl(publisher_.fd(), F_GET_SEALS),
            F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_FUTURE_WRITE | F_SEAL_SEAL);
  EXPECT_EQ(::fcntl(publisher_.fd(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(::mmap(nullptr, publisher_.size(), PROT_READ | PROT_WRITE, MAP_SHARED, publisher_.fd(), 0),
            MAP_FAILED);
  EXPECT_NE(::ftruncate(publisher_.fd(), 0), 0);
  EXPECT_EQ(::pwrite(publisher_.fd(), "x", 1, 0), -1);
}

TEST_F(PublishedImage, ListsInterfacesInAscendingOrder) {
  ASSERT_EQ(reader_.view().interfaces().count, 6U);
  const std::vector<uint32_t> expected = {0x16000002, 0x16000009, 0x1A000001,
                                          0x1A000003, 0x1A000004, 0x1A000007};
  for (uint32_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(interface(i).if_index, expected[i]);
  }
}

TEST_F(PublishedImage, FindsInterfacesByBridgePortNumber) {
  const auto &positions = reader_.slot().interface_of_port;
  EXPECT_EQ(positions[4096 + 2], 1);
  EXPECT_EQ(positions[4096 + 9], 2);
  EXPECT_EQ(positions[128 + 1], 3);
  EXPECT_EQ(positions[128 + 3], 4);
  EXPECT_EQ(positions[128 + 4], 5);
  EXPECT_EQ(positions[128 + 7], 6);
  EXPECT_EQ(std::count(std::begin(positions), std::end(positions), 0), 8192 - 6);
}

TEST_F(PublishedImage, DescribesAPortOfItsOwn) {
  const wire::ImageInterface &port = interface(3);
  EXPECT_EQ(port.base_port, 131);
  EXPECT_EQ(port.oper_status, 1);
  EXPECT_EQ(port.switched, 1);
  EXPECT_EQ(port.channel, 0);
  EXPECT_EQ(port.pc_if_index, 0U);
  EXPECT_EQ(vlans_of(reader_.view(), 3), (std::vector<unsigned>{1, 10}));
}

TEST_F(PublishedImage, DescribesAMemberWithoutVlans) {
  const wire::ImageInterface &member = interface(4);
  EXPECT_EQ(member.base_port, 132);
  EXPECT_EQ(member.oper_status, 2);
  EXPECT_EQ(member.switched, 1);
  EXPECT_EQ(member.channel, 2);
  EXPECT_EQ(member.pc_if_index, 0x16000002U);
  EXPECT_TRUE(vlans_of(reader_.view(), 4).empty());
}

TEST_F(PublishedImage, DescribesARoutedPortWithoutVlans) {
  const wire::ImageInterface &port = interface(5);
  EXPECT_EQ(port.base_port, 135);
  EXPECT_EQ(port.oper_status, 1);
  EXPECT_EQ(port.switched, 0);
  EXPECT_TRUE(vlans_of(reader_.view(), 5).empty());
}

TEST_F(PublishedImage, DescribesPortChannels) {
  const wire::ImageInterface &with_members = interface(0);
  EXPECT_EQ(with_members.base_port, 4098);
  EXPECT_EQ(with_members.oper_status, 1);
  EXPECT_EQ(with_members.switched, 1);
  EXPECT_EQ(with_members.channel, 0);
  EXPECT_EQ(with_members.pc_if_index, 0U);
  EXPECT_EQ(vlans_of(reader_.view(), 0).size(), 100U);
  EXPECT_EQ(interface(1).oper_status, 2);
}

TEST_F(PublishedImage, ListsMstInstancesFromTheCistOn) {
  ASSERT_EQ(reader_.view().mst_instances().count, 3U);
  const auto instances = reader_.view().mst_instances();
  EXPECT_EQ(instances[0].id, 0);
  EXPECT_EQ(vlans_in(instances[0].vlans).size(), 4094U - 10U - 1U);
  EXPECT_EQ(vlans_in(instances[0].vlans).front(), 1U);
  EXPECT_EQ(vlans_in(instances[0].vlans).back(), 4093U);
  EXPECT_EQ(instances[1].id, 1);
  EXPECT_EQ(vlans_in(instances[1].vlans), (std::vector<unsigned>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
  EXPECT_EQ(instances[2].id, 4094);
  EXPECT_EQ(vlans_in(instances[2].vlans), std::vector<unsigned>{4094});
}

TEST_F(PublishedImage, RaisesTheGenerationWithEachChange) {
  EXPECT_EQ(reader_.head().generation.load(), 1U);
  set("port.3.link", "down");
  EXPECT_EQ(reader_.head().generation.load(), 2U);
  EXPECT_EQ(interface(3).oper_status, 2);
  set("port.3.link", "up");
  EXPECT_EQ(reader_.head().generation.load(), 3U);
  EXPECT_EQ(interface(3).oper_status, 1);
}

TEST_F(PublishedImage, LeavesTheOtherGenerationAlone) {
  const wire::ImageInterface &before = interface(3);
  set("port.3.link", "down");
  EXPECT_EQ(before.oper_status, 1);
  EXPECT_EQ(interface(3).oper_status, 2);
}

TEST_F(PublishedImage, FollowsMembership) {
  set("port.1.channel", "0");
  EXPECT_EQ(interface(0).oper_status, 2);
  EXPECT_EQ(interface(2).pc_if_index, 0U);
  EXPECT_EQ(vlans_of(reader_.view(), 2), std::vector<unsigned>{1});
  set("port.3.channel", "9");
  EXPECT_EQ(interface(1).oper_status, 1);
  EXPECT_EQ(interface(3).pc_if_index, 0x16000009U);
  EXPECT_TRUE(vlans_of(reader_.view(), 3).empty());
}

TEST_F(PublishedImage, FollowsTheVlanMapping) {
  set("mst.instance.1.vlans", "");
  EXPECT_EQ(vlans_in(reader_.view().mst_instances()[0].vlans).size(), 4093U);
  EXPECT_TRUE(vlans_in(reader_.view().mst_instances()[1].vlans).empty());
}

TEST(EmptyImage, HasTheCistOnly) {
  const Switch the_switch(parse_scenario("switch.mode = 'mst'", "test.toml"));
  const ImagePublisher publisher(&the_switch);
  EXPECT_EQ(publisher.view().interfaces().count, 0U);
  EXPECT_EQ(publisher.view().tree_ports().count, 0U);
  EXPECT_EQ(publisher.view().mst_instances().count, 1U);
}

// As large as a switch can be.
TEST(LargestImage, HoldsEveryInterfaceAndInstance) {
  SwitchState state = empty_switch();
  for (uint32_t number = 1; number <= 3967; ++number) {
    port(state, number).channel = number % 4095;
  }
  for (uint32_t number = 1; number <= 4095; ++number) {
    channel(state, number).vlans.insert(number % 4094 + 1);
  }
  for (uint32_t id = 1; id <= 64; ++id) {
    state.mst_instances[id].vlans.insert(id);
  }
  const Switch the_switch(state);
  const ImagePublisher publisher(&the_switch);
  const MappedImage reader(publisher.fd(), publisher.size());
  ASSERT_TRUE(reader.view().is_sound());
  EXPECT_EQ(reader.view().interfaces().count, 8062U);
  EXPECT_EQ(reader.view().interfaces()[8061].if_index, 0x1A000F7FU);
  EXPECT_EQ(reader.slot().interface_of_port[4095], 8062);
  EXPECT_EQ(reader.slot().interface_of_port[8191], 4095);
  EXPECT_EQ(reader.view().mst_instances().count, 65U);
}

}  // namespace
