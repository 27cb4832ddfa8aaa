#include "support/any_request.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "platform/cmd.h"
#include "protocol_numbers.h"
#include "wire/attributes.h"

namespace wire = stpplatform::wire;

namespace fuzz {
namespace {

// Which keys a request has: bits of an octet of the input.
enum Keys : uint8_t {
  kOfMst = 1,
  kTree = 2,
  kInterface = 4,
  kPort = 8,
  kSettings = 16,
  kRefusedUser = 32,
  kGetNext = 64
};

void add_key(AnyRequest *request, uint32_t token, const void *value, uint32_t length) {
  request->size += wire::write_attribute(request->attributes + request->size,
                                         AnyRequest::kRoom - request->size, {token, length, value});
  ++request->head.attribute_count;
}

void add_number(AnyRequest *request, uint32_t token, uint32_t number) {
  add_key(request, token, &number, sizeof number);
}

}  // namespace

AnyRequest any_request(Input *input) {
  AnyRequest request{};
  request.head.destination = protocol::kDestination;
  request.head.service = protocol::kService;
  request.head.command = protocol::kAllCommands[input->number<uint8_t>() % std::size(protocol::kAllCommands)];
  const auto keys = input->number<uint8_t>();
  const bool is_of_mst = (keys & kOfMst) != 0;
  request.head.action = (keys & kGetNext) != 0 ? CMD_ACTION_GET_NEXT : CMD_ACTION_GET;
  const std::string_view user = (keys & kRefusedUser) != 0 ? "guest" : "operator";
  std::copy(user.begin(), user.end(), request.head.user);
  if ((keys & kTree) != 0) {
    const uint32_t tree = input->number<uint16_t>();
    const uint32_t list[] = {0, 1, tree, tree};
    add_key(&request, is_of_mst ? protocol::kMstTreeKey : protocol::kVlanTreeKey, list, sizeof list);
  }
  if ((keys & kInterface) != 0) {
    add_number(&request, is_of_mst ? protocol::kMstInterfaceKey : protocol::kInterfaceKey,
               input->number<uint32_t>());
  }
  if ((keys & kPort) != 0) {
    add_number(&request, protocol::kBridgePortKey, input->number<uint32_t>());
  }
  if ((keys & kSettings) != 0) {
    add_number(&request, is_of_mst ? protocol::kMstDigestsKey : protocol::kGlobalSettingsKey, 0);
  }
  return request;
}

}  // namespace fuzz
