// A request to the spanning-tree process, made on behalf of the SNMP user being served.
#pragma once

#include <cstdint>

#include "call_site.h"
#include "platform/stp_protocol.h"
#include "query/reply.h"

namespace stpsnmp::query {

struct Key {
  stp_key token;
  const void *value;
};

// The value of a key that selects a spanning tree: a list of one range, of one VLAN or MST instance.
struct TreeRange {
  cmd_range_list list;
  cmd_range tree;
};

constexpr TreeRange single_tree(uint32_t id) { return {{0, 1}, {id, id}}; }

// Adds a key attribute to the request with this handle; the command library knows the length of its value.
// Returns what the library returns.
int add_key(void *request, const Key &key);

// Owns the request buffer and frees it at the end of its scope: end that scope after the send, before the
// reply is read.
class Request {
 public:
  // Allocates the buffer and names command and action. Where memory is short, that is logged for `caller`,
  // and the request is false.
  Request(stp_command command, cmd_action action, CallSite caller);
  ~Request();
  Request(const Request &) = delete;
  Request &operator=(const Request &) = delete;

  explicit operator bool() const { return buffer_ != nullptr; }

  void add(const Key &key) { add_key(handle_, key); }

  // Sends the request and waits for the reply. Returns 0, or the command library's code, and then there is no
  // reply; after a success it may still be empty.
  int send(Reply *reply);

 private:
  void *buffer_;
  void *handle_ = nullptr;
};

}  // namespace stpsnmp::query
