// Reading the snapshot while it stands still, while it is torn and while it changes all the time.
#include <fcntl.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/vlan_mgr.h"
#include "platform_test.h"
#include "snapshot_reader.h"
#include "wire/if_index.h"

namespace wire = stpplatform::wire;
using stpplatform::SlotView;
using stpplatform::SnapshotReader;

namespace {

constexpr uint32_t kCapacity = 8;

class SnapshotReaders : public testing::Test {
 protected:
  SnapshotReaders() : file_(kCapacity) {
    file_.seal(F_SEAL_SHRINK | F_SEAL_GROW);
    EXPECT_EQ(reader_.map(file_.descriptor(), file_.size()), nullptr);
  }
  ~SnapshotReaders() override { reader_.unmap(); }

  SnapshotFile file_;
  SnapshotReader reader_;
};

TEST_F(SnapshotReaders, ALookDuringWhichTheSnapshotChangedIsRepeated) {
  file_.publish({physical_port(1)});
  int looks = 0;
  uint32_t count = 0;
  const cmd_result result = reader_.read([&](const SlotView &slot) {
    count = slot.interface_count();
    if (++looks == 1) {
      file_.publish({physical_port(1), physical_port(2)});
    }
    return CMD_OK;
  });
  EXPECT_EQ(result, CMD_OK);
  EXPECT_EQ(looks, 2);
  EXPECT_EQ(count, 2U);
}

TEST_F(SnapshotReaders, ASnapshotThatNeverStandsStillIsGivenUp) {
  int looks = 0;
  const cmd_result result = reader_.read([&](const SlotView &) {
    ++looks;
    file_.publish({physical_port(1)});
    return CMD_OK;
  });
  EXPECT_EQ(result, CMD_TIMEOUT);
  EXPECT_GT(looks, 1);
}

TEST_F(SnapshotReaders, ASlotWithImpossibleCountsIsNotLookedAt) {
  file_.publish({physical_port(1)});
  const auto look = [](const SlotView &) -> cmd_result {
    ADD_FAILURE() << "looked";
    return CMD_OK;
  };
  file_.current().head->interface_count = kCapacity + 1;
  EXPECT_EQ(reader_.read(look), CMD_BAD_REPLY);
  file_.current().head->interface_count = UINT32_MAX;
  EXPECT_EQ(reader_.read(look), CMD_BAD_REPLY);
  file_.current().head->interface_count = kCapacity;
  file_.current().head->mst_instance_count = wire::kMaxMstInstances + 1;
  EXPECT_EQ(reader_.read(look), CMD_BAD_REPLY);
}

TEST_F(SnapshotReaders, ACapacityThatChangesLaterIsIgnored) {
  file_.head()->interface_capacity = UINT32_MAX;
  file_.current().head->interface_count = kCapacity + 1;
  EXPECT_EQ(reader_.read([](const SlotView &) { return CMD_OK; }), CMD_BAD_REPLY);
}

TEST_F(SnapshotReaders, PositionsBeyondTheInterfacesAreNoInterfaces) {
  file_.publish({physical_port(1)});
  file_.current().head->interface_of_port[200] = 2;
  file_.current().head->interface_of_port[201] = UINT16_MAX;
  const cmd_result result = reader_.read([](const SlotView &slot) {
    EXPECT_NE(slot.find_port(129), nullptr);
    EXPECT_EQ(slot.find_port(200), nullptr);
    EXPECT_EQ(slot.find_port(201), nullptr);
    EXPECT_EQ(slot.find_port(wire::kPortNumbers), nullptr);
    EXPECT_EQ(slot.find_port(UINT32_MAX), nullptr);
    return CMD_OK;
  });
  EXPECT_EQ(result, CMD_OK);
}

// Any octets at all in the slot: found by the sanitizers if one of them leads outside.
TEST_F(SnapshotReaders, GarbageLeadsNowhere) {
  const WritableSlot slot = file_.current();
  for (const int octet : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
    std::memset(static_cast<void *>(slot.head), octet, wire::snapshot_slot_size(kCapacity));
    slot.head->interface_count = kCapacity;
    slot.head->mst_instance_count = wire::kMaxMstInstances;
    const cmd_result result = reader_.read([](const SlotView &view) {
      for (uint32_t i = 0; i <= 32; ++i) {
        view.find_interface(i == 32 ? UINT32_MAX : (1U << i));
      }
      for (uint32_t port = 0; port < wire::kPortNumbers; ++port) {
        view.find_port(port);
      }
      return CMD_OK;
    });
    EXPECT_EQ(result, CMD_OK);
  }
}

class LiveSnapshots : public PlatformTest {};

// Everything in generation g follows from g, so that an answer mixed from two of them shows.
void publish_generation(const SnapshotFile &file, uint32_t g) {
  file.publish([g](const WritableSlot &slot) {
    const auto byte = static_cast<uint8_t>(g);
    const auto put16 = [](uint16_t *to, uint32_t value) {
      __atomic_store_n(to, static_cast<uint16_t>(value), __ATOMIC_RELAXED);
    };
    const auto put = [](auto *to, auto value) { __atomic_store_n(to, value, __ATOMIC_RELAXED); };
    put(&slot.head->interface_count, 2U);
    put(&slot.head->mst_instance_count, 1U);
    SnapshotInterface &first = slot.interfaces[0];
    SnapshotInterface &second = slot.interfaces[1];
    put(&first.if_index, wire::if_index_of(IF_TYPE_PHYSICAL, 1));
    put16(&first.base_port, 129);
    put16(&first.channel, g & 0xFFFF);
    put(&first.pc_if_index, g & 0xFFFF);
    put(&first.switched, uint8_t{1});
    put(&second.if_index, wire::if_index_of(IF_TYPE_PHYSICAL, 2));
    put16(&second.base_port, 130);
    put(&second.switched, uint8_t{1});
    put16(&slot.head->mst_instances[0].id, 5);
    for (uint8_t &octet : slot.head->mst_instances[0].vlans) {
      put(&octet, byte);
    }
  });
}

TEST_F(LiveSnapshots, EveryAnswerIsFromOneGeneration) {
  publish_generation(switch_.snapshot(), 1);
  ASSERT_TRUE(switch_answers());
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    for (uint32_t g = 2; !stop; ++g) {
      publish_generation(switch_.snapshot(), g);
    }
  });
  constexpr int kAnswers = 2000;
  constexpr int kMostTries = 1000000;
  const uint32_t port = wire::if_index_of(IF_TYPE_PHYSICAL, 1);
  int records = 0;
  int bitmaps = 0;
  for (int i = 0; i < kMostTries && (records < kAnswers || bitmaps < kAnswers); ++i) {
    pcm_port_channel record;
    if (pcm_get_pc_for_port(port, &record) == CMD_OK) {
      ++records;
      EXPECT_EQ(record.channel, static_cast<uint32_t>(record.pc_if_index));
      EXPECT_EQ(static_cast<uint32_t>(record.if_index), port);
    }
    stp_vlan_bmp vlans;
    if (stp_dot1d_bridgemib_get_mst_ctx(5, &vlans) == CMD_OK) {
      ++bitmaps;
      EXPECT_EQ(std::memcmp(vlans.bits, vlans.bits + 1, sizeof vlans.bits - 1), 0);
    }
  }
  stop = true;
  writer.join();
  EXPECT_GE(records, kAnswers);
  EXPECT_GE(bitmaps, kAnswers);
}

TEST_F(LiveSnapshots, APortThatChangesPlacesIsAlwaysFoundOnce) {
  const auto publish = [&](bool first_is_member) {
    switch_.snapshot().publish([&](const WritableSlot &slot) {
      for (uint32_t i = 0; i < 2; ++i) {
        SnapshotInterface interface = physical_port(i + 1);
        if ((i == 0) == first_is_member) {
          add_vlan(interface.vlans, 10);
        }
        const auto *from = reinterpret_cast<const uint8_t *>(&interface);
        auto *to = reinterpret_cast<uint8_t *>(&slot.interfaces[i]);
        for (size_t k = 0; k < sizeof interface; ++k) {
          __atomic_store_n(to + k, from[k], __ATOMIC_RELAXED);
        }
      }
      __atomic_store_n(&slot.head->interface_count, 2U, __ATOMIC_RELAXED);
    });
  };
  publish(true);
  ASSERT_TRUE(switch_answers());
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    for (bool first = false; !stop; first = !first) {
      publish(first);
    }
  });
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  add_vlan(vlans.bits, 10);
  constexpr int kAnswers = 1000;
  constexpr int kMostTries = 1000000;
  int answers = 0;
  for (int i = 0; i < kMostTries && answers < kAnswers; ++i) {
    vlan_mgr_baseport_bmp *ports = vlan_mgr_get_baseport_membership_range(&vlans);
    if (ports != nullptr) {
      ++answers;
      // Ports 129 and 130 are bits 0x40 and 0x20 of octet 16.
      EXPECT_TRUE(ports->bits[16] == 0x40 || ports->bits[16] == 0x20) << int{ports->bits[16]};
      std::free(ports);
    }
  }
  stop = true;
  writer.join();
  EXPECT_EQ(answers, kAnswers);
}

}  // namespace
