// What the operator can set, by environment variables of the agent. Read once, when the library is loaded.
#pragma once

#include <sys/un.h>

#include <climits>
#include <cstdint>

namespace stpplatform {

struct Settings {
  char socket_path[sizeof(sockaddr_un::sun_path)];  // STPPLATFORM_SOCKET: where the switch listens
  uint32_t deadline_ms;         // STPPLATFORM_DEADLINE_MS: that all questions of one request may wait
  uint32_t debug_level;         // STPPLATFORM_DEBUG_LEVEL: highest level printed, 0 for none
  uint32_t history_level;       // STPPLATFORM_HISTORY_LEVEL: highest level kept, 0 for none
  char history_file[PATH_MAX];  // STPPLATFORM_HISTORY_FILE: where the history goes at unload, empty for
                                // nowhere
};

// Written by read_settings alone.
extern Settings current_settings;

// Asked for at each text that the module may log, so it has to cost nothing.
inline const Settings &settings() { return current_settings; }

// Reads the environment anew. A value that cannot be used is named in the agent's log, and the default taken
// instead.
void read_settings();

}  // namespace stpplatform
