// SNMP contexts: the tree that each form names, and the key that is made of it.
#include "stpsnmp/context.h"

#include <cstring>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "fake_platform.h"
#include "platform/agent_ext.h"
#include "platform/cmd.h"
#include "table_test.h"

namespace {

using ::testing::ElementsAre;

using Tree = std::pair<uint32_t, uint32_t>;  // number, and whether it is a VLAN

constexpr uint32_t kVlan = 1;
constexpr uint32_t kMst = 0;

class Context : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::reset();
    set_context("");
    request_ = cmd_req_init(buffer_, sizeof buffer_);
    stp_set_index_from_context(request_);
    fake::taken_trace();
  }

  void TearDown() override { set_context(""); }

  static void set_context(const std::string &context) {
    ASSERT_LE(context.size(), size_t{AND_CONTEXT_NAME_MAX});
    std::memcpy(and_context_name, context.c_str(), context.size() + 1);
    and_context_name_len = static_cast<uint32_t>(context.size());
  }

  static Tree tree_of(const std::string &context) {
    set_context(context);
    Tree tree{99, 99};
    stp_get_vlan_or_mst_id_from_context(&tree.first, &tree.second);
    return tree;
  }

  Trace key_of(const std::string &context, int (*set_index)(void *)) {
    set_context(context);
    set_index(request_);
    return fake::taken_trace();
  }

  static Trace added(const std::string &token, uint32_t tree) {
    return {"token_type_2len(" + token + ", value)",
            "cmd_req_attr_add(request, " + token + ", " + bytes({0, 1, tree, tree}) + ")"};
  }

  alignas(16) uint8_t buffer_[64] = {};
  void *request_ = nullptr;
};

TEST_F(Context, EmptyIsVlanOne) { EXPECT_EQ(tree_of(""), Tree(1, kVlan)); }

TEST_F(Context, BareNumberIsThatVlan) {
  EXPECT_EQ(tree_of("20"), Tree(20, kVlan));
  EXPECT_EQ(tree_of("1"), Tree(1, kVlan));
  EXPECT_EQ(tree_of("4094"), Tree(4094, kVlan));
  EXPECT_EQ(tree_of("100000"), Tree(100000, kVlan));
  EXPECT_EQ(tree_of("010"), Tree(10, kVlan)) << "decimal, whatever it starts with";
}

TEST_F(Context, NumberWithSomethingBehindItIsVlanOne) {
  EXPECT_EQ(tree_of("20x"), Tree(1, kVlan));
  EXPECT_EQ(tree_of("0x14"), Tree(1, kVlan));
  EXPECT_EQ(tree_of("20 "), Tree(1, kVlan));
  EXPECT_EQ(tree_of("12345x"), Tree(1, kVlan));
}

TEST_F(Context, NegativeNumberAndZeroAreVlanOne) {
  EXPECT_EQ(tree_of("-3"), Tree(1, kVlan));
  EXPECT_EQ(tree_of("-30000"), Tree(1, kVlan));
  EXPECT_EQ(tree_of("0"), Tree(1, kVlan));
  EXPECT_EQ(tree_of("000000"), Tree(1, kVlan));
}

TEST_F(Context, VlanPrefix) {
  EXPECT_EQ(tree_of("vlan-30"), Tree(30, kVlan));
  EXPECT_EQ(tree_of("vlan-4094x"), Tree(4094, kVlan));
  EXPECT_EQ(tree_of("vlan-010"), Tree(10, kVlan));
}

TEST_F(Context, VlanPrefixAloneIsVlanOne) {
  EXPECT_EQ(tree_of("vlan-"), Tree(1, kVlan));
  EXPECT_EQ(tree_of("vlan-x"), Tree(1, kVlan));
}

TEST_F(Context, MstPrefix) {
  EXPECT_EQ(tree_of("mst-5"), Tree(5, kMst));
  EXPECT_EQ(tree_of("mst-0"), Tree(0, kMst));
  EXPECT_EQ(tree_of("mst-4094x"), Tree(4094, kMst));
  EXPECT_EQ(tree_of("mst-0x10"), Tree(0, kMst));
}

TEST_F(Context, MstPrefixAloneIsInstanceOne) {
  EXPECT_EQ(tree_of("mst-"), Tree(1, kMst));
  EXPECT_EQ(tree_of("mst-x"), Tree(1, kMst));
}

TEST_F(Context, NumbersBehindPrefixesMayHaveAnySign) {
  EXPECT_EQ(tree_of("vlan--7"), Tree(0xFFFFFFF9, kVlan));
  EXPECT_EQ(tree_of("vlan-0"), Tree(0, kVlan));
  EXPECT_EQ(tree_of("mst--7"), Tree(0xFFFFFFF9, kMst));
}

TEST_F(Context, NumbersBeyond32BitsAreTheNearestOnes) {
  EXPECT_EQ(tree_of("2147483647"), Tree(2147483647, kVlan));
  EXPECT_EQ(tree_of("2147483648"), Tree(2147483647, kVlan));
  EXPECT_EQ(tree_of("4294967297"), Tree(2147483647, kVlan));
  EXPECT_EQ(tree_of("99999999999999999999"), Tree(2147483647, kVlan));
  EXPECT_EQ(tree_of("-99999999999999999999"), Tree(1, kVlan));
  EXPECT_EQ(tree_of("vlan-4294967297"), Tree(2147483647, kVlan));
  EXPECT_EQ(tree_of("mst-99999999999999999999"), Tree(2147483647, kMst));
  EXPECT_EQ(tree_of("mst--99999999999999999999"), Tree(0x80000000, kMst));
}

TEST_F(Context, OtherTextsAreVlanOne) {
  for (const char *context : {"v", "vla", "vlan", "mst", "VLAN-5", "MST-5", "mstt-5", "bridge", "xmst-5"}) {
    EXPECT_EQ(tree_of(context), Tree(1, kVlan)) << context;
  }
}

// The length, not the text, says whether a prefix can be there.
TEST_F(Context, LengthDecidesWhetherAPrefixIsLookedFor) {
  set_context("vlan-30");
  Tree tree{};
  and_context_name_len = 4;
  stp_get_vlan_or_mst_id_from_context(&tree.first, &tree.second);
  EXPECT_EQ(tree, Tree(1, kVlan));
  set_context("mst-5");
  and_context_name_len = 3;
  stp_get_vlan_or_mst_id_from_context(&tree.first, &tree.second);
  EXPECT_EQ(tree, Tree(1, kVlan));
  and_context_name_len = 4;
  stp_get_vlan_or_mst_id_from_context(&tree.first, &tree.second);
  EXPECT_EQ(tree, Tree(5, kMst));
}

TEST_F(Context, KeyOfATree) {
  EXPECT_EQ(key_of("vlan-30", stp_set_index_from_context), added("0x130200B4", 30));
  EXPECT_EQ(key_of("17", stp_set_index_from_context), added("0x130200B4", 17));
  EXPECT_EQ(key_of("mst-5", stp_set_index_from_context), added("0x13020131", 5));
}

TEST_F(Context, KeyOfATreesSettings) {
  EXPECT_EQ(key_of("vlan-30", stp_set_index_from_context_for_set), added("0x13020005", 30));
  EXPECT_EQ(key_of("", stp_set_index_from_context_for_set), added("0x13020005", 1));
  EXPECT_EQ(key_of("mst-5", stp_set_index_from_context_for_set), added("0x13020074", 5));
}

TEST_F(Context, KeysReturnWhatTheCommandLibraryReturns) {
  fake::platform().attr_add_result = 2;
  EXPECT_EQ(stp_set_index_from_context(request_), 2);
  EXPECT_EQ(stp_set_index_from_context_for_set(request_), 2);
}

// The key of a port's settings is a cleared list with room for 512 ranges.
TEST_F(Context, KeyOfAPortsSettings) {
  fake::platform().range_list_length = 4104;
  const std::string no_more_ranges(size_t{2} * (4104 - 16), '0');
  const auto expect_key = [&](const char *context, const std::string &token, uint32_t tree) {
    set_context(context);
    stp_set_index_from_context_for_set_intf(request_);
    std::string list = bytes({0, 1, tree, tree});
    list += no_more_ranges;
    EXPECT_THAT(fake::taken_trace(),
                ElementsAre("token_type_2len(" + token + ", value)",
                            "cmd_req_attr_add(request, " + token + ", " + list + ")",
                            logged("stp_set_index_from_context_for_set_intf getting out.....\\n")));
  };
  expect_key("vlan-30", "0x13020019", 30);
  expect_key("7", "0x13020019", 7);
  expect_key("mst-5", "0x13020092", 5);
}

TEST_F(Context, MstContextIsRememberedUntilTheNextKey) {
  EXPECT_EQ(is_mst_context_passed(), 0U);
  for (int (*const set_index)(void *) : {stp_set_index_from_context, stp_set_index_from_context_for_set}) {
    key_of("mst-5", set_index);
    EXPECT_EQ(is_mst_context_passed(), 1U);
    key_of("vlan-5", set_index);
    EXPECT_EQ(is_mst_context_passed(), 0U);
  }
  set_context("mst-");
  stp_set_index_from_context_for_set_intf(request_);
  EXPECT_EQ(is_mst_context_passed(), 1U);
  set_context("5");
  stp_set_index_from_context_for_set_intf(request_);
  EXPECT_EQ(is_mst_context_passed(), 0U);
}

TEST_F(Context, OnlyKeysAreRemembered) {
  key_of("mst-5", stp_set_index_from_context);
  EXPECT_EQ(tree_of("vlan-5"), Tree(5, kVlan));
  EXPECT_EQ(is_mst_context_passed(), 1U);
  key_of("5", stp_set_index_from_context);
  EXPECT_EQ(tree_of("mst-5"), Tree(5, kMst));
  EXPECT_EQ(is_mst_context_passed(), 0U);
}

}  // namespace
