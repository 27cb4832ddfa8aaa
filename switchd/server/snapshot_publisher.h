// Keeps the shared snapshot (platform/wire/snapshot.h) up to date.
#pragma once

#include <cstdint>

#include "model/switch.h"
#include "wire/owned_fd.h"
#include "wire/snapshot.h"

namespace stpswitch {

class SnapshotPublisher {
 public:
  // Publishes the switch's present state. There is room for every interface that any switch can have, so that
  // ports may come: memory is used where a state has been, and nowhere else.
  explicit SnapshotPublisher(const Switch *the_switch);
  ~SnapshotPublisher();
  SnapshotPublisher(const SnapshotPublisher &) = delete;
  SnapshotPublisher &operator=(const SnapshotPublisher &) = delete;

  // Publishes the state that the switch has now.
  void publish();

  int fd() const { return fd_.get(); }
  static constexpr uint32_t size() { return stpplatform::wire::kMaxSnapshotSize; }

 private:
  void map_memory();
  void seal() const;

  const Switch &switch_;
  stpplatform::OwnedFd fd_;
  uint8_t *memory_ = nullptr;
  stpplatform::wire::SnapshotHead *head_ = nullptr;
};

}  // namespace stpswitch
