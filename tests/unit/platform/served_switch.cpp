#include "served_switch.h"

#include <sys/socket.h>

#include <optional>
#include <utility>

#include "faults/faults.h"
#include "model/switch.h"
#include "publisher/image_publisher.h"
#include "server/command_server.h"
#include "server/tree_event_limiter.h"

struct ServedSwitch::Parts {
  Parts(stpswitch::EventLoop *loop, const std::string &path)
      : server(loop, {path, SOCK_SEQPACKET, 0660, std::nullopt}, &publisher, &faults),
        limiter(loop, [this](const auto &events) { server.tell(events); }) {
    the_switch.on_change([this] { publisher.publish(); });
    the_switch.on_inconsistencies([this](const auto &events) {
      server.tell({events.begin(), events.end()});
    });
    the_switch.on_tree_events([this](const auto &events) { limiter.take(events); });
    // No fault at all, so often that it counts.
    faults.order(stpswitch::FaultKind::kNone, {}, UINT32_MAX);
  }

  stpswitch::Switch the_switch{stpswitch::SwitchState{}};
  stpswitch::ImagePublisher publisher{&the_switch};
  stpswitch::Faults faults;
  stpswitch::CommandServer server;
  stpswitch::TreeEventLimiter limiter;
};

ServedSwitch::ServedSwitch(const std::string &path) {
  thread_.run([this, &path] { parts_ = std::make_unique<Parts>(&thread_.loop(), path); });
}

ServedSwitch::~ServedSwitch() {
  thread_.run([this] { parts_.reset(); });
}

void ServedSwitch::replace(stpswitch::SwitchState state) {
  thread_.run([this, &state] { parts_->the_switch.replace(std::move(state)); });
}

void ServedSwitch::ask_me(bool wanted) {
  thread_.run([this, wanted] { parts_->publisher.ask_me(wanted); });
}

uint32_t ServedSwitch::answered_by_socket() {
  uint32_t left = 0;
  thread_.run([this, &left] { left = parts_->faults.left().value(); });
  return UINT32_MAX - left;
}

uint32_t ServedSwitch::image_size() {
  uint32_t size = 0;
  thread_.run([this, &size] { size = parts_->publisher.size(); });
  return size;
}
