// One file of the image: memory that this process writes and others read (platform/wire/image.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "answers/image.h"
#include "wire/image.h"
#include "wire/owned_fd.h"

namespace stpswitch {

class SharedImage {
 public:
  // With slots for so many octets each, and generation `generation` in the slot that is its turn.
  SharedImage(size_t slot_size, uint64_t generation);
  ~SharedImage();
  SharedImage(const SharedImage &) = delete;
  SharedImage &operator=(const SharedImage &) = delete;

  int fd() const { return fd_.get(); }
  uint32_t size() const { return head_->size; }
  size_t slot_size() const { return head_->slot_size; }
  uint64_t generation() const { return head_->generation.load(std::memory_order_relaxed); }

  // Makes the next generation of these octets, which must fit.
  void write(std::span<const uint8_t> slot);

  // The generation that was written last.
  stpplatform::answers::Image view() const;

  void set_lease_end(uint64_t time) { head_->lease_end.store(time, std::memory_order_release); }
  void set_flags(uint32_t flags) { head_->flags.store(flags, std::memory_order_release); }

 private:
  SharedImage();
  uint8_t *slot(uint64_t generation) const;
  void map_memory(size_t slot_size, uint64_t generation);
  void seal() const;

  stpplatform::OwnedFd fd_;
  stpplatform::wire::ImageHead *head_ = nullptr;
};

}  // namespace stpswitch
