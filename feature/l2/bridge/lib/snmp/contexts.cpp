#include "contexts.h"

#include <sys/time.h>

#include <cstdint>
#include <cstdio>

#include "diagnostics.h"
#include "platform/stp_protocol.h"
#include "query/ask.h"
#include "registration.h"

namespace stpbridge {
namespace {

using stpsnmp::diagnostics::kRejection;
using stpsnmp::diagnostics::kTrace;
using stpsnmp::diagnostics::shown;
using stpsnmp::query::Key;
using stpsnmp::query::Reply;
using stpsnmp::query::single_tree;
using stpsnmp::query::TreeRange;

constexpr uint32_t kTrees = 4096;  // VLANs, or MST instances (IEEE 802.1Q clause 9.6, 13.8)

// A part of a pass, between which the agent serves requests. A question costs microseconds; the contexts of a
// tree cost milliseconds once there are thousands, because the agent looks for a context in a list.
constexpr uint32_t kQuestionsOfPart = 64;
constexpr uint32_t kChangesOfPart = 2;
constexpr timeval kPause{0, 10'000};

// Who has not answered is asked again after so long: each question may cost the agent a deadline.
constexpr timeval kPatience{10, 0};

class TreeSet {
 public:
  bool holds(uint32_t tree) const { return (words_[tree / kWordBits] & bit_of(tree)) != 0; }
  void add(uint32_t tree) { words_[tree / kWordBits] |= bit_of(tree); }
  void remove(uint32_t tree) { words_[tree / kWordBits] &= ~bit_of(tree); }

  // The first one from `tree` on; kTrees where there is none.
  uint32_t first_from(uint32_t tree) const {
    while (tree < kTrees && !holds(tree)) {
      tree = words_[tree / kWordBits] == 0 ? (tree / kWordBits + 1) * kWordBits : tree + 1;
    }
    return tree;
  }

 private:
  static constexpr uint32_t kWordBits = 32;

  static constexpr uint32_t bit_of(uint32_t tree) { return 1U << tree % kWordBits; }

  uint32_t words_[kTrees / kWordBits] = {};
};

struct KindOfTree {
  stp_mode mode;
  const char *prefix;
  bool has_bare_number;  // as a name of its own
};
constexpr KindOfTree kVlanTrees{STP_MODE_RAPID_PVST, "vlan-", true};
constexpr KindOfTree kMstTrees{STP_MODE_MST, "mst-", false};

struct ContextName {
  char text[AND_CONTEXT_NAME_MAX + 1];

  ContextName(const char *prefix, uint32_t tree) { snprintf(text, sizeof text, "%s%u", prefix, tree); }
};

// Trees of one kind have contexts at a time.
constinit TreeSet with_contexts;
constinit const KindOfTree *kind_with_contexts = &kVlanTrees;

// From where on the trees are to be looked at; and, once some have been, whether there is more to come.
constinit uint32_t next_tree = 0;
constinit bool has_to_begin_again = false;
constinit unsigned alarm_of_next_part = 0;  // 0: none
constinit bool is_patient = false;          // nobody has answered

bool register_tree(const KindOfTree &kind, uint32_t tree) {
  const ContextName bare("", tree);
  if (kind.has_bare_number && !register_context(bare.text)) {
    return false;
  }
  if (!register_context(ContextName(kind.prefix, tree).text)) {
    if (kind.has_bare_number) {
      unregister_context(bare.text);
    }
    return false;
  }
  return true;
}

void withdraw_tree(uint32_t tree) {
  if (kind_with_contexts->has_bare_number) {
    unregister_context(ContextName("", tree).text);
  }
  unregister_context(ContextName(kind_with_contexts->prefix, tree).text);
  with_contexts.remove(tree);
}

const KindOfTree *kind_of(uint32_t mode) {
  switch (mode) {
    case STP_MODE_RAPID_PVST:
      return &kVlanTrees;
    case STP_MODE_MST:
      return &kMstTrees;
    default:
      return nullptr;
  }
}

struct RunningTree {
  uint32_t tree;  // kTrees: none
  const KindOfTree *kind;
};

enum class Search : uint8_t { kFound, kUnanswered, kUseless };

// The first tree that runs, from `from` on.
Search find_running_tree(uint32_t from, RunningTree *found) {
  Reply reply;
  int result = CMD_OK;
  if (from == 0) {
    result = stpsnmp::query::ask(STP_COMMAND_BRIDGE_TREES, CMD_ACTION_GET, {}, &reply);
  } else {
    // A tree of either kind will do.
    const TreeRange before = single_tree(from - 1);
    const Key key{STP_KEY_VLAN_TREE, &before};
    result = stpsnmp::query::ask(STP_COMMAND_BRIDGE_TREES, CMD_ACTION_GET_NEXT, {&key, 1}, &reply);
  }
  if (result == CMD_NO_ENTRY) {
    *found = {kTrees, kind_with_contexts};
    return Search::kFound;
  }
  if (result != CMD_OK) {
    return Search::kUnanswered;
  }
  uint32_t tree = 0;
  uint32_t mode = 0;
  if (!reply || reply.read_number(STP_ATTRIBUTE_TREE, &tree) != 0 ||
      reply.read_number(STP_ATTRIBUTE_MODE, &mode) != 0) {
    return Search::kUseless;
  }
  const KindOfTree *const kind = kind_of(mode);
  if (kind == nullptr || tree < from || tree >= kTrees) {
    STP_LOG(kRejection, "%s: asked for a tree from %d on, got %d, mode %d\n", __func__, shown(from),
            shown(tree), shown(mode));
    return Search::kUseless;
  }
  *found = {tree, kind};
  return Search::kFound;
}

enum class Step : uint8_t {
  kSeen,        // a tree has its contexts already
  kChanged,     // one was given its contexts, or deprived of them
  kUnanswered,  // nobody tells what runs
  kLast         // there is no other one, or no use in asking for it
};

Step step() {
  RunningTree running;
  const Search search = find_running_tree(next_tree, &running);
  if (search != Search::kFound) {
    return search == Search::kUnanswered ? Step::kUnanswered : Step::kLast;
  }
  const bool is_same_kind = running.kind == kind_with_contexts;
  const uint32_t gone = with_contexts.first_from(is_same_kind ? next_tree : 0);
  if (gone < (is_same_kind ? running.tree : kTrees)) {
    withdraw_tree(gone);
    return Step::kChanged;
  }
  if (running.tree == kTrees) {
    return Step::kLast;
  }
  kind_with_contexts = running.kind;
  next_tree = running.tree + 1;
  if (with_contexts.holds(running.tree)) {
    return Step::kSeen;
  }
  if (register_tree(*running.kind, running.tree)) {
    with_contexts.add(running.tree);
  } else {
    STP_LOG(kRejection, "%s: the agent refuses the contexts of tree %d\n", __func__, shown(running.tree));
  }
  return Step::kChanged;
}

void begin_part(unsigned /*alarm*/, void * /*argument*/);

void wait_for_next_part(timeval pause) {
  alarm_of_next_part = snmp_alarm_register_hr(pause, 0, begin_part, nullptr);
  if (alarm_of_next_part == 0) {
    STP_LOG(kRejection, "%s: the agent has no memory for an alarm: contexts wait for the next notification\n",
            __func__);
  }
}

void end_pass() {
  next_tree = 0;
  if (has_to_begin_again) {
    has_to_begin_again = false;
    wait_for_next_part(kPause);
  }
}

void begin_part(unsigned /*alarm*/, void * /*argument*/) {
  alarm_of_next_part = 0;
  is_patient = false;
  uint32_t changes = 0;
  for (uint32_t questions = 0; questions < kQuestionsOfPart && changes < kChangesOfPart; ++questions) {
    const Step taken = step();
    if (taken == Step::kLast) {
      end_pass();
      return;
    }
    if (taken == Step::kUnanswered) {
      is_patient = true;
      wait_for_next_part(kPatience);
      return;
    }
    changes += taken == Step::kChanged ? 1 : 0;
  }
  wait_for_next_part(kPause);
}

void forget_next_part() {
  if (alarm_of_next_part != 0) {
    snmp_alarm_unregister(alarm_of_next_part);
    alarm_of_next_part = 0;
  }
}

}  // namespace

netsnmp_variable_list *follow_trees(void * /*message*/, oid * /*trap_oid*/, size_t * /*trap_oid_len*/,
                                    int *status) {
  STP_LOG(kTrace, "%s: trees have come or gone\n", __func__);
  *status = 0;
  if (is_patient) {
    is_patient = false;  // who tells this answers
    forget_next_part();
  }
  if (alarm_of_next_part == 0) {
    next_tree = 0;
    wait_for_next_part(kPause);
  } else {
    has_to_begin_again = has_to_begin_again || next_tree != 0;
  }
  return nullptr;
}

void withdraw_contexts() {
  forget_next_part();
  is_patient = false;
  for (uint32_t tree = with_contexts.first_from(0); tree < kTrees; tree = with_contexts.first_from(tree)) {
    withdraw_tree(tree);
  }
  next_tree = 0;
  has_to_begin_again = false;
}

}  // namespace stpbridge
