// A Linux bridge as a source: what its kernel tells by rtnetlink(7), read only.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "base/event_loop.h"
#include "sources/burst.h"
#include "sources/linux_bridge/bridge_history.h"
#include "sources/linux_bridge/bridge_reader.h"
#include "sources/linux_bridge/bridge_state.h"
#include "sources/linux_bridge/forward_transitions.h"
#include "sources/linux_bridge/link_query.h"
#include "sources/linux_bridge/link_table.h"
#include "sources/linux_bridge/netlink_socket.h"
#include "sources/source.h"

namespace stpswitch {

// The kernel notifies of links, and of the states of ports. It does not of what ports have heard, nor of the
// root, the timers and the topology change flag. So the bridge is read after each burst of notifications,
// and once a second besides, which is as often as the quickest bridges speak.
class LinuxBridgeSource : public Source {
 public:
  LinuxBridgeSource(EventLoop *loop, std::string bridge);

  SwitchState start(Listener listener) override;
  SwitchState with_value(const SwitchState &now, const std::string &key,
                         const std::string &value) const override;
  std::optional<SwitchState> original() const override { return std::nullopt; }

 private:
  // What there is of the bridge.
  enum class Condition { kKernelStp, kUserSpaceStp, kNoStp, kNoInterface, kNoBridge, kUnreadable };

  void on_news();
  void on_second();
  void read_again();

  // True when something that concerns the bridge was there; not all may have been received.
  bool receive_news();
  // The same of one message.
  bool take(const LinkMessage &news);
  void note_loss();

  // The state at this moment; none where things do not settle.
  std::optional<SwitchState> read();
  SwitchState state_of_table(bool is_settled);
  SwitchState nothing_known() const;
  void note_stp();
  void note(Condition condition, const std::string &line);

  std::string bridge_;
  TickRates tick_rates_;
  NetlinkSocket news_;
  LinkQuery query_;
  Burst burst_;
  Event news_event_;
  Event second_timer_;
  Listener listener_;

  std::optional<LinkTable> table_;
  ForwardTransitions forward_transitions_;
  BridgeHistory history_;
  SwitchState told_;
  int unsettled_ = 0;  // readings in succession

  // What has been logged already.
  std::optional<Condition> condition_;
  size_t left_out_ = 0;
  std::optional<std::chrono::steady_clock::time_point> last_loss_;
};

}  // namespace stpswitch
