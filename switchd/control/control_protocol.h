// What stp-switchctl and stp-switchd say to each other on the control socket: JSON texts, one a line.
// README.md describes them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stpswitch::control {

// Where the switch listens unless it is told otherwise.
inline constexpr char kDefaultDirectory[] = "/run/stp-switchd";
inline constexpr char kDefaultSocketPath[] = "/run/stp-switchd/control.sock";

// The longest request, in octets with the end of its line.
inline constexpr size_t kMaxRequestSize = size_t{64} * 1024;

inline constexpr int64_t kMaxDelayMs = 3'600'000;
inline constexpr int64_t kMaxFaultCount = 1'000'000;

// Members of requests.
inline constexpr char kOperation[] = "op";
inline constexpr char kKey[] = "key";
inline constexpr char kValue[] = "value";
inline constexpr char kFault[] = "fault";
inline constexpr char kDelayMs[] = "delay_ms";
inline constexpr char kCount[] = "count";

// Values of kOperation.
inline constexpr char kPing[] = "ping";
inline constexpr char kShow[] = "show";
inline constexpr char kOverview[] = "overview";
inline constexpr char kSet[] = "set";
inline constexpr char kReset[] = "reset";

// Values of kFault, when that is the operation too; without kFault, the operation tells which fault there is.
inline constexpr char kFaultNone[] = "none";
inline constexpr char kFaultDelay[] = "delay";
inline constexpr char kFaultDrop[] = "drop";
inline constexpr char kFaultGarbage[] = "garbage";
inline constexpr char kFaultDisconnect[] = "disconnect";

// Members of answers: kOk always; kError when it is false; kValues, an array of pairs, after `show`;
// kOverview, an object (overview/overview.h), after `overview`; kFault, and kDelayMs and kCount where they
// apply, when it was asked for.
inline constexpr char kOk[] = "ok";
inline constexpr char kError[] = "error";
inline constexpr char kValues[] = "values";

}  // namespace stpswitch::control
