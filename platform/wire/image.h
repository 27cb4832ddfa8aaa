// The image: all that the switch can be asked, in memory that it shares with whoever asks.
//
// The switch keeps it in a memfd, sealed against shrinking, growing and other writers, that every connection
// receives with the hello. Behind the head stand two slots that take turns: generation g stands in slot g
// % 2. The switch fills the other slot, then raises the generation, so that a reader never waits: what it
// read from a slot is whole when the generation has not changed meanwhile.
//
// An image counts only while its lease holds, which the switch renews while its main loop runs. An image that
// has become too small is marked as moved, and a new connection receives the one that follows it.
//
// Nothing in it is an address: a slot says at which octet each of its tables begins. Records have a fixed
// size and stand in ascending order of their keys. What nobody knows has a mark of its own.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "platform/cmd.h"
#include "platform/stp.h"
#include "wire/attributes.h"
#include "wire/if_index.h"

namespace stpplatform::wire {

inline constexpr uint32_t kImageMagic = 0x5354'5049;  // "STPI"
inline constexpr uint32_t kImageVersion = 2;

// Bridge port numbers: 129 to 4095 for physical ports, 4097 to 8191 for port-channels.
inline constexpr uint32_t kPortNumbers = 8192;

// As many as there are bridge port numbers. Whatever can be a bridge port has one, which its own number tells
// (if_index.h), so that all of these have a place; of members of port-channels with higher numbers, the first
// ones have.
inline constexpr uint32_t kMaxInterfaces = kMaxPhysicalPort + kMaxChannel;

// The CIST and 64 MST instances, as many as a configuration can name (IEEE 802.1Q clause 13.8).
inline constexpr uint32_t kMaxMstInstances = 65;

// Trees have the numbers of VLANs, 0 being the CIST; VLAN identifiers have 12 bits.
inline constexpr uint32_t kTrees = 4096;

// A set of VLANs or trees, laid out as platform/stp.h says.
inline constexpr size_t kTreeSetSize = STP_VLAN_BITMAP_SIZE;
static_assert(kTreeSetSize * 8 == kTrees);

inline constexpr size_t kRegionNameSize = 32;  // IEEE 802.1Q clause 13.8: Configuration Name
inline constexpr size_t kDigestSize = 16;

// More users than anybody lists. The switch takes no more than these.
inline constexpr uint32_t kMaxRefusedUsers = 65536;

// The value of an octet-sized field that nobody knows. Enumerations and flags have no such value.
inline constexpr uint8_t kUnknown = 0xFF;

struct ImageNumber {
  uint32_t value;
  uint32_t is_known;  // 1, or 0 with the value 0
};

// What holds for the whole switch.
struct ImageSettings {
  ImageNumber max_hops;
  ImageNumber region_revision;
  ImageNumber regional_root_priority;  // of the CIST, as the two that follow
  ImageNumber internal_root_path_cost;
  uint8_t regional_root_mac[kMacAddressSize];
  uint8_t has_regional_root_mac;
  uint8_t mode;                   // enum stp_mode
  uint8_t path_cost_method;       // enum stp_path_cost_method
  uint8_t path_cost_oper_method;  // the same
  uint8_t loop_guard_default;     // flag
  uint8_t has_region_name;
  uint8_t has_config_digest;
  uint8_t has_pre_standard_digest;
  uint8_t region_name_length;
  uint8_t reserved;
  uint8_t region_name[kRegionNameSize];
  uint8_t config_digest[kDigestSize];
  uint8_t pre_standard_digest[kDigestSize];
};

// Key: if_index. What follows path_cost is of bridge ports, and unknown for others.
struct ImageInterface {
  uint32_t if_index;
  uint32_t pc_if_index;  // of the port-channel that the port is a member of, 0 for none
  uint16_t base_port;    // bridge port number, 0 for none
  uint16_t channel;      // number of that port-channel, 0 for none
  ImageNumber path_cost;
  uint8_t oper_status;     // enum if_oper_status
  uint8_t switched;        // 1: takes part in bridging
  uint8_t root_guard;      // enum stp_guard, as the next one
  uint8_t loop_guard;      //
  uint8_t link_type;       // enum stp_link_type
  uint8_t point_to_point;  // flag, as those that follow; unknown without a link
  uint8_t edge;
  uint8_t boundary;
  uint8_t peer;
  uint8_t dispute;
  uint8_t pre_standard_peer;
  uint8_t pre_standard_mst;
};

// Why a port of a tree is inconsistent: bits.
inline constexpr uint8_t kPvidInconsistent = 1;
inline constexpr uint8_t kTypeInconsistent = 2;
inline constexpr uint8_t kLoopInconsistent = 4;
inline constexpr uint8_t kRootInconsistent = 8;

// A port of a running tree. Key: tree, interface.
struct ImageTreePort {
  uint16_t tree;
  uint16_t interface;  // position of the interface, which is a bridge port
  uint8_t role;        // enum stp_port_role
  uint8_t inconsistencies;
  uint8_t state;  // enum stp_port_state
  uint8_t reserved;
  uint32_t designated;  // position + 1 of what it knows of its segment; 0: what the bridge itself sends there
};

// The identifier of a bridge (IEEE 802.1D clause 9.2.5).
struct ImageBridgeId {
  uint16_t priority;
  uint8_t mac[kMacAddressSize];
};

// What a port knows of the segment that it attaches to (IEEE 802.1D clause 17.19.21).
struct ImageDesignated {
  ImageBridgeId root;
  ImageBridgeId bridge;
  ImageNumber cost;
  ImageNumber port;  // a port identifier
  uint8_t has_root;
  uint8_t has_bridge;
  uint16_t reserved;
};

// What the standard's objects have of the bridge port at the same position among the interfaces. Of what is
// none, it has nothing.
struct ImageBridgePort {
  ImageNumber if_mib_index;  // ifIndex, RFC 2863
  ImageNumber port_id;
  ImageNumber priority;
  ImageNumber forward_transitions;
  uint16_t number;     // STP_ATTRIBUTE_BRIDGE_PORT
  uint8_t admin_edge;  // flag
  uint8_t reserved;
};

// A running tree. Key: tree.
struct ImageTree {
  alignas(8) uint64_t last_topology_change;  // nanoseconds of CLOCK_MONOTONIC, 0 where nobody knows
  uint32_t tree;
  uint8_t has_bridge_id;
  uint8_t has_root_id;
  uint8_t protocol_version;  // enum stp_protocol_version
  uint8_t reserved;
  ImageBridgeId bridge_id;
  ImageBridgeId root_id;
  ImageNumber root_cost;
  ImageNumber root_port;  // STP_ATTRIBUTE_BRIDGE_PORT, 0 at the root
  ImageNumber max_age;    // hundredths of a second, as all times; those in force, then the bridge's own
  ImageNumber hello_time;
  ImageNumber forward_delay;
  ImageNumber bridge_max_age;
  ImageNumber bridge_hello_time;
  ImageNumber bridge_forward_delay;
  ImageNumber tx_hold_count;
  ImageNumber topology_changes;
};

// Key: id. Where no spanning tree runs there are none.
struct ImageMstInstance {
  uint32_t id;  // 0: the CIST
  ImageNumber remaining_hops;
  uint8_t vlans[kTreeSetSize];  // the VLANs mapped to it
};

struct ImageUser {
  char name[CMD_USER_MAX + 1];  // zero-terminated
};

// Where in the slot a table begins, in octets from the slot's start and a multiple of kTableAlignment, and
// how many records it has.
struct ImageTable {
  uint32_t offset;
  uint32_t count;
};
inline constexpr uint32_t kTableAlignment = 8;

inline constexpr uint32_t kMemberWordBits = 32;

inline constexpr size_t kSlotTables = 12;
struct ImageSlot {
  ImageTable interfaces;         // ImageInterface
  ImageTable tree_ports;         // ImageTreePort
  ImageTable pvid_or_type;       // positions of tree ports that are inconsistent so, 32 bits each
  ImageTable loop_inconsistent;  //
  ImageTable root_inconsistent;  //
  ImageTable members;  // for each VLAN, words of kMemberWordBits bits: bit i of word w is the interface at
                       // position w * kMemberWordBits + i, set when it is a bridge port that is a member
  ImageTable mst_instances;  // ImageMstInstance
  ImageTable refused_users;  // ImageUser
  ImageTable bridge_ports;   // ImageBridgePort, one for each interface
  ImageTable trees;          // ImageTree
  ImageTable designated;     // ImageDesignated
  ImageTable by_number;  // for each place in tree_ports, 16 bits: of the same tree's ports in ascending order
                         // of ImageBridgePort::number, the position of that interface
  ImageSettings settings;
  uint8_t running_trees[kTreeSetSize];   // those without ports, too
  uint8_t vlans_in_use[kTreeSetSize];    // by some bridge port
  uint8_t disabled_vlans[kTreeSetSize];  // no spanning tree runs on them
  uint32_t first_tree_port[kTrees + 1];  // of each tree, its first place in tree_ports, in which the next
                                         // tree's ports begin where this one's end
  uint16_t
      interface_of_port[kPortNumbers];  // position + 1 of the interface with this bridge port number, or 0
};

// What the switch wants of whoever reads the image.
enum ImageFlag : uint32_t {
  kAskMe = 1,  // commands are to be sent to it; what its managers know is still in the image
  kMoved = 2   // nothing: another image has taken this one's place
};

struct ImageHead {
  uint32_t magic;
  uint32_t version;
  uint32_t size;       // of the whole file
  uint32_t slot_size;  // of each slot, a multiple of kTableAlignment
  std::atomic<uint64_t> generation;
  std::atomic<uint64_t> lease_end;  // nanoseconds of CLOCK_MONOTONIC: until then the switch vouches for it
  std::atomic<uint32_t> flags;      // ImageFlag
  uint32_t reserved;
};

// How long a lease is. One that ends later than this from now was not given by this machine's clock.
inline constexpr uint64_t kLeaseNs = 500'000'000;

static_assert(std::atomic<uint64_t>::is_always_lock_free && std::atomic<uint32_t>::is_always_lock_free,
              "the head is shared between processes");
static_assert(sizeof(ImageHead) == 40 && alignof(ImageHead) == 8 && sizeof(ImageSettings) == 112 &&
                  sizeof(ImageInterface) == 32 && sizeof(ImageTreePort) == 12 &&
                  sizeof(ImageDesignated) == 36 && sizeof(ImageBridgePort) == 36 &&
                  sizeof(ImageTree) == 112 && sizeof(ImageMstInstance) == 12 + kTreeSetSize &&
                  sizeof(ImageUser) == 64 &&
                  sizeof(ImageSlot) == kSlotTables * sizeof(ImageTable) + sizeof(ImageSettings) +
                                           3 * kTreeSetSize + (kTrees + 1) * sizeof(uint32_t) +
                                           kPortNumbers * sizeof(uint16_t),
              "the image has no padding");

// Words that the memberships of one VLAN take.
constexpr uint32_t member_words(uint32_t interface_count) {
  return (interface_count + kMemberWordBits - 1) / kMemberWordBits;
}

template <std::unsigned_integral Octets>
constexpr Octets aligned_table(Octets octets) {
  return (octets + kTableAlignment - 1) & ~(Octets{kTableAlignment} - 1);
}

// The largest slot of any switch. Sums of sizes have 64 bits wherever they may exceed what 32 hold.
inline constexpr uint64_t kMaxSlotSize = aligned_table(
    uint64_t{sizeof(ImageSlot)} + kMaxInterfaces * (sizeof(ImageInterface) + sizeof(ImageBridgePort)) +
    uint64_t{kTrees} * kMaxInterfaces *
        (sizeof(ImageTreePort) + sizeof(ImageDesignated) + sizeof(uint16_t) + 3 * sizeof(uint32_t)) +
    uint64_t{kTrees} * sizeof(ImageTree) +
    uint64_t{kTrees} * member_words(kMaxInterfaces) * sizeof(uint32_t) +
    kMaxMstInstances * sizeof(ImageMstInstance) + kMaxRefusedUsers * sizeof(ImageUser) +
    kSlotTables * kTableAlignment);

constexpr uint64_t image_size(uint64_t slot_size) { return sizeof(ImageHead) + 2 * slot_size; }

inline constexpr uint64_t kMaxImageSize = image_size(kMaxSlotSize);
static_assert(kMaxImageSize <= UINT32_MAX, "offsets have 32 bits");
static_assert(kMaxImageSize <= uint64_t{std::numeric_limits<off_t>::max()}, "a file can be as large");

constexpr size_t slot_offset(size_t slot_size, uint64_t generation) {
  return sizeof(ImageHead) + static_cast<size_t>(generation % 2) * slot_size;
}

}  // namespace stpplatform::wire
