// The sections of the whole switch and of its MST region.
#include "keys/schema.h"

#include <limits>
#include <optional>

#include "base/hex_octets.h"
#include "keys/defaults.h"
#include "keys/fields.h"
#include "platform/cmd.h"
#include "wire/image.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

constexpr size_t kMaxRegionNameLength = 32;  // IEEE 802.1Q clause 13.8
constexpr int64_t kMaxRevision = 65535;      // IEEE 802.1Q clause 13.8
constexpr uint32_t kRecommendedHops = 20;    // IEEE 802.1Q clause 13
constexpr int64_t kMinMaxHops = 6;
constexpr int64_t kMaxMaxHops = 40;
constexpr int64_t kMinRemainingHops = 1;
constexpr int64_t kMaxPriority = 65535;  // two octets of a bridge identifier, IEEE 802.1Q clause 13
constexpr int64_t kMaxRootPathCost = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kMaxMstInstance = 4094;
constexpr size_t kMaxMstInstances = wire::kMaxMstInstances - 1;  // the CIST is not stated

constexpr Choices<SpanningTreeMode, 2> kModes = {
    {{"mst", SpanningTreeMode::kMst}, {"rapid-pvst", SpanningTreeMode::kRapidPvst}}};
constexpr Choices<PathCostMethod, 2> kPathCostMethods = {
    {{"short", PathCostMethod::kShort}, {"long", PathCostMethod::kLong}}};

// Digests are written as hexadecimal digits; nothing stands for "as computed".

constexpr size_t kDigitsPerOctet = 2;

std::string domain_of_digest() {
  return std::to_string(kDigitsPerOctet * MstDigest{}.size()) + " hexadecimal digits";
}

std::optional<MstDigest> digest_of(const Value &value) {
  const auto &text = std::get<std::string>(value);
  if (text.empty()) {
    return std::nullopt;
  }
  MstDigest digest{};
  if (!parse_hex_octets(text, "", digest)) {
    throw Refusal("'" + text + "' is not " + domain_of_digest());
  }
  return digest;
}

std::string print_digest(const std::optional<MstDigest> &digest) {
  return digest ? print_hex_octets(*digest, "") : "";
}

std::string domain_of_users() {
  return "list of names of 1 to " + std::to_string(CMD_USER_MAX) + " octets, without commas";
}

TextList users_of(const Value &value) {
  const auto &users = std::get<TextList>(value);
  if (users.size() > wire::kMaxRefusedUsers) {
    throw Refusal("it names " + std::to_string(users.size()) + " users; at most " +
                  std::to_string(wire::kMaxRefusedUsers) + " can be refused");
  }
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

template <class Owner>
constexpr Field<Owner> remaining_hops_field(std::string_view meaning) {
  return number_field<Owner, &Owner::remaining_hops, kMinRemainingHops, kMaxMaxHops>("remaining_hops",
                                                                                     meaning);
}

// The rows of the schema.

constexpr auto kSwitchFields = std::to_array<Field<Settings>>(
    {text_field<Settings, &Settings::name, kMaxNameLength>("name", "What people call the switch."),
     required(choice_field<Settings, &Settings::mode, kModes>("mode", "The spanning tree protocol.")),
     choice_field<Settings, &Settings::path_cost_method, kPathCostMethods>(
         "path_cost_method",
         "Path costs of 16 or of 32 bits. In mode mst they have 32 bits, whatever this says."),
     flag_field<Settings, &Settings::loop_guard_default>(
         "loop_guard_default", "Whether loop guard watches the interfaces that leave it to the switch.")});

constexpr auto kMstFields = std::to_array<Field<MstRegion>>(
    {text_field<MstRegion, &MstRegion::name, kMaxRegionNameLength>("region", "The name of the region."),
     number_field<MstRegion, &MstRegion::revision, 0, kMaxRevision>("revision",
                                                                    "The revision of the region."),
     number_field<MstRegion, &MstRegion::max_hops, kMinMaxHops, kMaxMaxHops>(
         "max_hops", "How many hops information travels from the regional root."),
     {"pre_standard_digest",
      "The digest of the region that equipment from before the standard computes. Empty, it is equal to the "
      "standard one, which the switch computes itself.",
      ValueType::kText, domain_of_digest, false,
      [](MstRegion &mst, const Value &value) { mst.pre_standard_digest = digest_of(value); },
      [](const MstRegion &mst) -> std::optional<Value> {
        return mst.name ? std::optional<Value>(print_digest(mst.pre_standard_digest)) : std::nullopt;
      }}});

constexpr auto kMstCistFields = std::to_array<Field<MstCist>>(
    {remaining_hops_field<MstCist>("How many of max_hops are left at this switch."),
     number_field<MstCist, &MstCist::regional_root_priority, 0, kMaxPriority>(
         "regional_root_priority", "The priority of the regional root."),
     mac_field<MstCist, &MstCist::regional_root_mac>("regional_root_mac",
                                                     "The address of the regional root."),
     number_field<MstCist, &MstCist::internal_root_path_cost, 0, kMaxRootPathCost>(
         "internal_root_path_cost", "The path cost from here to the regional root.")});

constexpr auto kMstInstanceFields = std::to_array<Field<MstInstance>>(
    {vlans_field<MstInstance, &MstInstance::vlans>(
         "vlans", "What the instance carries. A VLAN belongs to one instance at most."),
     remaining_hops_field<MstInstance>(
         "How many hops are left at this switch, counted from the root of the instance.")});

constexpr auto kRapidPvstFields =
    std::to_array<Field<RapidPvst>>({vlans_field<RapidPvst, &RapidPvst::disabled_vlans>(
        "disabled_vlans", "VLANs on which spanning tree is switched off. Counts in mode rapid-pvst.")});

constexpr auto kAccessFields = std::to_array<Field<Access>>(
    {{"refused_users", "SNMP users whose requests are refused.", ValueType::kTextList, domain_of_users, false,
      [](Access &access, const Value &value) { access.refused_users = users_of(value); },
      [](const Access &access) -> std::optional<Value> { return access.refused_users; }}});

// The defaults of scenarios.

Settings make_settings() {
  return {.name = {},
          .mode = SpanningTreeMode::kMst,
          .path_cost_method = PathCostMethod::kShort,
          .loop_guard_default = false};
}

MstRegion make_mst_region() {
  return {.name = "", .revision = 0, .max_hops = kRecommendedHops, .pre_standard_digest = {}};
}

// The switch is the regional root itself.
MstCist make_mst_cist() {
  return {.remaining_hops = kRecommendedHops,
          .regional_root_priority = kDefaultBridgePriority,
          .regional_root_mac = kDefaultBridgeAddress,
          .internal_root_path_cost = 0};
}

MstInstance make_mst_instance(uint32_t /*number*/) {
  return {.vlans = {}, .remaining_hops = kRecommendedHops};
}

template <class Owner>
Owner make_empty() {
  return {};
}

}  // namespace

const SingleSection<Settings> kSwitchSection = {"switch", "The whole switch.", &SwitchState::settings,
                                                make_settings, kSwitchFields};
const SingleSection<MstRegion> kMstSection = {
    "mst", "The MST region: what a neighbour must have in common to be in it, and what the region computes.",
    &SwitchState::mst, make_mst_region, kMstFields};
const SingleSection<MstCist> kMstCistSection = {
    "mst.cist", "Where the switch stands in the CIST, which spans all regions.", &SwitchState::mst_cist,
    make_mst_cist, kMstCistFields};
const ListSection<MstInstance> kMstInstanceSection = {
    "mst.instance",
    "An MST instance. VLANs that no instance claims belong to the CIST, instance 0.",
    &SwitchState::mst_instances,
    "id",
    1,
    kMaxMstInstance,
    kMaxMstInstances,
    make_mst_instance,
    kMstInstanceFields};
const SingleSection<RapidPvst> kRapidPvstSection = {
    "rapid_pvst", "One spanning tree for each VLAN that an interface is a member of.",
    &SwitchState::rapid_pvst, make_empty<RapidPvst>, kRapidPvstFields};
const SingleSection<Access> kAccessSection = {"access", "Who may not read the switch.", &SwitchState::access,
                                              make_empty<Access>, kAccessFields};

}  // namespace stpswitch
