// Command 112: the MST region that the switch is configured for. The same reply answers with and without the
// digests' key.
#include "commands/command.h"

namespace stpswitch {

cmd_result answer_mst_region(const Switch &the_switch, const CommandRequest &request, ReplyBuilder *reply) {
  if (!has_keys(request, {}) && !has_keys(request, {Key::kMstDigests})) {
    return CMD_UNKNOWN_KEY;
  }
  if (request.action != CMD_ACTION_GET) {
    return CMD_NO_ENTRY;
  }
  const MstRegion &region = the_switch.state().mst;
  reply->add_number(Token::kMstRegionRevision, region.revision);
  reply->add_octets(Token::kMstRegionName, region.name);
  reply->add_octets(Token::kMstConfigDigest, the_switch.config_digest());
  reply->add_octets(Token::kMstPreStandardDigest, the_switch.pre_standard_digest());
  return CMD_OK;
}

}  // namespace stpswitch
