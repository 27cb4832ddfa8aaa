#include "fake_switch.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "comes_true.h"

namespace wire = stpplatform::wire;

namespace {

constexpr int kBacklog = 16;
constexpr size_t kTypeOffset = offsetof(wire::MessageHeader, type);

// For what cannot fail on a machine that can run tests at all.
void require(bool success, const char *what) {
  if (!success) {
    std::perror(what);
    std::abort();
  }
}

void make_pipe(OwnedFd (&ends)[2]) {
  int fds[2];
  require(pipe2(fds, O_CLOEXEC) == 0, "pipe2");
  ends[0].reset(fds[0]);
  ends[1].reset(fds[1]);
}

void send_packet(int socket, const Bytes &packet, const std::vector<int> &descriptors) {
  iovec part{const_cast<uint8_t *>(packet.data()), packet.size()};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  const size_t size = descriptors.size() * sizeof(int);
  std::vector<uint64_t> control((CMSG_SPACE(size) + sizeof(uint64_t) - 1) / sizeof(uint64_t));
  if (!descriptors.empty()) {
    message.msg_control = control.data();
    message.msg_controllen = CMSG_SPACE(size);
    auto *header = reinterpret_cast<cmsghdr *>(control.data());
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(size);
    std::memcpy(CMSG_DATA(header), descriptors.data(), size);
  }
  // The peer may have gone, which is the test's business.
  static_cast<void>(sendmsg(socket, &message, MSG_NOSIGNAL));
}

template <typename T>
Bytes packet_of(const T &head) {
  const auto *bytes = reinterpret_cast<const uint8_t *>(&head);
  return {bytes, bytes + sizeof head};
}

bool is_of_type(const Bytes &packet, wire::MessageType type) {
  return packet.size() > kTypeOffset && packet[kTypeOffset] == static_cast<uint8_t>(type);
}

void write_one(const OwnedFd &pipe, char octet) { require(write(pipe.get(), &octet, 1) == 1, "write"); }

char read_one(const OwnedFd &pipe) {
  char octet = 0;
  require(read(pipe.get(), &octet, 1) == 1, "read");
  return octet;
}

}  // namespace

void put32(Bytes *packet, size_t offset, uint32_t value) {
  std::memcpy(packet->data() + offset, &value, sizeof value);
}

uint32_t get32(const Bytes &packet, size_t offset) {
  uint32_t value = 0;
  std::memcpy(&value, packet.data() + offset, sizeof value);
  return value;
}

Bytes bytes_of(uint32_t value) {
  Bytes bytes(sizeof value);
  put32(&bytes, 0, value);
  return bytes;
}

Bytes make_hello(uint32_t image_size) {
  wire::Hello hello{};
  hello.header = {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kHello),
                  sizeof hello, 0};
  hello.image_size = image_size;
  return packet_of(hello);
}

Bytes make_reply_packet(uint32_t sequence, uint32_t status, const std::vector<AttributeValue> &attributes) {
  wire::Reply reply{};
  reply.header = {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kReply), 0,
                  sequence};
  reply.status = status;
  reply.attribute_count = static_cast<uint32_t>(attributes.size());
  Bytes packet = packet_of(reply);
  for (const AttributeValue &attribute : attributes) {
    const auto length = static_cast<uint32_t>(attribute.value.size());
    Bytes written(sizeof(wire::AttributeHead) + wire::padded(length));
    wire::write_attribute(written.data(), written.size(), {attribute.token, length, attribute.value.data()});
    packet.insert(packet.end(), written.begin(), written.end());
  }
  put32(&packet, offsetof(wire::MessageHeader, length), static_cast<uint32_t>(packet.size()));
  return packet;
}

Bytes make_event_packet(uint32_t sequence, uint32_t notification_class, const EventWords &words) {
  constexpr uint32_t kPayloadLength = 16;
  wire::Event event{};
  event.header = {wire::kMagic, wire::kVersion, static_cast<uint16_t>(wire::MessageType::kEvent),
                  sizeof event + kPayloadLength, sequence};
  event.notification_class = notification_class;
  event.payload_length = kPayloadLength;
  Bytes packet = packet_of(event);
  for (const uint32_t word : {words.tree, words.if_index, words.state, words.type}) {
    const Bytes bytes = bytes_of(htonl(word));
    packet.insert(packet.end(), bytes.begin(), bytes.end());
  }
  return packet;
}

FakeSwitch::FakeSwitch() : responder_(echo), renewal_responder_(confirm) {
  directory_ = (std::filesystem::temp_directory_path() / "fake-switch-XXXXXX").string();
  require(mkdtemp(directory_.data()) != nullptr, "mkdtemp");
  path_ = directory_ + "/socket";
  image_.publish(ImageContent{});
  image_.seal(F_SEAL_SHRINK | F_SEAL_GROW);
  want_to_be_asked(true);
  greeting_ = good_greeting();
  start();
}

FakeSwitch::~FakeSwitch() {
  if (thread_.joinable()) {
    stop();
  }
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

Greeting FakeSwitch::good_greeting() const { return {make_hello(image_.size()), {image_.descriptor()}}; }

Answer FakeSwitch::echo(const Bytes &request) {
  const uint32_t sequence = get32(request, offsetof(wire::MessageHeader, sequence));
  const uint32_t command = get32(request, offsetof(wire::Request, command));
  return {{make_reply_packet(sequence, CMD_OK, {{kEchoToken, bytes_of(command)}})}};
}

Answer FakeSwitch::confirm(const Bytes &renewal) {
  return {{make_reply_packet(get32(renewal, offsetof(wire::MessageHeader, sequence)), CMD_OK)}};
}

void FakeSwitch::want_to_be_asked(bool wanted) {
  if (wanted) {
    image_.head()->flags |= wire::kAskMe;
  } else {
    image_.head()->flags &= ~uint32_t{wire::kAskMe};
  }
}

void FakeSwitch::hand_out(const ImageFile &image) {
  const std::lock_guard lock(mutex_);
  handed_out_ = &image;
  greeting_ = {make_hello(image.size()), {image.descriptor()}};
}

void FakeSwitch::neglect_lease() {
  const std::lock_guard lock(mutex_);
  keeps_lease_ = false;
}

void FakeSwitch::vouch() {
  if (keeps_lease_) {
    handed_out_->renew_lease();
  }
}

void FakeSwitch::greet_with(const Greeting &greeting) {
  const std::lock_guard lock(mutex_);
  greeting_ = greeting;
}

void FakeSwitch::answer_with(const Responder &responder) {
  const std::lock_guard lock(mutex_);
  responder_ = responder;
}

void FakeSwitch::answer_renewals_with(const Responder &responder) {
  const std::lock_guard lock(mutex_);
  renewal_responder_ = responder;
}

void FakeSwitch::start() {
  make_pipe(control_);
  make_pipe(done_);
  listener_.reset(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path_.copy(address.sun_path, sizeof address.sun_path - 1);
  require(bind(listener_.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0, "bind");
  require(listen(listener_.get(), kBacklog) == 0, "listen");
  // Signals are for the thread that runs the library.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  thread_ = std::thread([this] { serve(); });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void FakeSwitch::stop() {
  tell(Command::kStop);
  thread_.join();
  listener_.reset();
  unlink(path_.c_str());
}

void FakeSwitch::close_connections() { tell(Command::kCloseConnections); }

void FakeSwitch::tell(Command command) {
  write_one(control_[1], static_cast<char>(command));
  read_one(done_[0]);
}

void FakeSwitch::send_late(size_t back, const Bytes &packet) {
  const std::lock_guard lock(mutex_);
  if (back < open_connections_.size()) {
    send_packet(open_connections_[open_connections_.size() - 1 - back].get(), packet, {});
  }
}

void FakeSwitch::tell(const Bytes &packet) {
  const std::lock_guard lock(mutex_);
  if (subscriber_ >= 0) {
    send_packet(subscriber_, packet, {});
  }
}

std::vector<Bytes> FakeSwitch::subscriptions() const {
  const std::lock_guard lock(mutex_);
  return subscriptions_;
}

size_t FakeSwitch::connections() const {
  const std::lock_guard lock(mutex_);
  return connections_;
}

std::vector<Bytes> FakeSwitch::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

size_t FakeSwitch::renewals() const {
  const std::lock_guard lock(mutex_);
  return renewals_;
}

bool FakeSwitch::has_heard(size_t requests) const {
  return comes_true([&] { return this->requests().size() >= requests; });
}

// Connections that the library has closed stay open at this end until close_connections, so that what arrives
// late on them can be tried.
void FakeSwitch::serve() {
  std::vector<bool> finished;
  for (;;) {
    std::vector<pollfd> entries{{control_[0].get(), POLLIN, 0}, {listener_.get(), POLLIN, 0}};
    {
      const std::lock_guard lock(mutex_);
      finished.resize(open_connections_.size(), false);
      for (size_t i = 0; i < open_connections_.size(); ++i) {
        entries.push_back({finished[i] ? -1 : open_connections_[i].get(), POLLIN, 0});
      }
    }
    require(poll(entries.data(), entries.size(), -1) > 0, "poll");
    for (size_t i = 2; i < entries.size(); ++i) {
      if (entries[i].revents != 0 && !serve_request(entries[i].fd)) {
        finished[i - 2] = true;
      }
    }
    if (entries[1].revents != 0) {
      accept_one();
    }
    if (entries[0].revents != 0) {
      const auto command = static_cast<Command>(read_one(control_[0]));
      {
        const std::lock_guard lock(mutex_);
        open_connections_.clear();
        subscriber_ = -1;
        finished.clear();
      }
      write_one(done_[1], 0);
      if (command == Command::kStop) {
        return;
      }
    }
  }
}

void FakeSwitch::accept_one() {
  OwnedFd connection(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  const std::lock_guard lock(mutex_);
  ++connections_;
  vouch();
  if (!greeting_.packet.empty()) {
    send_packet(connection.get(), greeting_.packet, greeting_.descriptors);
  }
  open_connections_.push_back(std::move(connection));
}

// False when the connection is of no more use.
bool FakeSwitch::serve_request(int connection) {
  Bytes request(wire::kMaxMessageSize);
  const ssize_t size = recv(connection, request.data(), request.size(), 0);
  if (size <= 0) {
    return false;
  }
  request.resize(static_cast<size_t>(size));
  Responder responder;
  {
    const std::lock_guard lock(mutex_);
    if (is_of_type(request, wire::MessageType::kSubscribe)) {
      subscriptions_.push_back(request);
      subscriber_ = connection;
      return true;
    }
    if (is_of_type(request, wire::MessageType::kRenewal)) {
      ++renewals_;
      responder = renewal_responder_;
    } else {
      requests_.push_back(request);
      responder = responder_;
    }
  }
  const Answer answer = responder(request);
  if (!answer.packets.empty()) {
    const std::lock_guard lock(mutex_);
    vouch();
  }
  std::vector<int> descriptors;
  if (answer.with_descriptor) {
    descriptors.push_back(image_.descriptor());
  }
  for (const Bytes &packet : answer.packets) {
    send_packet(connection, packet, descriptors);
  }
  if (answer.close) {
    shutdown(connection, SHUT_RDWR);
    return false;
  }
  return true;
}
