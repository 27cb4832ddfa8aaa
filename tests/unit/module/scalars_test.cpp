#include "stpsnmp/scalars.h"

#include <cstring>
#include <optional>
#include <string>

#include <gmock/gmock.h>

#include "fake_platform.h"
#include "ledger.h"
#include "protocol_numbers.h"
#include "stpsnmp/lookup_handlers.h"
#include "stpsnmp/object_table.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Scalars : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::reset();
    forget_served_strings();
    ledger::start();
  }

  // The module's record outlives a test; its strings keep bytes of what they held.
  void forget_served_strings() {
    for (const auto &[magic, token] : {std::pair<uint8_t, uint32_t>{9, protocol::kMstRegionName},
                                       {17, protocol::kMstPreStandardDigest},
                                       {22, protocol::kMstConfigDigest}}) {
      answer(token, fake::Bytes(CMD_ATTR_VALUE_MAX, 0));
      EXPECT_EQ(ask(magic), "");
    }
    fake::reset();
  }

  void TearDown() override {
    ledger::stop();
    EXPECT_EQ(ledger::outstanding(), 0U);
    EXPECT_EQ(fake::live_replies(), 0U);
  }

  // Asks the lookup handler as the agent does for a GET (exact) or GETNEXT of the entry's one instance.
  std::optional<std::string> ask(uint8_t magic, int exact = 1) {
    variable vp{};
    vp.magic = magic;
    vp.namelen = STP_EXTENSIONS_MIB_ROOT_LENGTH;
    std::copy_n(stp_extensions_mib_variables_oid, STP_EXTENSIONS_MIB_ROOT_LENGTH, vp.name);
    for (const variable7 &entry : stp_extensions_mib_variables) {
      if (entry.magic == magic) {
        std::copy_n(entry.name, entry.namelen, vp.name + vp.namelen);
        vp.namelen = static_cast<u_char>(vp.namelen + entry.namelen);
      }
    }
    std::copy_n(vp.name, vp.namelen, name_);
    name_length_ = vp.namelen;
    if (exact != 0) {
      name_[name_length_++] = 0;
    }
    size_t length = 999;
    write_method_ = reinterpret_cast<WriteMethod *>(this);
    const u_char *value =
        get_vantrelStpExtensionsMIB(&vp, name_, &name_length_, exact, &length, &write_method_);
    if (value == nullptr) {
      return std::nullopt;
    }
    return std::string(reinterpret_cast<const char *>(value), length);
  }

  std::optional<int32_t> ask_number(uint8_t magic) {
    const std::optional<std::string> value = ask(magic);
    if (!value || value->size() != sizeof(int32_t)) {
      return std::nullopt;
    }
    int32_t number;
    std::memcpy(&number, value->data(), sizeof number);
    return number;
  }

  void answer(uint32_t token, const fake::Bytes &value) { fake::platform().attributes[token] = value; }

  oid name_[MAX_OID_LEN];
  size_t name_length_ = 0;
  WriteMethod *write_method_ = nullptr;
};

TEST_F(Scalars, MagicInRangeThatIsNotListedAnswersNull) {
  EXPECT_EQ(ask(20), std::nullopt);
  EXPECT_THAT(fake::taken_trace(), ElementsAre("log(0x00730000, 101) \"magic 20\\n\""));
}

TEST_F(Scalars, MagicOutOfRangeAnswersNull) {
  EXPECT_EQ(ask(8), std::nullopt);
  EXPECT_EQ(ask(38), std::nullopt);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("log(0x00730000, 101) \"magic 8\\n\"", "log(0x00730000, 101) \"magic 38\\n\""));
}

TEST_F(Scalars, WrongInstanceAnswersNullWithoutAQuery) {
  variable vp{};
  vp.magic = 30;
  vp.namelen = 12;
  const oid type[] = {1, 3, 6, 1, 4, 1, 1, 9, 82, 1, 6, 1};
  std::copy(std::begin(type), std::end(type), vp.name);
  oid name[MAX_OID_LEN] = {1, 3, 6, 1, 4, 1, 1, 9, 82, 1, 6, 1, 1};
  size_t name_length = 13;
  size_t length = 0;
  WriteMethod *write_method = nullptr;
  EXPECT_EQ(get_vantrelStpExtensionsMIB(&vp, name, &name_length, 1, &length, &write_method), nullptr);
  EXPECT_THAT(fake::taken_trace(), IsEmpty());
}

TEST_F(Scalars, GetNextWritesTheInstance) {
  answer(protocol::kMode, fake::number(4));
  EXPECT_NE(ask(30, 0), std::nullopt);
  EXPECT_EQ(name_length_, 13U);
  EXPECT_EQ(name_[9], 1U);
  EXPECT_EQ(name_[10], 6U);
  EXPECT_EQ(name_[11], 1U);
  EXPECT_EQ(name_[12], 0U);
}

TEST_F(Scalars, NoObjectOffersAWriteMethod) {
  for (const uint8_t magic : std::initializer_list<uint8_t>{9, 16, 17, 18, 19, 21, 22, 30, 31, 35, 37}) {
    ask(magic);
    EXPECT_EQ(write_method_, nullptr) << int{magic};
  }
}

TEST_F(Scalars, ConstantsNeedNoQuery) {
  EXPECT_EQ(ask_number(16), 65);
  EXPECT_EQ(ask_number(18), 4094);
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("log(0x00730000, 101) \"magic 16\\n\"", "log(0x00730000, 101) \"magic 18\\n\""));
}

// One line an object that is fetched: magic, command, key ("" for none), wanted attribute, name in the parse
// message.
struct FetchedObject {
  uint8_t magic;
  const char *command;
  const char *key;
  uint32_t wanted;
  const char *wanted_text;
  const char *object;
};

constexpr FetchedObject kFetched[] = {
    {9, "112", "", 0x3002B002, "0x3002B002", "stpxMSTRegionName"},
    {17, "112", "0x010201C0", 0x3002B006, "0x3002B006", "stpxSMSTConfigPreStandardDigest"},
    {19, "112", "", 0x1402B003, "0x1402B003", "stpxSMSTRegionRevision"},
    {21, "104", "0x01020227", 0x14029027, "0x14029027", "stpxSMSTMaxHopCount"},
    {22, "112", "0x010201C0", 0x3002B005, "0x3002B005", "stpxSMSTConfigDigest"},
    {30, "104", "0x01020227", 0x0202B001, "0x0202B001", "stpxSpanningTreeType"},
    {31, "104", "0x01020227", 0x1402B00B, "0x1402B00B", "stpxSpanningTreePathCostMode"},
    {35, "104", "0x01020227", 0x1402B00C, "0x1402B00C", "stpxSpanningTreePathCostOperMode"},
    {37, "104", "0x01020227", 0x0202A01F, "0x0202A01F", "stpxLoopGuardGlobalDefaultMode"},
};

TEST_F(Scalars, EachAsksForItsOwnAttribute) {
  for (const FetchedObject &object : kFetched) {
    SCOPED_TRACE(object.object);
    answer(object.wanted, fake::octets("ABCD"));
    EXPECT_NE(ask(object.magic), std::nullopt);
    const std::string key = object.key;
    std::vector<std::string> expected{
        "log(0x00730000, 101) \"magic " + std::to_string(object.magic) + "\\n\"", "malloc(16000)",
        "cmd_req_init(buffer, 16000)", std::string("cmd_req_cmdId_set(request, ") + object.command + ")",
        "cmd_req_action_set(request, 1)"};
    if (!key.empty()) {
      expected.push_back("token_type_2len(" + key + ", value)");
      expected.push_back("cmd_req_attr_add(request, " + key + ", 00000000)");
    }
    for (const char *line :
         {"get_snmp_sessionid(0)", "get_snmp_username(0)",
          "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)", "free(16000)"}) {
      expected.emplace_back(line);
    }
    expected.push_back(std::string("cmd_rsp_attr_get(") + object.wanted_text + ")");
    expected.emplace_back("log(0x00730000, 101) \"value 1145258561\\n\"");  // "ABCD" as a number
    expected.emplace_back("cmd_snmp_free_rx_hndl");
    EXPECT_EQ(fake::taken_trace(), expected);
  }
}

TEST_F(Scalars, EachNamesItselfInItsMessages) {
  for (const FetchedObject &object : kFetched) {
    SCOPED_TRACE(object.object);
    const std::string getter = std::string("get_") + object.object;
    EXPECT_EQ(ask(object.magic), std::nullopt);
    EXPECT_THAT(fake::taken_trace(), Contains(std::string("log(0x00730000, 101) \"parse_reply_") +
                                              object.object + " failed\\n\""));

    fake::platform().send_result = 4;
    EXPECT_EQ(ask(object.magic), std::nullopt);
    EXPECT_THAT(fake::taken_trace(),
                Contains("log(0x00730000, 101) \"" + getter + "(LINE) cmd_req_snmp_send_recv() failed\\n\""));
    fake::platform().send_result = 0;

    ledger::fail_next_malloc();
    EXPECT_EQ(ask(object.magic), std::nullopt);
    EXPECT_THAT(fake::taken_trace(),
                Contains("log(0x00730000, 101) \"" + getter + "(LINE) malloc failed \\n\""));
  }
}

TEST_F(Scalars, NumbersPassThroughUnchanged) {
  for (const FetchedObject &object : kFetched) {
    if (object.magic == 19 || object.magic == 21 || object.magic == 30 || object.magic == 31 ||
        object.magic == 35) {
      answer(object.wanted, fake::number(0xFFFFFFFF));
      EXPECT_EQ(ask_number(object.magic), -1) << object.object;
    }
  }
}

TEST_F(Scalars, LoopGuardDefaultFiveIsServedAsOne) {
  answer(protocol::kLoopGuardDefault, fake::number(5));
  EXPECT_EQ(ask_number(37), 1);
}

TEST_F(Scalars, LoopGuardDefaultZeroIsServedAsTwo) {
  answer(protocol::kLoopGuardDefault, fake::number(0));
  EXPECT_EQ(ask_number(37), 2);
}

TEST_F(Scalars, LoopGuardGetterItselfKeepsTheFetchedValue) {
  answer(protocol::kLoopGuardDefault, fake::number(5));
  ScalarValueRecord record{};
  EXPECT_EQ(get_stpxLoopGuardGlobalDefaultMode(&record), 0);
  EXPECT_EQ(record.loop_guard_default, 5);
}

TEST_F(Scalars, MaxHopCountIsNotServedFromThePreviousValueWhileTheSwitchIsDown) {
  answer(protocol::kHops, fake::number(20));
  EXPECT_EQ(ask_number(21), 20);
  fake::platform().send_result = 4;
  EXPECT_EQ(ask(21), std::nullopt);
  fake::platform().send_result = 0;
  EXPECT_EQ(ask_number(21), 20);
}

TEST_F(Scalars, RegionNameOf32BytesFollowedByOneOf4IsServedWithLength5) {
  answer(protocol::kMstRegionName, fake::octets("abcdefghijklmnopqrstuvwxyz012345"));
  EXPECT_EQ(ask(9), "abcdefghijklmnopqrstuvwxyz012345");
  answer(protocol::kMstRegionName, fake::octets("west"));
  EXPECT_EQ(ask(9), "weste");
}

TEST_F(Scalars, ShorterRegionNameKeepsOneByteOfTheLongerOne) {
  answer(protocol::kMstRegionName, fake::octets("ABCDEF"));
  EXPECT_EQ(ask(9), "ABCDEF");
  answer(protocol::kMstRegionName, fake::octets("XY"));
  EXPECT_EQ(ask(9), "XYC");
}

TEST_F(Scalars, StringGetterWritesTheTerminatorBehindTheByteAfterTheValue) {
  ScalarValueRecord record;
  std::memset(&record, '#', sizeof record);
  answer(protocol::kMstConfigDigest, fake::octets("0123456789ABCDEF"));
  EXPECT_EQ(get_stpxSMSTConfigDigest(&record), 0);
  EXPECT_EQ(std::string(record.config_digest, 19), std::string("0123456789ABCDEF#\0#", 19));
}

TEST_F(Scalars, StringIsCutShortAtAZeroByte) {
  answer(protocol::kMstPreStandardDigest, fake::octets(std::string("AB\0CD", 5)));
  EXPECT_EQ(ask(17), "AB");
}

TEST_F(Scalars, EmptyRegionNameIsServedAsTheOneByteThatWasThere) {
  answer(protocol::kMstRegionName, fake::octets("Q"));
  EXPECT_EQ(ask(9), "Q");
  fake::taken_trace();
  answer(protocol::kMstRegionName, fake::octets(""));
  EXPECT_EQ(ask(9), "Q");
  EXPECT_THAT(fake::taken_trace(), Contains("log(0x00730000, 101) \"value 0\\n\""));
}

TEST_F(Scalars, EmptyStringWithoutValueIsNoFailure) {
  ScalarValueRecord record;
  std::memset(&record, '#', sizeof record);
  fake::platform().attributes_without_value[protocol::kMstRegionName] = 0;
  EXPECT_EQ(get_stpxMSTRegionName(&record), 0);
  EXPECT_EQ(std::string(record.region_name, 3), std::string("#\0#", 3));
}

TEST_F(Scalars, StringWithoutValueCountsAsMissing) {
  ScalarValueRecord record;
  std::memset(&record, '#', sizeof record);
  fake::platform().attributes_without_value[protocol::kMstRegionName] = 3;
  EXPECT_EQ(get_stpxMSTRegionName(&record), -1);
  EXPECT_EQ(std::string(record.region_name, 3), "###");
}

TEST_F(Scalars, StringTraceShowsTheFirstFourBytesAsANumber) {
  ScalarValueRecord record{};
  answer(protocol::kMstRegionName, fake::octets("AB"));
  EXPECT_EQ(get_stpxMSTRegionName(&record), 0);
  EXPECT_THAT(fake::taken_trace(), Contains("log(0x00730000, 101) \"value 16961\\n\""));
}

TEST_F(Scalars, RegionNameIsServedUpTo225Bytes) {
  answer(protocol::kMstRegionName, fake::Bytes(300, 'n'));
  EXPECT_EQ(ask(9), std::string(225, 'n'));
}

TEST_F(Scalars, DigestsAreServedUpTo128Bytes) {
  answer(protocol::kMstConfigDigest, fake::Bytes(200, 'd'));
  EXPECT_EQ(ask(22), std::string(128, 'd'));
  answer(protocol::kMstPreStandardDigest, fake::Bytes(200, 'p'));
  EXPECT_EQ(ask(17), std::string(128, 'p'));
}

TEST_F(Scalars, TheLongestAttributeValueStaysInsideItsField) {
  ScalarValueRecord record{};
  record.max_instances = 65;
  record.max_instance_id = 4094;
  answer(protocol::kMstRegionName, fake::Bytes(CMD_ATTR_VALUE_MAX, 'n'));
  answer(protocol::kMstPreStandardDigest, fake::Bytes(CMD_ATTR_VALUE_MAX, 'p'));
  EXPECT_EQ(get_stpxMSTRegionName(&record), 0);
  EXPECT_EQ(get_stpxSMSTConfigPreStandardDigest(&record), 0);
  EXPECT_EQ(record.max_instances, 65U);
  EXPECT_EQ(record.max_instance_id, 4094U);
  EXPECT_EQ(record.region_name[CMD_ATTR_VALUE_MAX - 1], 'n');
  EXPECT_EQ(record.region_name[CMD_ATTR_VALUE_MAX + 1], '\0');
}

TEST_F(Scalars, GettersFillTheRecordThatTheyAreGiven) {
  for (const FetchedObject &object : kFetched) {
    answer(object.wanted, fake::octets("ABCD"));
  }
  constexpr int32_t kAbcd = 0x44434241;
  ScalarValueRecord record{};
  EXPECT_EQ(get_stpxSMSTRegionRevision(&record), 0);
  EXPECT_EQ(get_stpxSMSTMaxHopCount(&record), 0);
  EXPECT_EQ(get_stpxSpanningTreeType(&record), 0);
  EXPECT_EQ(get_stpxSpanningTreePathCostMode(&record), 0);
  EXPECT_EQ(get_stpxSpanningTreePathCostOperMode(&record), 0);
  EXPECT_EQ(get_stpxLoopGuardGlobalDefaultMode(&record), 0);
  EXPECT_EQ(get_stpxMSTRegionName(&record), 0);
  EXPECT_EQ(get_stpxSMSTConfigDigest(&record), 0);
  EXPECT_EQ(get_stpxSMSTConfigPreStandardDigest(&record), 0);
  EXPECT_EQ(get_stpxSMSTMaxInstances(&record), 0);
  EXPECT_EQ(get_stpxSMSTMaxInstanceID(&record), 0);
  EXPECT_EQ(record.region_revision, uint32_t{kAbcd});
  EXPECT_EQ(record.max_hop_count, uint32_t{kAbcd});
  EXPECT_EQ(record.spanning_tree_type, kAbcd);
  EXPECT_EQ(record.path_cost_mode, kAbcd);
  EXPECT_EQ(record.path_cost_oper_mode, kAbcd);
  EXPECT_EQ(record.loop_guard_default, kAbcd);
  EXPECT_STREQ(record.region_name, "ABCD");
  EXPECT_STREQ(record.config_digest, "ABCD");
  EXPECT_STREQ(record.pre_standard_digest, "ABCD");
  EXPECT_EQ(record.max_instances, 65U);
  EXPECT_EQ(record.max_instance_id, 4094U);
}

TEST_F(Scalars, StubsReturnZero) {
  EXPECT_EQ(get_stpxMSTMaxInstanceNumber(), 0);
  EXPECT_EQ(get_stpxMSTMaxHopCount(), 0);
  EXPECT_EQ(get_stpxMSTRegionRevision(), 0);
  EXPECT_EQ(get_stpxLongStpPortPathCostTable(nullptr, nullptr, nullptr, 1, nullptr, nullptr), nullptr);
  EXPECT_THAT(fake::taken_trace(), IsEmpty());
}

}  // namespace
