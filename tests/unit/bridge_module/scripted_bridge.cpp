#include "scripted_bridge.h"

#include <cstring>
#include <optional>

#include "ledger.h"
#include "platform/agent_ext.h"
#include "protocol_numbers.h"

using fake::number;
using namespace protocol;  // NOLINT(google-build-using-namespace): a table of numbers

namespace {

constexpr uint32_t kGet = 1;
constexpr int kNoEntry = 19;
constexpr uint32_t kRapidPvst = 5;
constexpr uint32_t kMst = 4;

uint32_t number_in(const fake::Bytes &value, size_t word) {
  uint32_t number = 0;
  std::memcpy(&number, value.data() + word * sizeof number, sizeof number);
  return number;
}

// The tree that the request names, if it does.
std::optional<uint32_t> named_tree(const fake::Request &request, uint32_t token) {
  const auto key = request.keys.find(token);
  return key != request.keys.end() ? std::optional(number_in(key->second, 2)) : std::nullopt;
}

fake::Send no_entry() { return {kNoEntry, false}; }

}  // namespace

fake::Send ScriptedBridge::answer_tree(const fake::Request &request) const {
  auto found = trees.begin();
  const std::optional<uint32_t> vlan = named_tree(request, kVlanTreeKey);
  const std::optional<uint32_t> instance = named_tree(request, kMstTreeKey);
  if (request.action != kGet) {
    found = trees.upper_bound(vlan.value_or(instance.value_or(0)));
  } else if (vlan || instance) {
    found = has_mst_trees == instance.has_value() ? trees.find(*(vlan ? vlan : instance)) : trees.end();
  }
  if (found == trees.end()) {
    return no_entry();
  }
  fake::Attributes attributes = found->second.attributes;
  attributes[kTree] = number(found->first);
  attributes[kMode] = number(has_mst_trees ? kMst : kRapidPvst);
  return {0, true, attributes};
}

const ScriptedTree *ScriptedBridge::tree_of(const fake::Request &request) const {
  const std::optional<uint32_t> named = named_tree(request, has_mst_trees ? kMstTreeKey : kVlanTreeKey);
  if (!named) {
    const bool is_default = request.keys.size() == 1;
    return is_default && !trees.empty() ? &trees.begin()->second : nullptr;
  }
  const auto found = trees.find(*named);
  return found != trees.end() ? &found->second : nullptr;
}

fake::Send ScriptedBridge::answer(const fake::Request &request) const {
  if (request.command == kBridgeTrees) {
    return answer_tree(request);
  }
  if (request.command != kBridgePorts) {
    return {16, false};
  }
  const ScriptedTree *const tree = tree_of(request);
  if (tree == nullptr) {
    return no_entry();
  }
  const uint32_t asked = number_in(request.keys.at(kBridgePortKey), 0);
  const auto found = request.action == kGet ? tree->ports.find(asked) : tree->ports.upper_bound(asked);
  return found != tree->ports.end() ? fake::Send{0, true, found->second} : no_entry();
}

fake::Bytes mac(const std::vector<uint8_t> &octets) { return octets; }

fake::Attributes whole_tree() {
  return {{kBridgePriority, number(32769)}, {kBridgeMac, mac({0x02, 0, 0, 0, 0, 0x0A})},
          {kRootPriority, number(4097)},    {kRootMac, mac({0x02, 0, 0, 0, 0, 0x0B})},
          {kRootCost, number(20004)},       {kRootPort, number(3)},
          {kMaxAge, number(2000)},          {kHelloTime, number(200)},
          {kForwardDelay, number(1500)},    {kBridgeMaxAge, number(1900)},
          {kBridgeHelloTime, number(100)},  {kBridgeForwardDelay, number(1400)},
          {kTxHoldCount, number(6)},        {kProtocolVersion, number(2)},
          {kTopologyChanges, number(41)},   {kTopologyAge, number(360'000)},
          {kBridgePortCount, number(2)}};
}

fake::Attributes whole_port(uint32_t port) {
  return {{kBridgePort, number(port)},
          {kIfMibIndex, number(100 + port)},
          {kPortPriority, number(128)},
          {kPortState, number(4)},
          {kPathCost, number(200'000)},
          {kDesignatedRootPriority, number(4097)},
          {kDesignatedRootMac, mac({0x02, 0, 0, 0, 0, 0x0B})},
          {kDesignatedCost, number(20000)},
          {kDesignatedBridgePriority, number(8193)},
          {kDesignatedBridgeMac, mac({0x02, 0, 0, 0, 0, 0x0C})},
          {kDesignatedPort, number(0x8000 + port)},
          {kForwardTransitions, number(5)},
          {kAdminEdge, number(0)},
          {kEdge, number(1)},
          {kLinkType, number(3)},
          {kPointToPoint, number(1)}};
}

void BridgeTest::SetUp() {
  fake::reset();
  and_context_name[0] = '\0';
  and_context_name_len = 0;
  bridge_.trees[1] = {whole_tree(), {{3, whole_port(3)}, {7, whole_port(7)}}};
  fake::platform().answer = [this](const fake::Request &request) { return bridge_.answer(request); };
  ledger::start();
}

void BridgeTest::TearDown() {
  ledger::stop();
  EXPECT_EQ(ledger::outstanding(), 0U) << "request buffers";
  EXPECT_EQ(fake::live_replies(), 0U);
  fake::reset();
}
