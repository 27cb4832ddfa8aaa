/* Message transport: messages that the switch's processes send to the agent. */
#ifndef PLATFORM_XPORT_H
#define PLATFORM_XPORT_H

#ifdef __cplusplus
extern "C" {
#endif

/* The payload of a message, in network byte order where it holds integers; null when there is none. It
 * belongs to the message and lives as long as it. */
void *xport_payload_get(void *message);

#ifdef __cplusplus
}
#endif

#endif
