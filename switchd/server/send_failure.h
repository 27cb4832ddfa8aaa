// What the servers of the command socket log when a message does not get through.
#pragma once

#include <string_view>

namespace stpswitch {

// Logs why a message could not be sent, as errno says, unless the client is simply gone.
void log_send_failure(std::string_view what);

}  // namespace stpswitch
