#include "publisher/image_publisher.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "publisher/image_slot.h"

namespace stpswitch {
namespace {

namespace wire = stpplatform::wire;

// Room for what comes, so that a port more is no new image: it costs no memory until it is used.
uint32_t roomy(uint64_t slot_size) {
  constexpr uint64_t kLeastRoom = uint64_t{256} * 1024;
  return static_cast<uint32_t>(std::min(wire::aligned_table(2 * slot_size + kLeastRoom), wire::kMaxSlotSize));
}

uint64_t monotonic_ns() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

}  // namespace

ImagePublisher::ImagePublisher(const Switch *the_switch) : switch_(*the_switch) { publish(); }

ImagePublisher::~ImagePublisher() { image_->set_lease_end(0); }

void ImagePublisher::publish() {
  lay_out_slot(switch_, &slot_);
  if (image_ && slot_.size() <= image_->slot_size()) {
    image_->write(slot_);
  } else {
    auto larger = std::make_unique<SharedImage>(roomy(slot_.size()), image_ ? image_->generation() : 0);
    larger->write(slot_);
    const std::unique_ptr<SharedImage> smaller = std::exchange(image_, std::move(larger));
    set_head();
    // Its readers look for the new one as soon as they see the flag.
    if (smaller) {
      smaller->set_lease_end(0);
      smaller->set_flags(wire::kMoved);
    }
  }
  view_ = image_->view();
}

void ImagePublisher::renew_lease() {
  lease_end_ = monotonic_ns() + wire::kLeaseNs;
  set_head();
}

void ImagePublisher::ask_me(bool wanted) {
  ask_me_ = wanted;
  set_head();
}

void ImagePublisher::set_head() {
  image_->set_flags(ask_me_ ? uint32_t{wire::kAskMe} : 0);
  image_->set_lease_end(lease_end_);
}

}  // namespace stpswitch
