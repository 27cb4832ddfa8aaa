#include "snapshot_reader.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstring>

namespace stpplatform {

void copy_shared(void *to, const uint8_t *from, size_t size) {
  auto *bytes = static_cast<uint8_t *>(to);
  for (size_t i = 0; i < size; i += sizeof(uint32_t)) {
    const uint32_t word = load_shared(*reinterpret_cast<const uint32_t *>(from + i));
    std::memcpy(bytes + i, &word, sizeof word);
  }
}

SlotView::SlotView(const wire::SnapshotSlot *slot, uint32_t interface_capacity)
    : slot_(slot),
      interfaces_(reinterpret_cast<const wire::SnapshotInterface *>(slot + 1)),
      interface_count_(load_shared(slot->interface_count)),
      mst_instance_count_(load_shared(slot->mst_instance_count)),
      sound_(interface_count_ <= interface_capacity && mst_instance_count_ <= wire::kMaxMstInstances) {}

uint32_t SlotView::lower_bound(uint32_t if_index) const {
  uint32_t first = 0;
  uint32_t count = interface_count_;
  while (count > 0) {
    const uint32_t half = count / 2;
    if (load_shared(interfaces_[first + half].if_index) < if_index) {
      first += half + 1;
      count -= half + 1;
    } else {
      count = half;
    }
  }
  return first;
}

const wire::SnapshotInterface *SlotView::find_interface(uint32_t if_index) const {
  const uint32_t position = lower_bound(if_index);
  if (position == interface_count_ || load_shared(interfaces_[position].if_index) != if_index) {
    return nullptr;
  }
  return &interfaces_[position];
}

const wire::SnapshotInterface *SlotView::find_port(uint32_t base_port) const {
  if (base_port >= wire::kPortNumbers) {
    return nullptr;
  }
  const uint32_t number = load_shared(slot_->interface_of_port[base_port]);
  return number == 0 || number > interface_count_ ? nullptr : &interfaces_[number - 1];
}

const char *SnapshotReader::map(int descriptor, uint32_t announced_size) {
  unmap();
  if (announced_size > wire::kMaxSnapshotSize) {
    return "the snapshot is larger than that of any switch";
  }
  // A file that could shrink would turn a read into a SIGBUS of the agent.
  constexpr int kNeededSeals = F_SEAL_SHRINK | F_SEAL_GROW;
  const int seals = fcntl(descriptor, F_GET_SEALS);
  if (seals < 0 || (seals & kNeededSeals) != kNeededSeals) {
    return "the snapshot is not sealed";
  }
  struct stat file;
  if (fstat(descriptor, &file) != 0 || file.st_size != static_cast<off_t>(announced_size) ||
      announced_size < sizeof(wire::SnapshotHead)) {
    return "the snapshot's size is not the announced one";
  }
  void *memory = mmap(nullptr, announced_size, PROT_READ, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) {
    return "the snapshot cannot be mapped";
  }
  head_ = static_cast<const wire::SnapshotHead *>(memory);
  size_ = announced_size;
  interface_capacity_ = load_shared(head_->interface_capacity);

  const char *fault = nullptr;
  if (load_shared(head_->magic) != wire::kSnapshotMagic ||
      load_shared(head_->version) != wire::kSnapshotVersion) {
    fault = "the snapshot is not one of this version";
  } else if (interface_capacity_ > wire::kMaxInterfaces || load_shared(head_->size) != announced_size ||
             wire::snapshot_size(interface_capacity_) != announced_size) {
    fault = "the snapshot's size does not fit its capacity";
  }
  if (fault != nullptr) {
    unmap();
  }
  return fault;
}

void SnapshotReader::unmap() {
  if (head_ != nullptr) {
    munmap(const_cast<wire::SnapshotHead *>(head_), size_);
    head_ = nullptr;
  }
}

SlotView SnapshotReader::view(uint64_t generation) const {
  const auto *bytes = reinterpret_cast<const uint8_t *>(head_);
  const size_t offset = wire::snapshot_slot_offset(interface_capacity_, generation);
  return SlotView(reinterpret_cast<const wire::SnapshotSlot *>(bytes + offset), interface_capacity_);
}

}  // namespace stpplatform
