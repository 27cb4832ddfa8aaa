// What the servers of the command socket say when a message does not get through.
#pragma once

#include <string>
#include <string_view>

namespace stpswitch {

// Why a message could not be sent, as errno says. Nothing when the client is simply gone.
std::string describe_send_failure(std::string_view what);

}  // namespace stpswitch
