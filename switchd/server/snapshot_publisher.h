// Keeps the shared snapshot (platform/wire/snapshot.h) up to date.
#pragma once

#include <cstdint>
#include <vector>

#include "model/switch.h"
#include "wire/owned_fd.h"
#include "wire/snapshot.h"

namespace stpswitch {

class SnapshotPublisher {
 public:
  // Publishes the switch's present state, with room for as many interfaces as it has.
  explicit SnapshotPublisher(const Switch *the_switch);
  ~SnapshotPublisher();
  SnapshotPublisher(const SnapshotPublisher &) = delete;
  SnapshotPublisher &operator=(const SnapshotPublisher &) = delete;

  // Publishes the state that the switch has now.
  void publish();

  int fd() const { return fd_.get(); }
  uint32_t size() const { return size_; }

 private:
  void map_memory();
  void seal() const;

  const Switch &switch_;
  uint32_t capacity_;
  uint32_t size_;
  stpplatform::OwnedFd fd_;
  uint8_t *memory_ = nullptr;
  stpplatform::wire::SnapshotHead *head_ = nullptr;
  std::vector<uint8_t> next_slot_;
};

}  // namespace stpswitch
