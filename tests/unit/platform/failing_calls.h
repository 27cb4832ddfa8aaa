// Calls of this thread that fail. The program must be linked with --wrap for each of them.
#pragma once

namespace failing_calls {

// The next call, or so many, fails with this error.
void fail_next_send(int error, int times = 1);
void fail_next_recv(int error);
void fail_next_recvmsg(int error);
void fail_next_ftruncate(int error);
// Finds no memory.
void fail_next_malloc();

}  // namespace failing_calls
