// What the agent's log tells of messages that are not valid: one line, then nothing for a minute, then how
// many more there were. A switch that sends nothing else does not fill the log.
#pragma once

#include <cstdint>

namespace stpplatform {

class MalformedMessages {
 public:
  static constexpr uint64_t kSilenceMs = 60000;

  // `topic` stands before the number of those that were left out.
  constexpr explicit MalformedMessages(const char *topic) : topic_(topic) {}

  // Counts one more. True when the log may tell of it.
  bool take(uint64_t now_ms);

  // True while some were left out of which the log has not told.
  bool has_left_out() const { return left_out_ != 0; }

  // Tells of those that were left out, if there are any and they have been kept back long enough. To be
  // called when a message was valid.
  void tell();

  // Tells of those that were left out, if there are any, and starts over.
  void reset();

 private:
  void tell_left_out();

  const char *topic_;
  uint64_t silent_until_ms_ = 0;
  uint32_t left_out_ = 0;
};

}  // namespace stpplatform
