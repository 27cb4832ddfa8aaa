// Lock-free reading of the switch's shared snapshot (platform/wire/snapshot.h).
//
// The switch may overwrite a slot while it is read. Shared memory is therefore read by atomic loads,
// positions and counts found in it are checked against the capacity before they are used, and what was read
// counts only when the generation is still the same afterwards.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/cmd.h"
#include "wire/snapshot.h"

namespace stpplatform {

// One field of the shared memory.
template <typename T>
T load_shared(const T &field) {
  return __atomic_load_n(&field, __ATOMIC_RELAXED);
}

// Copies `size` octets, a multiple of four, of the shared memory.
void copy_shared(void *to, const uint8_t *from, size_t size);

// One slot, which may be changing.
class SlotView {
 public:
  SlotView(const wire::SnapshotSlot *slot, uint32_t interface_capacity);

  // False when the counts of the slot cannot be.
  bool is_sound() const { return sound_; }

  uint32_t interface_count() const { return interface_count_; }
  const wire::SnapshotInterface &interface(uint32_t position) const { return interfaces_[position]; }

  uint32_t mst_instance_count() const { return mst_instance_count_; }
  const wire::SnapshotMstInstance &mst_instance(uint32_t position) const {
    return slot_->mst_instances[position];
  }

  // The position of the first interface whose index is not below `if_index`; interface_count() when there is
  // none.
  uint32_t lower_bound(uint32_t if_index) const;

  // Null when there is none.
  const wire::SnapshotInterface *find_interface(uint32_t if_index) const;
  const wire::SnapshotInterface *find_port(uint32_t base_port) const;

 private:
  const wire::SnapshotSlot *slot_;
  const wire::SnapshotInterface *interfaces_;
  uint32_t interface_count_;
  uint32_t mst_instance_count_;
  bool sound_;
};

class SnapshotReader {
 public:
  constexpr SnapshotReader() = default;
  SnapshotReader(const SnapshotReader &) = delete;
  SnapshotReader &operator=(const SnapshotReader &) = delete;

  // Maps the snapshot behind `descriptor`, which the caller may close afterwards. Returns null on success,
  // otherwise what is wrong with it, and nothing is mapped.
  const char *map(int descriptor, uint32_t announced_size);
  void unmap();
  bool is_mapped() const { return head_ != nullptr; }

  // Calls `look` with a slot as often as needed, and returns the result of the call during which the slot did
  // not change: what that call found belongs together. `look` takes a `const SlotView &` and returns a
  // cmd_result; what it stores before the last call means nothing. Returns CMD_TIMEOUT when the switch
  // changes the snapshot all the time, CMD_BAD_REPLY when the slot is unsound.
  template <typename Look>
  cmd_result read(Look look) const {
    constexpr int kMaxTries = 1000;
    for (int i = 0; i < kMaxTries; ++i) {
      const uint64_t generation = head_->generation.load(std::memory_order_acquire);
      const SlotView slot = view(generation);
      const cmd_result result = slot.is_sound() ? look(slot) : CMD_BAD_REPLY;
      std::atomic_thread_fence(std::memory_order_acquire);
      if (head_->generation.load(std::memory_order_relaxed) == generation) {
        return result;
      }
    }
    return CMD_TIMEOUT;
  }

 private:
  SlotView view(uint64_t generation) const;

  const wire::SnapshotHead *head_ = nullptr;
  size_t size_ = 0;
  uint32_t interface_capacity_ = 0;
};

}  // namespace stpplatform
