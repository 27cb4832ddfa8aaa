// A reader's own, read-only view of the image.
#pragma once

#include <cstddef>

#include "answers/image.h"
#include "wire/image.h"

class MappedImage {
 public:
  MappedImage(int fd, size_t size);
  ~MappedImage();
  MappedImage(const MappedImage &) = delete;
  MappedImage &operator=(const MappedImage &) = delete;

  const stpplatform::wire::ImageHead &head() const {
    return *static_cast<const stpplatform::wire::ImageHead *>(memory_);
  }
  const stpplatform::wire::ImageSlot &slot() const;
  stpplatform::answers::Image view() const { return {&slot(), head().slot_size}; }

 private:
  size_t size_;
  void *memory_;
};
