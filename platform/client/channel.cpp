#include "channel.h"

#include <cstring>

#include "answers/answers.h"

namespace stpplatform {
namespace {

Reading answer_from_image(const wire::Request &request, answers::Answer *answer, cmd_result *result) {
  const size_t size = request.header.length - sizeof request;
  return connection().image().read(
      wire::kAskMe | wire::kMoved, Vouching::kNow,
      [&](const answers::Image &image) {
        answer->clear();
        return answers::answer_request(image, request, &request + 1, size, answer);
      },
      result);
}

// Returns false when the switch itself is to be asked.
bool ask_in_process(const wire::Request &request, answers::Answer *answer, cmd_result *result) {
  Remedy remedy;
  for (;;) {
    const Reading reading = answer_from_image(request, answer, result);
    switch (reading) {
      case Reading::kCounts:
        connection().image_answered();
        return true;
      case Reading::kAskMe:
      case Reading::kLeaseOver:
      case Reading::kChanging:
        remedy.begin();
        return false;
      default:
        *result = remedy.apply(reading);
        if (*result != CMD_OK) {
          return true;
        }
    }
  }
}

cmd_result ask_by_socket(wire::Request *request, Reply **reply) {
  // What stood in the caller's buffer stays in this process.
  const size_t length = strnlen(request->user, sizeof request->user);
  std::memset(request->user + length, 0, sizeof request->user - length);
  ReplyAttributes attributes;
  const cmd_result result = connection().exchange(request, &attributes);
  if (result != CMD_OK) {
    return result;
  }
  *reply = copy_reply(attributes.begin, static_cast<uint32_t>(attributes.size));
  return *reply == nullptr ? CMD_NO_MEMORY : CMD_OK;
}

}  // namespace

cmd_result ask_command(wire::Request *request, Reply **reply) {
  Reply *prepared = prepare_reply();
  if (prepared == nullptr) {
    return CMD_NO_MEMORY;
  }
  cmd_result result = CMD_OK;
  const bool is_decided = ask_in_process(*request, &answer_of(prepared), &result);
  if (is_decided && result == CMD_OK) {
    complete_reply(prepared);
    *reply = prepared;
    return CMD_OK;
  }
  release_reply(prepared);
  return is_decided ? result : ask_by_socket(request, reply);
}

cmd_result Remedy::apply(Reading reading) {
  begin();
  const bool is_last = ++steps_ > kMostSteps;
  if (is_last && reading == Reading::kLeaseOver) {
    return connection().image_failed("the switch has renewed a lease that does not hold");
  }
  if (is_last) {
    return CMD_TIMEOUT;
  }
  switch (reading) {
    case Reading::kNoImage:
      return connection().open();
    case Reading::kMoved:
      return connection().reopen();
    case Reading::kLeaseOver:
      return connection().renew_lease();
    case Reading::kUnsound:
      return connection().image_failed("the image contradicts itself");
    default:
      return CMD_TIMEOUT;
  }
}

}  // namespace stpplatform
