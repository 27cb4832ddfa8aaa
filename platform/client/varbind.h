// Whether the bindings that a handler has built are all that it wanted (build_varbind).
#pragma once

namespace stpplatform {

// From here on bindings that find no memory are noticed.
void begin_bindings();

// Whether there has been none.
bool bindings_are_complete();

}  // namespace stpplatform
