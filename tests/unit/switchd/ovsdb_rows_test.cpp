// The cached rows of Open vSwitch's database.
#include "sources/openvswitch/ovsdb_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "model/refusal.h"
#include "support/ovsdb_recorded.h"
#include "support/ovsdb_rows.h"

using namespace stpswitch;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char *kBr0 = "b5784ce9-947d-488a-b46a-7e3d10a23b40";
constexpr const char *kBa = "c600810f-b098-4441-bcb4-80e4315f8354";
constexpr const char *kBa2 = "c40b65e1-8840-4cd8-bcbf-4f4355c2df1c";
constexpr const char *kBond0 = "d78d049b-13fc-413d-9397-0968c6930244";
constexpr const char *kInterfaceOfBa = "791756af-e8fb-4182-8e9b-20d89f2936bd";

class Rows : public testing::Test {
 protected:
  Rows() { reset_rows(&rows_, kMonitorReply); }

  OvsdbRows rows_;
};

TEST_F(Rows, AreThoseOfTheFirstReply) {
  ASSERT_EQ(rows_.bridges().size(), 1U);
  const BridgeRow &bridge = rows_.bridges().at(kBr0);
  EXPECT_EQ(bridge.name, "br0");
  EXPECT_THAT(bridge.ports, ElementsAre("100fbd4a-7a99-4f28-b1d5-a7fbc7dc4c6a", kBa2, kBa, kBond0));
  EXPECT_EQ(bridge.rstp_enable, true);
  EXPECT_EQ(bridge.stp_enable, false);
  EXPECT_THAT(bridge.other_config,
              ElementsAre(Pair("rstp-forward-delay", "12"), Pair("rstp-max-age", "18"),
                          Pair("rstp-priority", "8192"), Pair("rstp-transmit-hold-count", "4")));
  EXPECT_EQ(bridge.rstp_status.at("rstp_root_id"), "1.000.fa423b03944b");

  ASSERT_EQ(rows_.ports().size(), 4U);
  const PortRow &port = rows_.ports().at(kBa2);
  EXPECT_EQ(port.name, "ba2");
  EXPECT_THAT(port.interfaces, ElementsAre("d76a1978-5232-46a6-b9a1-f3a0d63c1f6b"));
  EXPECT_EQ(port.tag, 30);
  EXPECT_THAT(port.trunks, ElementsAre(1, 5, 9));
  EXPECT_EQ(port.vlan_mode, "native-untagged");
  EXPECT_TRUE(port.has_rstp_statistics);
  EXPECT_EQ(port.rstp_status.at("rstp_port_role"), "Root");
  EXPECT_EQ(port.other_config.at("rstp-path-cost"), "777");
  const PortRow &bond = rows_.ports().at(kBond0);
  EXPECT_THAT(bond.interfaces,
              ElementsAre("04620594-4814-44de-89d2-88047ed100fd", "8ab9cc3f-7635-451a-85bd-31f0267bb7b5"));
  EXPECT_EQ(bond.tag, std::nullopt);
  EXPECT_THAT(bond.trunks, IsEmpty());
  EXPECT_EQ(bond.vlan_mode, "");
  EXPECT_FALSE(bond.has_rstp_statistics);
  EXPECT_THAT(bond.rstp_status, IsEmpty());

  ASSERT_EQ(rows_.interfaces().size(), 5U);
  const InterfaceRow &interface = rows_.interfaces().at(kInterfaceOfBa);
  EXPECT_EQ(interface.name, "ba");
  EXPECT_EQ(interface.ofport, 1);
  EXPECT_EQ(interface.ifindex, 4);
  EXPECT_EQ(interface.link_state, "up");
  EXPECT_EQ(interface.duplex, "full");
  EXPECT_THAT(rows_.other_config(), IsEmpty());
}

TEST_F(Rows, FollowUpdates) {
  update_rows(&rows_, kLinkDown);
  EXPECT_EQ(rows_.interfaces().at(kInterfaceOfBa).link_state, "down");
  update_rows(&rows_, kPortDisabled);
  EXPECT_EQ(rows_.ports().at(kBa).rstp_status.at("rstp_port_role"), "Disabled");
  EXPECT_EQ(rows_.ports().at(kBa).tag, 7);
  update_rows(&rows_, kLinkUp);
  EXPECT_EQ(rows_.interfaces().at(kInterfaceOfBa).link_state, "up");
  update_rows(&rows_, kBondDeleted);
  EXPECT_FALSE(rows_.ports().contains(kBond0));
  EXPECT_EQ(rows_.interfaces().size(), 3U);
  EXPECT_EQ(rows_.bridges().at(kBr0).ports.size(), 3U);
  update_rows(&rows_, kRstpOff);
  EXPECT_EQ(rows_.bridges().at(kBr0).rstp_enable, false);
  update_rows(&rows_, kStatusCleared);
  EXPECT_THAT(rows_.bridges().at(kBr0).rstp_status, IsEmpty());
  EXPECT_THAT(rows_.ports().at(kBa).rstp_status, IsEmpty());
  EXPECT_TRUE(rows_.ports().at(kBa).has_rstp_statistics);
}

TEST_F(Rows, AreGoneAfterAnotherFirstReply) {
  reset_rows(&rows_, R"({"Bridge":{"b":{"new":{"name":"br1"}}}})");
  ASSERT_EQ(rows_.bridges().size(), 1U);
  EXPECT_EQ(rows_.bridges().at("b").name, "br1");
  EXPECT_THAT(rows_.ports(), IsEmpty());
  EXPECT_THAT(rows_.interfaces(), IsEmpty());
}

TEST(RowsOfOneValue, MayStandWithoutASet) {
  const OvsdbRows rows = rows_of(R"({
      "Bridge":{"b":{"new":{"ports":["uuid","p"],"rstp_enable":["set",[true]]}}},
      "Port":{"p":{"new":{"interfaces":["set",[["uuid","i"]]],"trunks":7,"tag":["set",[8]]}}},
      "Open_vSwitch":{"o":{"new":{"other_config":["map",[["stats-update-interval","9000"]]]}}}})");
  EXPECT_THAT(rows.bridges().at("b").ports, ElementsAre("p"));
  EXPECT_EQ(rows.bridges().at("b").rstp_enable, true);
  EXPECT_THAT(rows.ports().at("p").interfaces, ElementsAre("i"));
  EXPECT_THAT(rows.ports().at("p").trunks, ElementsAre(7));
  EXPECT_EQ(rows.ports().at("p").tag, 8);
  EXPECT_THAT(rows.other_config(), ElementsAre(Pair("stats-update-interval", "9000")));
}

TEST(ColumnsOfOtherTypes, AreUnknown) {
  const OvsdbRows rows = rows_of(R"({
      "Bridge":{"b":{"new":{"name":7,"ports":["uuid",7],"rstp_enable":"true","stp_enable":["set",[true,true]],
                            "rstp_status":["map",[["a"],["b",1],[1,"c"],["d","e"],"f",null]],
                            "other_config":{"a":"b"}}}},
      "Port":{"p":{"new":{"name":["set",["a","b"]],"interfaces":["set",["i",["uuid"],["uuid","i",1],null]],
                          "tag":"7","trunks":["set",["1",1.5,null,2]],"vlan_mode":false,
                          "rstp_status":["map",7],"rstp_statistics":["map",{"a":1}],
                          "other_config":["set",[]]}}},
      "Interface":{"i":{"new":{"ofport":1.0,"ifindex":18446744073709551615,"link_state":1,
                               "duplex":["map",[]]}}}})");
  const BridgeRow &bridge = rows.bridges().at("b");
  EXPECT_EQ(bridge.name, "");
  EXPECT_THAT(bridge.ports, IsEmpty());
  EXPECT_EQ(bridge.rstp_enable, std::nullopt);
  EXPECT_EQ(bridge.stp_enable, std::nullopt);
  EXPECT_THAT(bridge.rstp_status, ElementsAre(Pair("d", "e")));
  EXPECT_THAT(bridge.other_config, IsEmpty());
  const PortRow &port = rows.ports().at("p");
  EXPECT_EQ(port.name, "");
  EXPECT_THAT(port.interfaces, IsEmpty());
  EXPECT_EQ(port.tag, std::nullopt);
  EXPECT_THAT(port.trunks, ElementsAre(2));
  EXPECT_EQ(port.vlan_mode, "");
  EXPECT_THAT(port.rstp_status, IsEmpty());
  EXPECT_FALSE(port.has_rstp_statistics);
  EXPECT_THAT(port.other_config, IsEmpty());
  const InterfaceRow &interface = rows.interfaces().at("i");
  EXPECT_EQ(interface.ofport, std::nullopt);
  EXPECT_EQ(interface.ifindex, std::nullopt);
  EXPECT_EQ(interface.link_state, "");
  EXPECT_EQ(interface.duplex, "");
}

TEST(ColumnsThatAreMissing, AreUnknown) {
  const OvsdbRows rows =
      rows_of(R"({"Bridge":{"b":{"new":{}}},"Port":{"p":{"new":{}}},"Other":{"x":{"new":{}}}})");
  EXPECT_EQ(rows.bridges().at("b").rstp_enable, std::nullopt);
  EXPECT_THAT(rows.bridges().at("b").rstp_status, IsEmpty());
  EXPECT_EQ(rows.ports().at("p").tag, std::nullopt);
}

TEST_F(Rows, RefuseUpdatesOfAnotherForm) {
  for (const std::string text :
       {"[]", "7", "null", R"({"Bridge":[]})", R"({"Bridge":null})", R"({"Bridge":{"b":7}})",
        R"({"Bridge":{"b":[]}})", R"({"Port":{"p":{"new":[]}}})", R"({"Interface":{"i":{"new":null}}})"}) {
    EXPECT_THROW(update_rows(&rows_, text), Refusal) << text;
    EXPECT_THROW(reset_rows(&rows_, text), Refusal) << text;
    EXPECT_THAT(rows_.bridges(), IsEmpty()) << text;
    EXPECT_THAT(rows_.ports(), IsEmpty()) << text;
  }
}

TEST(SignsOfLife, AreWhatOvsVswitchdWritesOfRstp) {
  EXPECT_FALSE(text_tells_rstp(kLinkDown));
  EXPECT_TRUE(text_tells_rstp(kPortDisabled));
  EXPECT_TRUE(text_tells_rstp(kStatistics));
  EXPECT_FALSE(text_tells_rstp(kBondDeleted));
  EXPECT_FALSE(text_tells_rstp(kRstpOff));
  EXPECT_TRUE(text_tells_rstp(kStatusCleared));
  EXPECT_TRUE(text_tells_rstp(kStatusBack));
  // A port is added with its status, or without one.
  EXPECT_TRUE(text_tells_rstp(R"({"Port":{"p":{"new":{"rstp_status":["map",[["a","b"]]]}}}})"));
  EXPECT_FALSE(text_tells_rstp(R"({"Port":{"p":{"new":{"rstp_status":["map",[]]}}}})"));
  // A port is deleted, with its status.
  EXPECT_FALSE(text_tells_rstp(R"({"Port":{"p":{"old":{"rstp_status":["map",[["a","b"]]]}}}})"));
  EXPECT_FALSE(text_tells_rstp(R"({"Port":{"p":{"old":[],"new":{}}}})"));
}

TEST(WantedColumns, AreOfFourTables) {
  std::string wanted;
  for (const WantedTable &table : OvsdbRows::wanted()) {
    wanted += std::string(table.name) + ":";
    for (const std::string_view column : table.columns) {
      wanted += " " + std::string(column);
    }
    wanted += "\n";
  }
  EXPECT_EQ(wanted,
            "Open_vSwitch: other_config\n"
            "Bridge: name ports rstp_enable stp_enable rstp_status other_config\n"
            "Port: name interfaces tag trunks vlan_mode rstp_status rstp_statistics other_config\n"
            "Interface: name ofport ifindex link_state duplex\n");
}

}  // namespace
