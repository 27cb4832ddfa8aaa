// Diagnostics are written with line breaks at either end; a log and a history have one line a text.
#pragma once

namespace stpplatform {

// Changes `text` to one line: cuts line breaks at both ends, and turns control characters within into blanks.
// Returns where the line begins.
char *make_line(char *text);

}  // namespace stpplatform
