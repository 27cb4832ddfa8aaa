// rtnetlink messages as a kernel sent them: recorded/linux_bridge.txt.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sources/linux_bridge/link_message.h"
#include "sources/linux_bridge/link_table.h"

struct RecordedMessage {
  std::chrono::milliseconds time;  // of a notification
  std::vector<uint8_t> octets;
};

// A section of the file.
std::vector<RecordedMessage> recorded(const std::string &section);

// Parses the message with which the octets begin, if they do.
std::optional<stpswitch::LinkMessage> parse(const std::vector<uint8_t> &octets);

// What there was of several messages, each in octets of its own.
std::vector<stpswitch::Link> links_of(const std::vector<RecordedMessage> &messages);

// The table of the recorded bridge.
stpswitch::LinkTable recorded_table();
