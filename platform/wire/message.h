// Messages between the platform library and stp-switchd.
//
// A local SOCK_SEQPACKET socket carries one message a packet, in host byte order. After it has accepted a
// connection the switch sends a hello, with the image's file descriptor (image.h) as ancillary data; then
// every request is answered by one reply of the same sequence number. Request and reply end in attributes
// (attributes.h). A renewal, a header and nothing more, asks for nothing but that the image's lease is
// renewed, and is answered by a reply without attributes. Every reply renews it, before it is sent.
//
// A subscription turns its connection into one for events: from then on the switch sends an event whenever
// there is one, and nothing else; a further subscription takes the place of the first one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/cmd.h"

namespace stpplatform::wire {

inline constexpr uint32_t kMagic = 0x5354'5057;  // "STPW"
inline constexpr uint16_t kVersion = 1;

// Where the switch listens unless it is told otherwise.
inline constexpr char kDefaultSocketPath[] = "/run/stp-switchd/switch.sock";

// The longest message: more than the largest reply, less than the default socket buffer.
inline constexpr uint32_t kMaxMessageSize = 128 * 1024;

enum class MessageType : uint16_t {
  kHello = 1,
  kRequest = 2,
  kReply = 3,
  kSubscribe = 4,
  kEvent = 5,
  kRenewal = 6
};

struct MessageHeader {
  uint32_t magic;
  uint16_t version;
  uint16_t type;      // MessageType
  uint32_t length;    // of the whole message, in bytes
  uint32_t sequence;  // of the request; a reply repeats it; events of a connection count from 1; else 0
};

// What follows a number in a sequence: 0 is the hello's.
constexpr uint32_t next_sequence(uint32_t sequence) { return sequence == UINT32_MAX ? 1 : sequence + 1; }

struct Hello {
  MessageHeader header;
  uint32_t image_size;  // of the shared memory behind the descriptor, in bytes
};

struct Request {
  MessageHeader header;
  uint32_t destination;
  uint32_t service;
  uint32_t command;
  uint32_t action;
  uint32_t session;
  uint32_t flags;
  uint32_t attribute_count;
  char user[CMD_USER_MAX + 1];  // zero-terminated
};

struct Reply {
  MessageHeader header;
  uint32_t status;  // enum cmd_result; other than CMD_OK, no attributes follow
  uint32_t attribute_count;
};

// The most notification classes that one subscription names.
inline constexpr uint32_t kMaxSubscribedClasses = 32;

struct Subscribe {
  MessageHeader header;
  uint32_t class_count;  // 1 to kMaxSubscribedClasses; as many classes follow, of 32 bits each
};

struct Event {
  MessageHeader header;
  uint32_t notification_class;
  uint32_t payload_length;  // the payload (events.h) follows
};

static_assert(sizeof(MessageHeader) == 16 && sizeof(Hello) == 20 && sizeof(Request) == 108 &&
                  sizeof(Reply) == 24 && sizeof(Subscribe) == 20 && sizeof(Event) == 24,
              "messages have no padding");

}  // namespace stpplatform::wire
