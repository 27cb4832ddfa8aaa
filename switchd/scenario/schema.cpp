#include "scenario/schema.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "base/hex_octets.h"
#include "model/refusal.h"
#include "platform/cmd.h"
#include "wire/if_index.h"
#include "wire/snapshot.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

constexpr size_t kMaxNameLength = 64;
constexpr size_t kMaxRegionNameLength = 32;  // IEEE 802.1Q clause 13.8
constexpr int64_t kMaxRevision = 65535;      // IEEE 802.1Q clause 13.8
constexpr int64_t kMinMaxHops = 6;
constexpr int64_t kMaxMaxHops = 40;
constexpr int64_t kMinRemainingHops = 1;
constexpr int64_t kMaxPriority = 65535;  // two octets of a bridge identifier, IEEE 802.1Q clause 13
constexpr int64_t kMaxRootPathCost = std::numeric_limits<uint32_t>::max();
constexpr int64_t kMinPathCost = 1;
constexpr int64_t kMaxPathCost = 200'000'000;  // IEEE 802.1Q clause 13
constexpr uint32_t kMaxMstInstance = 4094;
constexpr size_t kMaxMstInstances = wire::kMaxMstInstances - 1;  // the CIST is not stated
constexpr uint32_t kDefaultVlan = 1;

template <class Owner>
using Assign = void (*)(Owner &, const Value &);

// Checks that several keys share.

uint32_t number_in(const Value &value, int64_t min, int64_t max) {
  const int64_t number = std::get<int64_t>(value);
  if (number < min || number > max) {
    throw Refusal(std::to_string(number) + " is not in " + std::to_string(min) + ".." + std::to_string(max));
  }
  return static_cast<uint32_t>(number);
}

// Texts reach logs and terminals, where a control character would break the line that shows them.
bool is_control(char octet) {
  constexpr char kDelete = 0x7F;
  return (octet >= 0 && octet < ' ') || octet == kDelete;
}

const std::string &text_of(const Value &value, size_t max_length) {
  const auto &text = std::get<std::string>(value);
  if (text.size() > max_length) {
    throw Refusal("a text of " + std::to_string(text.size()) + " octets is longer than " +
                  std::to_string(max_length));
  }
  if (std::any_of(text.begin(), text.end(), is_control)) {
    throw Refusal("the text holds a control character");
  }
  return text;
}

template <class Choice, size_t kCount>
using Choices = std::array<std::pair<std::string_view, Choice>, kCount>;

template <class Choice, size_t kCount>
Choice choice_of(const Value &value, const Choices<Choice, kCount> &choices) {
  const auto &text = std::get<std::string>(value);
  std::string known;
  for (const auto &[name, choice] : choices) {
    if (text == name) {
      return choice;
    }
    known += (known.empty() ? "" : " or ") + std::string(name);
  }
  throw Refusal("'" + text + "' is not " + known);
}

template <class Choice, size_t kCount>
std::string name_of(Choice choice, const Choices<Choice, kCount> &choices) {
  const auto *const found = std::find_if(choices.begin(), choices.end(),
                                         [choice](const auto &pair) { return pair.second == choice; });
  return std::string(found->first);
}

constexpr Choices<SpanningTreeMode, 2> kModes = {
    {{"mst", SpanningTreeMode::kMst}, {"rapid-pvst", SpanningTreeMode::kRapidPvst}}};
constexpr Choices<PathCostMethod, 2> kPathCostMethods = {
    {{"short", PathCostMethod::kShort}, {"long", PathCostMethod::kLong}}};
constexpr Choices<bool, 2> kLinkStates = {{{"up", true}, {"down", false}}};

// Digests are written as hexadecimal digits; nothing stands for "as computed".

constexpr size_t kDigitsPerOctet = 2;

std::optional<MstDigest> digest_of(const Value &value) {
  const auto &text = std::get<std::string>(value);
  if (text.empty()) {
    return std::nullopt;
  }
  MstDigest digest{};
  if (!parse_hex_octets(text, "", digest)) {
    throw Refusal("'" + text + "' is not " + std::to_string(kDigitsPerOctet * digest.size()) +
                  " hexadecimal digits");
  }
  return digest;
}

std::string print_digest(const std::optional<MstDigest> &digest) {
  return digest ? print_hex_octets(*digest, "") : "";
}

TextList users_of(const Value &value) {
  const auto &users = std::get<TextList>(value);
  for (const std::string &user : users) {
    if (user.empty()) {
      throw Refusal("a user's name is empty");
    }
    text_of(user, CMD_USER_MAX);
    if (user.find(',') != std::string::npos) {
      throw Refusal("'" + user + "' holds a comma");
    }
  }
  return users;
}

template <class Entry>
std::string name_for(const Value &value) {
  const std::string &name = text_of(value, kMaxNameLength);
  if (name.empty()) {
    throw Refusal("the name is empty");
  }
  return name;
}

// Fields whose data is the same in several sections.

template <class Owner>
constexpr Field<Owner> kNameField = {
    "name", ValueType::kText, false,
    [](Owner &owner, const Value &value) { owner.name = name_for<Owner>(value); },
    [](const Owner &owner) -> Value { return owner.name; }};

template <class Owner>
constexpr Field<Owner> kVlansField = {
    "vlans", ValueType::kText, false,
    [](Owner &owner, const Value &value) { owner.vlans = parse_vlans(std::get<std::string>(value)); },
    [](const Owner &owner) -> Value { return print_vlans(owner.vlans); }};

template <class Owner>
constexpr Field<Owner> kRootGuardField = {
    "root_guard", ValueType::kBoolean, false,
    [](Owner &owner, const Value &value) { owner.root_guard = std::get<bool>(value); },
    [](const Owner &owner) -> Value { return owner.root_guard; }};

template <class Owner>
constexpr Field<Owner> kPathCostField = {
    "path_cost", ValueType::kInteger, false,
    [](Owner &owner, const Value &value) { owner.path_cost = number_in(value, kMinPathCost, kMaxPathCost); },
    [](const Owner &owner) -> Value { return int64_t{owner.path_cost}; }};

// Few interfaces of a large switch have any: no room is kept for those that have none.
template <class Owner, Inconsistency kind>
constexpr Field<Owner> inconsistency_field(std::string_view name) {
  return {name, ValueType::kText, false,
          [](Owner &owner, const Value &value) {
            const TreeSet trees = parse_trees(std::get<std::string>(value));
            owner.inconsistencies.erase(kind);
            if (!trees.is_empty()) {
              owner.inconsistencies.emplace(kind, trees);
            }
          },
          [](const Owner &owner) -> Value {
            const auto trees = owner.inconsistencies.find(kind);
            return trees != owner.inconsistencies.end() ? print_trees(trees->second) : "";
          }};
}

template <class Owner>
constexpr Field<Owner> kRootInconsistentField =
    inconsistency_field<Owner, Inconsistency::kRoot>("root_inconsistent");

template <class Owner>
constexpr Field<Owner> kLoopInconsistentField =
    inconsistency_field<Owner, Inconsistency::kLoop>("loop_inconsistent");

template <class Owner>
constexpr Field<Owner> kPvidInconsistentField =
    inconsistency_field<Owner, Inconsistency::kPvid>("pvid_inconsistent");

template <class Owner>
constexpr Field<Owner> kTypeInconsistentField =
    inconsistency_field<Owner, Inconsistency::kType>("type_inconsistent");

template <class Owner>
constexpr Field<Owner> kRemainingHopsField = {
    "remaining_hops", ValueType::kInteger, false,
    [](Owner &owner, const Value &value) {
      owner.remaining_hops = number_in(value, kMinRemainingHops, kMaxMaxHops);
    },
    [](const Owner &owner) -> Value { return int64_t{owner.remaining_hops}; }};

// The rows of the schema.

constexpr std::array<Field<Settings>, 4> kSwitchFields = {
    {{"name", ValueType::kText, false,
      [](Settings &settings, const Value &value) { settings.name = text_of(value, kMaxNameLength); },
      [](const Settings &settings) -> Value { return settings.name; }},
     {"mode", ValueType::kText, true,
      [](Settings &settings, const Value &value) { settings.mode = choice_of(value, kModes); },
      [](const Settings &settings) -> Value { return name_of(settings.mode, kModes); }},
     {"path_cost_method", ValueType::kText, false,
      [](Settings &settings, const Value &value) {
        settings.path_cost_method = choice_of(value, kPathCostMethods);
      },
      [](const Settings &settings) -> Value { return name_of(settings.path_cost_method, kPathCostMethods); }},
     {"loop_guard_default", ValueType::kBoolean, false,
      [](Settings &settings, const Value &value) { settings.loop_guard_default = std::get<bool>(value); },
      [](const Settings &settings) -> Value { return settings.loop_guard_default; }}}};

constexpr std::array<Field<MstRegion>, 4> kMstFields = {
    {{"region", ValueType::kText, false,
      [](MstRegion &mst, const Value &value) { mst.name = text_of(value, kMaxRegionNameLength); },
      [](const MstRegion &mst) -> Value { return mst.name; }},
     {"revision", ValueType::kInteger, false,
      [](MstRegion &mst, const Value &value) { mst.revision = number_in(value, 0, kMaxRevision); },
      [](const MstRegion &mst) -> Value { return int64_t{mst.revision}; }},
     {"max_hops", ValueType::kInteger, false,
      [](MstRegion &mst, const Value &value) { mst.max_hops = number_in(value, kMinMaxHops, kMaxMaxHops); },
      [](const MstRegion &mst) -> Value { return int64_t{mst.max_hops}; }},
     {"pre_standard_digest", ValueType::kText, false,
      [](MstRegion &mst, const Value &value) { mst.pre_standard_digest = digest_of(value); },
      [](const MstRegion &mst) -> Value { return print_digest(mst.pre_standard_digest); }}}};

constexpr std::array<Field<MstCist>, 4> kMstCistFields = {
    {kRemainingHopsField<MstCist>,
     {"regional_root_priority", ValueType::kInteger, false,
      [](MstCist &cist, const Value &value) {
        cist.regional_root_priority = number_in(value, 0, kMaxPriority);
      },
      [](const MstCist &cist) -> Value { return int64_t{cist.regional_root_priority}; }},
     {"regional_root_mac", ValueType::kText, false,
      [](MstCist &cist, const Value &value) {
        cist.regional_root_mac = parse_mac_address(std::get<std::string>(value));
      },
      [](const MstCist &cist) -> Value { return print_mac_address(cist.regional_root_mac); }},
     {"internal_root_path_cost", ValueType::kInteger, false,
      [](MstCist &cist, const Value &value) {
        cist.internal_root_path_cost = number_in(value, 0, kMaxRootPathCost);
      },
      [](const MstCist &cist) -> Value { return int64_t{cist.internal_root_path_cost}; }}}};

constexpr std::array<Field<MstInstance>, 2> kMstInstanceFields = {
    {kVlansField<MstInstance>, kRemainingHopsField<MstInstance>}};

constexpr std::array<Field<RapidPvst>, 1> kRapidPvstFields = {
    {{"disabled_vlans", ValueType::kText, false,
      [](RapidPvst &rapid_pvst, const Value &value) {
        rapid_pvst.disabled_vlans = parse_vlans(std::get<std::string>(value));
      },
      [](const RapidPvst &rapid_pvst) -> Value { return print_vlans(rapid_pvst.disabled_vlans); }}}};

constexpr std::array<Field<Port>, 11> kPortFields = {
    {kNameField<Port>,
     {"link", ValueType::kText, false,
      [](Port &port, const Value &value) { port.link_up = choice_of(value, kLinkStates); },
      [](const Port &port) -> Value { return name_of(port.link_up, kLinkStates); }},
     kVlansField<Port>,
     {"channel", ValueType::kInteger, false,
      [](Port &port, const Value &value) { port.channel = number_in(value, 0, wire::kMaxChannel); },
      [](const Port &port) -> Value { return int64_t{port.channel}; }},
     {"switchport", ValueType::kBoolean, false,
      [](Port &port, const Value &value) { port.switchport = std::get<bool>(value); },
      [](const Port &port) -> Value { return port.switchport; }},
     kRootGuardField<Port>,
     kPathCostField<Port>,
     kRootInconsistentField<Port>,
     kLoopInconsistentField<Port>,
     kPvidInconsistentField<Port>,
     kTypeInconsistentField<Port>}};

constexpr std::array<Field<PortChannel>, 8> kPortChannelFields = {
    {kNameField<PortChannel>, kVlansField<PortChannel>, kRootGuardField<PortChannel>,
     kPathCostField<PortChannel>, kRootInconsistentField<PortChannel>, kLoopInconsistentField<PortChannel>,
     kPvidInconsistentField<PortChannel>, kTypeInconsistentField<PortChannel>}};

constexpr std::array<Field<Access>, 1> kAccessFields = {
    {{"refused_users", ValueType::kTextList, false,
      [](Access &access, const Value &value) { access.refused_users = users_of(value); },
      [](const Access &access) -> Value { return access.refused_users; }}}};

MstInstance make_mst_instance(uint32_t /*number*/) { return {}; }

Port make_port(uint32_t number) {
  Port port;
  port.name = "Ethernet" + std::to_string(number);
  port.vlans.insert(kDefaultVlan);
  return port;
}

PortChannel make_port_channel(uint32_t number) {
  PortChannel channel;
  channel.name = "port-channel" + std::to_string(number);
  channel.vlans.insert(kDefaultVlan);
  return channel;
}

}  // namespace

const SingleSection<Settings> kSwitchSection = {"switch", &SwitchState::settings, kSwitchFields};
const SingleSection<MstRegion> kMstSection = {"mst", &SwitchState::mst, kMstFields};
const SingleSection<MstCist> kMstCistSection = {"mst.cist", &SwitchState::mst_cist, kMstCistFields};
const ListSection<MstInstance> kMstInstanceSection = {
    "mst.instance",    &SwitchState::mst_instances, "id", 1, kMaxMstInstance, kMaxMstInstances,
    make_mst_instance, kMstInstanceFields};
const SingleSection<RapidPvst> kRapidPvstSection = {"rapid_pvst", &SwitchState::rapid_pvst, kRapidPvstFields};
const ListSection<Port> kPortSection = {
    "port",    &SwitchState::ports, "number", 1, wire::kMaxPhysicalPort, wire::kMaxPhysicalPort,
    make_port, kPortFields};
const ListSection<PortChannel> kPortChannelSection = {
    "port_channel",    &SwitchState::port_channels, "number",          1,
    wire::kMaxChannel, wire::kMaxChannel,           make_port_channel, kPortChannelFields};
const SingleSection<Access> kAccessSection = {"access", &SwitchState::access, kAccessFields};

}  // namespace stpswitch
