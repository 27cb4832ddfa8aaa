#include "snapshot_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "platform/im.h"
#include "wire/if_index.h"

namespace wire = stpplatform::wire;

namespace {

SnapshotInterface make_interface(if_type type, uint32_t number, uint32_t base_port,
                                 const std::vector<uint16_t> &vlans) {
  SnapshotInterface interface {};
  interface.if_index = wire::if_index_of(type, number);
  interface.base_port = static_cast<uint16_t>(base_port);
  interface.oper_status = IF_OPER_UP;
  interface.switched = 1;
  for (const uint16_t vlan : vlans) {
    add_vlan(interface.vlans, vlan);
  }
  return interface;
}

}  // namespace

SnapshotFile::SnapshotFile(uint32_t interface_capacity)
    : interface_capacity_(interface_capacity),
      size_(static_cast<uint32_t>(wire::snapshot_size(interface_capacity))),
      file_(memfd_create("snapshot", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
  if (!file_.is_open() || ftruncate(file_.get(), size_) != 0) {
    throw std::runtime_error("no shared memory");
  }
  void *memory = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED, file_.get(), 0);
  if (memory == MAP_FAILED) {
    throw std::runtime_error("shared memory cannot be mapped");
  }
  head_ = static_cast<SnapshotHead *>(memory);
  head_->magic = wire::kSnapshotMagic;
  head_->version = wire::kSnapshotVersion;
  head_->size = size_;
  head_->interface_capacity = interface_capacity;
}

SnapshotFile::~SnapshotFile() { munmap(head_, size_); }

WritableSlot SnapshotFile::slot(uint64_t generation) const {
  auto *bytes =
      reinterpret_cast<uint8_t *>(head_) + wire::snapshot_slot_offset(interface_capacity_, generation);
  auto *head = reinterpret_cast<SnapshotSlot *>(bytes);
  return {head, reinterpret_cast<SnapshotInterface *>(head + 1)};
}

WritableSlot SnapshotFile::current() const { return slot(head_->generation.load()); }

void SnapshotFile::publish(const std::function<void(const WritableSlot &)> &fill) const {
  const uint64_t next = head_->generation.load(std::memory_order_relaxed) + 1;
  // Readers of the slot must see the generation that took it from them before they see it change.
  std::atomic_thread_fence(std::memory_order_seq_cst);
  fill(slot(next));
  head_->generation.store(next, std::memory_order_release);
}

void SnapshotFile::publish(const std::vector<SnapshotInterface> &interfaces,
                           const std::vector<SnapshotMstInstance> &instances) const {
  publish([&](const WritableSlot &slot) {
    std::memset(static_cast<void *>(slot.head), 0, sizeof *slot.head);
    slot.head->interface_count = static_cast<uint32_t>(interfaces.size());
    slot.head->mst_instance_count = static_cast<uint32_t>(instances.size());
    for (size_t i = 0; i < interfaces.size(); ++i) {
      slot.interfaces[i] = interfaces[i];
      if (interfaces[i].base_port != 0) {
        slot.head->interface_of_port[interfaces[i].base_port] = static_cast<uint16_t>(i + 1);
      }
    }
    for (size_t i = 0; i < instances.size(); ++i) {
      slot.head->mst_instances[i] = instances[i];
    }
  });
}

void SnapshotFile::seal(int seals) const {
  if (fcntl(file_.get(), F_ADD_SEALS, seals) != 0) {
    throw std::runtime_error("shared memory cannot be sealed");
  }
}

SnapshotInterface physical_port(uint32_t number, const std::vector<uint16_t> &vlans) {
  return make_interface(IF_TYPE_PHYSICAL, number, wire::kPhysicalBasePortOffset + number, vlans);
}

SnapshotInterface port_channel(uint32_t number, const std::vector<uint16_t> &vlans) {
  return make_interface(IF_TYPE_PORT_CHANNEL, number, wire::kChannelBasePortOffset + number, vlans);
}

void add_vlan(uint8_t *bitmap, uint16_t vlan) {
  bitmap[vlan / 8] = static_cast<uint8_t>(bitmap[vlan / 8] | (0x80 >> (vlan % 8)));
}
