// What commands share that answer by interface alone: from the bridge port that has the interface index or,
// for CMD_ACTION_GET_NEXT, from the one behind it.
#pragma once

#include "answers/question.h"

namespace stpplatform::answers {

// Null when there is none: CMD_NO_ENTRY.
const wire::ImageInterface *find_bridge_port(const Image &image, const Question &question, stp_key key);

// Answers with the bridge port's interface index, then what `add_values` adds.
using AddValues = void (*)(const wire::ImageInterface &, Answer *);
cmd_result answer_bridge_port(const Image &image, const Question &question, stp_key key, AddValues add_values,
                              Answer *answer);

}  // namespace stpplatform::answers
