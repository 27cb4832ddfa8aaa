// Requests answered from the image: in the agent's process where the image may be read, and in the switch for
// requests that come by socket.
#pragma once

#include <cstddef>

#include "answers/answer.h"
#include "answers/image.h"
#include "platform/cmd.h"
#include "wire/message.h"

namespace stpplatform::answers {

// Answers a request, of which everything but the message's header counts; its user name ends in a zero.
// `attributes` are the `size` octets behind it, of any kind. Returns CMD_OK with the attributes added to
// `*answer`, which was empty; the switch's refusal; or CMD_BAD_REPLY when the image contradicts itself.
cmd_result answer_request(const Image &image, const wire::Request &request, const void *attributes,
                          size_t size, Answer *answer);

}  // namespace stpplatform::answers
