#include "waiting_time.h"

namespace stpplatform {
namespace {

constinit WaitingTime the_waiting_time;

}  // namespace

WaitingTime &waiting_time() { return the_waiting_time; }

}  // namespace stpplatform
