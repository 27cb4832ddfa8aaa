// The schema: every section of a switch's state and every key in it, with its meaning, type, check and print.
// Scenario files, `show`, `set` and the list of keys are all driven by it, so that a new key is one more row
// in schema.cpp, tree_schema.cpp or interface_schema.cpp.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "keys/value.h"
#include "model/switch_state.h"

namespace stpswitch {

// One key of a section whose data is an Owner.
template <class Owner>
struct Field {
  std::string_view name;
  std::string_view meaning;  // whole sentences, for whoever writes a scenario
  ValueType type;
  std::string (*domain)();                      // what assign takes, in words: "6 to 40"
  bool required;                                // a scenario must state it
  void (*assign)(Owner &, const Value &);       // throws Refusal; the value has the field's type
  std::optional<Value> (*read)(const Owner &);  // what assign would take; none when nobody knows
};

// A section that stands once: [switch].
template <class Owner>
struct SingleSection {
  std::string_view path;
  std::string_view meaning;
  Owner SwitchState::*part;
  Owner (*make)();  // one with the defaults of a scenario
  std::span<const Field<Owner>> fields;
};

// A section that stands once for each numbered entry: [[port]].
template <class Owner>
struct ListSection {
  std::string_view path;
  std::string_view meaning;
  std::map<uint32_t, Owner> SwitchState::*part;
  std::string_view number_name;  // the key that holds the entry's number
  uint32_t min_number;
  uint32_t max_number;
  size_t max_entries;
  Owner (*make)(uint32_t number);  // an entry with the defaults of a scenario
  std::span<const Field<Owner>> fields;
};

extern const SingleSection<Settings> kSwitchSection;
extern const SingleSection<Bridge> kBridgeSection;
extern const ListSection<Tree> kTreeSection;
extern const SingleSection<MstRegion> kMstSection;
extern const SingleSection<MstCist> kMstCistSection;
extern const ListSection<MstInstance> kMstInstanceSection;
extern const SingleSection<RapidPvst> kRapidPvstSection;
extern const ListSection<Port> kPortSection;
extern const ListSection<PortChannel> kPortChannelSection;
extern const SingleSection<Access> kAccessSection;

// Calls the visitor with each section, in the order in which they are shown.
template <class Visitor>
void for_each_section(Visitor &&visitor) {
  visitor(kSwitchSection);
  visitor(kBridgeSection);
  visitor(kTreeSection);
  visitor(kMstSection);
  visitor(kMstCistSection);
  visitor(kMstInstanceSection);
  visitor(kRapidPvstSection);
  visitor(kPortSection);
  visitor(kPortChannelSection);
  visitor(kAccessSection);
}

}  // namespace stpswitch
