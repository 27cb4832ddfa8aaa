// The sections of what is not an interface.
#include "scenario/schema.h"

#include <limits>
#include <optional>

#include "base/hex_octets.h"
#include "platform/cmd.h"
#include "scenario/fields.h"
#include "wire/snapshot.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

constexpr size_t kMaxRegionNameLength = 32;  // IEEE 802.1Q clause 13.8
constexpr int64_t kMaxRevision = 65535;      // IEEE 802.1Q clause 13.8
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

template <class Owner>
constexpr Field<Owner> kRemainingHopsField =
    number_field<Owner, &Owner::remaining_hops, kMinRemainingHops, kMaxMaxHops>("remaining_hops");

// The rows of the schema.

constexpr std::array<Field<Settings>, 4> kSwitchFields = {
    {text_field<Settings, &Settings::name, kMaxNameLength>("name"),
     required(choice_field<Settings, &Settings::mode, kModes>("mode")),
     choice_field<Settings, &Settings::path_cost_method, kPathCostMethods>("path_cost_method"),
     flag_field<Settings, &Settings::loop_guard_default>("loop_guard_default")}};

constexpr std::array<Field<MstRegion>, 4> kMstFields = {
    {text_field<MstRegion, &MstRegion::name, kMaxRegionNameLength>("region"),
     number_field<MstRegion, &MstRegion::revision, 0, kMaxRevision>("revision"),
     number_field<MstRegion, &MstRegion::max_hops, kMinMaxHops, kMaxMaxHops>("max_hops"),
     {"pre_standard_digest", ValueType::kText, false,
      [](MstRegion &mst, const Value &value) { mst.pre_standard_digest = digest_of(value); },
      [](const MstRegion &mst) -> Value { return print_digest(mst.pre_standard_digest); }}}};

constexpr std::array<Field<MstCist>, 4> kMstCistFields = {
    {kRemainingHopsField<MstCist>,
     number_field<MstCist, &MstCist::regional_root_priority, 0, kMaxPriority>("regional_root_priority"),
     {"regional_root_mac", ValueType::kText, false,
      [](MstCist &cist, const Value &value) {
        cist.regional_root_mac = parse_mac_address(std::get<std::string>(value));
      },
      [](const MstCist &cist) -> Value { return print_mac_address(cist.regional_root_mac); }},
     number_field<MstCist, &MstCist::internal_root_path_cost, 0, kMaxRootPathCost>(
         "internal_root_path_cost")}};

constexpr std::array<Field<MstInstance>, 2> kMstInstanceFields = {
    {vlans_field<MstInstance, &MstInstance::vlans>("vlans"), kRemainingHopsField<MstInstance>}};

constexpr std::array<Field<RapidPvst>, 1> kRapidPvstFields = {
    {vlans_field<RapidPvst, &RapidPvst::disabled_vlans>("disabled_vlans")}};

constexpr std::array<Field<Access>, 1> kAccessFields = {
    {{"refused_users", ValueType::kTextList, false,
      [](Access &access, const Value &value) { access.refused_users = users_of(value); },
      [](const Access &access) -> Value { return access.refused_users; }}}};

MstInstance make_mst_instance(uint32_t /*number*/) { return {}; }

}  // namespace

const SingleSection<Settings> kSwitchSection = {"switch", &SwitchState::settings, kSwitchFields};
const SingleSection<MstRegion> kMstSection = {"mst", &SwitchState::mst, kMstFields};
const SingleSection<MstCist> kMstCistSection = {"mst.cist", &SwitchState::mst_cist, kMstCistFields};
const ListSection<MstInstance> kMstInstanceSection = {
    "mst.instance",    &SwitchState::mst_instances, "id", 1, kMaxMstInstance, kMaxMstInstances,
    make_mst_instance, kMstInstanceFields};
const SingleSection<RapidPvst> kRapidPvstSection = {"rapid_pvst", &SwitchState::rapid_pvst, kRapidPvstFields};
const SingleSection<Access> kAccessSection = {"access", &SwitchState::access, kAccessFields};

}  // namespace stpswitch
