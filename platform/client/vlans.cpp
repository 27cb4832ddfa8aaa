// vlan_mgr.h: the VLAN manager, from the switch's image.
#include <endian.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

#include "channel.h"
#include "export.h"
#include "platform/vlan_mgr.h"

namespace stpplatform {
namespace {

using answers::load_shared;

constexpr uint32_t kOctetBits = 8;
constexpr uint8_t kFirstBit = 0x80;

// The interfaces that are members of at least one of several VLANs, by position as the image has them.
class Union {
 public:
  explicit Union(const answers::Image &image)
      : image_(image), word_count_(wire::member_words(image.interfaces().count)) {
    std::memset(words_, 0, word_count_ * sizeof words_[0]);
  }

  // Adds the members of the VLANs in the first `size` octets of a set.
  void add_vlans(const uint8_t *octets, uint32_t size) {
    for (uint32_t at = 0; at < size; at += sizeof(uint64_t)) {
      uint64_t word = 0;
      std::memcpy(&word, octets + at, std::min<size_t>(size - at, sizeof word));
      add_word(at * kOctetBits, be64toh(word));
    }
  }

  // Sets the bits of their bridge ports. False when one of them cannot be a bridge port.
  bool write_ports(uint8_t *ports) const {
    for (uint32_t i = 0; i < word_count_; ++i) {
      for (uint32_t left = words_[i]; left != 0; left &= left - 1) {
        if (!write_port(i * wire::kMemberWordBits + static_cast<uint32_t>(std::countr_zero(left)), ports)) {
          return false;
        }
      }
    }
    return true;
  }

 private:
  // The VLANs from `first` on; the first one's bit is the highest.
  void add_word(uint32_t first, uint64_t left) {
    constexpr uint64_t kFirstVlan = uint64_t{1} << 63;
    while (left != 0) {
      const auto place = static_cast<uint32_t>(std::countl_zero(left));
      left &= ~(kFirstVlan >> place);
      add_vlan(first + place);
    }
  }

  void add_vlan(uint32_t vlan) {
    const uint32_t *members = image_.members_of(vlan);
    for (uint32_t i = 0; i < word_count_; ++i) {
      words_[i] |= load_shared(members[i]);
    }
  }

  bool write_port(uint32_t position, uint8_t *ports) const {
    const auto &interfaces = image_.interfaces();
    const uint32_t port = position < interfaces.count ? load_shared(interfaces[position].base_port) : 0;
    if (port == 0 || port >= wire::kPortNumbers) {
      return false;
    }
    ports[port / kOctetBits] =
        static_cast<uint8_t>(ports[port / kOctetBits] | kFirstBit >> (port % kOctetBits));
    return true;
  }

  const answers::Image &image_;
  uint32_t word_count_;
  uint32_t words_[wire::member_words(wire::kMaxInterfaces)];  // the first word_count_ of them
};

// The latest question and its answer: a walk asks for the VLANs of one tree again and again.
class LatestMembers {
 public:
  // Sets `*ports` to the bridge ports of the VLANs in the first `size` octets of a set; kPortsSize octets.
  cmd_result find(const answers::Image &image, uint64_t view_number, const uint8_t *vlans, uint32_t size,
                  const uint8_t **ports) {
    *ports = ports_;
    if (view_number_ == view_number && size_ == size && std::memcmp(vlans_, vlans, size) == 0) {
      return CMD_OK;
    }
    view_number_ = kNone;
    std::memset(ports_, 0, sizeof ports_);
    Union members(image);
    members.add_vlans(vlans, size);
    if (!members.write_ports(ports_)) {
      return CMD_BAD_REPLY;
    }
    view_number_ = view_number;
    size_ = size;
    std::memcpy(vlans_, vlans, size);
    return CMD_OK;
  }

  static constexpr uint32_t kPortsSize = wire::kPortNumbers / kOctetBits;

 private:
  static constexpr uint64_t kNone = 0;

  uint64_t view_number_ = kNone;  // of the generation that was asked
  uint32_t size_ = 0;
  uint8_t vlans_[STP_VLAN_BITMAP_SIZE] = {};
  uint8_t ports_[kPortsSize] = {};
};

constinit LatestMembers latest;

}  // namespace
}  // namespace stpplatform

extern "C" STPPLATFORM_EXPORT vlan_mgr_baseport_bmp *vlan_mgr_get_baseport_membership_range(
    const stp_vlan_bmp *vlans) {
  if (vlans == nullptr) {
    return nullptr;
  }
  auto *members = static_cast<vlan_mgr_baseport_bmp *>(std::malloc(sizeof(vlan_mgr_baseport_bmp)));
  if (members == nullptr) {
    return nullptr;
  }
  const uint32_t size = std::min<uint32_t>(vlans->size, sizeof vlans->bits);
  const uint8_t *ports = nullptr;
  const cmd_result result =
      stpplatform::ask_image(stpplatform::Vouching::kNow, [&](const stpplatform::answers::Image &image) {
        return stpplatform::latest.find(image, stpplatform::connection().image().view_number(), vlans->bits,
                                        size, &ports);
      });
  if (result != CMD_OK) {
    std::free(members);
    return nullptr;
  }
  constexpr uint32_t kPortsSize = stpplatform::LatestMembers::kPortsSize;
  members->size = BASEPORT_BITMAP_SIZE;
  std::memcpy(members->bits, ports, kPortsSize);
  std::memset(members->bits + kPortsSize, 0, sizeof members->bits - kPortsSize);
  return members;
}
