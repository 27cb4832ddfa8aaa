// What the tests of the two walks through trees share: a switch, the query script, and the walks' story.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "protocol_numbers.h"
#include "scripted_process.h"
#include "search_test.h"

// The key that asks for what follows a tree's last port.
inline constexpr uint32_t kBehindLastPort = 0xFFFFFFFF;

inline constexpr char kReleased[] = "cmd_snmp_free_rx_hndl";

// The switch's interfaces.
inline constexpr uint32_t kPort1 = 2001;        // port 129, VLANs 10 and 20
inline constexpr uint32_t kPort2 = 2002;        // port 130, VLAN 10
inline constexpr uint32_t kDownPort = 2003;     // port 131, VLANs 10 and 20, without a link
inline constexpr uint32_t kMember = 2004;       // port 132, VLANs 10 and 20, member of the port-channel
inline constexpr uint32_t kChannel = 1001;      // port 4097, VLAN 20
inline constexpr uint32_t kWithoutPort = 2999;  // an interface that has no port number

// Where the source line stands at the end of a line, it is replaced by LINE, too.
Trace taken_lines();

// Questions of a walk, as the trace shows them.
std::string members_of(const std::string &vlans);
std::string looked_at(uint32_t if_index, uint32_t selector = 1);

// The keys of ports in MST instances, and the trace of a query as it is with them.
Trace with_mst_keys(Trace lines);

// The whole search for a tree's next port: where it finds one with its first candidate, and where no port is
// left. `listing` is the set of ports as it is logged.
Trace port_found(const std::string &vlans, const std::string &listing, int port, uint32_t if_index);
Trace no_port_found(const std::string &vlans, const std::string &listing);

class TreeWalkTest : public SearchTest {
 protected:
  // The routine under test, and the command and the tokens of the queries that it is to make.
  TreeWalkTest(const char *routine, uint32_t command, uint32_t interface_key, uint32_t tree_key)
      : routine_(routine), command_(command), process_(interface_key, tree_key) {}

  void SetUp() override;
  void TearDown() override;

  // What the spanning-tree process answers, query by query.
  void script(std::deque<fake::Send> answers) { process_.script(std::move(answers)); }

  // What follows is no longer told: the process answers as the platform says.
  static void untell_queries() { fake::platform().answer = nullptr; }

  // The queries, the replies released, the VLANs whose members are asked for, the ports that are looked at,
  // and what the search itself says.
  Trace story() const;

  // A line of the search under test.
  std::string line(const std::string &text) const;
  std::string rejection(const std::string &text) const;

  // Queries: of a tree from its first port on, of what follows it, and of a row.
  std::string probed(uint32_t tree) const { return get_next_of(tree, 0, command_); }
  std::string stepped_from(uint32_t tree) const { return get_next_of(tree, kBehindLastPort, command_); }
  std::string row_of(uint32_t tree, uint32_t if_index) const { return get_of(tree, if_index, command_); }

  // The end of a search that answers with the interface's row.
  Trace returned(uint32_t if_index, uint32_t tree, int port) const;

  void expect_row(uint32_t tree, uint16_t port) const;

  // The search left reply and index as they were.
  void expect_nothing(uint32_t tree, uint16_t port) const;

  // The one reply that lives is the caller's.
  void take_reply();

  char marker_ = 0;
  void *reply_ = &marker_;
  uint32_t tree_ = 0;
  uint16_t port_ = 0;

 private:
  const char *routine_;
  uint32_t command_;
  ScriptedProcess process_;
};
