#include "stpsnmp/context.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "diagnostics.h"
#include "platform/agent_ext.h"
#include "query/request.h"

using stpsnmp::diagnostics::kTrace;
using stpsnmp::query::add_key;
using stpsnmp::query::single_tree;
using stpsnmp::query::TreeRange;

namespace {

constexpr std::string_view kVlanPrefix = "vlan-";
constexpr std::string_view kMstPrefix = "mst-";
constexpr uint32_t kMstPrefixLength = 4;
constexpr uint32_t kDefaultTree = 1;
constexpr int kDecimal = 10;

struct Tree {
  uint32_t id;
  bool is_vlan;
};

struct TreeTokens {
  stp_key vlan;
  stp_key mst;
};

uint32_t mst_context_passed = 0;

// A decimal number with an optional sign. Returns the text behind it, `text` itself where there is none; a
// number beyond 32 bits becomes the nearest one.
const char *parse_number(const char *text, int32_t *number) {
  char *end = nullptr;
  const long value = strtol(text, &end, kDecimal);
  if (end != text) {
    *number = static_cast<int32_t>(std::clamp<long>(value, INT32_MIN, INT32_MAX));
  }
  return end;
}

// Without string_view's own comparison, which needs the C++ runtime in a build without optimisation.
bool has_prefix(std::string_view prefix) {
  return std::strncmp(and_context_name, prefix.data(), prefix.size()) == 0;
}

// The number behind a prefix, of any sign and size.
uint32_t number_after(std::string_view prefix) {
  auto number = static_cast<int32_t>(kDefaultTree);
  parse_number(and_context_name + prefix.size(), &number);
  return static_cast<uint32_t>(number);
}

Tree tree_of_context() {
  int32_t number = 0;
  if (*parse_number(and_context_name, &number) == '\0' && number > 0) {
    return {static_cast<uint32_t>(number), true};
  }
  const uint32_t length = and_context_name_len;
  if (length < kMstPrefixLength) {
    return {kDefaultTree, true};
  }
  if (length != kMstPrefixLength && has_prefix(kVlanPrefix)) {
    return {number_after(kVlanPrefix), true};
  }
  if (has_prefix(kMstPrefix)) {
    return {number_after(kMstPrefix), false};
  }
  return {kDefaultTree, true};
}

Tree take_tree_for_key() {
  const Tree tree = tree_of_context();
  mst_context_passed = tree.is_vlan ? 0 : 1;
  return tree;
}

stp_key token_for(const Tree &tree, const TreeTokens &tokens) {
  return tree.is_vlan ? tokens.vlan : tokens.mst;
}

int add_tree(void *request, const TreeTokens &tokens) {
  const Tree tree = take_tree_for_key();
  const TreeRange range = single_tree(tree.id);
  return add_key(request, {token_for(tree, tokens), &range});
}

}  // namespace

void stp_get_vlan_or_mst_id_from_context(uint32_t *tree, uint32_t *is_vlan) {
  const Tree found = tree_of_context();
  *tree = found.id;
  *is_vlan = found.is_vlan ? 1 : 0;
}

int stp_set_index_from_context(void *request) {
  return add_tree(request, {STP_KEY_VLAN_TREE, STP_KEY_MST_TREE});
}

int stp_set_index_from_context_for_set(void *request) {
  return add_tree(request, {STP_KEY_VLAN_TREE_SETTINGS, STP_KEY_MST_TREE_SETTINGS});
}

void stp_set_index_from_context_for_set_intf(void *request) {
  // This key has room for a full list.
  struct {
    cmd_range_list list;
    cmd_range trees[CMD_RANGES_MAX];
  } ranges = {};
  const Tree tree = take_tree_for_key();
  ranges.list.count = 1;
  ranges.trees[0] = {tree.id, tree.id};
  add_key(request,
          {token_for(tree, {STP_KEY_VLAN_TREE_PORT_SETTINGS, STP_KEY_MST_TREE_PORT_SETTINGS}), &ranges});
  STP_LOG(kTrace, "%s getting out.....\n", __func__);
}

uint32_t is_mst_context_passed(void) { return mst_context_passed; }
