// Recorded messages with arbitrary changes: whatever a server sends, nothing breaks, and nothing is left of
// it after the next first reply.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "sources/openvswitch/bridge_state.h"
#include "support/ovsdb_recorded.h"
#include "support/ovsdb_rows.h"

using namespace stpswitch;

namespace {

constexpr uint32_t kSeed = 20041;
constexpr int kRounds = 600;

const std::vector<std::vector<WatchedBridge>> kBridges = {{{"br0", {}}}, {{"br1", 1}, {"br0", 4094}}};

class Mutation {
 public:
  explicit Mutation(uint32_t seed) : random_(seed) {}

  void change(std::string *text) {
    const size_t at = below(text->size());
    switch (below(5)) {
      case 0:
        (*text)[at] = static_cast<char>(below(256));
        break;
      case 1:
        text->erase(at, 1 + below(40));
        break;
      case 2:
        text->insert(at, text->substr(below(text->size()), 1 + below(200)));
        break;
      case 3:
        text->insert(at, kWords[below(kWords.size())]);
        break;
      default:
        replace_value(text, at);
        break;
    }
  }

  size_t below(size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(random_); }

 private:
  // Of the type that it has, so that the message stays one: what is between the next two quotes.
  void replace_value(std::string *text, size_t at) {
    const size_t begin = text->find('"', at);
    const size_t end = begin != std::string::npos ? text->find('"', begin + 1) : begin;
    if (end != std::string::npos) {
      text->replace(begin + 1, end - begin - 1, kTexts[below(kTexts.size())]);
    }
  }

  inline static const std::vector<std::string> kWords = {"{",    "}",
                                                         "[",    "]",
                                                         ",",    ":",
                                                         "\"",   "\\",
                                                         "null", "-1",
                                                         "1e99", "99999999999999999999",
                                                         "true", "[\"set\",[]]",
                                                         "{}",   "\xFF"};
  inline static const std::vector<std::string> kTexts = {
      "",           "br0",          "8fff",
      "0000",       "set",          "map",
      "uuid",       "rstp_port_id", "1.000.ffffffffffff",
      "name",       "new",          "\\u0000",
      "4294967296", "old",          "b5784ce9-947d-488a-b46a-7e3d10a23b40"};

  std::mt19937 random_;
};

SwitchState state_of(const OvsdbRows &rows, const std::vector<WatchedBridge> &bridges) {
  return read_bridges(rows, bridges).state;
}

TEST(MutatedMessages, LeaveNothingBehind) {
  const OvsdbRows fresh = rows_of(kMonitorReply);
  std::string updates;
  for (const char *const update : kRecordedUpdates) {
    updates += update;
  }
  Mutation mutation(kSeed);
  OvsdbRows rows;
  int differing = 0;
  for (int round = 0; round < kRounds; ++round) {
    // The first reply is as it was, or changed, too.
    std::string changed = round % 2 == 0 ? updates : kMonitorReply + updates;
    for (size_t changes = 1 + mutation.below(8); changes > 0; --changes) {
      mutation.change(&changed);
    }
    const std::string text = round % 2 == 0 ? kMonitorReply + changed : changed;
    update_rows_from_stream(&rows, text);
    for (const auto &bridges : kBridges) {
      differing += state_of(rows, bridges) != state_of(fresh, bridges) ? 1 : 0;
    }
    status_interval(rows);
    reset_rows(&rows, kMonitorReply);
    for (const auto &bridges : kBridges) {
      ASSERT_EQ(state_of(rows, bridges), state_of(fresh, bridges)) << "round " << round << ": " << text;
    }
  }
  // The changes were not all in vain.
  EXPECT_GT(differing, kRounds / 4);
}

}  // namespace
