#include "server/switch_process.h"

#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <csignal>
#include <optional>

#include "base/log.h"
#include "base/system_failure.h"
#include "control/control_protocol.h"
#include "control/responder.h"
#include "server/command_server.h"
#include "server/control_server.h"
#include "server/tree_event_limiter.h"

namespace stpswitch {
namespace {

constexpr mode_t kCommandSocketMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP;
constexpr mode_t kControlSocketMode = S_IRUSR | S_IWUSR;
constexpr mode_t kDirectoryMode = S_IRWXU | S_IRGRP | S_IXGRP;

std::optional<gid_t> find_group(const std::string &name) {
  if (name.empty()) {
    return std::nullopt;
  }
  const group *const entry = ::getgrnam(name.c_str());
  if (entry == nullptr) {
    throw std::runtime_error("--socket-group: there is no group '" + name + "'");
  }
  return entry->gr_gid;
}

bool lies_in_default_directory(const std::string &path) {
  return path.starts_with(std::string(control::kDefaultDirectory) + "/");
}

// Only the default directory is this process's to create: elsewhere it would only hide a wrong path.
void create_default_directory(std::optional<gid_t> group) {
  if (::mkdir(control::kDefaultDirectory, kDirectoryMode) != 0) {
    if (errno == EEXIST) {
      return;
    }
    throw system_failure(std::string("cannot create ") + control::kDefaultDirectory);
  }
  if (group && ::chown(control::kDefaultDirectory, static_cast<uid_t>(-1), *group) != 0) {
    throw system_failure(std::string("cannot set the group of ") + control::kDefaultDirectory);
  }
}

}  // namespace

void run_switch(const ProcessOptions &options) {
  EventLoop loop;
  const std::unique_ptr<Source> source = options.make_source(&loop);
  const std::optional<gid_t> group = find_group(options.socket_group);
  if (lies_in_default_directory(options.socket) || lies_in_default_directory(options.control)) {
    create_default_directory(group);
  }

  const Event terminated = loop.make_signal<&EventLoop::stop>(SIGTERM, &loop);
  const Event interrupted = loop.make_signal<&EventLoop::stop>(SIGINT, &loop);
  wait_for(terminated);
  wait_for(interrupted);

  Switch the_switch(
      source->start([&the_switch](SwitchState state) { the_switch.replace(std::move(state)); }));
  ImagePublisher publisher(&the_switch);
  the_switch.on_change([&publisher] { publisher.publish(); });
  Faults faults;
  faults.on_change([&publisher](bool is_ordered) { publisher.ask_me(is_ordered); });
  ControlResponder responder(source.get(), &the_switch, &faults);
  CommandServer commands(&loop, {options.socket, SOCK_SEQPACKET, kCommandSocketMode, group}, &publisher,
                         &faults);
  the_switch.on_inconsistencies([&commands](const auto &events) {
    commands.tell({events.begin(), events.end()});
  });
  TreeEventLimiter limiter(&loop, [&commands](const auto &events) { commands.tell(events); });
  the_switch.on_tree_events([&limiter](const auto &events) { limiter.take(events); });
  const ControlServer control(&loop, {options.control, SOCK_STREAM, kControlSocketMode, std::nullopt},
                              &responder);
  log_line("ready: commands on " + options.socket + ", control on " + options.control);
  loop.run();
  log_line("stopped");
}

}  // namespace stpswitch
