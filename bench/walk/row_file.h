// The file that the rows come from: a walk of the module, one line a row, as bench_walk_client writes it:
//   .1.3.6.1.4.1.32473.9.82.1.12.2.1.3.10.129 INTEGER 3
//   .1.3.6.1.4.1.32473.9.82.1.13.1.1.3.10.129 OCTETS 0x80
#pragma once

namespace bench {

// Reads the rows into the store. What is wrong, and in which line, goes to the log; then there are no rows.
bool load_rows(const char *path);

}  // namespace bench
