// cmd.h: requests laid out in the caller's buffer, replies as handles. The channel (channel.h) turns the ones
// into the others.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "channel.h"
#include "export.h"
#include "platform/cmd.h"
#include "replies.h"
#include "wire/attributes.h"
#include "wire/message.h"

namespace stpplatform {
namespace {

constexpr uint32_t kRequestCookie = 0x5354'5051;

// What stands at the start of the caller's buffer. The message follows the private fields and is sent as it
// stands.
struct RequestBuffer {
  uint32_t cookie;
  uint32_t capacity;      // of the message
  wire::Request message;  // attributes follow; header.length is what is in use
};

RequestBuffer *request_of(void *handle) {
  auto *request = static_cast<RequestBuffer *>(handle);
  return request != nullptr && request->cookie == kRequestCookie ? request : nullptr;
}

}  // namespace
}  // namespace stpplatform

using stpplatform::RequestBuffer;
namespace wire = stpplatform::wire;

extern "C" {

STPPLATFORM_EXPORT void *cmd_req_init(void *buffer, uint32_t size) {
  if (buffer == nullptr || reinterpret_cast<uintptr_t>(buffer) % alignof(max_align_t) != 0 ||
      size < sizeof(RequestBuffer)) {
    return nullptr;
  }
  auto *request = static_cast<RequestBuffer *>(buffer);
  constexpr auto kHead = static_cast<uint32_t>(offsetof(RequestBuffer, message));
  request->cookie = stpplatform::kRequestCookie;
  request->capacity = std::min(size - kHead, wire::kMaxMessageSize);
  // Whoever sends it fills in the rest.
  request->message.header.length = sizeof request->message;
  request->message.command = 0;
  request->message.action = 0;
  request->message.attribute_count = 0;
  return request;
}

STPPLATFORM_EXPORT int cmd_req_cmdId_set(void *request, uint32_t command_id) {
  RequestBuffer *buffer = stpplatform::request_of(request);
  if (buffer == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  buffer->message.command = command_id;
  return CMD_OK;
}

STPPLATFORM_EXPORT int cmd_req_action_set(void *request, uint32_t action) {
  RequestBuffer *buffer = stpplatform::request_of(request);
  if (buffer == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  buffer->message.action = action;
  return CMD_OK;
}

STPPLATFORM_EXPORT uint32_t token_type_2len(uint32_t token, const void *value) {
  switch (CMD_TOKEN_TYPE(token)) {
    case CMD_TYPE_RANGE_LIST: {
      if (value == nullptr) {
        return 0;
      }
      cmd_range_list list;
      std::memcpy(&list, value, sizeof list);
      return wire::range_list_length(std::min<uint32_t>(list.count, CMD_RANGES_MAX));
    }
    case CMD_TYPE_OCTETS:
      // One more than allowed, so that cmd_req_attr_add refuses a longer text instead of sending its
      // beginning.
      return value == nullptr
                 ? 0
                 : static_cast<uint32_t>(strnlen(static_cast<const char *>(value), CMD_ATTR_VALUE_MAX + 1));
    default:
      return wire::fixed_length(token);
  }
}

STPPLATFORM_EXPORT int cmd_req_attr_add(void *request, uint32_t token, const void *value, uint32_t length) {
  RequestBuffer *buffer = stpplatform::request_of(request);
  if (buffer == nullptr || (value == nullptr && length != 0) ||
      !wire::length_fits_type(token, value, length)) {
    return CMD_INVALID_ARGUMENT;
  }
  wire::Request &message = buffer->message;
  const size_t used = wire::write_attribute(reinterpret_cast<uint8_t *>(&message) + message.header.length,
                                            buffer->capacity - message.header.length, {token, length, value});
  if (used == 0) {
    return CMD_NO_SPACE;
  }
  message.header.length += static_cast<uint32_t>(used);
  ++message.attribute_count;
  return CMD_OK;
}

STPPLATFORM_EXPORT int cmd_snmp_req_send_recv(uint32_t destination, uint32_t service, void *request,
                                              const char *user, uint32_t session, void **reply,
                                              uint32_t flags) {
  RequestBuffer *buffer = stpplatform::request_of(request);
  const size_t user_length = user == nullptr ? 0 : strnlen(user, CMD_USER_MAX + 1);
  if (buffer == nullptr || reply == nullptr || user_length > CMD_USER_MAX) {
    return CMD_INVALID_ARGUMENT;
  }
  wire::Request &message = buffer->message;
  message.destination = destination;
  message.service = service;
  message.session = session;
  message.flags = flags;
  if (user_length != 0) {
    std::memcpy(message.user, user, user_length);
  }
  message.user[user_length] = '\0';
  stpplatform::Reply *answered = nullptr;
  const cmd_result result = stpplatform::ask_command(&message, &answered);
  if (result == CMD_OK) {
    *reply = answered;
  }
  return result;
}

STPPLATFORM_EXPORT int cmd_rsp_attr_get(void *reply, uint32_t token, void **value, uint32_t *length) {
  stpplatform::Reply *found = stpplatform::reply_of(reply);
  if (found == nullptr || value == nullptr || length == nullptr) {
    return CMD_INVALID_ARGUMENT;
  }
  wire::Attribute attribute;
  if (!stpplatform::find_attribute(found, token, &attribute)) {
    return CMD_NO_ATTRIBUTE;
  }
  *value = const_cast<void *>(attribute.value);
  *length = attribute.length;
  return CMD_OK;
}

STPPLATFORM_EXPORT void cmd_snmp_free_rx_hndl(void *reply) { stpplatform::release_reply(reply); }

}  // extern "C"
