#include "overview/overview.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "model/refusal.h"

namespace stpoverview {
namespace {

using nlohmann::json;
using stpswitch::Refusal;

constexpr uint32_t kMaxNumber = std::numeric_limits<uint32_t>::max();

[[noreturn]] void refuse(const char *name, const std::string &reason) {
  throw Refusal(std::string(name) + ": " + reason);
}

bool has(const json &object, const char *name) {
  if (!object.is_object()) {
    throw Refusal("expected an object with '" + std::string(name) + "', not " + object.type_name());
  }
  return object.contains(name);
}

const json &get(const json &object, const char *name) {
  if (!has(object, name)) {
    refuse(name, "it is missing");
  }
  return object.at(name);
}

std::string text_of(const json &value, const char *name) {
  if (!value.is_string()) {
    refuse(name, std::string("expected a text, not ") + value.type_name());
  }
  return value;
}

std::string get_text(const json &object, const char *name) { return text_of(get(object, name), name); }

uint32_t get_number(const json &object, const char *name, uint32_t max = kMaxNumber) {
  const json &value = get(object, name);
  if (!value.is_number_unsigned() || value > max) {
    refuse(name, value.dump() + " is not in 0.." + std::to_string(max));
  }
  return value;
}

const json &get_list(const json &object, const char *name) {
  const json &value = get(object, name);
  if (!value.is_array()) {
    refuse(name, std::string("expected a list, not ") + value.type_name());
  }
  return value;
}

VlanSet get_vlans(const json &object, const char *name) {
  return stpswitch::parse_vlans(get_text(object, name));
}

template <class Terms, class Kind>
std::string name_of(const Terms &terms, Kind kind) {
  return std::string(
      std::find_if(terms.begin(), terms.end(), [kind](const auto &term) { return term.kind == kind; })->name);
}

template <class Terms>
auto kind_of(const Terms &terms, const std::string &name, const char *member) {
  const auto term =
      std::find_if(terms.begin(), terms.end(), [&name](const auto &known) { return known.name == name; });
  if (term == terms.end()) {
    refuse(member, "'" + name + "' has no meaning here");
  }
  return term->kind;
}

template <class Terms>
auto get_kind(const json &object, const char *name, const Terms &terms) {
  return kind_of(terms, get_text(object, name), name);
}

template <class Terms, class Kind>
json names_of(const Terms &terms, const std::set<Kind> &kinds) {
  json names = json::array();
  for (const Kind kind : kinds) {
    names.push_back(name_of(terms, kind));
  }
  return names;
}

template <class Terms, class Kind>
json lists_of(const Terms &terms, const std::map<Kind, TreeSet> &trees) {
  json lists = json::object();
  for (const auto &[kind, some] : trees) {
    lists[name_of(terms, kind)] = stpswitch::print_trees(some);
  }
  return lists;
}

template <class Terms, class Kind>
void read_kinds(const json &object, const char *name, const Terms &terms, std::set<Kind> *kinds) {
  for (const json &kind : get_list(object, name)) {
    kinds->insert(kind_of(terms, text_of(kind, name), name));
  }
}

template <class Terms, class Kind>
void read_lists(const json &object, const char *name, const Terms &terms, std::map<Kind, TreeSet> *trees) {
  const json &lists = get(object, name);
  if (!lists.is_object()) {
    refuse(name, std::string("expected an object, not ") + lists.type_name());
  }
  for (const auto &[kind, list] : lists.items()) {
    trees->emplace(kind_of(terms, kind, name), stpswitch::parse_trees(text_of(list, name)));
  }
}

json json_of(uint32_t number, const Tree &tree) {
  json object = {{"tree", number}};
  if (tree.vlans) {
    object["vlans"] = stpswitch::print_vlans(*tree.vlans);
  }
  if (tree.hops) {
    object["hops"] = *tree.hops;
  }
  return object;
}

json json_of(const Port &port) {
  json object = {{"name", port.name},
                 {"flags", names_of(kFlags, port.flags)},
                 {"guards", names_of(kGuards, port.guards)},
                 {"roles", lists_of(kRoles, port.roles)},
                 {"inconsistent", lists_of(kInconsistencies, port.inconsistent)}};
  if (port.link) {
    object["link"] = name_of(kLinks, *port.link);
  }
  return object;
}

Tree tree_of(const json &object) {
  Tree tree;
  if (has(object, "vlans")) {
    tree.vlans = get_vlans(object, "vlans");
  }
  if (has(object, "hops")) {
    tree.hops = get_number(object, "hops");
  }
  return tree;
}

Port port_of(const json &object) {
  Port port;
  port.name = get_text(object, "name");
  if (has(object, "link")) {
    port.link = get_kind(object, "link", kLinks);
  }
  read_kinds(object, "flags", kFlags, &port.flags);
  read_kinds(object, "guards", kGuards, &port.guards);
  read_lists(object, "roles", kRoles, &port.roles);
  read_lists(object, "inconsistent", kInconsistencies, &port.inconsistent);
  return port;
}

}  // namespace

void to_json(json &object, const Overview &overview) {
  object = {{"name", overview.name}, {"trees", json::array()}, {"ports", json::array()}};
  if (overview.mode) {
    object["mode"] = name_of(kModes, *overview.mode);
  }
  if (overview.region) {
    object["region"] = {{"name", overview.region->name},
                        {"revision", overview.region->revision},
                        {"digest", overview.region->digest}};
  }
  if (overview.regional_root) {
    object["regional_root"] = {{"bridge", overview.regional_root->bridge},
                               {"cost", overview.regional_root->cost}};
  }
  if (!overview.disabled_vlans.is_empty()) {
    object["disabled_vlans"] = stpswitch::print_vlans(overview.disabled_vlans);
  }
  for (const auto &[number, tree] : overview.trees) {
    object["trees"].push_back(json_of(number, tree));
  }
  for (const Port &port : overview.ports) {
    object["ports"].push_back(json_of(port));
  }
}

void from_json(const json &object, Overview &overview) {
  overview.name = get_text(object, "name");
  if (has(object, "mode")) {
    overview.mode = get_kind(object, "mode", kModes);
  }
  if (has(object, "region")) {
    const json &region = object["region"];
    overview.region = {get_text(region, "name"), get_number(region, "revision"), get_text(region, "digest")};
  }
  if (has(object, "regional_root")) {
    const json &root = object["regional_root"];
    overview.regional_root = {get_text(root, "bridge"), get_number(root, "cost")};
  }
  if (has(object, "disabled_vlans")) {
    overview.disabled_vlans = get_vlans(object, "disabled_vlans");
  }
  for (const json &tree : get_list(object, "trees")) {
    const uint32_t number = get_number(tree, "tree", stpswitch::kMaxTree);
    if (!overview.trees.emplace(number, tree_of(tree)).second) {
      refuse("tree", std::to_string(number) + " is listed twice");
    }
  }
  for (const json &port : get_list(object, "ports")) {
    overview.ports.push_back(port_of(port));
  }
}

}  // namespace stpoverview
