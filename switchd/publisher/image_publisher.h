// Keeps the image up to date, and vouches for it.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "answers/image.h"
#include "model/switch.h"
#include "publisher/shared_image.h"

namespace stpswitch {

class ImagePublisher {
 public:
  // Publishes the switch's present state.
  explicit ImagePublisher(const Switch *the_switch);
  // Whoever reads the image then knows that nobody vouches for it any more.
  ~ImagePublisher();
  ImagePublisher(const ImagePublisher &) = delete;
  ImagePublisher &operator=(const ImagePublisher &) = delete;

  // Publishes the state that the switch has now. Where there is no room for it, in a new image.
  void publish();

  // Vouches for the image from now on, for as long as a lease is.
  void renew_lease();

  // Whether commands are to be sent to the switch instead of being answered from the image elsewhere.
  void ask_me(bool wanted);

  // What a client that connects now is to map, and its size.
  int fd() const { return image_->fd(); }
  uint32_t size() const { return image_->size(); }

  // What commands are answered from.
  const stpplatform::answers::Image &view() const { return view_; }

 private:
  void set_head();

  const Switch &switch_;
  std::unique_ptr<SharedImage> image_;
  stpplatform::answers::Image view_;
  std::vector<uint8_t> slot_;  // the latest generation, and memory for the next one
  uint64_t lease_end_ = 0;
  bool ask_me_ = false;
};

}  // namespace stpswitch
