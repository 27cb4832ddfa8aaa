/* Command library: requests to, and replies from, the switch's spanning-tree process.
 *
 * A request is built in a buffer of the caller's, sent synchronously on behalf of one SNMP user, and answered
 * by a reply that the caller reads and releases. Integers are in host byte order.
 */
#ifndef PLATFORM_CMD_H
#define PLATFORM_CMD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The longest value, in bytes, that an attribute of a reply can have. The library enforces it on everything
 * that it receives: a reply that holds a longer value is refused whole. */
#define CMD_ATTR_VALUE_MAX 1024

/* The longest user name that can accompany a request, in bytes without the terminating zero. */
#define CMD_USER_MAX 63

/* In C++, an enumeration of numbers that travel holds any 32-bit number: what is unknown can be refused. */
#ifdef __cplusplus
#define CMD_ENUM_BASE : uint32_t
#else
#define CMD_ENUM_BASE
#endif

/* Actions of a request. */
enum cmd_action CMD_ENUM_BASE {
  CMD_ACTION_GET = 1,     /* the entry that has exactly the request's key */
  CMD_ACTION_GET_NEXT = 3 /* the entry that follows the request's key */
};

/* Result codes. Every function that returns int returns one of these; 0 alone is success. */
enum cmd_result {
  CMD_OK = 0,
  CMD_INVALID_ARGUMENT = 1, /* a null handle, or a value whose length does not fit its token's type */
  CMD_NO_SPACE = 2,         /* the request buffer is full */
  CMD_NO_MEMORY = 3,        /* the reply could not be stored, or a descriptor found no place */
  CMD_UNREACHABLE = 4,      /* nobody answers at the process's address, or it went away */
  CMD_TIMEOUT = 5,          /* no reply within the deadline */
  CMD_BAD_REPLY = 6,        /* what arrived is not a well-formed reply to this request */
  CMD_NO_ATTRIBUTE = 7,     /* the reply does not hold the attribute */
  CMD_UNKNOWN_COMMAND = 16, /* from here on: refusals that the process itself answers */
  CMD_BAD_REQUEST = 17,     /* the request is malformed, or its destination, service or action is unknown */
  CMD_UNKNOWN_KEY = 18,     /* a key attribute that the command does not take, or a required one is missing */
  CMD_NO_ENTRY = 19,        /* no entry has, or follows, the key */
  CMD_REFUSED = 20          /* the user has no right to ask this */
};

/* Tokens of keys and attributes: type code in the top 8 bits, attribute space in the next 8, attribute number
 * in the low 16. */
#define CMD_TOKEN_TYPE(token) ((token) >> 24)

/* Type codes, and the length of a value of that type. */
enum cmd_type {
  CMD_TYPE_PLAIN = 0x00,      /* a number whose token carries no type: 4 bytes */
  CMD_TYPE_FLAG = 0x01,       /* a flag: 4 bytes */
  CMD_TYPE_ENUM = 0x02,       /* a state or an enumeration: 4 bytes */
  CMD_TYPE_IF_INDEX = 0x0C,   /* an interface index: 4 bytes */
  CMD_TYPE_MAC = 0x0F,        /* a MAC address: 6 bytes */
  CMD_TYPE_RANGE_LIST = 0x13, /* struct cmd_range_list: 8 bytes and 8 more for every range */
  CMD_TYPE_NUMBER = 0x14,     /* an unsigned number: 4 bytes */
  CMD_TYPE_OCTETS = 0x30      /* an octet string: 0 to CMD_ATTR_VALUE_MAX bytes */
};

/* A list of VLANs or trees, each range given by its first and last member. */
struct cmd_range {
  uint32_t first;
  uint32_t last;
};

/* The most ranges that one list can hold. */
#define CMD_RANGES_MAX 512

/* Head of a range list; `count` ranges follow it. */
struct cmd_range_list {
  uint32_t reserved; /* not interpreted; send 0 */
  uint32_t count;    /* at most CMD_RANGES_MAX */
};

/* Lays out an empty request in `buffer` (`size` bytes, aligned as malloc aligns) and returns its handle,
 * which lives as long as the buffer. Returns null when the buffer is null, misaligned or too small for a
 * request without attributes. */
void *cmd_req_init(void *buffer, uint32_t size);

/* Names the operation that the process is to carry out. */
int cmd_req_cmdId_set(void *request, uint32_t command_id);

/* Sets the action, one of enum cmd_action. The process, not this call, refuses others. */
int cmd_req_action_set(void *request, uint32_t action);

/* Byte length of `value` as the token's type says: fixed for numbers and addresses, measured from the count
 * for a range list (the count is taken as CMD_RANGES_MAX at most), up to the terminating zero for octets. 0
 * for an unknown type, or where `value` is needed and null. */
uint32_t token_type_2len(uint32_t token, const void *value);

/* Appends an attribute. The value is copied into the request's buffer. */
int cmd_req_attr_add(void *request, uint32_t token, const void *value, uint32_t length);

/* Sends the request to `service` at `destination` on behalf of `user` (zero-terminated, null means the empty
 * name) and `session`, and waits for the reply, at most until the library's deadline, which all questions of
 * one SNMP request may share. `flags` is 0.
 *
 * Success: returns 0 and sets `*reply` to a handle that the caller releases with cmd_snmp_free_rx_hndl; null
 * stands for a process that answered without a reply. Failure: returns another code and leaves `*reply` as it
 * was. */
int cmd_snmp_req_send_recv(uint32_t destination, uint32_t service, void *request, const char *user,
                           uint32_t session, void **reply, uint32_t flags);

/* Finds the first attribute `token` of a reply and sets `*value` (a pointer into the reply, valid until its
 * release, of no particular alignment) and `*length`. The value is as long as the token's type says. Returns
 * CMD_NO_ATTRIBUTE, with the outputs left as they were, when the reply does not hold it. */
int cmd_rsp_attr_get(void *reply, uint32_t token, void **value, uint32_t *length);

/* Releases a reply. Null is allowed. */
void cmd_snmp_free_rx_hndl(void *reply);

#ifdef __cplusplus
}
static_assert(sizeof(struct cmd_range) == 8 && sizeof(struct cmd_range_list) == 8,
              "range lists are packed words");
#else
_Static_assert(sizeof(struct cmd_range) == 8 && sizeof(struct cmd_range_list) == 8,
               "range lists are packed words");
#endif

#endif
