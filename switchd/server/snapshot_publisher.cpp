#include "server/snapshot_publisher.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <atomic>
#include <cstring>
#include <new>
#include <vector>

#include "base/system_failure.h"
#include "server/snapshot_slot.h"

namespace stpswitch {

namespace wire = stpplatform::wire;

SnapshotPublisher::SnapshotPublisher(const Switch *the_switch)
    : switch_(*the_switch), fd_(::memfd_create("stp-switch-snapshot", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
  map_memory();
  seal();
  publish();
}

SnapshotPublisher::~SnapshotPublisher() {
  if (memory_ != nullptr) {
    ::munmap(memory_, size());
  }
}

void SnapshotPublisher::map_memory() {
  if (!fd_.is_open() || ::ftruncate(fd_.get(), size()) != 0) {
    throw system_failure("cannot create the shared snapshot");
  }
  void *const memory = ::mmap(nullptr, size(), PROT_READ | PROT_WRITE, MAP_SHARED, fd_.get(), 0);
  if (memory == MAP_FAILED) {
    throw system_failure("cannot map the shared snapshot");
  }
  memory_ = static_cast<uint8_t *>(memory);
  head_ = new (memory)
      wire::SnapshotHead{wire::kSnapshotMagic, wire::kSnapshotVersion, size(), wire::kMaxInterfaces, {}};
}

// This process keeps its mapping; nobody else can ever write, and a reader's mapping cannot lose its pages.
void SnapshotPublisher::seal() const {
  constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_FUTURE_WRITE | F_SEAL_SEAL;
  if (::fcntl(fd_.get(), F_ADD_SEALS, kSeals) != 0) {
    throw system_failure("cannot seal the shared snapshot (Linux 5.1 or later is needed)");
  }
}

void SnapshotPublisher::publish() {
  const std::vector<uint8_t> slot = snapshot_slot(switch_);
  const uint64_t generation = head_->generation.load(std::memory_order_relaxed) + 1;
  // Readers of the slot that is overwritten must see the generation that left it before they see new data.
  std::atomic_thread_fence(std::memory_order_release);
  std::memcpy(memory_ + wire::snapshot_slot_offset(wire::kMaxInterfaces, generation), slot.data(),
              slot.size());
  head_->generation.store(generation, std::memory_order_release);
}

}  // namespace stpswitch
