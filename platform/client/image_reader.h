// Lock-free reading of the switch's image (platform/wire/image.h).
//
// The switch may overwrite a slot while it is read. What was read counts only when the generation is still
// the same afterwards, and when at that time the switch vouched for the image: the lease held, and the image
// had not been moved.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "answers/image.h"
#include "answers/shared_memory.h"
#include "lease_clock.h"
#include "platform/cmd.h"
#include "wire/image.h"

namespace stpplatform {

// What came of a look at the image.
enum class Reading : uint8_t {
  kCounts,     // all that was found belongs together, and the switch vouches for it
  kNoImage,    // none is mapped
  kMoved,      // another image has taken its place
  kAskMe,      // the switch wants to be asked itself
  kLeaseOver,  // the switch does not vouch for it now
  kChanging,   // the switch changes it all the time
  kUnsound     // the switch vouches for it, and it contradicts itself
};

// How well the switch has to vouch for what is found.
enum class Vouching : uint8_t {
  kNow,     // what is found is a value: the lease is judged by the clock
  kJustNow  // what is found only tells where a search goes on, which asks for hundreds of such: the lease was
            // judged so some looks ago in the same SNMP request
};

class ImageReader {
 public:
  constexpr ImageReader() = default;
  ImageReader(const ImageReader &) = delete;
  ImageReader &operator=(const ImageReader &) = delete;

  // Maps the image behind `descriptor`, which the caller may close afterwards. Returns null on success,
  // otherwise what is wrong with it, valid until the next call, and nothing is mapped.
  const char *map(int descriptor, uint32_t announced_size);
  void unmap();

  // Calls `look` with the present generation as often as needed, and tells what came of it. `look` takes a
  // `const answers::Image &` and returns a cmd_result; what it stores before the last call means nothing, and
  // CMD_BAD_REPLY says that the image contradicts itself. `*result` is set when the reading counts. `heeded`
  // are the flags of the image that concern this question.
  template <class Look>
  Reading read(uint32_t heeded, Vouching vouching, Look look, cmd_result *result) {
    if (head_ == nullptr) {
      return Reading::kNoImage;
    }
    for (int i = 0; i < kMostTries; ++i) {
      const uint64_t generation = head_->generation.load(std::memory_order_acquire);
      if (!has_view_ || view_generation_ != generation) {
        view_anew(generation);
      }
      const cmd_result found =
          view_.is_sound() ? look(static_cast<const answers::Image &>(view_)) : CMD_BAD_REPLY;
      const Reading reading = judge(heeded, vouching);
      // Behind the judgement: the generation for which the switch vouched then is the one that was read.
      std::atomic_thread_fence(std::memory_order_acquire);
      if (head_->generation.load(std::memory_order_relaxed) == generation) {
        *result = found;
        return reading == Reading::kCounts && found == CMD_BAD_REPLY ? Reading::kUnsound : reading;
      }
      has_view_ = false;
    }
    return Reading::kChanging;
  }

  // An SNMP request begins, or there is none any more.
  void begin_request() { clock_.begin_request(); }
  void end_request() { clock_.end_request(); }

  // A number that no other generation, and no other image, has had in this process. To be asked from within
  // `look`.
  uint64_t view_number() const { return view_number_; }

 private:
  // A look takes a small part of the time that the switch needs to publish: hardly any meets a change, unless
  // the agent loses the processor meanwhile, and hardly ever one meets it twice in a row.
  static constexpr int kMostTries = 8;

  Reading judge(uint32_t heeded, Vouching vouching) {
    const uint32_t flags = head_->flags.load(std::memory_order_relaxed) & heeded;
    if (flags != 0) {
      return (flags & wire::kMoved) != 0 ? Reading::kMoved : Reading::kAskMe;
    }
    const uint64_t lease_end = head_->lease_end.load(std::memory_order_relaxed);
    const bool holds =
        vouching == Vouching::kNow ? clock_.is_before(lease_end) : clock_.was_before(lease_end);
    return holds ? Reading::kCounts : Reading::kLeaseOver;
  }

  const char *check(uint32_t announced_size);
  void view_anew(uint64_t generation);

  const wire::ImageHead *head_ = nullptr;
  size_t size_ = 0;
  size_t slot_size_ = 0;
  LeaseClock clock_;
  // Kept while the generation lasts: walks go on where its latest searches ended.
  answers::Image view_;
  bool has_view_ = false;
  uint64_t view_generation_ = 0;
  uint64_t view_number_ = 0;
};

}  // namespace stpplatform
