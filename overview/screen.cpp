#include "overview/screen.h"

#include <algorithm>
#include <utility>

#include "overview/table.h"

namespace stpoverview {
namespace {

// A digest is known by its start.
constexpr size_t kShownDigits = 8;

constexpr char kNothing[] = "-";
constexpr char kMark[] = "!";

template <class Terms, class Kind>
std::string shown(const Terms &terms, Kind kind) {
  return std::string(std::find_if(terms.begin(), terms.end(), [kind](const auto &term) {
                       return term.kind == kind;
                     })->shown);
}

template <class Terms, class Kind>
std::string shown_all(const Terms &terms, const std::set<Kind> &kinds, const char *separator) {
  std::string text;
  for (const Kind kind : kinds) {
    text += (text.empty() ? "" : separator) + shown(terms, kind);
  }
  return text.empty() ? kNothing : text;
}

template <class Kind>
bool any_contains(const std::map<Kind, TreeSet> &sets, uint32_t tree) {
  return std::any_of(sets.begin(), sets.end(), [tree](const auto &set) { return set.second.contains(tree); });
}

std::optional<Role> role_in(uint32_t tree, const Port &port) {
  const auto found = std::find_if(port.roles.begin(), port.roles.end(),
                                  [tree](const auto &role) { return role.second.contains(tree); });
  return found != port.roles.end() ? std::optional(found->first) : std::nullopt;
}

Colour colour_of(std::optional<Role> role) {
  if (!role) {
    return Colour::kDim;
  }
  return *role == Role::kRoot ? Colour::kGood : *role == Role::kDesignated ? Colour::kNone : Colour::kWaiting;
}

Cell sign_of(uint32_t tree, const Port &port) {
  const std::optional<Role> role = role_in(tree, port);
  const std::string sign = role ? shown(kRoles, *role) : kNothing;
  return any_contains(port.inconsistent, tree) ? Cell{sign + kMark, Colour::kBad}
                                               : Cell{sign, colour_of(role)};
}

std::string print_head(const Overview &overview, const Terminal &terminal) {
  std::vector<Row> rows;
  const auto add = [&rows](const char *name, std::string text) {
    rows.push_back({{name}, {std::move(text)}});
  };
  if (!overview.name.empty()) {
    add("Switch", overview.name);
  }
  if (overview.mode) {
    add("Mode", shown(kModes, *overview.mode));
  }
  if (overview.region) {
    const std::string &name = overview.region->name;
    add("Region", (name.empty() ? "\"\"" : name) + ", revision " + std::to_string(overview.region->revision) +
                      ", digest " + overview.region->digest.substr(0, kShownDigits) + "...");
  }
  if (overview.regional_root) {
    add("Regional root",
        overview.regional_root->bridge + ", cost " + std::to_string(overview.regional_root->cost));
  }
  if (!overview.disabled_vlans.is_empty()) {
    add("Without tree", stpswitch::print_vlans(overview.disabled_vlans));
  }
  return rows.empty() ? "" : print_lists(rows, terminal);
}

std::string root_ports(uint32_t tree, const std::vector<Port> &ports) {
  std::string names;
  for (const Port &port : ports) {
    if (role_in(tree, port) == Role::kRoot) {
      names += (names.empty() ? "" : ",") + port.name;
    }
  }
  return names.empty() ? kNothing : names;
}

Cell root_cell(const std::string &ports) {
  return {ports, ports == kNothing ? Colour::kNone : Colour::kGood};
}

// Trees of Rapid PVST differ in nothing else. In the order of the first of them.
std::string print_trees_by_root_port(const Overview &overview, const Terminal &terminal) {
  std::vector<std::pair<std::string, TreeSet>> by_port;
  for (const auto &[number, tree] : overview.trees) {
    const std::string ports = root_ports(number, overview.ports);
    auto known = std::find_if(by_port.begin(), by_port.end(),
                              [&ports](const auto &entry) { return entry.first == ports; });
    if (known == by_port.end()) {
      known = by_port.emplace(by_port.end(), ports, TreeSet());
    }
    known->second.insert(number);
  }
  std::vector<Row> rows = {{{"Root port"}, {"Trees"}}};
  for (const auto &[ports, trees] : by_port) {
    rows.push_back({root_cell(ports), {stpswitch::print_trees(trees)}});
  }
  return print_lists(rows, terminal);
}

std::string print_trees(const Overview &overview, const Terminal &terminal) {
  if (overview.mode == Mode::kRapidPvst) {
    return print_trees_by_root_port(overview, terminal);
  }
  std::vector<Row> rows = {{{"Tree"}, {"Root port"}, {"Hops"}, {"VLANs"}}};
  for (const auto &[number, tree] : overview.trees) {
    rows.push_back({{std::to_string(number)},
                    root_cell(root_ports(number, overview.ports)),
                    {tree.hops ? std::to_string(*tree.hops) : kNothing},
                    {!tree.vlans              ? kNothing
                     : tree.vlans->is_empty() ? "none"
                                              : stpswitch::print_vlans(*tree.vlans)}});
  }
  return print_lists(rows, terminal);
}

Row describe(const Port &port) {
  const bool is_down = port.link == Link::kDown;
  return {{port.name, is_down ? Colour::kDim : Colour::kNone},
          {port.link ? shown(kLinks, *port.link) : kNothing, is_down ? Colour::kDim : Colour::kNone},
          {shown_all(kFlags, port.flags, "")},
          {shown_all(kGuards, port.guards, ",")}};
}

std::vector<Row> describe_all(const std::vector<Port> &ports) {
  std::vector<Row> rows = {{{"Port"}, {"Link"}, {"Flags"}, {"Guards"}}};
  for (const Port &port : ports) {
    rows.push_back(describe(port));
  }
  return rows;
}

// A column of signs for each tree; empty where the terminal is too narrow.
std::string print_grid(const Overview &overview, const Terminal &terminal) {
  if (overview.trees.size() > terminal.width) {
    return "";
  }
  std::vector<Row> rows = describe_all(overview.ports);
  for (const auto &[number, tree] : overview.trees) {
    rows.front().push_back({std::to_string(number)});
    for (size_t i = 0; i < overview.ports.size(); ++i) {
      rows[i + 1].push_back(sign_of(number, overview.ports[i]));
    }
  }
  if (width_of(aligned(rows, {}).front()) > terminal.width + kGap) {
    return "";
  }
  std::string text;
  for (const std::string &line : aligned(rows, terminal)) {
    text += line;
    end_line(&text);
  }
  return text;
}

// The trees by their sign.
Cell list_signs(const Port &port) {
  TreeSet marked;
  for (const auto &[kind, trees] : port.inconsistent) {
    marked.insert(trees);
  }
  std::string text;
  const auto add = [&text](std::string_view sign, const TreeSet &trees) {
    if (!trees.is_empty()) {
      text.append(text.empty() ? "" : ", ").append(sign).append(" ").append(stpswitch::print_trees(trees));
    }
  };
  TreeSet without_role = marked;
  for (const auto &[role, trees] : port.roles) {
    TreeSet good = trees;
    good.erase(marked);
    TreeSet bad = trees;
    bad.intersect(marked);
    add(shown(kRoles, role), good);
    add(shown(kRoles, role) + kMark, bad);
    without_role.erase(trees);
  }
  add(std::string(kNothing) + kMark, without_role);
  return {text.empty() ? kNothing : text, marked.is_empty() ? Colour::kNone : Colour::kBad};
}

std::string print_folded(const std::vector<Port> &ports, const Terminal &terminal) {
  std::vector<Row> rows = describe_all(ports);
  rows.front().push_back({"Roles in trees"});
  for (size_t i = 0; i < ports.size(); ++i) {
    rows[i + 1].push_back(list_signs(ports[i]));
  }
  return print_lists(rows, terminal);
}

std::string print_ports(const Overview &overview, const Terminal &terminal) {
  const std::string grid = print_grid(overview, terminal);
  return grid.empty() ? print_folded(overview.ports, terminal) : grid;
}

std::string print_inconsistencies(const std::vector<Port> &ports, const Terminal &terminal) {
  std::vector<Row> rows = {{{"Port"}, {"Blocked by"}, {"In trees"}}};
  for (const Port &port : ports) {
    for (const auto &[kind, trees] : port.inconsistent) {
      rows.push_back(
          {{port.name}, {shown(kInconsistencies, kind), Colour::kBad}, {stpswitch::print_trees(trees)}});
    }
  }
  return rows.size() == 1 ? "" : print_lists(rows, terminal);
}

std::string print_legend(const std::vector<Port> &ports) {
  std::string text;
  for (const auto &role : kRoles) {
    text.append(role.shown).append(" ").append(role.name).append(", ");
  }
  text.append(kNothing).append(" none, ").append(kMark).append(" inconsistent\n");
  std::string flags;
  for (const auto &flag : kFlags) {
    if (std::any_of(ports.begin(), ports.end(),
                    [&flag](const Port &port) { return port.flags.contains(flag.kind); })) {
      flags.append(flags.empty() ? "" : ", ").append(flag.shown).append(" ").append(flag.name);
    }
  }
  return flags.empty() ? text : text + flags + "\n";
}

}  // namespace

std::string print_overview(const Overview &overview, const Terminal &terminal) {
  std::vector<std::string> parts = {print_head(overview, terminal)};
  if (!overview.trees.empty()) {
    parts.push_back(print_trees(overview, terminal));
  }
  if (!overview.ports.empty()) {
    parts.push_back(print_ports(overview, terminal));
    parts.push_back(print_inconsistencies(overview.ports, terminal));
    parts.push_back(print_legend(overview.ports));
  }
  std::string text;
  for (const std::string &part : parts) {
    text += text.empty() || part.empty() ? "" : "\n";
    text += part;
  }
  return text;
}

}  // namespace stpoverview
