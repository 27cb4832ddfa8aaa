// What one call of the handler asks the spanning-tree process about the tree of its context, and what it was
// answered: what several of its bindings need is asked for once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "query/reply.h"

namespace stpbridge {

using stpsnmp::query::Reply;

// The bridge port of a row, and the reply about it; null where there is none.
struct Row {
  uint32_t port;
  const Reply *reply;
};

class Questions {
 public:
  // About the default tree, or that which the context of the request being served names.
  explicit Questions(bool names_tree) : names_tree_(names_tree) {}

  // The tree itself; null where it does not run, or nobody answers.
  const Reply *tree();

  // Exactly this bridge port in it, and the one behind it.
  Row port(uint32_t port);
  Row port_behind(uint32_t port);

 private:
  enum class Kind : uint8_t { kNone, kTree, kPort, kPortBehind };

  struct Question {
    Kind kind = Kind::kNone;
    uint32_t port = 0;

    bool operator==(const Question &) const = default;
  };

  struct Record {
    Question question;
    Reply reply;
  };

  // More than there are bindings in a request of one Ethernet frame. Behind that, the oldest is forgotten.
  static constexpr size_t kMaxRecords = 96;

  const Reply *answer(Question question);
  Row row(Question question);
  int ask(Question question, Reply *reply) const;

  bool names_tree_;
  bool nobody_answers_ = false;
  size_t count_ = 0;
  size_t next_ = 0;
  Record records_[kMaxRecords];
};

}  // namespace stpbridge
