// The keys of a scenario, as the schema describes them.
#pragma once

#include <string>

namespace stpswitch {

// A line for each section and each key: section, key, what it may be, default, meaning, with tabs between
// them. A section's own line has the first and the last of them. N stands for an entry's number.
std::string list_keys();

}  // namespace stpswitch
