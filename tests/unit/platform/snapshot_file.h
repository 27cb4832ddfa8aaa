// A snapshot as a switch publishes it, made by hand.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "wire/owned_fd.h"
#include "wire/snapshot.h"

using stpplatform::OwnedFd;
using stpplatform::wire::SnapshotHead;
using stpplatform::wire::SnapshotInterface;
using stpplatform::wire::SnapshotMstInstance;
using stpplatform::wire::SnapshotSlot;

// A slot that can be written.
struct WritableSlot {
  SnapshotSlot *head;
  SnapshotInterface *interfaces;
};

class SnapshotFile {
 public:
  explicit SnapshotFile(uint32_t interface_capacity);
  ~SnapshotFile();
  SnapshotFile(const SnapshotFile &) = delete;
  SnapshotFile &operator=(const SnapshotFile &) = delete;

  int descriptor() const { return file_.get(); }
  uint32_t size() const { return size_; }
  SnapshotHead *head() const { return head_; }

  // The slot that readers are sent to.
  WritableSlot current() const;

  // Fills the other slot and makes it the current one, as the protocol of the snapshot demands.
  void publish(const std::function<void(const WritableSlot &)> &fill) const;

  // Publishes interfaces, which must be in ascending order, and MST instances.
  void publish(const std::vector<SnapshotInterface> &interfaces,
               const std::vector<SnapshotMstInstance> &instances = {}) const;

  void seal(int seals) const;

 private:
  WritableSlot slot(uint64_t generation) const;

  uint32_t interface_capacity_;
  uint32_t size_;
  OwnedFd file_;
  SnapshotHead *head_;
};

// Interfaces of the kinds that a switch has.
SnapshotInterface physical_port(uint32_t number, const std::vector<uint16_t> &vlans = {});
SnapshotInterface port_channel(uint32_t number, const std::vector<uint16_t> &vlans = {});

void add_vlan(uint8_t *bitmap, uint16_t vlan);
