// Command 112: the MST region that the switch is configured for. The VLAN map, which is long, is left out
// when the request has the digests' key.
#include <algorithm>

#include "commands/command.h"

namespace stpswitch {
namespace {

constexpr unsigned kOctetBits = 8;

void add_vlan_map(const Switch &the_switch, ReplyBuilder *reply) {
  for (const auto &[id, vlans] : the_switch.mst_vlan_map()) {
    stp_mst_vlans map{{static_cast<uint8_t>(id >> kOctetBits), static_cast<uint8_t>(id)}, {}};
    std::copy(vlans.octets().begin(), vlans.octets().end(), map.vlans);
    reply->add_octets(STP_ATTRIBUTE_MST_VLAN_MAP, {reinterpret_cast<const uint8_t *>(&map), sizeof map});
  }
}

}  // namespace

cmd_result answer_mst_region(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  const bool wants_everything = has_keys(request, {});
  if (!wants_everything && !has_keys(request, {STP_KEY_MST_DIGESTS})) {
    return CMD_UNKNOWN_KEY;
  }
  if (request.action != CMD_ACTION_GET) {
    return CMD_NO_ENTRY;
  }
  const MstRegion &region = the_switch.state().mst;
  reply->add_number(STP_ATTRIBUTE_MST_REGION_REVISION, region.revision);
  if (region.name) {
    reply->add_octets(STP_ATTRIBUTE_MST_REGION_NAME, *region.name);
  }
  if (const auto &digest = the_switch.config_digest()) {
    reply->add_octets(STP_ATTRIBUTE_MST_CONFIG_DIGEST, *digest);
  }
  if (const auto &digest = the_switch.pre_standard_digest()) {
    reply->add_octets(STP_ATTRIBUTE_MST_PRE_STANDARD_DIGEST, *digest);
  }
  if (wants_everything) {
    add_vlan_map(the_switch, reply);
  }
  return CMD_OK;
}

}  // namespace stpswitch
