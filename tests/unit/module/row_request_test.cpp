// What a table's routines make of a request's OID.
#include "tables/table.h"

#include <vector>

#include <gmock/gmock.h>

#include "fake_platform.h"

namespace {

using stpsnmp::tables::RowRequest;
using ::testing::ElementsAre;

struct Row {
  uint32_t index;
};

class RowRequests : public ::testing::Test {
 protected:
  void SetUp() override { fake::reset(); }

  // A request of these arcs on the column 1.3.9.
  RowRequest request(const std::vector<oid> &arcs, int exact = 0) {
    length_ = arcs.size();
    std::copy(arcs.begin(), arcs.end(), name_);
    row_.index = 99;
    return {column_, 3, name_, &length_, exact, &row_};
  }

  std::vector<oid> name() const { return {name_, name_ + length_}; }

  const oid column_[3] = {1, 3, 9};
  oid name_[MAX_OID_LEN] = {};
  size_t length_ = 0;
  Row row_{};
};

TEST_F(RowRequests, ClearTheRowAndTrace) {
  request({1, 3, 9, 5}, 1);
  EXPECT_EQ(row_.index, 0U);
  EXPECT_THAT(fake::taken_trace(), ElementsAre("log(0x00730000, 101) \"exact 1 *length 4 vp_namelen 3\\n\""));
}

TEST_F(RowRequests, AskForExactlyTheRowOrTheNext) {
  EXPECT_EQ(request({1, 3, 9}, 1).action(), CMD_ACTION_GET);
  EXPECT_EQ(request({1, 3, 9}, 2).action(), CMD_ACTION_GET);
  EXPECT_EQ(request({1, 3, 9}, 0).action(), CMD_ACTION_GET_NEXT);
}

TEST_F(RowRequests, HaveTheArcsBehindTheColumnAsIndex) {
  const RowRequest two = request({1, 3, 9, 5, 6, 7});
  EXPECT_EQ(two.index_arc(0), 5U);
  EXPECT_EQ(two.index_arc(1), 6U);
}

TEST_F(RowRequests, TakeAnAbsentArcForZeroOrWhatTheTableSays) {
  const RowRequest one = request({1, 3, 9, 5});
  EXPECT_EQ(one.index_arc(1), 0U);
  const RowRequest none = request({1, 3, 9});
  EXPECT_EQ(none.index_arc(0), 0U);
  EXPECT_EQ(none.index_arc(0, 0xFFFFFFFF), 0xFFFFFFFFU);
}

TEST_F(RowRequests, HaveNoIndexOutsideTheColumn) {
  for (const std::vector<oid> &arcs :
       {std::vector<oid>{1, 3, 8, 5}, {1, 3, 10, 5}, {1, 4, 9, 5}, {1, 3}, {}}) {
    EXPECT_EQ(request(arcs).index_arc(0), 0U);
  }
}

TEST_F(RowRequests, TakeTheLow32BitsOfAnArc) {
  EXPECT_EQ(request({1, 3, 9, 0xFFFFFFFF}).index_arc(0), 0xFFFFFFFFU);
  if constexpr (sizeof(oid) > sizeof(uint32_t)) {
    EXPECT_EQ(request({1, 3, 9, static_cast<oid>(0x1'0000'0005)}).index_arc(0), 5U);
  }
}

TEST_F(RowRequests, RefuseTooManyArcsOfAGetOnly) {
  EXPECT_FALSE(request({1, 3, 9, 5}, 1).has_too_many_arcs(1));
  EXPECT_TRUE(request({1, 3, 9, 5, 6}, 1).has_too_many_arcs(1));
  EXPECT_FALSE(request({1, 3, 9, 5, 6}, 1).has_too_many_arcs(2));
  EXPECT_TRUE(request({1, 3, 9, 5, 6, 7}, 1).has_too_many_arcs(2));
  EXPECT_FALSE(request({1, 3, 9, 5, 6, 7}, 0).has_too_many_arcs(1));
  EXPECT_TRUE(request({1, 4, 9, 5, 6}, 1).has_too_many_arcs(1)) << "wherever the request lies";
}

TEST_F(RowRequests, AnswerWithTheColumnAndTheIndex) {
  request({1, 3, 9, 5, 6, 7}).answer({8});
  EXPECT_THAT(name(), ElementsAre(1, 3, 9, 8));
  request({1, 2}).answer({8, 0xFFFFFFFF});
  EXPECT_THAT(name(), ElementsAre(1, 3, 9, 8, 0xFFFFFFFF));
}

}  // namespace
