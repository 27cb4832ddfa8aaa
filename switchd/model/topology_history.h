// How often, and when, the topology of trees has changed while somebody looked.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>

#include "model/tree_set.h"

namespace stpswitch {

class TopologyHistory {
 public:
  using Clock = std::chrono::steady_clock;

  explicit TopologyHistory(Clock::time_point begin) : begin_(begin) {}

  Clock::time_point begin() const { return begin_; }

  // `running`: the trees that there are from now on. One that has gone begins anew when it comes back.
  void add(const TreeSet &changed, const TreeSet &running, Clock::time_point now) {
    std::erase_if(changes_, [&running](const auto &of_tree) { return !running.contains(of_tree.first); });
    changed.for_each([this, now](uint32_t tree) {
      Changes &changes = changes_[tree];
      ++changes.count;
      changes.last = now;
    });
  }

  struct Changes {
    uint32_t count = 0;
    Clock::time_point last;  // where there was none, when it began to look
  };
  Changes of(uint32_t tree) const {
    const auto found = changes_.find(tree);
    return found != changes_.end() ? found->second : Changes{0, begin_};
  }

 private:
  Clock::time_point begin_;
  std::map<uint32_t, Changes> changes_;
};

}  // namespace stpswitch
