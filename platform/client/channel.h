// How the switch is asked, question by question: in its image (image_reader.h) while the switch vouches for
// it, else by socket (connection.h).
//
// A command goes by socket as well where the switch wants to judge it itself. What its managers know stands
// in the image alone: where the lease has run out, the switch is asked by socket to renew it. So nobody ever
// gets a value for which the switch does not vouch.
#pragma once

#include <cstdint>

#include "answers/image.h"
#include "connection.h"
#include "image_reader.h"
#include "platform/cmd.h"
#include "replies.h"
#include "waiting_time.h"
#include "wire/image.h"
#include "wire/message.h"

namespace stpplatform {

// Asks a command; `request->header.length` is set. Returns CMD_OK with `*reply` set to a reply that the
// caller has to release, the switch's refusal, or what went wrong.
cmd_result ask_command(wire::Request *request, Reply **reply);

// What is done, for one question, so that the image can be read again.
class Remedy {
 public:
  // From now on the question may wait. What the image answers at once needs no time.
  void begin() {
    if (steps_ == 0) {
      waiting_time().begin_question();
    }
  }

  // Does what helps against a reading that did not count. Returns CMD_OK when another look is due, otherwise
  // what the question fails with.
  cmd_result apply(Reading reading);

 private:
  // More than any question needs: to connect, to follow the image where it has moved, and to have the lease
  // renewed, which may run out again while the machine gives the agent no processor.
  static constexpr int kMostSteps = 8;

  int steps_ = 0;
};

// Looks something up in the image, for the functions of the switch's managers. `look` takes a `const
// answers::Image &` and returns a cmd_result; what it stores counts when CMD_OK is returned. Returns the
// result of `look`, or why the image cannot be read.
template <class Look>
cmd_result ask_image(Vouching vouching, Look look) {
  Remedy remedy;
  for (;;) {
    cmd_result result = CMD_OK;
    const Reading reading = connection().image().read(wire::kMoved, vouching, look, &result);
    if (reading == Reading::kCounts) {
      return result;
    }
    const cmd_result remedied = remedy.apply(reading);
    if (remedied != CMD_OK) {
      return remedied;
    }
  }
}

// The same for one interface. `look` takes a `const wire::ImageInterface &` and returns nothing. CMD_NO_ENTRY
// when there is no such interface.
template <class Look>
cmd_result ask_interface(uint32_t if_index, Vouching vouching, Look look) {
  return ask_image(vouching, [&](const answers::Image &image) {
    const wire::ImageInterface *interface = image.find_interface(if_index);
    if (interface == nullptr) {
      return CMD_NO_ENTRY;
    }
    look(*interface);
    return CMD_OK;
  });
}

}  // namespace stpplatform
