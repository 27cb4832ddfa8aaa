// A platform without a switch behind it: every request is answered at once by one attribute.
#pragma once

// Whether the two sinks of the diagnostics take anything.
void set_sinks(bool history_keeps);
