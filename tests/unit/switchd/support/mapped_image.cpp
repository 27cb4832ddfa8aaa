#include "support/mapped_image.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

namespace wire = stpplatform::wire;

MappedImage::MappedImage(int fd, size_t size)
    : size_(size), memory_(::mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0)) {
  EXPECT_NE(memory_, MAP_FAILED);
}

MappedImage::~MappedImage() { ::munmap(memory_, size_); }

const wire::ImageSlot &MappedImage::slot() const {
  return *reinterpret_cast<const wire::ImageSlot *>(
      static_cast<const uint8_t *>(memory_) + wire::slot_offset(head().slot_size, head().generation.load()));
}
