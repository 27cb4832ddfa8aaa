// stp.h: bridge port numbers and the VLANs of MST instances, from the switch's image.
#include "channel.h"
#include "export.h"
#include "platform/stp.h"
#include "replies.h"

namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;

namespace {

void copy_vlans(const wire::ImageMstInstance &instance, stp_vlan_bmp *vlans) {
  vlans->size = STP_VLAN_BITMAP_SIZE;
  answers::copy_words(vlans->bits, instance.vlans, sizeof vlans->bits);
}
static_assert(offsetof(wire::ImageMstInstance, vlans) % sizeof(uint32_t) == 0, "VLANs are copied by words");

}  // namespace

extern "C" {

STPPLATFORM_EXPORT int stp_ifindex2dot1dportnum(uint32_t if_index, uint16_t *port) {
  if (port == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  uint16_t found = 0;
  const cmd_result result = stpplatform::ask_interface(
      if_index, stpplatform::Vouching::kJustNow,
      [&](const wire::ImageInterface &interface) { found = answers::load_shared(interface.base_port); });
  if (result != CMD_OK) {
    return result;
  }
  if (found == 0) {
    return CMD_NO_ENTRY;
  }
  *port = found;
  return CMD_OK;
}

STPPLATFORM_EXPORT int stp_dot1dportnum2ifindex(uint16_t port, uint32_t *if_index) {
  if (if_index == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  uint32_t found = 0;
  const cmd_result result =
      stpplatform::ask_image(stpplatform::Vouching::kJustNow, [&](const answers::Image &image) {
        const wire::ImageInterface *interface = image.find_port(port);
        if (interface == nullptr) {
          return CMD_NO_ENTRY;
        }
        found = answers::load_shared(interface->if_index);
        return CMD_OK;
      });
  if (result == CMD_OK) {
    *if_index = found;
  }
  return result;
}

STPPLATFORM_EXPORT int stp_valid_if_index(uint32_t if_index) {
  bool switched = false;
  const cmd_result result = stpplatform::ask_interface(
      if_index, stpplatform::Vouching::kJustNow, [&](const wire::ImageInterface &interface) {
        switched = answers::load_shared(interface.switched) != 0;
      });
  return result == CMD_OK && switched ? 1 : 0;
}

STPPLATFORM_EXPORT int stp_get_mst_vlan_bmp(void *reply, uint32_t action, uint16_t *instance,
                                            stp_vlan_bmp *vlans) {
  if (stpplatform::reply_of(reply) == nullptr || instance == nullptr || vlans == nullptr ||
      (action != CMD_ACTION_GET && action != CMD_ACTION_GET_NEXT)) {
    return CMD_INVALID_ARGUMENT;
  }
  uint32_t id = 0;
  stp_vlan_bmp found;
  const cmd_result result =
      stpplatform::ask_image(stpplatform::Vouching::kNow, [&](const answers::Image &image) {
        const wire::ImageMstInstance *candidate = action == CMD_ACTION_GET
                                                      ? image.find_mst_instance(*instance)
                                                      : image.mst_instance_behind(*instance);
        if (candidate == nullptr) {
          return CMD_NO_ENTRY;
        }
        // It may be another one than the search has seen. Whoever steps through all must come to an end.
        id = answers::load_shared(candidate->id);
        copy_vlans(*candidate, &found);
        // GCOVR_EXCL_BR_START: fuzz.image_writer reaches it
        const bool is_meant = action == CMD_ACTION_GET ? id == *instance : id > *instance && id <= UINT16_MAX;
        // GCOVR_EXCL_BR_STOP
        return is_meant ? CMD_OK : CMD_BAD_REPLY;
      });
  if (result == CMD_OK) {
    *instance = static_cast<uint16_t>(id);
    *vlans = found;
  }
  return result;
}

STPPLATFORM_EXPORT int stp_dot1d_bridgemib_get_mst_ctx(uint16_t instance, stp_vlan_bmp *vlans) {
  if (vlans == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  stp_vlan_bmp found;
  const cmd_result result =
      stpplatform::ask_image(stpplatform::Vouching::kNow, [&](const answers::Image &image) {
        const wire::ImageMstInstance *candidate = image.find_mst_instance(instance);
        if (candidate == nullptr) {
          return CMD_NO_ENTRY;
        }
        copy_vlans(*candidate, &found);
        return CMD_OK;
      });
  if (result == CMD_OK) {
    *vlans = found;
  }
  return result;
}

}  // extern "C"
