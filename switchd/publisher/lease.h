// Keeps the image's lease renewed while somebody may be reading it, and lets nobody wake up otherwise.
#pragma once

#include <chrono>

#include "base/event_loop.h"
#include "publisher/image_publisher.h"

namespace stpswitch {

class Lease {
 public:
  // So often that one renewal may be late, and another.
  static constexpr std::chrono::milliseconds kRenewalInterval{150};

  Lease(EventLoop *loop, ImagePublisher *publisher)
      : publisher_(*publisher), timer_(loop->make_event<&Lease::renew>(-1, 0, this)) {}
  Lease(const Lease &) = delete;
  Lease &operator=(const Lease &) = delete;

  // Renews it now, and from now on.
  void renew() {
    publisher_.renew_lease();
    wait_for(timer_, kRenewalInterval);
  }

  // Lets it run out.
  void leave() { forget(timer_); }

 private:
  ImagePublisher &publisher_;
  Event timer_;
};

}  // namespace stpswitch
