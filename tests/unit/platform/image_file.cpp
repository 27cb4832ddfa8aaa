#include "image_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <utility>

#include "platform/im.h"
#include "platform/stp_protocol.h"
#include "wire/if_index.h"

namespace wire = stpplatform::wire;

namespace {

ImagePort make_port(if_type type, uint32_t number, uint32_t base_port, const std::vector<uint16_t> &vlans) {
  ImagePort port{};
  port.if_index = wire::if_index_of(type, number);
  port.base_port = static_cast<uint16_t>(base_port);
  port.path_cost = {20000, 1};
  port.oper_status = IF_OPER_UP;
  port.switched = 1;
  port.root_guard = STP_GUARD_DISABLED;
  port.loop_guard = STP_GUARD_DEFAULT;
  port.link_type = STP_LINK_AUTO;
  port.point_to_point = 1;
  port.vlans = vlans;
  return port;
}

// Appends tables to a slot.
class SlotWriter {
 public:
  SlotWriter() : octets_(wire::aligned_table(sizeof(ImageSlot))) {}

  template <typename Record>
  wire::ImageTable append(const std::vector<Record> &records) {
    const wire::ImageTable table{static_cast<uint32_t>(octets_.size()),
                                 static_cast<uint32_t>(records.size())};
    const auto *begin = reinterpret_cast<const uint8_t *>(records.data());
    octets_.insert(octets_.end(), begin, begin + records.size() * sizeof(Record));
    octets_.resize(wire::aligned_table(octets_.size()));
    return table;
  }

  std::vector<uint8_t> finish(const ImageSlot &slot) {
    std::memcpy(octets_.data(), &slot, sizeof slot);
    return octets_;
  }

 private:
  std::vector<uint8_t> octets_;
};

bool is_bridge_port(const ImagePort &port) {
  return port.switched != 0 && port.base_port != 0 && port.pc_if_index == 0;
}

std::vector<uint32_t> members_of(const std::vector<ImagePort> &ports, ImageSlot *slot) {
  const uint32_t words = wire::member_words(static_cast<uint32_t>(ports.size()));
  std::vector<uint32_t> members(wire::kTrees * size_t{words});
  for (size_t i = 0; i < ports.size(); ++i) {
    if (is_bridge_port(ports[i])) {
      for (const uint16_t vlan : ports[i].vlans) {
        members[size_t{vlan} * words + i / 32] |= 1U << (i % 32);
        add_vlan(slot->vlans_in_use, vlan);
      }
    }
  }
  return members;
}

std::vector<uint32_t> inconsistent(const std::vector<ImageTreePort> &ports, uint8_t reasons) {
  std::vector<uint32_t> positions;
  for (uint32_t i = 0; i < ports.size(); ++i) {
    if ((ports[i].inconsistencies & reasons) != 0) {
      positions.push_back(i);
    }
  }
  return positions;
}

wire::ImageBridgeId bridge_id(uint16_t priority, uint8_t last) {
  return {priority, {0, 0, 0x5E, 0, 0x53, last}};
}

// Each interface's number is its bridge port number.
std::vector<wire::ImageBridgePort> bridge_ports_of(const std::vector<ImagePort> &ports) {
  std::vector<wire::ImageBridgePort> records;
  records.reserve(ports.size());
  for (const ImagePort &port : ports) {
    records.push_back({.if_mib_index = {7, 1},
                       .port_id = {0x8000U | port.base_port, 1},
                       .priority = {128, 1},
                       .forward_transitions = {1, 1},
                       .number = port.base_port,
                       .admin_edge = 0,
                       .reserved = 0});
  }
  return records;
}

// Those that have ports.
std::vector<wire::ImageTree> trees_of(const std::vector<ImageTreePort> &ports) {
  std::vector<wire::ImageTree> trees;
  for (const ImageTreePort &port : ports) {
    if (trees.empty() || trees.back().tree != port.tree) {
      wire::ImageTree &tree = trees.emplace_back();
      tree.tree = port.tree;
      tree.has_bridge_id = tree.has_root_id = 1;
      tree.bridge_id = bridge_id(0x8000, 1);
      tree.root_id = bridge_id(0x1000, 2);
      tree.protocol_version = STP_PROTOCOL_VERSION_RSTP;
      tree.last_topology_change = 1;
    }
  }
  return trees;
}

// The ports of each tree by number.
std::vector<uint16_t> by_number(const ImageContent &content) {
  std::vector<ImageTreePort> ports = content.tree_ports;
  std::stable_sort(ports.begin(), ports.end(), [&](const ImageTreePort &one, const ImageTreePort &other) {
    return std::pair(one.tree, content.interfaces[one.interface].base_port) <
           std::pair(other.tree, content.interfaces[other.interface].base_port);
  });
  std::vector<uint16_t> positions;
  positions.reserve(ports.size());
  for (const ImageTreePort &port : ports) {
    positions.push_back(port.interface);
  }
  return positions;
}

std::vector<wire::ImageUser> users(const std::vector<std::string> &names) {
  std::vector<wire::ImageUser> records(names.size());
  for (size_t i = 0; i < names.size(); ++i) {
    names[i].copy(records[i].name, sizeof records[i].name - 1);
  }
  return records;
}

ImageSettings settings_of(const ImageContent &content) {
  ImageSettings settings{};
  settings.mode = content.mode;
  settings.max_hops = {20, 1};
  settings.path_cost_method = STP_PATH_COST_LONG;
  settings.path_cost_oper_method = STP_PATH_COST_LONG;
  return settings;
}

}  // namespace

std::vector<uint8_t> lay_out(const ImageContent &content) {
  ImageSlot slot{};
  SlotWriter writer;
  slot.interfaces =
      writer.append(std::vector<ImageInterface>(content.interfaces.begin(), content.interfaces.end()));
  slot.tree_ports = writer.append(content.tree_ports);
  slot.pvid_or_type =
      writer.append(inconsistent(content.tree_ports, wire::kPvidInconsistent | wire::kTypeInconsistent));
  slot.loop_inconsistent = writer.append(inconsistent(content.tree_ports, wire::kLoopInconsistent));
  slot.root_inconsistent = writer.append(inconsistent(content.tree_ports, wire::kRootInconsistent));
  slot.members = writer.append(members_of(content.interfaces, &slot));
  slot.mst_instances = writer.append(content.mst_instances);
  slot.refused_users = writer.append(users(content.refused_users));
  slot.bridge_ports = writer.append(bridge_ports_of(content.interfaces));
  slot.trees = writer.append(trees_of(content.tree_ports));
  slot.designated = writer.append(content.designated);
  slot.by_number = writer.append(by_number(content));
  slot.settings = settings_of(content);
  for (const ImageTreePort &port : content.tree_ports) {
    add_vlan(slot.running_trees, port.tree);
    std::for_each(slot.first_tree_port + port.tree + 1, std::end(slot.first_tree_port),
                  [](uint32_t &first) { ++first; });
  }
  for (const uint16_t vlan : content.disabled_vlans) {
    add_vlan(slot.disabled_vlans, vlan);
  }
  for (size_t i = 0; i < content.interfaces.size(); ++i) {
    if (content.interfaces[i].base_port != 0) {
      slot.interface_of_port[content.interfaces[i].base_port] = static_cast<uint16_t>(i + 1);
    }
  }
  return writer.finish(slot);
}

ImageFile::ImageFile(uint32_t slot_size)
    : slot_size_(slot_size),
      size_(static_cast<uint32_t>(wire::image_size(slot_size))),
      mapped_size_(std::min(size_, kMostMapped)),
      file_(memfd_create("image", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
  if (!file_.is_open() || ftruncate(file_.get(), size_) != 0) {
    throw std::runtime_error("no shared memory");
  }
  void *memory = mmap(nullptr, mapped_size_, PROT_READ | PROT_WRITE, MAP_SHARED, file_.get(), 0);
  if (memory == MAP_FAILED) {
    throw std::runtime_error("shared memory cannot be mapped");
  }
  head_ = static_cast<ImageHead *>(memory);
  head_->magic = wire::kImageMagic;
  head_->version = wire::kImageVersion;
  head_->size = size_;
  head_->slot_size = slot_size;
}

ImageFile::~ImageFile() { munmap(head_, mapped_size_); }

uint8_t *ImageFile::slot(uint64_t generation) const {
  return reinterpret_cast<uint8_t *>(head_) + wire::slot_offset(slot_size_, generation);
}

ImageSlot *ImageFile::current() const { return reinterpret_cast<ImageSlot *>(slot(head_->generation)); }

void ImageFile::publish(const std::vector<uint8_t> &content) const {
  if (content.size() > slot_size_ || mapped_size_ < size_) {
    throw std::runtime_error("the image is too small, or too large to be written");
  }
  const uint64_t next = head_->generation.load(std::memory_order_relaxed) + 1;
  // Readers of the slot must see the generation that took it from them before they see it change.
  std::atomic_thread_fence(std::memory_order_seq_cst);
  auto *words = reinterpret_cast<uint64_t *>(slot(next));
  for (size_t i = 0; i < content.size() / sizeof *words; ++i) {
    uint64_t word = 0;
    std::memcpy(&word, content.data() + i * sizeof word, sizeof word);
    __atomic_store_n(words + i, word, __ATOMIC_RELAXED);
  }
  head_->generation.store(next, std::memory_order_release);
}

void ImageFile::renew_lease() const {
  constexpr uint64_t kNsPerSecond = 1'000'000'000;
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  head_->lease_end =
      static_cast<uint64_t>(now.tv_sec) * kNsPerSecond + static_cast<uint64_t>(now.tv_nsec) + wire::kLeaseNs;
}

void ImageFile::seal(int seals) const {
  if (fcntl(file_.get(), F_ADD_SEALS, seals) != 0) {
    throw std::runtime_error("shared memory cannot be sealed");
  }
}

ImagePort physical_port(uint32_t number, const std::vector<uint16_t> &vlans) {
  return make_port(IF_TYPE_PHYSICAL, number, wire::kPhysicalBasePortOffset + number, vlans);
}

ImagePort port_channel(uint32_t number, const std::vector<uint16_t> &vlans) {
  return make_port(IF_TYPE_PORT_CHANNEL, number, wire::kChannelBasePortOffset + number, vlans);
}

ImageMstInstance mst_instance(uint32_t id, const std::vector<uint16_t> &vlans) {
  ImageMstInstance instance{id, {20, 1}, {}};
  for (const uint16_t vlan : vlans) {
    add_vlan(instance.vlans, vlan);
  }
  return instance;
}

void add_vlan(uint8_t *bitmap, uint16_t vlan) {
  bitmap[vlan / 8] = static_cast<uint8_t>(bitmap[vlan / 8] | (0x80 >> (vlan % 8)));
}
