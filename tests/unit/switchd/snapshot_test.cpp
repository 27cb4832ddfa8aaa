// The shared snapshot as a reader finds it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstring>

#include "keys/keys.h"
#include "model/numbering.h"
#include "server/snapshot_publisher.h"
#include "sources/scenario/consistency.h"
#include "sources/scenario/loader.h"
#include "support/states.h"

using namespace stpswitch;
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

// A reader's own, read-only view.
class Reader {
 public:
  explicit Reader(const SnapshotPublisher &publisher) : size_(publisher.size()) {
    memory_ = ::mmap(nullptr, size_, PROT_READ, MAP_SHARED, publisher.fd(), 0);
    EXPECT_NE(memory_, MAP_FAILED);
  }
  ~Reader() { ::munmap(memory_, size_); }
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;

  const wire::SnapshotHead &head() const { return *static_cast<const wire::SnapshotHead *>(memory_); }

  const wire::SnapshotSlot &slot() const {
    return *reinterpret_cast<const wire::SnapshotSlot *>(
        static_cast<const uint8_t *>(memory_) +
        wire::snapshot_slot_offset(head().interface_capacity, head().generation.load()));
  }

  const wire::SnapshotInterface &interface(size_t position) const {
    return reinterpret_cast<const wire::SnapshotInterface *>(&slot() + 1)[position];
  }

 private:
  size_t size_;
  void *memory_;
};

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

class Snapshot : public testing::Test {
 protected:
  void set(const std::string &key, const std::string &text) {
    switch_.replace(with_value(switch_.state(), key, text));
    publisher_.publish();
  }

  Switch switch_{parse_scenario(kScenario, "test.toml")};
  SnapshotPublisher publisher_{&switch_};
  Reader reader_{publisher_};
};

TEST_F(Snapshot, TellsItsLayout) {
  EXPECT_EQ(reader_.head().magic, 0x53545053U);
  EXPECT_EQ(reader_.head().version, 1U);
  EXPECT_EQ(reader_.head().interface_capacity, 8062U);
  EXPECT_EQ(reader_.head().size, wire::snapshot_size(8062));
  EXPECT_EQ(publisher_.size(), wire::snapshot_size(8062));
  struct stat file {};
  ASSERT_EQ(::fstat(publisher_.fd(), &file), 0);
  EXPECT_EQ(file.st_size, static_cast<off_t>(wire::snapshot_size(8062)));
}

// The room for more costs nothing until it is used.
TEST_F(Snapshot, TakesNoMoreMemoryThanItsInterfacesDo) {
  constexpr blkcnt_t kBlocksPerOctets = 512;
  struct stat file {};
  ASSERT_EQ(::fstat(publisher_.fd(), &file), 0);
  EXPECT_LT(file.st_blocks * kBlocksPerOctets, 256 * 1024);
}

// Whoever has mapped it once sees ports that come, and no others when they are gone.
TEST_F(Snapshot, FollowsPortsThatComeAndGo) {
  const SwitchState before = switch_.state();
  SwitchState state = before;
  for (uint32_t number = 1; number <= 3967; ++number) {
    port(state, number);
  }
  for (uint32_t number = 1; number <= 4095; ++number) {
    channel(state, number);
  }
  switch_.replace(state);
  publisher_.publish();
  ASSERT_EQ(reader_.slot().interface_count, 8062U);
  EXPECT_EQ(reader_.interface(0).if_index, 0x16000001U);
  EXPECT_EQ(reader_.interface(4095).if_index, 0x1A000001U);
  EXPECT_EQ(reader_.interface(8061).if_index, 0x1A000F7FU);
  EXPECT_EQ(reader_.slot().interface_of_port[4095], 8062);
  EXPECT_EQ(reader_.slot().interface_of_port[8191], 4095);
  switch_.replace(before);
  publisher_.publish();
  EXPECT_EQ(reader_.slot().interface_count, 6U);
  EXPECT_EQ(reader_.slot().interface_of_port[4095], 0);
}

TEST_F(Snapshot, LeavesOutMembersThatItHasNoRoomFor) {
  SwitchState state = switch_.state();
  for (uint32_t number = 10'000; number < 20'000; ++number) {
    Port &member = state.ports[number];
    member.numbers = member_numbers(number);
    member.channel = 2;
  }
  switch_.replace(std::move(state));
  publisher_.publish();
  ASSERT_EQ(reader_.slot().interface_count, 8062U);
  EXPECT_EQ(reader_.interface(5).if_index, 0x1A000007U);
  EXPECT_EQ(reader_.interface(8061).if_index, 0x1A000000U + 10'000 + 8055);
}

// A member that is no bridge port itself.
TEST_F(Snapshot, HasInterfacesWithoutABridgePortNumber) {
  SwitchState state = switch_.state();
  port(state, 1).numbers.bridge_port = 0;
  switch_.replace(state);
  publisher_.publish();
  EXPECT_EQ(reader_.interface(2).if_index, 0x1A000001U);
  EXPECT_EQ(reader_.interface(2).base_port, 0);
  EXPECT_EQ(reader_.slot().interface_of_port[0], 0);
  EXPECT_EQ(reader_.slot().interface_of_port[129], 0);
}

TEST_F(Snapshot, HasNoBridgePortsWhereNoSpanningTreeRuns) {
  SwitchState state = switch_.state();
  state.settings.mode.reset();
  switch_.replace(state);
  publisher_.publish();
  ASSERT_EQ(reader_.slot().interface_count, 6U);
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(reader_.interface(i).base_port, 0);
    EXPECT_TRUE(vlans_in(reader_.interface(i).vlans).empty());
  }
  const auto &positions = reader_.slot().interface_of_port;
  EXPECT_EQ(std::count(std::begin(positions), std::end(positions), 0), 8192);
}

TEST_F(Snapshot, IsSealed) {
  EXPECT_EQ(::fcntl(publisher_.fd(), F_GET_SEALS),
            F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_FUTURE_WRITE | F_SEAL_SEAL);
  EXPECT_EQ(::fcntl(publisher_.fd(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(::mmap(nullptr, publisher_.size(), PROT_READ | PROT_WRITE, MAP_SHARED, publisher_.fd(), 0),
            MAP_FAILED);
  EXPECT_NE(::ftruncate(publisher_.fd(), 0), 0);
  EXPECT_EQ(::pwrite(publisher_.fd(), "x", 1, 0), -1);
}

TEST_F(Snapshot, ListsInterfacesInAscendingOrder) {
  ASSERT_EQ(reader_.slot().interface_count, 6U);
  const std::vector<uint32_t> expected = {0x16000002, 0x16000009, 0x1A000001,
                                          0x1A000003, 0x1A000004, 0x1A000007};
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(reader_.interface(i).if_index, expected[i]);
  }
}

TEST_F(Snapshot, FindsInterfacesByBridgePortNumber) {
  const auto &positions = reader_.slot().interface_of_port;
  EXPECT_EQ(positions[4096 + 2], 1);
  EXPECT_EQ(positions[4096 + 9], 2);
  EXPECT_EQ(positions[128 + 1], 3);
  EXPECT_EQ(positions[128 + 3], 4);
  EXPECT_EQ(positions[128 + 4], 5);
  EXPECT_EQ(positions[128 + 7], 6);
  EXPECT_EQ(std::count(std::begin(positions), std::end(positions), 0), 8192 - 6);
}

TEST_F(Snapshot, DescribesAPortOfItsOwn) {
  const wire::SnapshotInterface &port = reader_.interface(3);
  EXPECT_EQ(port.base_port, 131);
  EXPECT_EQ(port.oper_status, 1);
  EXPECT_EQ(port.switched, 1);
  EXPECT_EQ(port.channel, 0);
  EXPECT_EQ(port.pc_if_index, 0U);
  EXPECT_EQ(vlans_in(port.vlans), (std::vector<unsigned>{1, 10}));
}

TEST_F(Snapshot, DescribesAMemberWithoutVlans) {
  const wire::SnapshotInterface &member = reader_.interface(4);
  EXPECT_EQ(member.base_port, 132);
  EXPECT_EQ(member.oper_status, 2);
  EXPECT_EQ(member.switched, 1);
  EXPECT_EQ(member.channel, 2);
  EXPECT_EQ(member.pc_if_index, 0x16000002U);
  EXPECT_TRUE(vlans_in(member.vlans).empty());
}

TEST_F(Snapshot, DescribesARoutedPortWithoutVlans) {
  const wire::SnapshotInterface &port = reader_.interface(5);
  EXPECT_EQ(port.base_port, 135);
  EXPECT_EQ(port.oper_status, 1);
  EXPECT_EQ(port.switched, 0);
  EXPECT_TRUE(vlans_in(port.vlans).empty());
}

TEST_F(Snapshot, DescribesPortChannels) {
  const wire::SnapshotInterface &with_members = reader_.interface(0);
  EXPECT_EQ(with_members.base_port, 4098);
  EXPECT_EQ(with_members.oper_status, 1);
  EXPECT_EQ(with_members.switched, 1);
  EXPECT_EQ(with_members.channel, 0);
  EXPECT_EQ(with_members.pc_if_index, 0U);
  EXPECT_EQ(vlans_in(with_members.vlans).size(), 100U);
  EXPECT_EQ(reader_.interface(1).oper_status, 2);
}

TEST_F(Snapshot, ListsMstInstancesFromTheCistOn) {
  ASSERT_EQ(reader_.slot().mst_instance_count, 3U);
  const auto &instances = reader_.slot().mst_instances;
  EXPECT_EQ(instances[0].id, 0);
  EXPECT_EQ(vlans_in(instances[0].vlans).size(), 4094U - 10U - 1U);
  EXPECT_EQ(vlans_in(instances[0].vlans).front(), 1U);
  EXPECT_EQ(vlans_in(instances[0].vlans).back(), 4093U);
  EXPECT_EQ(instances[1].id, 1);
  EXPECT_EQ(vlans_in(instances[1].vlans), (std::vector<unsigned>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
  EXPECT_EQ(instances[2].id, 4094);
  EXPECT_EQ(vlans_in(instances[2].vlans), std::vector<unsigned>{4094});
}

TEST_F(Snapshot, RaisesTheGenerationWithEachChange) {
  EXPECT_EQ(reader_.head().generation.load(), 1U);
  set("port.3.link", "down");
  EXPECT_EQ(reader_.head().generation.load(), 2U);
  EXPECT_EQ(reader_.interface(3).oper_status, 2);
  set("port.3.link", "up");
  EXPECT_EQ(reader_.head().generation.load(), 3U);
  EXPECT_EQ(reader_.interface(3).oper_status, 1);
}

TEST_F(Snapshot, LeavesTheOtherGenerationAlone) {
  const wire::SnapshotInterface &before = reader_.interface(3);
  set("port.3.link", "down");
  EXPECT_EQ(before.oper_status, 1);
  EXPECT_EQ(reader_.interface(3).oper_status, 2);
}

TEST_F(Snapshot, FollowsMembership) {
  set("port.1.channel", "0");
  EXPECT_EQ(reader_.interface(0).oper_status, 2);
  EXPECT_EQ(reader_.interface(2).pc_if_index, 0U);
  EXPECT_EQ(vlans_in(reader_.interface(2).vlans), std::vector<unsigned>{1});
  set("port.3.channel", "9");
  EXPECT_EQ(reader_.interface(1).oper_status, 1);
  EXPECT_EQ(reader_.interface(3).pc_if_index, 0x16000009U);
  EXPECT_TRUE(vlans_in(reader_.interface(3).vlans).empty());
}

TEST_F(Snapshot, FollowsTheVlanMapping) {
  set("mst.instance.1.vlans", "");
  EXPECT_EQ(vlans_in(reader_.slot().mst_instances[0].vlans).size(), 4093U);
  EXPECT_TRUE(vlans_in(reader_.slot().mst_instances[1].vlans).empty());
}

TEST(EmptySnapshot, HasTheCistOnly) {
  const Switch the_switch(parse_scenario("switch.mode = 'mst'", "test.toml"));
  const SnapshotPublisher publisher(&the_switch);
  const Reader reader(publisher);
  EXPECT_EQ(reader.slot().interface_count, 0U);
  EXPECT_EQ(reader.slot().mst_instance_count, 1U);
}

// As large as a switch can be.
TEST(LargestSnapshot, HoldsEveryInterfaceAndInstance) {
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
  const SnapshotPublisher publisher(&the_switch);
  const Reader reader(publisher);
  EXPECT_EQ(reader.slot().interface_count, 8062U);
  EXPECT_EQ(reader.interface(8061).if_index, 0x1A000F7FU);
  EXPECT_EQ(reader.slot().interface_of_port[4095], 8062);
  EXPECT_EQ(reader.slot().interface_of_port[8191], 4095);
  EXPECT_EQ(reader.slot().mst_instance_count, 65U);
}

}  // namespace
