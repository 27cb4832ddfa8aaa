// Lets reader and writer of an image see it at the same address, as two threads of one process that have a
// mapping of their own do not: only so can ThreadSanitizer, which goes by addresses, tell that what the one
// writes is what the other reads.
//
// The test program is linked so that mmap and munmap come here.
#pragma once

class OneMapping {
 public:
  // As long as it lives, whoever maps memory for reading alone gets `memory`.
  explicit OneMapping(void *memory);
  ~OneMapping();
  OneMapping(const OneMapping &) = delete;
  OneMapping &operator=(const OneMapping &) = delete;
};

// Where memory was mapped last for reading and writing.
void *latest_writable_mapping();
