// The agent's main loop, turn by turn.
#pragma once

// Calls back for input on registered descriptors. Returns how many callbacks ran.
int run_main_loop_once();
