// System calls of this thread that fail. The program must be linked with --wrap=send, --wrap=recv and
// --wrap=recvmsg.
#pragma once

namespace failing_calls {

// The next call fails with this error.
void fail_next_send(int error);
void fail_next_recv(int error);
void fail_next_recvmsg(int error);

}  // namespace failing_calls
