#include "publisher/shared_image.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <new>

#include "base/system_failure.h"

namespace stpswitch {

namespace wire = stpplatform::wire;

SharedImage::SharedImage() : fd_(::memfd_create("stp-switch-image", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {}

// Whatever fails here, the destructor has its turn: another constructor has done its work before.
SharedImage::SharedImage(size_t slot_size, uint64_t generation) : SharedImage() {
  map_memory(slot_size, generation);
  seal();
}

SharedImage::~SharedImage() {
  if (head_ != nullptr) {
    ::munmap(head_, size());
  }
}

void SharedImage::map_memory(size_t slot_size, uint64_t generation) {
  const auto size = static_cast<uint32_t>(wire::image_size(slot_size));
  if (!fd_.is_open() || ::ftruncate(fd_.get(), off_t{size}) != 0) {
    throw system_failure("cannot create the shared image");
  }
  void *const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd_.get(), 0);
  if (memory == MAP_FAILED) {
    throw system_failure("cannot map the shared image");
  }
  head_ = new (memory) wire::ImageHead{
      wire::kImageMagic, wire::kImageVersion, size, static_cast<uint32_t>(slot_size), generation, {}, {}, 0};
}

// This process keeps its mapping; nobody else can ever write, and a reader's mapping cannot lose its pages.
void SharedImage::seal() const {
  constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_FUTURE_WRITE | F_SEAL_SEAL;
  if (::fcntl(fd_.get(), F_ADD_SEALS, kSeals) != 0) {
    throw system_failure("cannot seal the shared image (Linux 5.1 or later is needed)");
  }
}

uint8_t *SharedImage::slot(uint64_t generation) const {
  return reinterpret_cast<uint8_t *>(head_) + wire::slot_offset(head_->slot_size, generation);
}

void SharedImage::write(std::span<const uint8_t> slot_octets) {
  const uint64_t next = generation() + 1;
  // Readers of the slot that is overwritten must see the generation that left it before they see new data.
  std::atomic_thread_fence(std::memory_order_release);
  auto *const words = reinterpret_cast<uint32_t *>(slot(next));
  for (size_t i = 0; i < slot_octets.size() / sizeof(uint32_t); ++i) {
    uint32_t word = 0;
    std::memcpy(&word, slot_octets.data() + i * sizeof word, sizeof word);
    __atomic_store_n(words + i, word, __ATOMIC_RELAXED);
  }
  head_->generation.store(next, std::memory_order_release);
}

stpplatform::answers::Image SharedImage::view() const {
  return {reinterpret_cast<const wire::ImageSlot *>(slot(generation())), slot_size()};
}

}  // namespace stpswitch
