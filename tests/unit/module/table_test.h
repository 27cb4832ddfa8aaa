// Asks a table's lookup handler as the agent does, over the fake platform and with both ledgers open.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "stpsnmp/agent.h"

using Trace = std::vector<std::string>;

// Lines, one list after the other.
Trace operator+(Trace first, const Trace &second);

// What the module asks of the platform to send a request with one key; `key` is the token and the value's
// bytes in hexadecimal. Without a key, both are empty.
Trace sent(uint32_t command, uint32_t action, const std::string &token = "", const std::string &key = "");

// A line of the log at level 101.
std::string logged(const std::string &text);

// The numbers as a value's bytes, in hexadecimal.
std::string bytes(std::initializer_list<uint32_t> numbers);

class TableTest : public ::testing::Test {
 protected:
  explicit TableTest(FindVarMethod *handler) : handler_(handler) {}

  void SetUp() override;
  void TearDown() override;

  // The entry with this magic, with the arcs of a request behind its OID. Returns the value's octets.
  std::optional<std::string> get(uint8_t magic, const std::vector<oid> &arcs) { return ask(magic, arcs, 1); }
  std::optional<std::string> get_next(uint8_t magic, const std::vector<oid> &arcs) {
    return ask(magic, arcs, 0);
  }

  // The same with a request of any OID below the module's root.
  std::optional<std::string> ask_below_root(uint8_t magic, const std::vector<oid> &below_root, int exact);

  // The request's OID after the call, below the module's root: ".1.5.1.1.2.7".
  std::string answered() const;

  // Scripts an attribute of the spanning-tree process's replies.
  static void reply_holds(uint32_t token, uint32_t number);
  static void reply_lacks(uint32_t token);

  // The replies that a path keeps, deliberately.
  void expect_kept_replies(size_t count) { kept_replies_ = count; }

 private:
  std::optional<std::string> ask(uint8_t magic, const std::vector<oid> &arcs, int exact);

  FindVarMethod *handler_;
  oid name_[MAX_OID_LEN] = {};
  size_t name_length_ = 0;
  size_t kept_replies_ = 0;
};

// A value of four octets as the number that it is.
std::optional<int32_t> number(const std::optional<std::string> &value);
