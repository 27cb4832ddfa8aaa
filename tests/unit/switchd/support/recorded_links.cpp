#include "support/recorded_links.h"

#include <fstream>
#include <stdexcept>

#include "sources/linux_bridge/netlink_socket.h"
#include "support/octets.h"

using namespace stpswitch;

std::vector<RecordedMessage> recorded(const std::string &section) {
  constexpr size_t kShortestMessage = 32;  // in digits; times are shorter
  std::ifstream file(RECORDED "/linux_bridge.txt");
  std::vector<RecordedMessage> messages;
  bool is_inside = false;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.front() == '#') {
      continue;
    }
    if (line.front() == '[') {
      is_inside = line == "[" + section + "]";
      continue;
    }
    if (!is_inside) {
      continue;
    }
    const size_t space = line.find(' ');
    const bool has_time = space < kShortestMessage;
    const auto time = std::chrono::milliseconds(has_time ? std::stol(line.substr(0, space)) : 0);
    messages.push_back({time, octets(has_time ? line.substr(space) : line)});
  }
  if (messages.empty()) {
    throw std::runtime_error("nothing is recorded as " + section);
  }
  return messages;
}

std::optional<LinkMessage> parse(const std::vector<uint8_t> &octets) {
  std::optional<LinkMessage> parsed;
  for_each_message(octets, [&parsed](const nlmsghdr &message) {
    if (!parsed) {
      parsed = parse_link_message(message);
    }
  });
  return parsed;
}

std::vector<Link> links_of(const std::vector<RecordedMessage> &messages) {
  std::vector<Link> links;
  for (const RecordedMessage &message : messages) {
    if (const auto parsed = parse(message.octets)) {
      links.push_back(parsed->link);
    }
  }
  return links;
}

LinkTable recorded_table() {
  LinkTable table = make_table(links_of(recorded("bridge")).at(0), links_of(recorded("ports")));
  for (const auto &[if_index, port] : table.ports) {
    if (is_port_channel(port)) {
      table.members[if_index] = links_of(recorded("members of " + *port.name));
    }
  }
  add_vlans(links_of(recorded("bridge ports, VLANs in ranges")), &table);
  return table;
}
