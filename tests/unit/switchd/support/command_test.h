// A switch that a test asks and changes, packet by packet.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/packet.h"
#include "model/switch.h"
#include "publisher/image_publisher.h"
#include "sources/scenario/loader.h"
#include "support/requests.h"

// Replies are little-endian here: this is what goes over the socket of such a machine.
static_assert(std::endian::native == std::endian::little, "the expectations are written for such a machine");

inline constexpr uint32_t kGet = 1;
inline constexpr uint32_t kGetNext = 3;

class CommandTest : public testing::Test {
 protected:
  CommandTest() {
    switch_.on_change([this] { publisher_.publish(); });
  }

  // The reply as hexadecimal digits, or "none".
  std::string reply_to(const RequestText &text) const { return reply_to_packet(make_request(text)); }
  std::string reply_to_packet(const stpswitch::Packet &packet) const;

  // A numeric attribute of the reply; nothing when it has none.
  std::optional<uint32_t> number_in_reply_to(const RequestText &text, uint32_t token) const;

  // The status of the reply, which must answer request 7 and, being a refusal, hold nothing else.
  uint32_t refusal_of(const RequestText &text) const { return refusal_of_packet(make_request(text)); }
  uint32_t refusal_of_packet(const stpswitch::Packet &packet) const;

  // Asks for row after row, and returns what the rows have in a numeric attribute.
  using RequestAfter = std::function<RequestText(uint32_t row)>;
  std::vector<uint32_t> walk(const RequestAfter &request_after, uint32_t from, uint32_t token) const;

  // The same for rows by tree and interface index.
  using TreePortRow = std::pair<uint32_t, uint32_t>;
  using RequestAfterTreePort = RequestText (*)(const TreePortRow &row);
  std::vector<TreePortRow> walk_tree_ports(RequestAfterTreePort request_after, TreePortRow from) const;

  void set(const std::string &key, const std::string &text);

  stpswitch::Switch switch_{stpswitch::load_scenario(SCENARIOS "/mst-small.toml")};
  stpswitch::ImagePublisher publisher_{&switch_};
};
