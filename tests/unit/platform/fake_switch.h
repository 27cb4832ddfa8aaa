// A switch that does what a test says: a real socket, served by a thread of the test's.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "image_file.h"
#include "wire/attributes.h"
#include "wire/message.h"
#include "wire/owned_fd.h"

using Bytes = std::vector<uint8_t>;

// An attribute of a reply under construction.
struct AttributeValue {
  uint32_t token;
  Bytes value;
};

// A well-formed hello, and a well-formed reply to request `sequence`.
Bytes make_hello(uint32_t image_size);
Bytes make_reply_packet(uint32_t sequence, uint32_t status,
                        const std::vector<AttributeValue> &attributes = {});

// A well-formed event, with a payload of four words in network byte order.
struct EventWords {
  uint32_t tree;
  uint32_t if_index;
  uint32_t state;
  uint32_t type;
};
Bytes make_event_packet(uint32_t sequence, uint32_t notification_class, const EventWords &words);

// Sets or gets the field at `offset` of a packet.
void put32(Bytes *packet, size_t offset, uint32_t value);
uint32_t get32(const Bytes &packet, size_t offset);
Bytes bytes_of(uint32_t value);

// What a new connection is greeted with. An empty packet means that the switch stays silent.
struct Greeting {
  Bytes packet;
  std::vector<int> descriptors;
};

// What a request is answered with.
struct Answer {
  std::vector<Bytes> packets;
  bool with_descriptor = false;
  bool close = false;
};

class FakeSwitch {
 public:
  using Responder = std::function<Answer(const Bytes &request)>;

  // Publishes an empty image and listens in a directory of its own.
  FakeSwitch();
  ~FakeSwitch();
  FakeSwitch(const FakeSwitch &) = delete;
  FakeSwitch &operator=(const FakeSwitch &) = delete;

  const std::string &path() const { return path_; }
  const ImageFile &image() const { return image_; }

  // The script. The default greets well, and wants to be asked: it answers every request with its own command
  // number in attribute kEchoToken, and every renewal with a reply. With each of them it renews the lease.
  static constexpr uint32_t kEchoToken = 0x1402'0001;
  void greet_with(const Greeting &greeting);
  void answer_with(const Responder &responder);
  void answer_renewals_with(const Responder &responder);
  Greeting good_greeting() const;
  static Answer echo(const Bytes &request);
  static Answer confirm(const Bytes &renewal);

  // Lets the image answer commands, or not any more.
  void want_to_be_asked(bool wanted);

  // Greets with another image from now on, and renews its lease.
  void hand_out(const ImageFile &image);

  // Renews no lease any more.
  void neglect_lease();

  // Stops, as a switch that is killed does, and starts again at the same address.
  void stop();
  void start();

  // Closes every connection, and goes on listening.
  void close_connections();

  // Sends a packet to whom the latest connection but `back` belongs, if it still stands.
  void send_late(size_t back, const Bytes &packet);

  // Sends a packet to the latest subscriber, if it still stands.
  void tell(const Bytes &packet);

  // What has happened. Requests and subscriptions are complete packets.
  size_t connections() const;
  std::vector<Bytes> requests() const;
  size_t renewals() const;
  std::vector<Bytes> subscriptions() const;

  // Waits until that many requests have come in. False when they do not.
  bool has_heard(size_t requests) const;

 private:
  enum class Command : char { kStop, kCloseConnections };

  void serve();
  void accept_one();
  bool serve_request(int connection);
  void tell(Command command);
  void vouch();

  std::string directory_;
  std::string path_;
  ImageFile image_;
  OwnedFd listener_;
  OwnedFd control_[2];
  OwnedFd done_[2];
  std::thread thread_;

  mutable std::mutex mutex_;
  const ImageFile *handed_out_ = &image_;
  bool keeps_lease_ = true;
  Greeting greeting_;
  Responder responder_;
  Responder renewal_responder_;
  std::vector<OwnedFd> open_connections_;
  size_t connections_ = 0;
  std::vector<Bytes> requests_;
  size_t renewals_ = 0;
  std::vector<Bytes> subscriptions_;
  int subscriber_ = -1;
};
