// Makes calls fail: the n-th one that the code under test makes, once or from then on.
//
// Wrappers, which the linker puts in front of the real calls (--wrap), ask here whether theirs is to fail.
// Calls are counted in the thread that has an Injection: a switch that serves in another one is spared.
#pragma once

#include <cstdint>
#include <optional>

namespace faults {

// Of calls.
enum Kind : uint32_t {
  kMemory = 1,  // what fails for want of memory, be it the agent's or libevent's call
  kSystem = 2   // system calls, and what else depends on the world outside
};

struct Fault {
  uint64_t number;  // of the call that fails first, from 1 on
  bool lasts;       // all that come behind it fail as well
  uint32_t way;     // in which the call fails, of those that it has
  Kind kind;        // of the calls that count
};

class Injection {
 public:
  explicit Injection(const Fault &fault);
  ~Injection() { end(); }
  Injection(const Injection &) = delete;
  Injection &operator=(const Injection &) = delete;

  // Nothing fails any more.
  void end();

  bool has_struck() const { return struck_ != nullptr; }

  // The call that failed first, and in how many ways it can.
  const char *struck() const { return struck_; }
  uint32_t ways() const { return ways_; }

  std::optional<uint32_t> count(Kind kind, const char *call, uint32_t ways);

 private:
  const Fault fault_;
  uint64_t calls_ = 0;
  const char *struck_ = nullptr;
  uint32_t ways_ = 0;
};

// Whether a call of this thread has failed.
bool has_struck();

// For wrappers: in which of `ways` the call is to fail, from 0 on; none when it is not.
std::optional<uint32_t> strikes(Kind kind, const char *call, uint32_t ways = 1);

}  // namespace faults
