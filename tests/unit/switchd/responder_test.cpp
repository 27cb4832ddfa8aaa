// The control socket's requests and answers, as texts.
#include "control/responder.h"

#include <gtest/gtest.h>

#include "sources/scenario/scenario_source.h"

using namespace stpswitch;
using namespace std::chrono_literals;

namespace {

class Responder : public testing::Test {
 protected:
  std::string answer(const std::string &request) { return responder_.answer(request); }

  const ScenarioSource source_{SCENARIOS "/mst-small.toml"};
  Switch switch_{source_.original().value()};
  Faults faults_;
  ControlResponder responder_{&source_, &switch_, &faults_};
};

TEST_F(Responder, AnswersAPing) { EXPECT_EQ(answer(R"({"op":"ping"})"), R"({"ok":true})"); }

TEST_F(Responder, ShowsTypedValuesInOrder) {
  EXPECT_TRUE(
      answer(R"({"op":"show","key":"switch"})")
          .starts_with(
              R"({"ok":true,"values":[["switch.name","campus-access-1"],["switch.mode","mst"],["switch.)"));
  EXPECT_EQ(answer(R"({"op":"show","key":"switch.loop_guard_default"})"),
            R"({"ok":true,"values":[["switch.loop_guard_default",true]]})");
  EXPECT_EQ(answer(R"({"op":"show","key":"mst.revision"})"), R"({"ok":true,"values":[["mst.revision",3]]})");
  EXPECT_EQ(answer(R"({"op":"show","key":"access.refused_users"})"),
            R"({"ok":true,"values":[["access.refused_users",["guest"]]]})");
}

TEST_F(Responder, ShowsEverythingWithoutAKey) {
  EXPECT_EQ(answer(R"({"op":"show"})"), answer(R"({"op":"show","key":""})"));
  EXPECT_NE(answer(R"({"op":"show"})").find(R"(["port_channel.2.vlans","1,10-30,100-199"])"),
            std::string::npos);
}

TEST_F(Responder, ShowsAnOverview) {
  EXPECT_TRUE(answer(R"({"op":"overview"})")
                  .starts_with(R"({"ok":true,"overview":{"mode":"mst","name":"campus-access-1","ports":[{)"
                               R"("flags":["peer"],"guards":["loop"],"inconsistent":{"loop":"1"},)"));
  EXPECT_EQ(answer(R"({"op":"overview","key":"port.1"})"),
            R"({"error":"key: unknown member of the request","ok":false})");
}

TEST_F(Responder, RefusesToShowWhatIsNotThere) {
  EXPECT_EQ(answer(R"({"op":"show","key":"port.99"})"),
            R"({"error":"port.99: the switch has no such key","ok":false})");
}

TEST_F(Responder, Sets) {
  EXPECT_EQ(answer(R"({"op":"set","key":"port.3.link","value":"down"})"), R"({"ok":true})");
  EXPECT_EQ(switch_.state().ports.at(3).link_up, false);
}

TEST_F(Responder, SetsNothingWhenACheckFails) {
  EXPECT_EQ(answer(R"({"op":"set","key":"mst.instance.1.vlans","value":"10-25"})"),
            R"({"error":"mst.instance.1.vlans: VLAN 20 belongs to instance 2 already","ok":false})");
  EXPECT_EQ(print_vlans(switch_.state().mst_instances.at(1).vlans), "10-19,30");
}

TEST_F(Responder, ResetsEveryKeyToTheScenario) {
  const std::string before = answer(R"({"op":"show"})");
  for (const char *const change : {R"({"op":"set","key":"switch.mode","value":"rapid-pvst"})",
                                   R"({"op":"set","key":"mst.region","value":"elsewhere"})",
                                   R"({"op":"set","key":"port.3.link","value":"down"})",
                                   R"({"op":"set","key":"port_channel.2.vlans","value":"7"})",
                                   R"({"op":"set","key":"access.refused_users","value":""})"}) {
    EXPECT_EQ(answer(change), R"({"ok":true})") << change;
  }
  EXPECT_NE(answer(R"({"op":"show"})"), before);
  for (int time = 1; time <= 2; ++time) {
    EXPECT_EQ(answer(R"({"op":"reset"})"), R"({"ok":true})");
    EXPECT_EQ(answer(R"({"op":"show"})"), before);
  }
}

TEST_F(Responder, TellsOfAResetAsOfAnyChange) {
  constexpr uint32_t kPort2 = 0x1A000002;
  constexpr uint32_t kThere = 1;
  constexpr uint32_t kGone = 0;
  answer(R"({"op":"set","key":"port.2.root_inconsistent","value":"1"})");
  answer(R"({"op":"set","key":"port.2.loop_inconsistent","value":"0"})");
  int changes = 0;
  std::vector<InconsistencyEvent> events;
  switch_.on_change([&changes] { ++changes; });
  switch_.on_inconsistencies([&events](const auto &told) { events = told; });
  answer(R"({"op":"reset"})");
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(events, (std::vector<InconsistencyEvent>{
                        {InconsistencyEventKind::kLoop, 0, kPort2, kGone, SpanningTreeMode::kMst},
                        {InconsistencyEventKind::kRoot, 0, kPort2, kThere, SpanningTreeMode::kMst}}));
}

TEST_F(Responder, EndsFaultsWithAReset) {
  answer(R"({"op":"fault","fault":"garbage"})");
  EXPECT_EQ(faults_.next().turn, 0U);
  EXPECT_EQ(faults_.next().turn, 1U);
  answer(R"({"op":"reset"})");
  EXPECT_EQ(faults_.next().kind, FaultKind::kNone);
  answer(R"({"op":"fault","fault":"garbage","count":1})");
  EXPECT_EQ(faults_.next().turn, 0U);
}

TEST_F(Responder, OrdersFaults) {
  EXPECT_EQ(answer(R"({"op":"fault","fault":"delay","delay_ms":250,"count":1})"), R"({"ok":true})");
  const Fault fault = faults_.next();
  EXPECT_EQ(fault.kind, FaultKind::kDelay);
  EXPECT_EQ(fault.delay, 250ms);
  EXPECT_EQ(faults_.next().kind, FaultKind::kNone);
  EXPECT_EQ(answer(R"({"op":"fault","fault":"drop"})"), R"({"ok":true})");
  EXPECT_EQ(faults_.next().kind, FaultKind::kDrop);
  EXPECT_EQ(answer(R"({"op":"fault","fault":"garbage"})"), R"({"ok":true})");
  EXPECT_EQ(faults_.next().kind, FaultKind::kGarbage);
  EXPECT_EQ(answer(R"({"op":"fault","fault":"disconnect"})"), R"({"ok":true})");
  EXPECT_EQ(faults_.next().kind, FaultKind::kDisconnect);
  EXPECT_EQ(answer(R"({"op":"fault","fault":"none"})"), R"({"ok":true})");
  EXPECT_EQ(faults_.next().kind, FaultKind::kNone);
}

TEST_F(Responder, RefusesWrongFaultsAndKeepsTheOldOne) {
  answer(R"({"op":"fault","fault":"drop"})");
  EXPECT_EQ(answer(R"({"op":"fault","fault":"fire"})"), R"({"error":"fault: 'fire' is unknown","ok":false})");
  EXPECT_EQ(answer(R"({"op":"fault","fault":"delay"})"),
            R"({"error":"delay_ms: expected an integer","ok":false})");
  EXPECT_EQ(answer(R"({"op":"fault","fault":"delay","delay_ms":0})"),
            R"({"error":"delay_ms: 0 is not in 1..3600000","ok":false})");
  EXPECT_EQ(answer(R"({"op":"fault","fault":"delay","delay_ms":18446744073709551615})"),
            R"({"error":"delay_ms: 18446744073709551615 is not in 1..3600000","ok":false})");
  EXPECT_EQ(answer(R"({"op":"fault","fault":"delay","delay_ms":1.5})"),
            R"({"error":"delay_ms: expected an integer","ok":false})");
  EXPECT_EQ(answer(R"({"op":"fault","fault":"none","delay_ms":5})"),
            R"({"error":"delay_ms: only a delay has one","ok":false})");
  EXPECT_EQ(answer(R"({"op":"fault","fault":"garbage","count":-1})"),
            R"({"error":"count: -1 is not in 1..1000000","ok":false})");
  EXPECT_EQ(answer(R"({"op":"fault","fault":"garbage","count":1000001})"),
            R"({"error":"count: 1000001 is not in 1..1000000","ok":false})");
  EXPECT_EQ(faults_.next().kind, FaultKind::kDrop);
}

TEST_F(Responder, RefusesWhatIsNoRequest) {
  for (const char *const text :
       {"", "ping", "{", "[]", "3", "null", "\"ping\"", "{\"op\":\"ping\"} x", "\xFF", "{\"op\":\"\xFF\"}"}) {
    EXPECT_EQ(answer(text), R"({"error":"the request is not a JSON object","ok":false})") << text;
  }
  EXPECT_EQ(answer(std::string(60000, '[')), R"({"error":"the request is not a JSON object","ok":false})");
  EXPECT_EQ(answer("{}"), R"({"error":"op: expected a string","ok":false})");
  EXPECT_EQ(answer(R"({"op":3})"), R"({"error":"op: expected a string","ok":false})");
  EXPECT_EQ(answer(R"({"op":"stop"})"), R"({"error":"op: 'stop' is unknown","ok":false})");
  EXPECT_EQ(answer(R"({"op":"ping","key":"x"})"),
            R"({"error":"key: unknown member of the request","ok":false})");
  EXPECT_EQ(answer(R"({"op":"reset","key":"port.3"})"),
            R"({"error":"key: unknown member of the request","ok":false})");
  EXPECT_EQ(answer(R"({"op":"show","key":3})"), R"({"error":"key: expected a string","ok":false})");
  EXPECT_EQ(answer(R"({"op":"set","key":"port.3.link"})"),
            R"({"error":"value: expected a string","ok":false})");
  EXPECT_EQ(answer(R"({"op":"set","key":"mst.revision","value":3})"),
            R"({"error":"value: expected a string","ok":false})");
}

TEST_F(Responder, TellsWhichFaultThereIs) {
  constexpr char kAsk[] = R"({"op":"fault"})";
  EXPECT_EQ(answer(kAsk), R"({"fault":"none","ok":true})");
  answer(R"({"op":"fault","fault":"delay","delay_ms":300,"count":2})");
  EXPECT_EQ(answer(kAsk), R"({"count":2,"delay_ms":300,"fault":"delay","ok":true})");
  faults_.next();
  EXPECT_EQ(answer(kAsk), R"({"count":1,"delay_ms":300,"fault":"delay","ok":true})");
  faults_.next();
  EXPECT_EQ(answer(kAsk), R"({"fault":"none","ok":true})");
  for (const std::string name : {"drop", "garbage", "disconnect"}) {
    answer(R"({"op":"fault","fault":")" + name + R"("})");
    EXPECT_EQ(answer(kAsk), R"({"fault":")" + name + R"(","ok":true})");
  }
  answer(R"({"op":"reset"})");
  EXPECT_EQ(answer(kAsk), R"({"fault":"none","ok":true})");
  EXPECT_EQ(answer(R"({"op":"fault","count":2})"), R"({"error":"fault: expected a string","ok":false})");
}

}  // namespace
