#include "sources/openvswitch/ovsdb_connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "base/printable.h"
#include "model/refusal.h"

namespace stpswitch {
namespace {

using nlohmann::json;

constexpr const char *kDatabase = "Open_vSwitch";
constexpr const char *kMonitor = "stp-switchd";

// What identifies the requests.
constexpr const char *kSchemaId = "schema";
constexpr const char *kMonitorId = "monitor";
constexpr const char *kEchoId = "echo";

constexpr size_t kReadSize = 65536;

// No more than this waits for a server that takes nothing while it asks for echoes.
constexpr size_t kMaxUnsent = 65536;

// Of a server's words in a log.
constexpr size_t kMaxQuoted = 200;

std::string reason_of(int error) { return std::generic_category().message(error); }

const json *member(const json &object, const char *name) {
  const auto found = object.find(name);
  return found != object.end() && !found->is_null() ? &*found : nullptr;
}

// Null where there is none.
json copy_of(const json &object, const char *name) {
  const json *const value = member(object, name);
  return value != nullptr ? *value : json();
}

std::string quoted(const json &value) {
  return made_printable(value.dump(-1, ' ', true, json::error_handler_t::replace), kMaxQuoted);
}

// What to do when there is no way to the server.
std::string advice_on(int error) {
  switch (error) {
    case ENOENT:
    case ECONNREFUSED:
      return ": is Open vSwitch running? (systemctl start openvswitch-switch)";
    case EACCES:
    case EPERM:
      return ": run stp-switchd as root, or as a user who may read and write this socket";
    default:
      return {};
  }
}

// The columns that are wanted and that the schema has.
json monitor_requests(const json &schema) {
  json requests = json::object();
  const json *const tables = member(schema, "tables");
  for (const WantedTable &wanted : OvsdbRows::wanted()) {
    const json *const table = tables != nullptr && tables->is_object()
                                  ? member(*tables, std::string(wanted.name).c_str())
                                  : nullptr;
    const json *const known = table != nullptr && table->is_object() ? member(*table, "columns") : nullptr;
    if (known == nullptr || !known->is_object()) {
      continue;
    }
    json columns = json::array();
    for (const std::string_view column : wanted.columns) {
      if (known->contains(std::string(column))) {
        columns.push_back(std::string(column));
      }
    }
    requests[std::string(wanted.name)] = json::array({{{"columns", columns}}});
  }
  return requests;
}

}  // namespace

OvsdbConnection::OvsdbConnection(EventLoop *loop, std::string socket, const OvsdbTimes &times,
                                 OvsdbEvents events)
    : socket_(std::move(socket)),
      times_(times),
      events_(std::move(events)),
      loop_(*loop),
      buffer_(kReadSize),
      next_retry_(times.first_retry),
      silence_(loop->make_event<&OvsdbConnection::ask_after_silence>(-1, 0, this)),
      patience_(loop->make_event<&OvsdbConnection::end_patience>(-1, 0, this)),
      retry_(loop->make_event<&OvsdbConnection::connect>(-1, 0, this)) {}

void OvsdbConnection::start() { connect(); }

void OvsdbConnection::wait_for_rows(std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (fd_.is_open() && !has_rows_) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    pollfd waiting{fd_.get(), POLLIN, 0};
    if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) <= 0) {
      return;
    }
    read_messages();
  }
}

void OvsdbConnection::connect() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socket_.size() >= sizeof address.sun_path) {
    lose("the path is longer than " + std::to_string(sizeof address.sun_path - 1) + " octets");
    return;
  }
  std::memcpy(address.sun_path, socket_.data(), socket_.size());
  stpplatform::OwnedFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  // A local socket is connected at once or not at all.
  if (!fd.is_open() ||
      ::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
    const int error = errno;
    lose(reason_of(error) + advice_on(error));
    return;
  }
  fd_ = std::move(fd);
  connected_ = std::chrono::steady_clock::now();
  readable_ = loop_.make_event<&OvsdbConnection::read_messages>(fd_.get(), EV_READ | EV_PERSIST, this);
  writable_ = loop_.make_event<&OvsdbConnection::send_waiting>(fd_.get(), EV_WRITE, this);
  wait_for(readable_);
  wait_for(silence_, times_.silence);
  wait_for(patience_, times_.patience);
  unless_refused([this] {
    send({{"method", "get_schema"}, {"params", json::array({kDatabase})}, {"id", kSchemaId}});
  });
}

void OvsdbConnection::unless_refused(const std::function<void()> &work) {
  try {
    work();
  } catch (const Refusal &refusal) {
    lose(refusal.what());
  }
}

void OvsdbConnection::lose(const std::string &why) {
  readable_.reset();
  writable_.reset();
  forget(silence_);
  forget(patience_);
  fd_.reset();
  stream_ = JsonStream();
  unsent_.clear();
  is_asked_ = false;
  const bool had_rows = std::exchange(has_rows_, false);
  // Not for a connection that was soon lost: the next one may be, too.
  if (had_rows && std::chrono::steady_clock::now() - connected_ >= times_.last_retry) {
    next_retry_ = times_.first_retry;
  }
  wait_for(retry_, next_retry_);
  next_retry_ = std::min(2 * next_retry_, times_.last_retry);
  events_.lost(why);
}

void OvsdbConnection::read_messages() {
  unless_refused([this] { read_octets(); });
}

void OvsdbConnection::read_octets() {
  const ssize_t got = ::recv(fd_.get(), buffer_.data(), buffer_.size(), MSG_DONTWAIT);
  if (got < 0) {
    const int error = errno;
    if (error != EAGAIN && error != EINTR) {
      throw Refusal(reason_of(error));
    }
    return;
  }
  if (got == 0) {
    throw Refusal("the server has hung up");
  }
  is_asked_ = false;
  wait_for(silence_, times_.silence);
  stream_.add({buffer_.data(), static_cast<size_t>(got)});
  while (const auto text = stream_.next()) {
    take(*text);
  }
}

void OvsdbConnection::take(const std::string &text) {
  const json message = json::parse(text, nullptr, false);
  if (!message.is_object()) {
    throw Refusal("a message is no JSON: " + made_printable(text, kMaxQuoted));
  }
  const json *const method = member(message, "method");
  if (method == nullptr) {
    take_reply(message);
  } else if (*method == "echo") {
    answer_echo(message);
  } else if (*method == "update" && has_rows_) {
    const json *const params = member(message, "params");
    if (params == nullptr || !params->is_array() || params->size() != 2 || params->front() != kMonitor) {
      throw Refusal("an update is malformed");
    }
    events_.updated(params->back());
  }
}

void OvsdbConnection::answer_echo(const json &request) {
  send({{"id", copy_of(request, "id")}, {"result", copy_of(request, "params")}, {"error", nullptr}});
}

void OvsdbConnection::take_reply(const json &reply) {
  const json id = copy_of(reply, "id");
  if (id == kEchoId) {
    return;
  }
  if (const json *const error = member(reply, "error")) {
    throw Refusal("the server refuses: " + quoted(*error));
  }
  const json *const result = member(reply, "result");
  if (result == nullptr || !result->is_object()) {
    throw Refusal("a reply is malformed");
  }
  if (id == kSchemaId) {
    monitor(*result);
  } else if (id == kMonitorId) {
    events_.monitored(*result);
    has_rows_ = true;
    forget(patience_);
  }
}

void OvsdbConnection::monitor(const json &schema) {
  send({{"method", "monitor"},
        {"params", json::array({kDatabase, kMonitor, monitor_requests(schema)})},
        {"id", kMonitorId}});
}

void OvsdbConnection::send(const json &message) {
  unsent_ += message.dump(-1, ' ', false, json::error_handler_t::replace);
  if (unsent_.size() > kMaxUnsent) {
    throw Refusal("the server takes nothing");
  }
  send_octets();
}

void OvsdbConnection::send_waiting() {
  unless_refused([this] { send_octets(); });
}

void OvsdbConnection::send_octets() {
  while (!unsent_.empty()) {
    const ssize_t sent = ::send(fd_.get(), unsent_.data(), unsent_.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0) {
      const int error = errno;
      if (error != EAGAIN && error != EINTR) {
        throw Refusal(reason_of(error));
      }
      wait_for(writable_);
      return;
    }
    unsent_.erase(0, static_cast<size_t>(sent));
  }
}

void OvsdbConnection::ask_after_silence() {
  if (is_asked_) {
    lose("the server does not answer");
    return;
  }
  is_asked_ = true;
  wait_for(silence_, times_.silence);
  unless_refused([this] { send({{"method", "echo"}, {"params", json::array()}, {"id", kEchoId}}); });
}

void OvsdbConnection::end_patience() { lose("the server does not say what is in the database"); }

}  // namespace stpswitch
