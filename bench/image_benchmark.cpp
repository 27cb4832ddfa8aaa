// What the image costs: to publish a change of it, beside copying as many octets, and to answer from it,
// beside finding the same row in an ordered map.
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "answers/answers.h"
#include "model/numbering.h"
#include "publisher/image_publisher.h"
#include "publisher/image_slot.h"

namespace {

using namespace stpswitch;
namespace answers = stpplatform::answers;
namespace wire = stpplatform::wire;

constexpr uint16_t kPriority = 32768;
constexpr uint32_t kPortPriority = 128;
constexpr MacAddress kAddress{2, 0, 0, 0, 0, 1};

// Rapid-PVST: each VLAN has a tree, and each port is in all of them.
SwitchState large_switch(uint32_t vlans, uint32_t ports) {
  SwitchState state;
  state.settings.mode = SpanningTreeMode::kRapidPvst;
  state.bridge.address = kAddress;
  state.bridge.settings.priority = kPriority;
  for (uint32_t number = 1; number <= ports; ++number) {
    Port &port = state.ports[number];
    port.numbers = port_numbers(number);
    port.link_up = true;
    port.priority = kPortPriority;
    port.designated = {BridgeId{kPriority, kAddress}, BridgeId{kPriority, kAddress}, 0, number};
    port.role.elsewhere = PortRole::kDesignated;
    for (uint32_t vlan = 1; vlan <= vlans; ++vlan) {
      port.vlans.insert(vlan);
    }
  }
  return state;
}

// VLANs and ports.
void Sizes(benchmark::internal::Benchmark *benchmark) {
  benchmark->Args({200, 48})->Args({4094, 64})->Unit(benchmark::kMicrosecond);
}

SwitchState large_switch(const benchmark::State &state) {
  return large_switch(static_cast<uint32_t>(state.range(0)), static_cast<uint32_t>(state.range(1)));
}

// A port's link changes, and the image has it.
void Publish(benchmark::State &state) {
  Switch the_switch(large_switch(state));
  ImagePublisher publisher(&the_switch);
  for (auto _ : state) {
    SwitchState next = the_switch.state();
    next.ports.at(1).link_up = !*next.ports.at(1).link_up;
    the_switch.replace(std::move(next));
    publisher.publish();
  }
}
BENCHMARK(Publish)->Apply(Sizes);

void CopyOfAsManyOctets(benchmark::State &state) {
  std::vector<uint8_t> slot;
  lay_out_slot(Switch(large_switch(state)), &slot);
  std::vector<uint8_t> copy(slot.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), slot.data(), slot.size());
    benchmark::DoNotOptimize(copy.data());
  }
}
BENCHMARK(CopyOfAsManyOctets)->Apply(Sizes);

// Asks for the port of a tree behind another one, with the keys that a walk sends.
class NextRow {
 public:
  explicit NextRow(const answers::Image *image) : image_(*image) {
    request_.destination = STP_DESTINATION;
    request_.service = STP_SERVICE;
    request_.command = STP_COMMAND_RAPID_PVST_PORTS;
    request_.action = CMD_ACTION_GET_NEXT;
    request_.attribute_count = 2;
  }

  cmd_result ask(uint32_t tree, uint32_t if_index, answers::Answer *answer) {
    const struct {
      cmd_range_list list;
      cmd_range tree;
    } trees = {{0, 1}, {tree, tree}};
    size_t size = wire::write_attribute(keys_, sizeof keys_, {STP_KEY_VLAN_TREE, sizeof trees, &trees});
    size += wire::write_attribute(keys_ + size, sizeof keys_ - size,
                                  {STP_KEY_INTERFACE, sizeof if_index, &if_index});
    return answers::answer_request(image_, request_, keys_, size, answer);
  }

 private:
  const answers::Image &image_;
  wire::Request request_{};
  uint8_t keys_[64];
};

// Walks the rows over and over: `next_after` finds the row behind (tree, if_index).
template <class NextAfter>
void walk(benchmark::State &state, NextAfter next_after) {
  std::pair<uint32_t, uint32_t> row{1, 0};
  for (auto _ : state) {
    if (!next_after(&row)) {
      row = {1, 0};
    }
  }
}

void RowFromTheImage(benchmark::State &state) {
  const Switch the_switch(large_switch(state));
  const ImagePublisher publisher(&the_switch);
  NextRow question(&publisher.view());
  walk(state, [&question](std::pair<uint32_t, uint32_t> *row) {
    answers::Answer answer;
    if (question.ask(row->first, row->second, &answer) != CMD_OK) {
      return false;
    }
    // Tree and interface stand first, each a head and a number.
    constexpr size_t kAttribute = sizeof(wire::AttributeHead) + sizeof(uint32_t);
    std::memcpy(&row->first, answer.attributes() + sizeof(wire::AttributeHead), sizeof row->first);
    std::memcpy(&row->second, answer.attributes() + kAttribute + sizeof(wire::AttributeHead),
                sizeof row->second);
    return true;
  });
}
BENCHMARK(RowFromTheImage)->Apply(Sizes)->Unit(benchmark::kNanosecond);

void RowFromAMap(benchmark::State &state) {
  std::map<std::pair<uint32_t, uint32_t>, uint32_t> rows;
  for (uint32_t vlan = 1; vlan <= state.range(0); ++vlan) {
    for (uint32_t number = 1; number <= state.range(1); ++number) {
      rows[{vlan, wire::if_index_of(IF_TYPE_PHYSICAL, number)}] = STP_ROLE_DESIGNATED;
    }
  }
  walk(state, [&rows](std::pair<uint32_t, uint32_t> *row) {
    const auto next = rows.upper_bound(*row);
    if (next == rows.end()) {
      return false;
    }
    *row = next->first;
    benchmark::DoNotOptimize(next->second);
    return true;
  });
}
BENCHMARK(RowFromAMap)->Apply(Sizes)->Unit(benchmark::kNanosecond);

}  // namespace
