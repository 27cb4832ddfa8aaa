// vlan_mgr.h: the VLAN manager, from the switch's snapshot.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ask_snapshot.h"
#include "export.h"
#include "platform/vlan_mgr.h"

namespace stpplatform {
namespace {

constexpr uint32_t kOctetBits = 8;
constexpr uint32_t kFirstBit = 0x80;
constexpr uint32_t kWordSize = sizeof(uint32_t);
constexpr uint32_t kWords = STP_VLAN_BITMAP_SIZE / kWordSize;

// A set of VLANs as words, with the range of those that are not zero: most sets have one word.
class VlanMask {
 public:
  explicit VlanMask(const stp_vlan_bmp &vlans) {
    std::memcpy(words_, vlans.bits, std::min<uint32_t>(vlans.size, sizeof words_));
    while (first_ < end_ && words_[first_] == 0) {
      ++first_;
    }
    while (end_ > first_ && words_[end_ - 1] == 0) {
      --end_;
    }
  }

  bool intersects(const wire::SnapshotInterface &interface) const {
    const auto *members = reinterpret_cast<const uint32_t *>(interface.vlans);
    for (uint32_t i = first_; i < end_; ++i) {
      if ((load_shared(members[i]) & words_[i]) != 0) {
        return true;
      }
    }
    return false;
  }

 private:
  uint32_t words_[kWords] = {};
  uint32_t first_ = 0;
  uint32_t end_ = kWords;
};

static_assert(offsetof(wire::SnapshotInterface, vlans) % kWordSize == 0, "membership is read by words");

void collect_members(const SlotView &slot, const VlanMask &mask, uint8_t *ports) {
  for (uint32_t i = 0; i < slot.interface_count(); ++i) {
    const wire::SnapshotInterface &interface = slot.interface(i);
    if (is_bridge_port(interface) && mask.intersects(interface)) {
      const uint32_t port = load_shared(interface.base_port);
      ports[port / kOctetBits] |= static_cast<uint8_t>(kFirstBit >> (port % kOctetBits));
    }
  }
}

}  // namespace
}  // namespace stpplatform

extern "C" STPPLATFORM_EXPORT vlan_mgr_baseport_bmp *vlan_mgr_get_baseport_membership_range(
    const stp_vlan_bmp *vlans) {
  if (vlans == nullptr) {
    return nullptr;
  }
  auto *ports = static_cast<vlan_mgr_baseport_bmp *>(std::malloc(sizeof(vlan_mgr_baseport_bmp)));
  if (ports == nullptr) {
    return nullptr;
  }
  ports->size = BASEPORT_BITMAP_SIZE;
  const stpplatform::VlanMask mask(*vlans);
  const cmd_result result = stpplatform::ask_snapshot([&](const stpplatform::SlotView &slot) {
    std::memset(ports->bits, 0, sizeof ports->bits);
    stpplatform::collect_members(slot, mask, ports->bits);
    return CMD_OK;
  });
  if (result != CMD_OK) {
    std::free(ports);
    return nullptr;
  }
  return ports;
}
