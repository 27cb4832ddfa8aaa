// Reply handles: where they live, and how attributes are found in them.
#include "replies.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <numeric>
#include <set>
#include <vector>

#include "mutation.h"
#include "platform/cmd.h"
#include "platform/stp_protocol.h"

namespace wire = stpplatform::wire;
using stpplatform::complete_reply;
using stpplatform::Reply;

namespace {

// More than any pool has.
constexpr size_t kMany = 50;

Reply *reply_with(uint32_t number) {
  Reply *reply = stpplatform::prepare_reply();
  stpplatform::answer_of(reply).add_number(STP_ATTRIBUTE_TREE, number);
  complete_reply(reply);
  return reply;
}

// 0 when the attribute is missing.
uint32_t number_of(Reply *reply, uint32_t token = STP_ATTRIBUTE_TREE) {
  void *value = nullptr;
  uint32_t length = 0;
  uint32_t number = 0;
  if (cmd_rsp_attr_get(reply, token, &value, &length) == CMD_OK) {
    EXPECT_EQ(length, sizeof number);
    std::memcpy(&number, value, sizeof number);
  }
  return number;
}

std::vector<uint8_t> attributes_of(const std::vector<std::pair<uint32_t, uint32_t>> &numbers) {
  std::vector<uint8_t> octets(numbers.size() * 12);
  for (size_t i = 0; i < numbers.size(); ++i) {
    wire::write_attribute(octets.data() + 12 * i, 12, {numbers[i].first, 4, &numbers[i].second});
  }
  return octets;
}

TEST(Replies, AnyNumberOfThemLivesAtATimeInWhateverOrderTheyGo) {
  Random random = seeded(1);
  for (int round = 0; round < 50; ++round) {
    std::vector<Reply *> replies;
    for (uint32_t i = 1; i <= kMany; ++i) {
      replies.push_back(reply_with(i));
    }
    EXPECT_EQ(std::set<Reply *>(replies.begin(), replies.end()).size(), kMany);
    std::vector<uint32_t> order(kMany);
    std::iota(order.begin(), order.end(), 0U);
    if (round == 1) {
      std::reverse(order.begin(), order.end());
    } else if (round > 1) {
      std::shuffle(order.begin(), order.end(), random);
    }
    for (const uint32_t i : order) {
      EXPECT_EQ(number_of(replies[i]), i + 1);
      cmd_snmp_free_rx_hndl(replies[i]);
    }
  }
}

TEST(Replies, ThoseThatNobodyReleasesCostThePoolAndNothingElse) {
  std::vector<Reply *> lost;
  for (uint32_t i = 1; i <= kMany; ++i) {
    lost.push_back(reply_with(i));
    Reply *other = reply_with(1000 + i);
    EXPECT_EQ(number_of(other), 1000 + i);
    cmd_snmp_free_rx_hndl(other);
  }
  for (uint32_t i = 1; i <= kMany; ++i) {
    EXPECT_EQ(number_of(lost[i - 1]), i);
    cmd_snmp_free_rx_hndl(lost[i - 1]);
  }
}

TEST(Replies, OneThatIsReleasedTwiceIsReleasedOnce) {
  Reply *reply = reply_with(1);
  cmd_snmp_free_rx_hndl(reply);
  cmd_snmp_free_rx_hndl(reply);
  Reply *one = reply_with(1);
  Reply *two = reply_with(2);
  EXPECT_NE(one, two);
  EXPECT_EQ(number_of(one), 1U);
  EXPECT_EQ(number_of(two), 2U);
  cmd_snmp_free_rx_hndl(one);
  cmd_snmp_free_rx_hndl(two);
}

TEST(Replies, WhatIsNoneIsLeftAlone) {
  alignas(max_align_t) uint8_t octets[512] = {};
  cmd_snmp_free_rx_hndl(octets);
  EXPECT_EQ(stpplatform::reply_of(octets), nullptr);
  EXPECT_EQ(stpplatform::reply_of(nullptr), nullptr);
  void *request = cmd_req_init(octets, sizeof octets);
  cmd_snmp_free_rx_hndl(request);
  EXPECT_EQ(cmd_req_cmdId_set(request, 1), CMD_OK);
}

TEST(Replies, AReleasedOneHasNoAttributes) {
  Reply *reply = reply_with(1);
  cmd_snmp_free_rx_hndl(reply);
  void *value = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(cmd_rsp_attr_get(reply, STP_ATTRIBUTE_TREE, &value, &length), CMD_INVALID_ARGUMENT);
}

TEST(Replies, AttributesAreFoundInAnyOrder) {
  const std::map<uint32_t, uint32_t> numbers = {
      {STP_ATTRIBUTE_TREE, 11}, {STP_ATTRIBUTE_HOPS, 12}, {STP_ATTRIBUTE_EDGE, 13}, {STP_ATTRIBUTE_PEER, 14}};
  Random random = seeded(2);
  const auto expect_all = [&](Reply *reply) {
    for (int i = 0; i < 200; ++i) {
      const auto wanted = std::next(numbers.begin(), static_cast<int>(random() % numbers.size()));
      EXPECT_EQ(number_of(reply, wanted->first), wanted->second);
      EXPECT_EQ(number_of(reply, STP_ATTRIBUTE_DISPUTE), 0U);
    }
    cmd_snmp_free_rx_hndl(reply);
  };
  Reply *answered = stpplatform::prepare_reply();
  for (const auto &[token, number] : numbers) {
    stpplatform::answer_of(answered).add_number(static_cast<stp_attribute>(token), number);
  }
  complete_reply(answered);
  expect_all(answered);
  const std::vector<uint8_t> octets = attributes_of({numbers.begin(), numbers.end()});
  expect_all(stpplatform::copy_reply(octets.data(), static_cast<uint32_t>(octets.size())));
}

TEST(Replies, OfAttributesWithTheSameTokenTheFirstCountsWhateverWasFoundBefore) {
  const std::vector<uint8_t> octets = attributes_of(
      {{STP_ATTRIBUTE_TREE, 1}, {STP_ATTRIBUTE_HOPS, 2}, {STP_ATTRIBUTE_TREE, 3}, {STP_ATTRIBUTE_HOPS, 4}});
  Reply *reply = stpplatform::copy_reply(octets.data(), static_cast<uint32_t>(octets.size()));
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(number_of(reply, STP_ATTRIBUTE_HOPS), 2U);
    EXPECT_EQ(number_of(reply, STP_ATTRIBUTE_TREE), 1U);
  }
  cmd_snmp_free_rx_hndl(reply);
}

TEST(Replies, LongOnesAreTakenWhole) {
  for (const size_t size : {0U, 1U, 16U, 17U, 100U, 10000U}) {
    std::vector<std::pair<uint32_t, uint32_t>> numbers;
    for (uint32_t i = 0; i < size; ++i) {
      numbers.emplace_back((uint32_t{CMD_TYPE_NUMBER} << 24) + i, i + 1);
    }
    std::vector<uint8_t> octets = attributes_of(numbers);
    octets.reserve(1);
    Reply *reply = stpplatform::copy_reply(octets.data(), static_cast<uint32_t>(octets.size()));
    ASSERT_NE(reply, nullptr);
    if (size != 0) {
      EXPECT_EQ(number_of(reply, numbers.back().first), size);
    }
    EXPECT_EQ(number_of(reply, STP_ATTRIBUTE_TREE), 0U);
    cmd_snmp_free_rx_hndl(reply);
  }
}

}  // namespace
