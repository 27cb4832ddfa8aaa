// Reading the image while it stands still, while it is torn and while it changes all the time; and for how
// long what it says counts.
#include <fcntl.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "image_reader.h"
#include "lease_clock.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/vlan_mgr.h"
#include "platform_test.h"
#include "wire/if_index.h"

namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;
using stpplatform::ImageReader;
using stpplatform::LeaseClock;
using stpplatform::Reading;
using stpplatform::Vouching;

namespace {

constexpr auto kOk = [](const answers::Image &) { return CMD_OK; };
constexpr uint32_t kAllFlags = wire::kAskMe | wire::kMoved;

class ImageReaders : public testing::Test {
 protected:
  ImageReaders() {
    file_.seal(F_SEAL_SHRINK | F_SEAL_GROW);
    file_.publish({{physical_port(1)}});
    file_.renew_lease();
    EXPECT_EQ(reader_.map(file_.descriptor(), file_.size()), nullptr);
  }
  ~ImageReaders() override { reader_.unmap(); }

  template <class Look>
  Reading read(Look look) {
    return reader_.read(kAllFlags, Vouching::kNow, look, &result_);
  }

  StoppedClock clock_;
  ImageFile file_;
  ImageReader reader_;
  cmd_result result_ = CMD_TIMEOUT;
};

TEST_F(ImageReaders, WithoutAnImageNothingIsRead) {
  reader_.unmap();
  const auto look = [](const answers::Image &) -> cmd_result {
    ADD_FAILURE() << "looked";
    return CMD_OK;
  };
  EXPECT_EQ(read(look), Reading::kNoImage);
}

TEST_F(ImageReaders, TheResultOfALookIsPassedOn) {
  EXPECT_EQ(read(kOk), Reading::kCounts);
  EXPECT_EQ(result_, CMD_OK);
  EXPECT_EQ(read([](const answers::Image &) { return CMD_NO_ENTRY; }), Reading::kCounts);
  EXPECT_EQ(result_, CMD_NO_ENTRY);
  EXPECT_EQ(read([](const answers::Image &) { return CMD_BAD_REPLY; }), Reading::kUnsound);
}

TEST_F(ImageReaders, ALookDuringWhichTheImageChangedIsRepeated) {
  int looks = 0;
  uint32_t count = 0;
  const Reading reading = read([&](const answers::Image &image) {
    count = image.interfaces().count;
    if (++looks == 1) {
      file_.publish({{physical_port(1), physical_port(2)}});
    }
    return CMD_OK;
  });
  EXPECT_EQ(reading, Reading::kCounts);
  EXPECT_EQ(looks, 2);
  EXPECT_EQ(count, 2U);
}

TEST_F(ImageReaders, AnImageThatNeverStandsStillIsGivenUp) {
  int looks = 0;
  const Reading reading = read([&](const answers::Image &) {
    ++looks;
    file_.publish({{physical_port(1)}});
    return CMD_OK;
  });
  EXPECT_EQ(reading, Reading::kChanging);
  EXPECT_GT(looks, 1);
}

// What a look makes of a slot that changes under it means nothing.
TEST_F(ImageReaders, AContradictionInAGenerationThatDidNotHoldIsNone) {
  int looks = 0;
  const Reading reading = read([&](const answers::Image &) {
    if (++looks == 1) {
      file_.publish({{physical_port(1)}});
      return CMD_BAD_REPLY;
    }
    return CMD_OK;
  });
  EXPECT_EQ(reading, Reading::kCounts);
}

TEST_F(ImageReaders, TheViewIsKeptWhileTheGenerationLasts) {
  const auto number = [&] {
    uint64_t found = 0;
    read([&](const answers::Image &) {
      found = reader_.view_number();
      return CMD_OK;
    });
    return found;
  };
  const uint64_t first = number();
  EXPECT_EQ(number(), first);
  file_.publish({{physical_port(1)}});
  const uint64_t second = number();
  EXPECT_NE(second, first);
  EXPECT_EQ(number(), second);
  reader_.unmap();
  ASSERT_EQ(reader_.map(file_.descriptor(), file_.size()), nullptr);
  EXPECT_NE(number(), second) << "another image";
}

TEST_F(ImageReaders, ASlotWhoseTablesAreNotInItIsNotLookedAt) {
  const auto look = [](const answers::Image &) -> cmd_result {
    ADD_FAILURE() << "looked";
    return CMD_OK;
  };
  for (const wire::ImageTable table : {wire::ImageTable{ImageFile::kSlotSize + 8, 1}, wire::ImageTable{4, 1},
                                       wire::ImageTable{0, UINT32_MAX}}) {
    file_.publish(ImageContent{});
    file_.current()->interfaces = table;
    EXPECT_EQ(read(look), Reading::kUnsound);
  }
}

TEST_F(ImageReaders, ASlotSizeThatChangesLaterIsIgnored) {
  file_.head()->slot_size = UINT32_MAX - 7;
  file_.current()->interfaces = {ImageFile::kSlotSize, 1};
  EXPECT_EQ(read(kOk), Reading::kUnsound);
}

TEST_F(ImageReaders, PositionsBeyondTheInterfacesAreNoInterfaces) {
  file_.current()->interface_of_port[200] = 2;
  file_.current()->interface_of_port[201] = UINT16_MAX;
  const Reading reading = read([](const answers::Image &image) {
    EXPECT_NE(image.find_port(129), nullptr);
    EXPECT_EQ(image.find_port(200), nullptr);
    EXPECT_EQ(image.find_port(201), nullptr);
    EXPECT_EQ(image.find_port(wire::kPortNumbers), nullptr);
    EXPECT_EQ(image.find_port(UINT32_MAX), nullptr);
    return CMD_OK;
  });
  EXPECT_EQ(reading, Reading::kCounts);
}

TEST_F(ImageReaders, AFlagCountsWhereItIsHeeded) {
  file_.head()->flags = wire::kAskMe;
  EXPECT_EQ(read(kOk), Reading::kAskMe);
  EXPECT_EQ(reader_.read(wire::kMoved, Vouching::kNow, kOk, &result_), Reading::kCounts);
  file_.head()->flags = wire::kAskMe | wire::kMoved;
  EXPECT_EQ(read(kOk), Reading::kMoved);
  file_.head()->flags = wire::kMoved;
  EXPECT_EQ(reader_.read(wire::kMoved, Vouching::kNow, kOk, &result_), Reading::kMoved);
  file_.head()->flags = ~kAllFlags;
  EXPECT_EQ(read(kOk), Reading::kCounts);
}

TEST_F(ImageReaders, AnImageThatIsMovedDuringALookCountsNoMore) {
  const Reading reading = read([&](const answers::Image &) {
    file_.head()->flags |= wire::kMoved;
    return CMD_OK;
  });
  EXPECT_EQ(reading, Reading::kMoved);
}

// The coarse clock may lag behind the time by several of its ticks.
constexpr uint64_t kMaxLagNs = LeaseClock::kMaxLagTicks * StoppedClock::kTickNs;

TEST_F(ImageReaders, NothingCountsWithoutALease) {
  file_.head()->lease_end = 0;
  EXPECT_EQ(read(kOk), Reading::kLeaseOver);
}

TEST_F(ImageReaders, ALeaseRunsOutInTimeHoweverTheClockLags) {
  file_.head()->lease_end = clock_.now_ns() + 1;
  EXPECT_EQ(read(kOk), Reading::kCounts);
  for (const uint64_t lag : {uint64_t{0}, StoppedClock::kTickNs, kMaxLagNs}) {
    clock_.set_lag_ns(lag);
    file_.head()->lease_end = clock_.now_ns() + 1;
    clock_.pass_ns(1);
    EXPECT_EQ(read(kOk), Reading::kLeaseOver) << lag;
  }
}

// Also where the tick is so late that nobody has reckoned with it.
TEST_F(ImageReaders, ALeaseThatWasJustGivenHoldsHoweverTheClockLags) {
  for (const uint64_t lag : {uint64_t{0}, StoppedClock::kTickNs, kMaxLagNs, kMaxLagNs + 1, 20 * kMaxLagNs}) {
    clock_.set_lag_ns(lag);
    file_.renew_lease();
    EXPECT_EQ(read(kOk), Reading::kCounts) << lag;
  }
}

TEST_F(ImageReaders, ALeaseThatRunsOutDuringALookIsOver) {
  const Reading reading = read([&](const answers::Image &) {
    clock_.pass_ns(wire::kLeaseNs);
    return CMD_OK;
  });
  EXPECT_EQ(reading, Reading::kLeaseOver);
}

TEST_F(ImageReaders, ALeaseThatIsRenewedDuringALookHolds) {
  clock_.pass_ns(wire::kLeaseNs);
  const Reading reading = read([&](const answers::Image &) {
    file_.renew_lease();
    return CMD_OK;
  });
  EXPECT_EQ(reading, Reading::kCounts);
}

TEST_F(ImageReaders, ALeaseFromTheFutureIsNone) {
  for (const uint64_t lease_end :
       {clock_.now_ns() + wire::kLeaseNs + kMaxLagNs + 1, clock_.now_ns() * 2, UINT64_MAX}) {
    file_.head()->lease_end = lease_end;
    EXPECT_EQ(read(kOk), Reading::kLeaseOver) << lease_end;
  }
}

TEST_F(ImageReaders, AClockThatJumpsEndsTheLease) {
  const uint64_t now = clock_.now_ns();
  clock_.set_ns(now + 1'000'000'000'000);
  EXPECT_EQ(read(kOk), Reading::kLeaseOver);
  clock_.set_ns(now / 2);
  EXPECT_EQ(read(kOk), Reading::kLeaseOver);
  clock_.set_ns(0);
  EXPECT_EQ(read(kOk), Reading::kLeaseOver);
  clock_.set_ns(now);
  EXPECT_EQ(read(kOk), Reading::kCounts);
}

// What a search makes of an image whose lease has just run out.
class LooksOfASearch : public ImageReaders {
 protected:
  Reading look() { return reader_.read(kAllFlags, Vouching::kJustNow, kOk, &result_); }

  // How many looks count until one does not.
  int looks_that_count() {
    int count = 0;
    while (count <= LeaseClock::kLooksOfAReading && look() == Reading::kCounts) {
      ++count;
    }
    return count;
  }
};

TEST_F(LooksOfASearch, AreJudgedByOneReadingOfTheClock) {
  reader_.begin_request();
  EXPECT_EQ(look(), Reading::kCounts);
  clock_.pass_ns(wire::kLeaseNs);
  EXPECT_EQ(looks_that_count(), 32);
  EXPECT_EQ(look(), Reading::kLeaseOver);
}

TEST_F(LooksOfASearch, EndWithAValueForWhichNobodyVouches) {
  reader_.begin_request();
  EXPECT_EQ(look(), Reading::kCounts);
  clock_.pass_ns(wire::kLeaseNs);
  EXPECT_EQ(look(), Reading::kCounts);
  EXPECT_EQ(read(kOk), Reading::kLeaseOver);
  EXPECT_EQ(look(), Reading::kLeaseOver);
}

TEST_F(LooksOfASearch, AreEachJudgedOutsideRequests) {
  EXPECT_EQ(look(), Reading::kCounts);
  clock_.pass_ns(wire::kLeaseNs);
  EXPECT_EQ(look(), Reading::kLeaseOver);
  file_.renew_lease();
  reader_.begin_request();
  reader_.end_request();
  EXPECT_EQ(look(), Reading::kCounts);
  clock_.pass_ns(wire::kLeaseNs);
  EXPECT_EQ(look(), Reading::kLeaseOver);
}

TEST_F(LooksOfASearch, AreJudgedAnewInTheNextRequest) {
  reader_.begin_request();
  EXPECT_EQ(look(), Reading::kCounts);
  clock_.pass_ns(wire::kLeaseNs);
  reader_.begin_request();
  EXPECT_EQ(look(), Reading::kLeaseOver);
}

TEST_F(LooksOfASearch, AreJudgedAnewWhenTheLeaseIsAnother) {
  reader_.begin_request();
  EXPECT_EQ(look(), Reading::kCounts);
  file_.head()->lease_end = 0;
  EXPECT_EQ(look(), Reading::kLeaseOver);
}

TEST_F(ImageReaders, AnUnsoundImageIsNotJudgedWithoutALease) {
  file_.current()->interfaces.offset = UINT32_MAX;
  clock_.pass_ns(wire::kLeaseNs);
  EXPECT_EQ(read(kOk), Reading::kLeaseOver);
  file_.renew_lease();
  EXPECT_EQ(read(kOk), Reading::kUnsound);
}

TEST_F(ImageReaders, AnImageOfAnotherVersionSaysWhatIsToBeRestarted) {
  file_.head()->version = wire::kImageVersion + 1;
  EXPECT_STREQ(reader_.map(file_.descriptor(), file_.size()),
               "the image has version 3, and the agent reads version 2: restart the agent, which is older");
  file_.head()->version = wire::kImageVersion - 1;
  EXPECT_STREQ(reader_.map(file_.descriptor(), file_.size()),
               "the image has version 1, and the agent reads version 2: restart the switch, which is older");
  EXPECT_EQ(read(kOk), Reading::kNoImage);
}

class LiveImages : public PlatformTest {};

// Everything in generation g follows from g, so that an answer mixed from two of them shows.
std::vector<uint8_t> generation(uint32_t g) {
  ImagePort first = physical_port(1);
  first.channel = static_cast<uint16_t>(g);
  first.pc_if_index = g & 0xFFFF;
  ImageMstInstance five = mst_instance(5);
  std::memset(five.vlans, static_cast<int>(g & 0xFF), sizeof five.vlans);
  return lay_out({{first, physical_port(2)}, {five}});
}

TEST_F(LiveImages, EveryAnswerIsFromOneGeneration) {
  std::vector<std::vector<uint8_t>> generations;
  for (uint32_t g = 1; g <= 300; ++g) {
    generations.push_back(generation(g));
  }
  switch_.image().publish(generations.back());
  ASSERT_TRUE(switch_answers());
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    for (size_t g = 0; !stop; g = (g + 1) % generations.size()) {
      switch_.image().publish(generations[g]);
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

TEST_F(LiveImages, APortThatChangesPlacesIsAlwaysFoundOnce) {
  const std::vector<uint8_t> first_is_member = lay_out({{physical_port(1, {10}), physical_port(2)}});
  const std::vector<uint8_t> second_is_member = lay_out({{physical_port(1), physical_port(2, {10})}});
  switch_.image().publish(first_is_member);
  ASSERT_TRUE(switch_answers());
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    for (bool first = false; !stop; first = !first) {
      switch_.image().publish(first ? first_is_member : second_is_member);
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
