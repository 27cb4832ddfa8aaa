// The same random switches are asked the same random questions in the agent's process and by socket: both
// answers are those of a plain model of the switch, octet by octet.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "channel.h"
#include "connection.h"
#include "model/numbering.h"
#include "plain_model.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/stp_protocol.h"
#include "platform/vlan_mgr.h"
#include "protocol_numbers.h"
#include "random_switch.h"
#include "replies.h"
#include "reply_content.h"
#include "served_switch.h"
#include "settings.h"
#include "support/temporary_folder.h"
#include "wire/attributes.h"
#include "wire/message.h"

namespace wire = stpplatform::wire;
using stpplatform::connection;

namespace {

constexpr uint32_t kQuestionsPerSwitch = 600;
constexpr uint32_t kQuestionsPerLargeSwitch = 150;

uint32_t wanted_answers() {
  const char *const wants_all = std::getenv("STPSNMP_TEST_ALL");
  return wants_all != nullptr && std::string_view(wants_all) == "1" ? 200'000 : 100'000;
}

// A request as it is sent: what is well formed is what its PlainQuestion says.
struct Packet {
  PlainQuestion question;
  uint32_t destination = protocol::kDestination;
  uint32_t service = protocol::kService;
  uint32_t flags = 0;
  uint32_t attribute_count = 0;
  std::vector<uint8_t> attributes = {};
  bool is_malformed = false;
};

void add_attribute(std::vector<uint8_t> *octets, uint32_t token, const void *value, uint32_t length) {
  const size_t begin = octets->size();
  octets->resize(begin + sizeof(wire::AttributeHead) + wire::padded(length));
  wire::write_attribute(octets->data() + begin, octets->size() - begin, {token, length, value});
}

void add_key(const PlainQuestion::Key &key, std::vector<uint8_t> *octets) {
  if (CMD_TOKEN_TYPE(key.token) != CMD_TYPE_RANGE_LIST) {
    add_attribute(octets, key.token, &key.interface, sizeof key.interface);
    return;
  }
  std::vector<uint32_t> words = {0, static_cast<uint32_t>(key.ranges.size())};
  for (const cmd_range &range : key.ranges) {
    words.insert(words.end(), {range.first, range.last});
  }
  add_attribute(octets, key.token, words.data(), static_cast<uint32_t>(words.size() * sizeof(uint32_t)));
}

// All tokens that a reply can have.
constexpr std::array kAttributes = {protocol::kInterface,
                                    protocol::kTree,
                                    protocol::kPortTree,
                                    protocol::kMode,
                                    protocol::kPathCostMethod,
                                    protocol::kPathCostOperMethod,
                                    protocol::kLoopGuardDefault,
                                    protocol::kHops,
                                    protocol::kMstRegionName,
                                    protocol::kMstRegionRevision,
                                    protocol::kMstConfigDigest,
                                    protocol::kMstPreStandardDigest,
                                    protocol::kVlanTreeState,
                                    protocol::kRegionalRootMac,
                                    protocol::kRegionalRootPriority,
                                    protocol::kInternalRootPathCost,
                                    protocol::kGuard,
                                    protocol::kLinkType,
                                    protocol::kPointToPoint,
                                    protocol::kPreStandardMst,
                                    protocol::kPathCost,
                                    protocol::kPortRole,
                                    protocol::kEdge,
                                    protocol::kBoundary,
                                    protocol::kPeer,
                                    protocol::kDispute,
                                    protocol::kPreStandardPeer,
                                    protocol::kInconsistency,
                                    protocol::kBridgePriority,
                                    protocol::kBridgeMac,
                                    protocol::kRootPriority,
                                    protocol::kRootMac,
                                    protocol::kRootCost,
                                    protocol::kRootPort,
                                    protocol::kMaxAge,
                                    protocol::kHelloTime,
                                    protocol::kForwardDelay,
                                    protocol::kBridgeMaxAge,
                                    protocol::kBridgeHelloTime,
                                    protocol::kBridgeForwardDelay,
                                    protocol::kTxHoldCount,
                                    protocol::kProtocolVersion,
                                    protocol::kTopologyChanges,
                                    protocol::kTopologyAge,
                                    protocol::kBridgePortCount,
                                    protocol::kBridgePort,
                                    protocol::kIfMibIndex,
                                    protocol::kPortPriority,
                                    protocol::kPortState,
                                    protocol::kDesignatedRootPriority,
                                    protocol::kDesignatedRootMac,
                                    protocol::kDesignatedCost,
                                    protocol::kDesignatedBridgePriority,
                                    protocol::kDesignatedBridgeMac,
                                    protocol::kDesignatedPort,
                                    protocol::kForwardTransitions,
                                    protocol::kAdminEdge};

// A reply's attributes in the order in which they lie in it, one behind the other.
ReplyContent content_of(stpplatform::Reply *reply) {
  std::vector<wire::Attribute> found;
  for (const uint32_t token : kAttributes) {
    wire::Attribute attribute;
    if (stpplatform::find_attribute(reply, token, &attribute)) {
      found.push_back(attribute);
    }
  }
  std::sort(found.begin(), found.end(),
            [](const wire::Attribute &one, const wire::Attribute &other) { return one.value < other.value; });
  ReplyContent content;
  const uint8_t *end = nullptr;
  for (const wire::Attribute &attribute : found) {
    const auto *value = static_cast<const uint8_t *>(attribute.value);
    EXPECT_TRUE(end == nullptr || value == end + sizeof(wire::AttributeHead)) << "something is in between";
    end = value + wire::padded(attribute.length);
    if (attribute.token != protocol::kTopologyAge) {  // it grows while it is looked at
      content.add_octets(attribute.token, value, attribute.length);
    }
  }
  return content;
}

// Draws questions, of which many go on from the answer before.
class Questioner {
 public:
  Questioner(Draw *draw, const PlainModel *model) : draw_(*draw), model_(*model) {}

  Packet next() {
    Packet packet;
    if (draw_.one_in(3) || !can_go_on_) {
      packet.question = draw_question();
    } else {
      packet.question = latest_;
    }
    for (const PlainQuestion::Key &key : packet.question.keys) {
      add_key(key, &packet.attributes);
    }
    packet.attribute_count = static_cast<uint32_t>(packet.question.keys.size());
    if (draw_.one_in(20)) {
      spoil(&packet);
    }
    asked_ = packet.question;
    return packet;
  }

  // Where the walk goes on.
  void answered(const ReplyContent &reply) {
    latest_ = asked_;
    latest_.action = CMD_ACTION_GET_NEXT;
    can_go_on_ = reply.result == CMD_OK && asked_.action == CMD_ACTION_GET_NEXT && !asked_.keys.empty();
    const auto interface = reply.number(protocol::kInterface);
    const auto bridge_port = reply.number(protocol::kBridgePort);
    auto tree = reply.number(protocol::kPortTree);
    if (!tree) {
      tree = reply.number(protocol::kTree);
    }
    for (PlainQuestion::Key &key : latest_.keys) {
      if (CMD_TOKEN_TYPE(key.token) == CMD_TYPE_RANGE_LIST && tree) {
        key.ranges = {{*tree, *tree}};
      } else if (key.token == protocol::kBridgePortKey && bridge_port) {
        key.interface = *bridge_port;
      } else if (interface) {
        key.interface = *interface;
      }
    }
  }

 private:
  PlainQuestion draw_question() {
    struct Kind {
      uint32_t command;
      std::vector<uint32_t> keys;
    };
    static const std::vector<Kind> kKinds = {
        {protocol::kGlobalSettings, {protocol::kGlobalSettingsKey}},
        {protocol::kRapidPvstPorts, {protocol::kVlanTreeKey, protocol::kInterfaceKey}},
        {protocol::kRapidPvstPorts, {protocol::kInterfaceKey}},
        {protocol::kMstPorts, {protocol::kMstTreeKey, protocol::kMstInterfaceKey}},
        {protocol::kMstPorts, {protocol::kMstInterfaceKey}},
        {protocol::kMstRegion, {}},
        {protocol::kMstRegion, {protocol::kMstDigestsKey}},
        {protocol::kVlanTrees, {protocol::kVlanTreeKey}},
        {protocol::kPortInconsistencies, {protocol::kVlanTreeKey, protocol::kInterfaceKey}},
        {protocol::kRootGuard, {protocol::kInterfaceKey}},
        {protocol::kLoopGuard, {protocol::kInterfaceKey}},
        {protocol::kPortSettings, {protocol::kInterfaceKey}},
        {protocol::kRootInconsistencies, {protocol::kVlanTreeKey, protocol::kInterfaceKey}},
        {protocol::kLoopInconsistencies, {protocol::kVlanTreeKey, protocol::kInterfaceKey}},
        {protocol::kMstInstances, {protocol::kMstTreeKey}},
        {protocol::kBridgeTrees, {}},
        {protocol::kBridgeTrees, {protocol::kVlanTreeKey}},
        {protocol::kBridgeTrees, {protocol::kMstTreeKey}},
        {protocol::kBridgePorts, {protocol::kBridgePortKey}},
        {protocol::kBridgePorts, {protocol::kVlanTreeKey, protocol::kBridgePortKey}},
        {protocol::kBridgePorts, {protocol::kMstTreeKey, protocol::kBridgePortKey}}};
    static const std::vector<uint32_t> kKeys = {protocol::kGlobalSettingsKey, protocol::kMstDigestsKey,
                                                protocol::kInterfaceKey,      protocol::kMstInterfaceKey,
                                                protocol::kVlanTreeKey,       protocol::kMstTreeKey,
                                                protocol::kBridgePortKey,     protocol::kVlanTreeSettingsKey};
    const Kind &kind = draw_.among(kKinds);
    PlainQuestion question;
    question.command = draw_.one_in(40) ? 100 + draw_.below(30) : kind.command;
    question.action = draw_.one_in(2) ? CMD_ACTION_GET : CMD_ACTION_GET_NEXT;
    question.user = draw_.one_in(10) ? draw_.among(users_to_refuse()) : "operator";
    for (const uint32_t token : kind.keys) {
      question.keys.push_back(draw_key(draw_.one_in(40) ? draw_.among(kKeys) : token));
    }
    if (!question.keys.empty() && draw_.one_in(40)) {
      question.keys.pop_back();
    }
    if (draw_.one_in(40)) {
      question.keys.push_back(draw_key(draw_.among(kKeys)));
    }
    if (question.keys.size() > 1 && draw_.one_in(4)) {
      std::swap(question.keys[0], question.keys[1]);
    }
    return question;
  }

  PlainQuestion::Key draw_key(uint32_t token) {
    PlainQuestion::Key key{token};
    if (token == protocol::kBridgePortKey) {
      key.interface = draw_bridge_port();
      return key;
    }
    if (CMD_TOKEN_TYPE(token) != CMD_TYPE_RANGE_LIST) {
      key.interface = draw_interface();
      return key;
    }
    if (!draw_.one_in(30)) {
      const uint32_t tree = draw_tree();
      key.ranges = {{tree, tree}};
      return key;
    }
    for (uint32_t i = draw_.below(4); i > 0; --i) {
      key.ranges.push_back({draw_tree(), draw_tree()});
    }
    return key;
  }

  // Where something is, beside it, and where nothing is.
  uint32_t draw_interface() {
    const auto &interfaces = model_.interfaces();
    if (interfaces.empty() || draw_.one_in(4)) {
      return draw_.among<uint32_t>(
          {0, 1, 22U << 24, 26U << 24, 0x7FFFFFFF, 0xFFFFFFFE, 0xFFFFFFFF, draw_.any()});
    }
    return draw_.among(interfaces).if_index + draw_.among<uint32_t>({0, 0, 0, 1, 2, UINT32_MAX});
  }

  uint32_t draw_bridge_port() {
    const auto &interfaces = model_.interfaces();
    if (interfaces.empty() || draw_.one_in(4)) {
      return draw_.among<uint32_t>({0, 1, 128, 129, 4095, 4096, 8191, 65535, 65536, 0xFFFFFFFF, draw_.any()});
    }
    const stpswitch::InterfaceNumbers &numbers = draw_.among(interfaces).stated->numbers;
    return numbers.own_number.value_or(numbers.bridge_port) +
           draw_.among<uint32_t>({0, 0, 0, 1, 2, UINT32_MAX});
  }

  uint32_t draw_tree() {
    std::vector<uint32_t> trees = {0, 1, 2, 4093, 4094, 4095, 4096, 4097, 0x7FFFFFFF, 0xFFFFFFFF};
    if (!draw_.one_in(4)) {
      for (const auto &[id, vlans] : model_.mst_vlans()) {
        trees.push_back(id);
      }
      for (const auto &interface : model_.interfaces()) {
        interface.stated->vlans.for_each([&](uint32_t vlan) { trees.push_back(vlan); });
      }
    }
    return draw_.among(trees) + (draw_.one_in(6) ? draw_.among<uint32_t>({1, UINT32_MAX}) : 0);
  }

  // In one of the ways in which a request can be bad.
  void spoil(Packet *packet) {
    packet->is_malformed = true;
    switch (draw_.below(packet->attributes.empty() ? 5 : 7)) {
      case 0:
        packet->destination += 1 + draw_.below(3);
        break;
      case 1:
        packet->service += 1 + draw_.below(3);
        break;
      case 2:
        packet->flags = 1 + draw_.below(3);
        break;
      case 3:
        packet->question.action = draw_.among<uint32_t>({0, 2, 4, UINT32_MAX});
        break;
      case 4:
        packet->attribute_count += draw_.among<uint32_t>({1, 2, 0x7FFFFFFF, UINT32_MAX});
        break;
      case 5:
        packet->attributes.resize(packet->attributes.size() - 1 - draw_.below(4));
        break;
      default:
        packet->attributes[sizeof(uint32_t) + draw_.below(4)] ^= 0x40;  // the first one's length
    }
  }

  Draw &draw_;
  const PlainModel &model_;
  PlainQuestion asked_;
  PlainQuestion latest_;
  bool can_go_on_ = false;
};

class BothWays : public testing::Test {
 protected:
  BothWays() {
    setenv("STPPLATFORM_SOCKET", path_.c_str(), 1);
    setenv("STPPLATFORM_DEADLINE_MS", "30000", 1);
    stpplatform::read_settings();
  }

  ~BothWays() override {
    connection().reset();
    unsetenv("STPPLATFORM_SOCKET");
    unsetenv("STPPLATFORM_DEADLINE_MS");
    stpplatform::read_settings();
  }

  static ReplyContent ask(const Packet &packet) {
    alignas(wire::Request) std::array<uint8_t, 1024> buffer{};
    auto *const request = reinterpret_cast<wire::Request *>(buffer.data());
    EXPECT_LE(sizeof *request + packet.attributes.size(), buffer.size());
    request->header.length = static_cast<uint32_t>(sizeof *request + packet.attributes.size());
    request->destination = packet.destination;
    request->service = packet.service;
    request->flags = packet.flags;
    request->command = packet.question.command;
    request->action = packet.question.action;
    request->attribute_count = packet.attribute_count;
    packet.question.user.copy(request->user, CMD_USER_MAX);
    std::copy(packet.attributes.begin(), packet.attributes.end(), buffer.data() + sizeof *request);
    stpplatform::Reply *reply = nullptr;
    const cmd_result result = stpplatform::ask_command(request, &reply);
    if (result != CMD_OK) {
      EXPECT_EQ(reply, nullptr);
      return {result};
    }
    ReplyContent content = content_of(reply);
    stpplatform::release_reply(reply);
    return content;
  }

  static std::string describe(const Packet &packet) {
    std::string text = "command " + std::to_string(packet.question.command) + ", action " +
                       std::to_string(packet.question.action) + ", user '" + packet.question.user + "'";
    for (const PlainQuestion::Key &key : packet.question.keys) {
      text += ", key " + std::to_string(key.token) + " " + std::to_string(key.interface);
      for (const cmd_range &range : key.ranges) {
        text += " " + std::to_string(range.first) + "-" + std::to_string(range.last);
      }
    }
    return text;
  }

  // Asks everything in the agent's process, then all the same by socket. Returns how many questions the image
  // has answered.
  uint32_t compare(Draw *draw, const stpswitch::SwitchState &state, uint32_t questions) {
    const PlainModel model(state);
    Questioner questioner(draw, &model);
    std::vector<Packet> asked;
    std::vector<ReplyContent> replies;
    const uint32_t socket_before = switch_.answered_by_socket();
    for (uint32_t i = 0; i < questions && !HasFailure(); ++i) {
      asked.push_back(questioner.next());
      const Packet &packet = asked.back();
      replies.push_back(ask(packet));
      questioner.answered(replies.back());
      EXPECT_EQ(replies.back(),
                packet.is_malformed ? ReplyContent{CMD_BAD_REQUEST} : model.answer(packet.question))
          << describe(packet);
    }
    const uint32_t socket_between = switch_.answered_by_socket();
    switch_.ask_me(true);
    for (size_t i = 0; i < asked.size() && !HasFailure(); ++i) {
      EXPECT_EQ(ask(asked[i]), replies[i]) << describe(asked[i]);
    }
    EXPECT_EQ(switch_.answered_by_socket() - socket_between, asked.size());
    switch_.ask_me(false);
    // While the test does not get the processor, the lease may run out.
    return static_cast<uint32_t>(asked.size()) - (socket_between - socket_before);
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.path("switch.sock");
  ServedSwitch switch_{path_};
};

TEST_F(BothWays, AnswersFromTheImageAndBySocketAreTheSameAndRight) {
  uint32_t answered = 0;
  for (uint32_t seed = 1; answered < wanted_answers(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    ASSERT_LT(seed * kQuestionsPerSwitch, 4 * wanted_answers()) << "the image hardly ever answers";
    Draw draw(seed);
    const stpswitch::SwitchState state = random_switch(&draw);
    switch_.replace(state);
    answered += compare(&draw, state, kQuestionsPerSwitch);
    ASSERT_FALSE(HasFailure());
  }
}

// More ports of trees than an image for smaller switches has room for.
stpswitch::SwitchState large_switch() {
  constexpr uint32_t kPorts = 60;
  constexpr uint32_t kVlans = 700;
  stpswitch::SwitchState state;
  state.settings.mode = stpswitch::SpanningTreeMode::kRapidPvst;
  for (uint32_t number = 1; number <= kPorts; ++number) {
    stpswitch::Port &port = state.ports[number];
    port.numbers = stpswitch::port_numbers(number);
    port.path_cost = number;
    for (uint32_t vlan = 1; vlan <= kVlans; ++vlan) {
      port.vlans.insert(vlan);
    }
    if (number % 7 == 0) {
      port.inconsistencies[stpswitch::Inconsistency::kLoop] = port.vlans;
    }
  }
  return state;
}

TEST_F(BothWays, AnImageThatHasMovedIsFollowed) {
  Draw draw(1);
  const stpswitch::SwitchState small = random_switch(&draw);
  switch_.replace(small);
  EXPECT_GT(compare(&draw, small, kQuestionsPerSwitch), 0U);
  const uint32_t small_size = switch_.image_size();
  const stpswitch::SwitchState large = large_switch();
  switch_.replace(large);
  EXPECT_GT(switch_.image_size(), small_size);
  EXPECT_GT(compare(&draw, large, kQuestionsPerLargeSwitch), 0U);
  switch_.replace(small);
  EXPECT_GT(compare(&draw, small, kQuestionsPerSwitch), 0U);
}

TEST_F(BothWays, ASwitchThatWantsToBeAskedIsAskedWhenItsImageHasMoved) {
  const Packet settings = [] {
    Packet packet;
    packet.question = {
        protocol::kGlobalSettings, CMD_ACTION_GET, "operator", {{protocol::kGlobalSettingsKey}}};
    add_key(packet.question.keys[0], &packet.attributes);
    packet.attribute_count = 1;
    return packet;
  }();
  EXPECT_EQ(ask(settings).result, CMD_OK);
  switch_.ask_me(true);
  const uint32_t before = switch_.answered_by_socket();
  EXPECT_EQ(ask(settings).result, CMD_OK);
  switch_.replace(large_switch());
  EXPECT_EQ(ask(settings).number(protocol::kMode), static_cast<uint32_t>(STP_MODE_RAPID_PVST));
  EXPECT_EQ(switch_.answered_by_socket() - before, 2U);
}

std::vector<uint32_t> places(const PlainModel &model) {
  std::vector<uint32_t> indexes = {0, 1, 0x7FFFFFFF, 0xFFFFFFFE, 0xFFFFFFFF};
  for (const PlainModel::Interface &interface : model.interfaces()) {
    for (const uint32_t beside : {UINT32_MAX, 0U, 1U}) {
      indexes.push_back(interface.if_index + beside);
    }
  }
  return indexes;
}

void check_interface_managers(const PlainModel &model) {
  for (const uint32_t if_index : places(model)) {
    SCOPED_TRACE("interface " + std::to_string(if_index));
    const PlainModel::Interface *const known = model.find(if_index);
    const bool is_up = known != nullptr && known->link == true;

    uint32_t next = 7;
    uint32_t expected_next = 0;
    for (const PlainModel::Interface &interface : model.interfaces()) {
      if (expected_next == 0 && interface.if_index > if_index) {
        expected_next = interface.if_index;
      }
    }
    ASSERT_EQ(im_get_next_ifindex(if_index, &next), CMD_OK);
    ASSERT_EQ(next, expected_next);

    im_oper_status_entry entry{};
    entry.if_index = if_index;
    entry.oper_status = 7;
    ASSERT_EQ(im_get_ifindex_oper_status_list(&entry, 1), known == nullptr ? CMD_NO_ENTRY : CMD_OK);
    ASSERT_EQ(entry.oper_status, known == nullptr ? 7 : is_up ? IF_OPER_UP : IF_OPER_DOWN);

    const bool is_bridge_port = known != nullptr && known->is_bridge_port;
    ASSERT_EQ(check_if_valid_base_port_ifindex(if_index, BASE_PORT_ALL), is_bridge_port ? 1 : 0);
    ASSERT_EQ(check_if_valid_base_port_ifindex(if_index, BASE_PORT_ACTIVE), is_bridge_port && is_up ? 1 : 0);
    ASSERT_EQ(check_if_valid_base_port_ifindex(if_index, 2), 0);
    ASSERT_EQ(stp_valid_if_index(if_index), known != nullptr && known->is_switched ? 1 : 0);

    pcm_port_channel record{7, 7, 7};
    ASSERT_EQ(pcm_get_pc_for_port(if_index, &record), known == nullptr ? CMD_NO_ENTRY : CMD_OK);
    ASSERT_EQ(uint32_t{record.channel}, known == nullptr ? 7 : known->channel);
    ASSERT_EQ(uint32_t{record.if_index}, known == nullptr ? 7 : if_index);
    ASSERT_EQ(uint32_t{record.pc_if_index}, known == nullptr ? 7 : known->pc_if_index);

    uint16_t port = 7;
    const bool has_number = known != nullptr && known->base_port != 0;
    ASSERT_EQ(stp_ifindex2dot1dportnum(if_index, &port), has_number ? CMD_OK : CMD_NO_ENTRY);
    ASSERT_EQ(port, has_number ? known->base_port : 7);
  }
}

void check_port_numbers(const PlainModel &model) {
  std::vector<uint32_t> numbers = {0, 1, 128, 4096, 8191, 8192, 65535};
  for (const PlainModel::Interface &interface : model.interfaces()) {
    for (const uint32_t beside : {UINT32_MAX, 0U, 1U}) {
      numbers.push_back((interface.base_port + beside) & UINT16_MAX);
    }
  }
  for (const uint32_t number : numbers) {
    uint32_t expected = 7;
    for (const PlainModel::Interface &interface : model.interfaces()) {
      expected = number != 0 && interface.base_port == number ? interface.if_index : expected;
    }
    uint32_t if_index = 7;
    ASSERT_EQ(stp_dot1dportnum2ifindex(static_cast<uint16_t>(number), &if_index),
              expected == 7 ? CMD_NO_ENTRY : CMD_OK)
        << number;
    ASSERT_EQ(if_index, expected) << number;
  }
}

stp_vlan_bmp bitmap_of(const std::set<uint32_t> &vlans) {
  stp_vlan_bmp bitmap{STP_VLAN_BITMAP_SIZE, {}};
  for (const uint32_t vlan : vlans) {
    bitmap.bits[vlan / 8] = static_cast<uint8_t>(bitmap.bits[vlan / 8] | 0x80U >> vlan % 8);
  }
  return bitmap;
}

bool are_equal(const stp_vlan_bmp &one, const stp_vlan_bmp &other) {
  return std::memcmp(&one, &other, sizeof one) == 0;
}

void check_members(const PlainModel &model, Draw *draw) {
  for (uint32_t i = 0; i < 8; ++i) {
    std::set<uint32_t> vlans;
    for (const PlainModel::Interface &interface : model.interfaces()) {
      interface.stated->vlans.for_each([&](uint32_t vlan) {
        if (draw->one_in(i < 4 ? 60 : 2)) {
          vlans.insert(vlan + draw->below(4) / 3);
        }
      });
    }
    std::set<uint32_t> ports;
    const stp_vlan_bmp asked = bitmap_of(vlans);
    vlan_mgr_baseport_bmp *const members = vlan_mgr_get_baseport_membership_range(&asked);
    ASSERT_NE(members, nullptr);
    for (uint32_t octet = 0; octet < BASEPORT_BITMAP_SIZE; ++octet) {
      for (uint32_t bit = 0; members->bits[octet] != 0 && bit < 8; ++bit) {
        if ((members->bits[octet] & (0x80U >> bit)) != 0) {
          ports.insert(8 * octet + bit);
        }
      }
    }
    const uint32_t size = members->size;
    std::free(members);
    ASSERT_EQ(size, static_cast<uint32_t>(BASEPORT_BITMAP_SIZE));
    ASSERT_EQ(ports, model.members_of(vlans));
  }
}

void check_mst_vlans(const PlainModel &model, void *reply) {
  std::vector<uint32_t> ids = {0, 1, 4094, 4095, 4096, 65535};
  for (const auto &[id, vlans] : model.mst_vlans()) {
    ids.insert(ids.end(), {id, id + 1});
  }
  for (const uint32_t id : ids) {
    SCOPED_TRACE("instance " + std::to_string(id));
    const auto exact = model.mst_vlans().find(id);
    const bool is_there = exact != model.mst_vlans().end();
    stp_vlan_bmp vlans{};
    ASSERT_EQ(stp_dot1d_bridgemib_get_mst_ctx(static_cast<uint16_t>(id), &vlans),
              is_there ? CMD_OK : CMD_NO_ENTRY);
    ASSERT_TRUE(are_equal(vlans, is_there ? bitmap_of(exact->second) : stp_vlan_bmp{}));

    auto instance = static_cast<uint16_t>(id);
    vlans = {};
    ASSERT_EQ(stp_get_mst_vlan_bmp(reply, CMD_ACTION_GET, &instance, &vlans),
              is_there ? CMD_OK : CMD_NO_ENTRY);
    ASSERT_EQ(instance, id);
    ASSERT_TRUE(are_equal(vlans, is_there ? bitmap_of(exact->second) : stp_vlan_bmp{}));

    const auto behind = model.mst_vlans().upper_bound(id);
    const bool is_last = behind == model.mst_vlans().end();
    vlans = {};
    ASSERT_EQ(stp_get_mst_vlan_bmp(reply, CMD_ACTION_GET_NEXT, &instance, &vlans),
              is_last ? CMD_NO_ENTRY : CMD_OK);
    ASSERT_EQ(instance, is_last ? id : behind->first);
    ASSERT_TRUE(are_equal(vlans, is_last ? stp_vlan_bmp{} : bitmap_of(behind->second)));
  }
}

// A reply that carries the MST configuration.
void *ask_for_mst_region() {
  alignas(max_align_t) std::array<uint8_t, 512> buffer{};
  void *const request = cmd_req_init(buffer.data(), static_cast<uint32_t>(buffer.size()));
  cmd_req_cmdId_set(request, protocol::kMstRegion);
  cmd_req_action_set(request, CMD_ACTION_GET);
  void *reply = nullptr;
  EXPECT_EQ(
      cmd_snmp_req_send_recv(protocol::kDestination, protocol::kService, request, "operator", 1, &reply, 0),
      CMD_OK);
  return reply;
}

TEST_F(BothWays, ManagersKnowWhatAPlainModelKnows) {
  constexpr uint32_t kSwitches = 100;
  for (uint32_t seed = 1; seed <= kSwitches; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Draw draw(seed);
    const stpswitch::SwitchState state = random_switch(&draw);
    switch_.replace(state);
    const PlainModel model(state);
    void *const reply = ask_for_mst_region();
    check_interface_managers(model);
    check_port_numbers(model);
    check_members(model, &draw);
    check_mst_vlans(model, reply);
    cmd_snmp_free_rx_hndl(reply);
    ASSERT_FALSE(HasFailure());
  }
}

}  // namespace
