#include "scripted_process.h"

#include <cstring>

namespace {

std::string query_of(const char *action, uint32_t tree, uint32_t if_index, uint32_t command) {
  return std::string("asked ") + action + " " + std::to_string(command) + " (" + std::to_string(tree) + ", " +
         std::to_string(if_index) + ")";
}

// A word of a key; a request without the key fails the test.
uint32_t word(const fake::Request &request, uint32_t token, size_t position) {
  const auto key = request.keys.find(token);
  uint32_t value = 0;
  if (key == request.keys.end() || key->second.size() < (position + 1) * sizeof value) {
    ADD_FAILURE() << "a query without the key " << fake::hex(token);
    return value;
  }
  std::memcpy(&value, key->second.data() + position * sizeof value, sizeof value);
  return value;
}

}  // namespace

std::string shown(uint32_t number) { return std::to_string(static_cast<int32_t>(number)); }

std::string get_of(uint32_t tree, uint32_t if_index, uint32_t command) {
  return query_of("GET", tree, if_index, command);
}

std::string get_next_of(uint32_t tree, uint32_t if_index, uint32_t command) {
  return query_of("GET_NEXT", tree, if_index, command);
}

fake::Send ScriptedProcess::answer(const fake::Request &request) {
  constexpr size_t kFirstOfRange = 2;
  fake::trace(query_of(request.action == kGet ? "GET" : "GET_NEXT", word(request, tree_key_, kFirstOfRange),
                       word(request, interface_key_, 0), request.command));
  if (answers_.empty()) {
    ADD_FAILURE() << "one query too many";
    return no_entry();
  }
  fake::Send answer = answers_.front();
  answers_.pop_front();
  return answer;
}
