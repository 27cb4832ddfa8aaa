#include "overview/overview.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "model/refusal.h"

namespace stpoverview {
namespace {

using nlohmann::json;

template <class Terms, class Kind>
std::string name_of(const Terms &terms, Kind kind) {
  return std::string(
      std::find_if(terms.begin(), terms.end(), [kind](const auto &term) { return term.kind == kind; })->name);
}

template <class Terms>
auto kind_of(const Terms &terms, const std::string &name) {
  const auto term =
      std::find_if(terms.begin(), terms.end(), [&name](const auto &known) { return known.name == name; });
  if (term == terms.end()) {
    throw stpswitch::Refusal("'" + name + "' has no meaning here");
  }
  return term->kind;
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
void read_kinds(const json &names, const Terms &terms, std::set<Kind> *kinds) {
  for (const std::string name : names) {
    kinds->insert(kind_of(terms, name));
  }
}

template <class Terms, class Kind>
void read_lists(const json &lists, const Terms &terms, std::map<Kind, TreeSet> *trees) {
  for (const auto &[name, list] : lists.items()) {
    const std::string text = list;
    trees->emplace(kind_of(terms, name), stpswitch::parse_trees(text));
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
  if (object.contains("vlans")) {
    tree.vlans = stpswitch::parse_vlans(object["vlans"].get<std::string>());
  }
  if (object.contains("hops")) {
    tree.hops = object["hops"];
  }
  return tree;
}

Port port_of(const json &object) {
  Port port;
  port.name = object.at("name");
  if (object.contains("link")) {
    port.link = kind_of(kLinks, object["link"]);
  }
  read_kinds(object.at("flags"), kFlags, &port.flags);
  read_kinds(object.at("guards"), kGuards, &port.guards);
  read_lists(object.at("roles"), kRoles, &port.roles);
  read_lists(object.at("inconsistent"), kInconsistencies, &port.inconsistent);
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
  overview.name = object.at("name");
  if (object.contains("mode")) {
    overview.mode = kind_of(kModes, object["mode"]);
  }
  if (object.contains("region")) {
    const json &region = object["region"];
    overview.region = {region.at("name"), region.at("revision"), region.at("digest")};
  }
  if (object.contains("regional_root")) {
    const json &root = object["regional_root"];
    overview.regional_root = {root.at("bridge"), root.at("cost")};
  }
  if (object.contains("disabled_vlans")) {
    overview.disabled_vlans = stpswitch::parse_vlans(object["disabled_vlans"].get<std::string>());
  }
  for (const json &tree : object.at("trees")) {
    overview.trees.emplace(tree.at("tree"), tree_of(tree));
  }
  for (const json &port : object.at("ports")) {
    overview.ports.push_back(port_of(port));
  }
}

}  // namespace stpoverview
