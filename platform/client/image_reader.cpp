#include "image_reader.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstdio>

namespace stpplatform {
namespace {

using answers::load_shared;

const char *describe_other_version(uint32_t version) {
  static char text[128];
  std::snprintf(text, sizeof text,
                "the image has version %u, and the agent reads version %u: restart the %s, "
                "which is older",
                version, wire::kImageVersion, version < wire::kImageVersion ? "switch" : "agent");
  return text;
}

}  // namespace

const char *ImageReader::map(int descriptor, uint32_t announced_size) {
  unmap();
  if (announced_size > wire::kMaxImageSize) {
    return "the image is larger than that of any switch";
  }
  // A file that could shrink would turn a read into a SIGBUS of the agent.
  constexpr int kNeededSeals = F_SEAL_SHRINK | F_SEAL_GROW;
  const int seals = fcntl(descriptor, F_GET_SEALS);
  if (seals < 0 || (seals & kNeededSeals) != kNeededSeals) {
    return "the image is not sealed";
  }
  struct stat file;
  if (fstat(descriptor, &file) != 0 || file.st_size != static_cast<off_t>(announced_size) ||
      announced_size < sizeof(wire::ImageHead)) {
    return "the image's size is not the announced one";
  }
  void *memory = mmap(nullptr, announced_size, PROT_READ, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) {
    return "the image cannot be mapped";
  }
  head_ = static_cast<const wire::ImageHead *>(memory);
  size_ = announced_size;
  clock_.read_resolution();
  const char *fault = check(announced_size);
  if (fault != nullptr) {
    unmap();
  }
  return fault;
}

// The head's fields are read once: they may be others a moment later.
const char *ImageReader::check(uint32_t announced_size) {
  if (load_shared(head_->magic) != wire::kImageMagic) {
    return "the image is none";
  }
  const uint32_t version = load_shared(head_->version);
  if (version != wire::kImageVersion) {
    return describe_other_version(version);
  }
  slot_size_ = load_shared(head_->slot_size);
  if (slot_size_ % wire::kTableAlignment != 0 || slot_size_ > wire::kMaxSlotSize ||
      load_shared(head_->size) != announced_size || wire::image_size(slot_size_) != announced_size) {
    return "the image's size does not fit its slots";
  }
  return nullptr;
}

void ImageReader::unmap() {
  if (head_ != nullptr) {
    munmap(const_cast<wire::ImageHead *>(head_), size_);
    head_ = nullptr;
  }
  has_view_ = false;
}

void ImageReader::view_anew(uint64_t generation) {
  const auto *octets = reinterpret_cast<const uint8_t *>(head_);
  const size_t offset = wire::slot_offset(slot_size_, generation);
  view_ = answers::Image(reinterpret_cast<const wire::ImageSlot *>(octets + offset), slot_size_);
  has_view_ = true;
  view_generation_ = generation;
  ++view_number_;
}

}  // namespace stpplatform
