#include "bitmap.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/vlan_mgr.h"

using namespace stpsnmp::bitmap;

namespace {

void insert(stp_vlan_bmp *vlans, uint32_t vlan) {
  vlans->bits[vlan / 8] = static_cast<uint8_t>(vlans->bits[vlan / 8] | 0x80U >> vlan % 8);
}

std::string list_of(const std::set<uint32_t> &members) {
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  for (const uint32_t vlan : members) {
    insert(&vlans, vlan);
  }
  const std::vector<char> guard(kVlanListSize, 'x');
  char text[kVlanListSize];
  std::memcpy(text, guard.data(), sizeof text);
  return write_vlan_list(vlans, text);
}

TEST(VlanList, OfNothingIsEmpty) { EXPECT_EQ(list_of({}), ""); }

TEST(VlanList, ShowsARunOfOneByItsNumberAndALongerOneByItsEnds) {
  EXPECT_EQ(list_of({1}), "1");
  EXPECT_EQ(list_of({1, 2}), "1-2");
  EXPECT_EQ(list_of({1, 3}), "1,3");
  EXPECT_EQ(list_of({0, 7, 8, 9, 31, 32, 63, 64, 65, 2047, 2048, 4094, 4095}),
            "0,7-9,31-32,63-65,2047-2048,4094-4095");
}

TEST(VlanList, OfAllIsOneRun) {
  std::set<uint32_t> all;
  for (uint32_t vlan = 0; vlan < kVlans; ++vlan) {
    all.insert(vlan);
  }
  EXPECT_EQ(list_of(all), "0-4095");
}

TEST(VlanList, HasRoomForTheLongestLists) {
  for (const uint32_t period : {2U, 3U, 4U}) {
    std::set<uint32_t> members;
    std::string expected;
    for (uint32_t vlan = 0; vlan < kVlans; ++vlan) {
      if (vlan % period != period - 1) {
        members.insert(vlan);
      }
    }
    for (auto at = members.begin(); at != members.end();) {
      const uint32_t first = *at;
      uint32_t last = first;
      for (++at; at != members.end() && *at == last + 1; ++at) {
        last = *at;
      }
      expected += (expected.empty() ? "" : ",") + std::to_string(first) +
                  (last == first ? "" : "-" + std::to_string(last));
    }
    EXPECT_EQ(list_of(members), expected);
  }
}

TEST(Run, HasTheSizeOfWhatIsWritten) {
  const auto text_of = [](const stpsnmp::bitmap::Run &run) {
    char text[32];
    return std::string(text, write_run(text, run));
  };
  EXPECT_EQ(text_of({0, 0}), "0");
  EXPECT_EQ(text_of({9, 10}), "9-10");
  EXPECT_EQ(text_of({0, 65535}), "0-65535");
  EXPECT_EQ(text_of({4294967294, 4294967295}), "4294967294-4294967295");
  for (const uint32_t first :
       {0U, 1U, 9U, 10U, 11U, 99U, 100U, 999U, 1000U, 9999U, 10000U, 65535U, 4294967294U}) {
    for (const uint32_t more : {0U, 1U}) {
      const stpsnmp::bitmap::Run run{first, first + more};
      EXPECT_EQ(run_size(run), text_of(run).size()) << text_of(run);
    }
  }
}

TEST(FindBit, EqualsAPlainSearchInRandomBitmaps) {
  constexpr unsigned kSeed = 20260101;
  std::mt19937 random(kSeed);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same bitmaps each time
  const auto below = [&random](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
  for (int round = 0; round < 20; ++round) {
    stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
    std::set<uint32_t> members;
    for (uint32_t i = 0, count = below(300); i < count; ++i) {
      const uint32_t vlan = below(kVlans);
      insert(&vlans, vlan);
      members.insert(vlan);
    }
    for (uint32_t from = 0; from <= kVlans; ++from) {
      const auto set = members.lower_bound(from);
      ASSERT_EQ(find_set(vlans.bits, kVlans, from), set == members.end() ? kVlans : *set) << from;
      uint32_t clear = from;
      while (clear < kVlans && members.contains(clear)) {
        ++clear;
      }
      ASSERT_EQ(find_clear(vlans.bits, kVlans, from), clear) << from;
    }
  }
}

// Runs at any distance from each other, from neighbours to a bitmap with one of them.
TEST(FindBit, EqualsAPlainSearchAcrossTheLargestBitmaps) {
  constexpr unsigned kSeed = 20260102;
  constexpr uint32_t kBits = 8 * BASEPORT_BITMAP_SIZE;
  std::mt19937 random(kSeed);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same bitmaps each time
  const auto below = [&random](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
  for (uint32_t round = 0; round < 16; ++round) {
    // Every other round, runs of clear bits among those that are set.
    const bool is_set = round % 2 == 0;
    std::vector<bool> bits(kBits, !is_set);
    std::vector<uint8_t> octets(kBits / 8 + 1, is_set ? 0x00 : 0xFF);
    uint8_t *const bitmap = octets.data() + round % 4 / 2;  // where records have them, no word is aligned
    const uint32_t gap = 1U << below(16);
    for (uint32_t at = below(gap); at < kBits; at += 1 + below(gap)) {
      for (const uint32_t end = std::min(kBits, at + 1 + below(130)); at < end; ++at) {
        bits[at] = is_set;
        bitmap[at / 8] = static_cast<uint8_t>(bitmap[at / 8] ^ 0x80U >> at % 8);
      }
    }
    const auto plain = [&bits](uint32_t from, bool wanted) {
      while (from < kBits && bits[from] != wanted) {
        ++from;
      }
      return from;
    };
    for (uint32_t from = 0; from <= kBits; from += 1 + below(300)) {
      ASSERT_EQ(find_set(bitmap, kBits, from), plain(from, true)) << "round " << round << " from " << from;
      ASSERT_EQ(find_clear(bitmap, kBits, from), plain(from, false)) << "round " << round << " from " << from;
    }
  }
}

// One bit at a time, at every place where words and their groups begin and end.
TEST(FindBit, FindsTheOnlyBitWhereverItIs) {
  constexpr uint32_t kBits = 8 * BASEPORT_BITMAP_SIZE;
  std::vector<uint8_t> clear(kBits / 8, 0x00);
  std::vector<uint8_t> set(kBits / 8, 0xFF);
  for (uint32_t boundary = 0; boundary <= kBits; boundary += 64) {
    for (const uint32_t bit : {boundary - 1, boundary, boundary + 63}) {
      if (bit >= kBits) {
        continue;
      }
      clear[bit / 8] = static_cast<uint8_t>(0x80U >> bit % 8);
      set[bit / 8] = static_cast<uint8_t>(~clear[bit / 8]);
      ASSERT_EQ(find_set(clear.data(), kBits, 0), bit);
      ASSERT_EQ(find_set(clear.data(), kBits, bit), bit);
      ASSERT_EQ(find_set(clear.data(), kBits, bit + 1), kBits);
      ASSERT_EQ(find_clear(set.data(), kBits, 0), bit);
      ASSERT_EQ(find_clear(set.data(), kBits, bit + 1), kBits);
      clear[bit / 8] = 0x00;
      set[bit / 8] = 0xFF;
    }
  }
}

TEST(FindBit, ReadsNoWordBehindTheEnd) {
  constexpr uint32_t kMostWords = 100;
  for (uint32_t words = 0; words <= kMostWords; ++words) {
    const std::vector<uint8_t> clear(size_t{8} * words, 0x00);
    const std::vector<uint8_t> set(size_t{8} * words, 0xFF);
    for (uint32_t from = 0; from <= 64 * words; from += 64) {
      ASSERT_EQ(find_set(clear.data(), 64 * words, from), 64 * words);
      ASSERT_EQ(find_clear(set.data(), 64 * words, from), 64 * words);
    }
  }
}

TEST(FindBit, FindsNothingBehindTheEnd) {
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  std::memset(vlans.bits, 0xFF, sizeof vlans.bits);
  EXPECT_EQ(find_set(vlans.bits, kVlans, kVlans), kVlans);
  EXPECT_EQ(find_clear(vlans.bits, kVlans, 0), kVlans);
}

}  // namespace
