// A reader of the image beside a writer that never pauses: whatever counts is of one generation. All values
// of a generation follow from its number, which stands in the settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "answers/answers.h"
#include "image_reader.h"
#include "model/numbering.h"
#include "model/switch.h"
#include "one_mapping.h"
#include "protocol_numbers.h"
#include "publisher/image_publisher.h"
#include "publisher/image_slot.h"
#include "publisher/shared_image.h"
#include "wire/attributes.h"
#include "wire/message.h"

namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;
using stpplatform::ImageReader;
using stpplatform::Reading;
using stpswitch::PortRole;
using stpswitch::SpanningTreeMode;
using stpswitch::SwitchState;

namespace {

constexpr uint32_t kGenerations = 60;

// What is seen of a row.
struct Row {
  std::optional<uint32_t> tree;
  std::optional<uint32_t> interface;
  std::optional<uint32_t> path_cost;
  std::optional<uint32_t> role;
  std::optional<uint32_t> edge;
  std::optional<uint32_t> peer;
  std::optional<uint32_t> inconsistency;

  bool operator==(const Row &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Row &row) {
  for (const auto &value :
       {row.tree, row.interface, row.path_cost, row.role, row.edge, row.peer, row.inconsistency}) {
    out << (value ? std::to_string(*value) : "-") << ' ';
  }
  return out;
}

// What a generation's number stands for.
uint32_t port_count(uint32_t number) { return 1 + number % 5; }
uint32_t tree_count(uint32_t number) { return 1 + number % 3; }
uint32_t role(uint32_t number) { return 1 + number % 5; }
bool edge(uint32_t number) { return number % 2 != 0; }
bool peer(uint32_t number) { return number % 7 < 3; }
bool is_loop_inconsistent(uint32_t number) { return number % 4 == 1; }
uint32_t if_index(uint32_t number, uint32_t i) {
  return stpswitch::port_numbers(1 + i + number % 11).if_index;
}

std::string region_name(uint32_t number) {
  return std::string(1 + number % 32, static_cast<char>('a' + number % 26));
}

SwitchState numbered_state(uint32_t number) {
  SwitchState state;
  state.settings.mode = SpanningTreeMode::kRapidPvst;
  state.mst.max_hops = number;
  state.mst.name = region_name(number);
  state.access.refused_users = {region_name(number)};
  for (uint32_t i = 0; i < port_count(number); ++i) {
    const uint32_t port_number = 1 + i + number % 11;
    stpswitch::Port &port = state.ports[port_number];
    port.numbers = stpswitch::port_numbers(port_number);
    for (uint32_t tree = 1; tree <= tree_count(number); ++tree) {
      port.vlans.insert(tree);
    }
    port.link_up = true;
    port.path_cost = number;
    port.role.elsewhere = static_cast<PortRole>(role(number));
    port.edge = edge(number);
    port.peer = peer(number);
    if (is_loop_inconsistent(number)) {
      port.inconsistencies[stpswitch::Inconsistency::kLoop] = port.vlans;
    }
  }
  return state;
}

Row row_of(uint32_t number, uint32_t tree, uint32_t i) {
  return {tree,         if_index(number, i),    number,
          role(number), edge(number) ? 1U : 0U, peer(number) ? 1U : 0U,
          std::nullopt};
}

struct Rows {
  uint32_t number = 0;
  std::string region;
  std::vector<Row> ports;
  std::vector<Row> loop_inconsistent;
  std::vector<Row> vlans;
  std::vector<Row> bridge_ports;
};

Rows rows_of(uint32_t number) {
  Rows rows{number, region_name(number), {}, {}, {}, {}};
  for (uint32_t i = 0; i < port_count(number); ++i) {
    rows.bridge_ports.push_back({{}, if_index(number, i), {}, {}, {}, {}, {}});
  }
  for (uint32_t tree = 1; tree <= tree_count(number); ++tree) {
    rows.vlans.push_back({tree, {}, {}, {}, {}, {}, {}});
    for (uint32_t i = 0; i < port_count(number); ++i) {
      const Row row = row_of(number, tree, i);
      rows.ports.push_back(row);
      if (is_loop_inconsistent(number)) {
        rows.loop_inconsistent.push_back({tree, row.interface, {}, {}, {}, {}, 1});
      }
    }
  }
  return rows;
}

class AnswerReader {
 public:
  explicit AnswerReader(const answers::Answer &answer) : answer_(answer) {}

  std::optional<uint32_t> operator[](uint32_t token) const {
    wire::AttributeReader reader(answer_.attributes(), answer_.size());
    for (wire::Attribute attribute; reader.next(&attribute);) {
      if (attribute.token == token) {
        uint32_t number = 0;
        std::memcpy(&number, attribute.value, sizeof number);
        return number;
      }
    }
    return std::nullopt;
  }

 private:
  const answers::Answer &answer_;
};

// Which command, and which keys it has.
struct Table {
  uint32_t command;
  bool has_tree;
  bool has_interface;
};
constexpr Table kPortsOfTrees = {protocol::kRapidPvstPorts, true, true};
constexpr Table kLoopInconsistent = {protocol::kLoopInconsistencies, true, true};
constexpr Table kVlans = {protocol::kVlanTrees, true, false};
constexpr Table kBridgePorts = {protocol::kRootGuard, false, true};
constexpr Table kRegion = {protocol::kMstRegion, false, false};

cmd_result ask(const answers::Image &image, const Table &table, cmd_action action, uint32_t tree,
               uint32_t interface, answers::Answer *answer) {
  struct TreeKey {
    wire::AttributeHead head;
    cmd_range_list list;
    cmd_range range;
  };
  struct InterfaceKey {
    wire::AttributeHead head;
    uint32_t interface;
  };
  const TreeKey tree_key = {
      {protocol::kVlanTreeKey, sizeof tree_key.list + sizeof tree_key.range}, {0, 1}, {tree, tree}};
  const InterfaceKey interface_key = {{protocol::kInterfaceKey, sizeof interface}, interface};
  std::array<uint8_t, sizeof tree_key + sizeof interface_key> keys{};
  wire::Request request{};
  size_t size = 0;
  if (table.has_tree) {
    std::memcpy(keys.data(), &tree_key, sizeof tree_key);
    size += sizeof tree_key;
    ++request.attribute_count;
  }
  if (table.has_interface) {
    std::memcpy(keys.data() + size, &interface_key, sizeof interface_key);
    size += sizeof interface_key;
    ++request.attribute_count;
  }
  request.destination = protocol::kDestination;
  request.service = protocol::kService;
  request.command = table.command;
  request.action = action;
  return answers::answer_request(image, request, keys.data(), size, answer);
}

// Asks what follows a row, and stores what is found.
cmd_result ask_next(const answers::Image &image, const Table &table, uint32_t tree, uint32_t interface,
                    Row *row) {
  answers::Answer answer;
  const cmd_result result = ask(image, table, CMD_ACTION_GET_NEXT, tree, interface, &answer);
  const AnswerReader found(answer);
  *row = {found[table.has_interface ? protocol::kPortTree : protocol::kTree],
          found[protocol::kInterface],
          found[protocol::kPathCost],
          found[protocol::kPortRole],
          found[protocol::kEdge],
          found[protocol::kPeer],
          found[protocol::kInconsistency]};
  return result;
}

// What is read before it is known to count may be anything, a walk without an end among it.
std::vector<Row> walk(const answers::Image &image, const Table &table) {
  constexpr size_t kMostRows = 1000;
  std::vector<Row> rows;
  Row row;
  for (uint32_t tree = table.has_interface ? 1 : 0, interface = 0;
       rows.size() < kMostRows && ask_next(image, table, tree, interface, &row) == CMD_OK;) {
    rows.push_back(row);
    tree = row.tree.value_or(0);
    interface = row.interface.value_or(0);
  }
  return rows;
}

std::string region_in(const answers::Image &image) {
  answers::Answer answer;
  ask(image, kRegion, CMD_ACTION_GET, 0, 0, &answer);
  wire::AttributeReader reader(answer.attributes(), answer.size());
  for (wire::Attribute attribute; reader.next(&attribute);) {
    if (attribute.token == protocol::kMstRegionName) {
      return {static_cast<const char *>(attribute.value), attribute.length};
    }
  }
  return "none";
}

// The writer, until it is told to end, and what the reader has of it.
class Writer {
 public:
  template <class Write>
  explicit Writer(Write write)
      : thread_([this, write] {
          for (uint32_t number = 1; !is_over_; number = 1 + number % kGenerations) {
            write(number);
          }
        }) {}
  ~Writer() {
    is_over_ = true;
    thread_.join();
  }
  Writer(const Writer &) = delete;
  Writer &operator=(const Writer &) = delete;

 private:
  std::atomic<bool> is_over_{false};
  std::thread thread_;
};

// Reads until enough has counted, and the two have met at least once: a look that met a change is repeated.
// `look` takes an image, `check` is called when its result counts. While the writer does not get the
// processor, the lease may run out.
template <class Look, class Check>
void read_beside(ImageReader *reader, uint32_t enough, Look look, Check check) {
  constexpr std::chrono::seconds kGuard{60};
  const auto give_up = std::chrono::steady_clock::now() + kGuard;
  uint32_t looks = 0;
  uint32_t reads = 0;
  const auto wait_for_writer = [&] { return looks == reads && std::chrono::steady_clock::now() < give_up; };
  for (uint32_t counted = 0; (counted < enough || wait_for_writer()) && !testing::Test::HasFailure();
       ++reads) {
    cmd_result result = CMD_OK;
    const Reading reading = reader->read(
        wire::kMoved, stpplatform::Vouching::kNow,
        [&](const answers::Image &image) {
          ++looks;
          return look(image);
        },
        &result);
    ASSERT_TRUE(reading == Reading::kCounts || reading == Reading::kChanging ||
                reading == Reading::kLeaseOver)
        << static_cast<int>(reading);
    if (reading == Reading::kCounts) {
      ASSERT_EQ(result, CMD_OK);
      check();
      ++counted;
    }
  }
  EXPECT_GT(looks, reads) << "the two never met";
}

uint64_t lease_from_now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()) +
         wire::kLeaseNs;
}

TEST(WholeRows, AWalkThatCountsIsOfOneGeneration) {
  std::vector<std::vector<uint8_t>> slots(kGenerations + 1);
  size_t largest = 0;
  for (uint32_t number = 1; number <= kGenerations; ++number) {
    stpswitch::lay_out_slot(stpswitch::Switch(numbered_state(number)), &slots[number]);
    largest = std::max(largest, slots[number].size());
  }
  stpswitch::SharedImage image(largest, 0);
  ASSERT_NE(latest_writable_mapping(), nullptr) << "mmap has another name here";
  const OneMapping one_mapping(latest_writable_mapping());
  ImageReader reader;
  ASSERT_EQ(reader.map(image.fd(), image.size()), nullptr);
  const auto write = [&](uint32_t number) {
    image.write(slots[number]);
    image.set_lease_end(lease_from_now());
  };
  write(1);
  const Writer writer(write);
  Rows seen;
  constexpr uint32_t kEnough = 5000;
  read_beside(
      &reader, kEnough,
      [&](const answers::Image &view) {
        seen.number = answers::load_shared(view.settings().max_hops.value);
        seen.region = region_in(view);
        seen.ports = walk(view, kPortsOfTrees);
        seen.loop_inconsistent = walk(view, kLoopInconsistent);
        seen.vlans = walk(view, kVlans);
        seen.bridge_ports = walk(view, kBridgePorts);
        return CMD_OK;
      },
      [&] {
        const Rows expected = rows_of(seen.number);
        EXPECT_EQ(seen.ports, expected.ports) << seen.number;
        EXPECT_EQ(seen.loop_inconsistent, expected.loop_inconsistent) << seen.number;
        EXPECT_EQ(seen.vlans, expected.vlans) << seen.number;
        EXPECT_EQ(seen.bridge_ports, expected.bridge_ports) << seen.number;
        EXPECT_EQ(seen.region, expected.region) << seen.number;
      });
  reader.unmap();
}

TEST(WholeRows, ARowThatCountsIsOfOneGeneration) {
  stpswitch::Switch the_switch(numbered_state(1));
  stpswitch::ImagePublisher publisher(&the_switch);
  ASSERT_NE(latest_writable_mapping(), nullptr) << "mmap has another name here";
  const OneMapping one_mapping(latest_writable_mapping());
  the_switch.on_change([&] {
    publisher.publish();
    publisher.renew_lease();
  });
  publisher.renew_lease();
  ImageReader reader;
  ASSERT_EQ(reader.map(publisher.fd(), publisher.size()), nullptr);
  const Writer writer([&](uint32_t number) { the_switch.replace(numbered_state(number)); });
  Row seen;
  constexpr uint32_t kEnough = 50000;
  read_beside(
      &reader, kEnough,
      [&](const answers::Image &view) { return ask_next(view, kPortsOfTrees, 1, 0, &seen); },
      [&] { EXPECT_EQ(seen, row_of(seen.path_cost.value_or(0), 1, 0)); });
  reader.unmap();
}

}  // namespace
