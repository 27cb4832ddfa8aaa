// Names of every shape, GETNEXT at every edge, and what one request asks.
#include "dispatch.h"

#include <gmock/gmock.h>

#include "bridge_requests.h"
#include "ledger.h"
#include "platform/agent_ext.h"
#include "protocol_numbers.h"
#include "scripted_bridge.h"

namespace {

using fake::number;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Trace = std::vector<std::string>;

// Where the agent's arcs have more than 32 bits, one may end as a port's number does, and is none.
constexpr bool kHasLongArcs = sizeof(oid) > sizeof(uint32_t);

class Dispatch : public BridgeTest {
 protected:
  // The questions of the trace: command, action, keys.
  static Trace questions_of(const std::function<void()> &requests) {
    Trace questions;
    const auto answer = fake::platform().answer;
    fake::platform().answer = [&](const fake::Request &request) {
      std::string line = std::to_string(request.command) + (request.action == 1 ? " get" : " next");
      for (const auto &[token, value] : request.keys) {
        line += " " + fake::hex(token) + "=" + fake::hex(value.data(), value.size());
      }
      questions.push_back(line);
      return answer(request);
    };
    requests();
    fake::platform().answer = answer;
    return questions;
  }

  static std::string next_of(const std::string &name) { return get_next({name}).front(); }
};

TEST_F(Dispatch, ANameThatIsNoObject) {
  for (const char *name : {"2", "2.18.0", "2.20.0", "2.15", "2.15.1", "2.15.2.3.3", "2.15.1.12.3",
                           "2.15.1.0.3", "2.0", "2.19.1.7.3", "1.4.1.6.3", "1.5.0", "1.4.2.1.3"}) {
    EXPECT_EQ(get({name}).front(), std::string(name) + " = noSuchObject");
  }
}

TEST_F(Dispatch, AnInstanceThatIsNot) {
  Names names{"2.1",          "2.1.1",          "2.1.0.0",
              "2.15.1.3",     "2.15.1.3.0",     "2.15.1.3.4",
              "2.15.1.3.3.0", "2.15.1.3.65536", "2.15.1.3.4294967295",
              "1.1",          "1.4.1.1.8"};
  if (kHasLongArcs) {
    names.emplace_back("2.15.1.3.4294967299");
  }
  for (const std::string &name : names) {
    EXPECT_EQ(get({name}).front(), name + " = noSuchInstance");
  }
}

TEST_F(Dispatch, NothingIsAskedAboutInstancesThatCannotBe) {
  EXPECT_THAT(questions_of([] {
                get({"2.1", "2.1.1", "2.1.0.0", "2.15.1.3", "2.15.1.3.0", "2.15.1.3.65536", "2.15.1.3.3.0",
                     "2.19.1.6.3", "2.30.0"});
              }),
              IsEmpty());
}

// The platform's calls of one scalar, in their order.
TEST_F(Dispatch, WhatOneScalarAsks) {
  get({"2.7.0"});
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("malloc(16000)", "cmd_req_init(buffer, 16000)", "cmd_req_cmdId_set(request, 130)",
                          "cmd_req_action_set(request, 1)", "get_snmp_sessionid(0)", "get_snmp_username(0)",
                          "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)",
                          "free(16000)", "cmd_rsp_attr_get(0x14029045)", "cmd_snmp_free_rx_hndl"));
}

TEST_F(Dispatch, WhatOneColumnAsksInAContext) {
  answers_of({.context = "vlan-20", .platform_context = "vlan-20"}, {"2.15.1.7.3"});
  EXPECT_THAT(
      fake::taken_trace(),
      ElementsAre("malloc(16000)", "cmd_req_init(buffer, 16000)", "cmd_req_cmdId_set(request, 131)",
                  "cmd_req_action_set(request, 1)", "token_type_2len(0x130200B4, value)",
                  "cmd_req_attr_add(request, 0x130200B4, 00000000010000001400000014000000)",
                  "token_type_2len(0x140201C1, value)", "cmd_req_attr_add(request, 0x140201C1, 03000000)",
                  "get_snmp_sessionid(0)", "get_snmp_username(0)",
                  "cmd_snmp_req_send_recv(0xFE000000, 171, request, operator, 4711, 0)",
                  "log(0x00730000, 101) \"ask(LINE) cmd_req_snmp_send_recv() failed\\n\"", "free(16000)"));
}

TEST_F(Dispatch, WhatBindingsShareIsAskedForOnce) {
  EXPECT_THAT(questions_of([] {
                get({"2.15.1.1.3", "2.1.0", "2.15.1.1.7", "2.2.0", "2.19.1.2.3", "2.15.1.2.7", "2.15.1.2.9",
                     "2.15.1.1.9", "2.14.0"});
              }),
              ElementsAre("131 get 0x140201C1=03000000", "130 get", "131 get 0x140201C1=07000000",
                          "131 get 0x140201C1=09000000"));
  EXPECT_THAT(questions_of([] {
                get_next({"2.15.1.1", "2.15.1.2", "2.19.1.3", "2.15.1.1.3"});
              }),
              ElementsAre("131 next 0x140201C1=00000000", "131 next 0x140201C1=03000000"));
}

TEST_F(Dispatch, NothingIsRememberedForTheNextRequest) {
  EXPECT_THAT(questions_of([] {
                get({"2.1.0"});
                get({"2.1.0"});
              }),
              ElementsAre("130 get", "130 get"));
}

TEST_F(Dispatch, MoreRecordsThanAreRememberedAreAnsweredAllTheSame) {
  Names names;
  Answers expected;
  for (uint32_t number_of_port = 1; number_of_port <= 200; ++number_of_port) {
    bridge_.trees[1].ports[number_of_port] = whole_port(number_of_port);
  }
  for (const char *column : {"2.15.1.1.", "2.15.1.2."}) {
    for (uint32_t number_of_port = 1; number_of_port <= 200; ++number_of_port) {
      names.push_back(column + std::to_string(number_of_port));
      expected.push_back(names.back() + " = INTEGER " +
                         (names.back().starts_with("2.15.1.1.") ? std::to_string(number_of_port) : "128"));
    }
  }
  EXPECT_EQ(get(names), expected);
}

TEST_F(Dispatch, BindingsThatAreAnsweredAlreadyAreLeft) {
  EXPECT_THAT(answers_of({.processed = {0, 2}}, {"2.1.0", "2.7.0", "2.10.0"}),
              ElementsAre("2.1.0 = nothing", "2.7.0 = INTEGER 3", "2.10.0 = nothing"));
}

TEST_F(Dispatch, NextOfWhatStandsBeforeTheGroup) {
  for (const char *name :
       {".1.3.6.1.2.1.17", ".1.3", ".1.3.6.1.2.1.16.9.9.9", ".0", "2", "1.99", "2.0", "2.1"}) {
    const Answers answers = answers_of({.mode = MODE_GETNEXT}, {name});
    EXPECT_THAT(answers, ElementsAre("2.1.0 = INTEGER 3")) << name;
  }
  EXPECT_THAT(answers_of({.mode = MODE_GETNEXT, .group = 1}, {".1.3.6.1.2.1.17"}),
              ElementsAre("1.1.0 = OCTETS 02000000000a"));
}

TEST_F(Dispatch, NextOfScalars) {
  EXPECT_EQ(next_of("2.1.0"), "2.2.0 = INTEGER 32769");
  EXPECT_EQ(next_of("2.1.0.0"), "2.2.0 = INTEGER 32769");
  EXPECT_EQ(next_of("2.1.5"), "2.2.0 = INTEGER 32769");
  EXPECT_EQ(next_of("2.2"), "2.2.0 = INTEGER 32769");
  EXPECT_EQ(next_of("2.16"), "2.16.0 = INTEGER 2");
  EXPECT_EQ(next_of("2.16.0"), "2.17.0 = INTEGER 6");
  EXPECT_EQ(next_of("1.3.0"), "1.4.1.1.3 = INTEGER 3");
}

TEST_F(Dispatch, NextIntoATable) {
  for (const char *name : {"2.14.0", "2.15", "2.15.0", "2.15.1", "2.15.1.0", "2.15.1.0.9", "2.15.1.1",
                           "2.15.1.1.0", "2.15.1.1.1", "2.15.1.1.2.9"}) {
    EXPECT_EQ(next_of(name), "2.15.1.1.3 = INTEGER 3") << name;
  }
}

TEST_F(Dispatch, NextWithinAndBetweenColumns) {
  EXPECT_EQ(next_of("2.15.1.1.3"), "2.15.1.1.7 = INTEGER 7");
  EXPECT_EQ(next_of("2.15.1.1.3.0"), "2.15.1.1.7 = INTEGER 7");
  EXPECT_EQ(next_of("2.15.1.1.5"), "2.15.1.1.7 = INTEGER 7");
  EXPECT_EQ(next_of("2.15.1.1.6.4294967295"), "2.15.1.1.7 = INTEGER 7");
  EXPECT_EQ(next_of("2.15.1.1.7"), "2.15.1.2.3 = INTEGER 128");
  EXPECT_EQ(next_of("2.15.1.1.65535"), "2.15.1.2.3 = INTEGER 128");
  EXPECT_EQ(next_of("2.15.1.1.65536"), "2.15.1.2.3 = INTEGER 128");
  EXPECT_EQ(next_of("2.15.1.1.4294967295"), "2.15.1.2.3 = INTEGER 128");
  if (kHasLongArcs) {
    EXPECT_EQ(next_of("2.15.1.1.4294967298"), "2.15.1.2.3 = INTEGER 128");
  }
  EXPECT_EQ(next_of("2.15.1.11.7"), "2.16.0 = INTEGER 2");
  EXPECT_EQ(next_of("2.15.1.12"), "2.16.0 = INTEGER 2");
  EXPECT_EQ(next_of("2.15.2"), "2.16.0 = INTEGER 2");
  EXPECT_EQ(next_of("2.17.0"), "2.19.1.1.3 = INTEGER 2");
  EXPECT_EQ(next_of("2.18"), "2.19.1.1.3 = INTEGER 2");
  EXPECT_EQ(next_of("1.4.1.2.7"), "1.4.1.3.3 = OID .0.0");
}

TEST_F(Dispatch, NothingFollowsTheLast) {
  for (const char *name : {"2.19.1.5.7", "2.19.1.6", "2.19.1.6.3", "2.19.1.7", "2.19.2", "2.20",
                           "2.4294967295", "1.4.1.3.7", "1.4.1.4", "1.4.1.5.7", "1.4.2", "1.5"}) {
    EXPECT_EQ(next_of(name), std::string(name) + " = nothing");
  }
}

TEST_F(Dispatch, TheLastPortNumberEndsAColumn) {
  bridge_.trees[1].ports = {{65535, whole_port(65535)}};
  EXPECT_EQ(next_of("2.15.1.1.65534"), "2.15.1.1.65535 = INTEGER 65535");
  EXPECT_THAT(questions_of([] { EXPECT_EQ(next_of("2.15.1.1.65535"), "2.15.1.2.65535 = INTEGER 128"); }),
              ElementsAre("131 next 0x140201C1=00000000"));
}

TEST_F(Dispatch, NextSkipsWhatIsAbsentInARow) {
  port(3).erase(protocol::kPortPriority);
  EXPECT_EQ(next_of("2.15.1.2"), "2.15.1.2.7 = INTEGER 128");
  EXPECT_EQ(next_of("2.15.1.1.7"), "2.15.1.2.7 = INTEGER 128");
}

TEST_F(Dispatch, NextSkipsAColumnThatIsAbsent) {
  port(3).erase(protocol::kPortPriority);
  port(7).erase(protocol::kPortPriority);
  EXPECT_EQ(next_of("2.15.1.1.7"), "2.15.1.3.3 = INTEGER 5");
  EXPECT_EQ(next_of("2.15.1.2"), "2.15.1.3.3 = INTEGER 5");
}

TEST_F(Dispatch, NextSkipsScalarsThatAreAbsent) {
  tree().erase(protocol::kBridgePriority);
  tree().erase(protocol::kTopologyAge);
  EXPECT_EQ(next_of("2.1.0"), "2.4.0 = Counter32 41");
}

TEST_F(Dispatch, ATreeWithoutPortsHasScalarsAlone) {
  bridge_.trees[1].ports.clear();
  EXPECT_EQ(next_of("2.14.0"), "2.16.0 = INTEGER 2");
  EXPECT_EQ(next_of("2.17.0"), "2.17.0 = nothing");
  EXPECT_EQ(next_of("1.3.0"), "1.3.0 = nothing");
}

TEST_F(Dispatch, NothingWithoutATree) {
  bridge_.trees.clear();
  EXPECT_EQ(next_of("2"), "2 = nothing");
  EXPECT_EQ(next_of("1"), "1 = nothing");
}

TEST_F(Dispatch, RowsThatDoNotAdvanceEndTheColumn) {
  fake::platform().answer = [](const fake::Request &request) {
    return request.command == 130 ? fake::Send{0, true, whole_tree()} : fake::Send{0, true, whole_port(7)};
  };
  EXPECT_EQ(next_of("2.15.1.1"), "2.15.1.1.7 = INTEGER 7");
  fake::taken_trace();
  EXPECT_EQ(next_of("2.15.1.11.7"), "2.16.0 = INTEGER 2");
  EXPECT_THAT(
      fake::taken_trace(),
      ::testing::Contains("log(0x00730000, 100) \"port_behind: asked behind bridge port 7, got 7\\n\""));
  EXPECT_EQ(next_of("2.15.1.11.8"), "2.16.0 = INTEGER 2");
  EXPECT_EQ(next_of("2.15.1.11.6"), "2.15.1.11.7 = INTEGER 200000");
}

TEST_F(Dispatch, RowsOfNumbersThatNoPortHas) {
  for (const uint32_t answered : {0U, 65536U, 0xFFFFFFFFU}) {
    fake::platform().answer = [answered](const fake::Request &request) {
      return fake::Send{0, true, request.command == 130 ? whole_tree() : whole_port(answered)};
    };
    EXPECT_EQ(next_of("2.15.1.11"), "2.16.0 = INTEGER 2") << answered;
  }
}

TEST_F(Dispatch, AnotherPortsRowIsNoAnswer) {
  fake::platform().answer = [](const fake::Request &) { return fake::Send{0, true, whole_port(7)}; };
  EXPECT_THAT(get({"2.15.1.2.3"}), ElementsAre("2.15.1.2.3 = noSuchInstance"));
  EXPECT_THAT(fake::taken_trace(),
              ::testing::Contains("log(0x00730000, 100) \"port: asked for bridge port 3, got 7\\n\""));
  EXPECT_THAT(get({"2.15.1.2.7"}), ElementsAre("2.15.1.2.7 = INTEGER 128"));
}

// A question that fails may take the agent as long as the process has to answer.
TEST_F(Dispatch, AfterAFailureNothingMoreIsAskedInTheRequest) {
  for (const int result : {4, 5, 6, 3, 16, 20}) {
    fake::platform().answer = [result](const fake::Request &) { return fake::Send{result, false}; };
    EXPECT_THAT(questions_of([] {
                  EXPECT_THAT(get({"2.1.0", "2.15.1.1.3", "2.15.1.1.7"}),
                              ElementsAre("2.1.0 = noSuchInstance", "2.15.1.1.3 = noSuchInstance",
                                          "2.15.1.1.7 = noSuchInstance"));
                }),
                ElementsAre("130 get"));
    EXPECT_THAT(questions_of([] { EXPECT_EQ(next_of("2"), "2 = nothing"); }), ElementsAre("130 get"));
  }
}

TEST_F(Dispatch, WithoutMemoryForAQuestionNothingIsThere) {
  ledger::fail_next_malloc();
  EXPECT_THAT(get({"2.1.0", "2.15.1.1.3"}),
              ElementsAre("2.1.0 = noSuchInstance", "2.15.1.1.3 = noSuchInstance"));
  EXPECT_THAT(fake::taken_trace(),
              ElementsAre("malloc(16000)", "log(0x00730000, 101) \"ask(LINE) malloc failed \\n\""));
  ledger::fail_malloc_after(1);
  EXPECT_THAT(get({"2.1.0", "2.15.1.1.3", "2.7.0"}),
              ElementsAre("2.1.0 = INTEGER 3", "2.15.1.1.3 = noSuchInstance", "2.7.0 = INTEGER 3"));
}

TEST_F(Dispatch, ANameMayBeTheAnswerWhereItIsIncluded) {
  const Request request{.mode = MODE_GETNEXT, .is_inclusive = true};
  EXPECT_THAT(answers_of(request, {"2.7.0", "2.7", "2.15.1.1.3", "2.15.1.1.4", "2.18"}),
              ElementsAre("2.7.0 = INTEGER 3", "2.7.0 = INTEGER 3", "2.15.1.1.3 = INTEGER 3",
                          "2.15.1.1.7 = INTEGER 7", "2.19.1.1.3 = INTEGER 2"));
}

class DispatchInContexts : public Dispatch {
 protected:
  static Trace questions_in(const std::string &context, const std::string &name) {
    return questions_of([&] { answers_of({.context = context, .platform_context = context}, {name}); });
  }
};

TEST_F(DispatchInContexts, AContextNamesItsTree) {
  EXPECT_THAT(questions_in("", "2.1.0"), ElementsAre("130 get"));
  EXPECT_THAT(questions_in("20", "2.1.0"),
              ElementsAre("130 get 0x130200B4=00000000010000001400000014000000"));
  EXPECT_THAT(questions_in("vlan-20", "2.1.0"),
              ElementsAre("130 get 0x130200B4=00000000010000001400000014000000"));
  EXPECT_THAT(questions_in("mst-0", "2.1.0"),
              ElementsAre("130 get 0x13020131=00000000010000000000000000000000"));
  EXPECT_THAT(questions_in("mst-4094", "2.15.1.1.3"),
              ElementsAre("131 get 0x13020131=0000000001000000fe0f0000fe0f0000 0x140201C1=03000000"));
}

TEST_F(DispatchInContexts, EachTreeAnswersForItself) {
  bridge_.trees[20] = {whole_tree(), {{9, whole_port(9)}}};
  bridge_.trees[20].attributes[protocol::kRootPort] = number(9);
  const Names names{"2.7.0", "2.15.1.1.3", "2.15.1.1.9"};
  EXPECT_THAT(answers_of({}, names),
              ElementsAre("2.7.0 = INTEGER 3", "2.15.1.1.3 = INTEGER 3", "2.15.1.1.9 = noSuchInstance"));
  for (const char *context : {"20", "vlan-20"}) {
    EXPECT_THAT(answers_of({.context = context, .platform_context = context}, names),
                ElementsAre("2.7.0 = INTEGER 9", "2.15.1.1.3 = noSuchInstance", "2.15.1.1.9 = INTEGER 9"));
  }
  EXPECT_THAT(answers_of({.context = "vlan-21", .platform_context = "vlan-21"}, {"2.1.0"}),
              ElementsAre("2.1.0 = noSuchInstance"));
}

// One entry of the registry has both groups there, where the default context has one for each.
TEST_F(DispatchInContexts, AWalkGoesOnIntoTheNextGroup) {
  bridge_.trees[20] = {whole_tree(), {{9, whole_port(9)}}};
  const Names names{"1.4.1.3.9", "1", "", "2.19.1.5.9", "3"};
  EXPECT_THAT(answers_of({.mode = MODE_GETNEXT, .group = 1}, {"1.4.1.3.7"}),
              ElementsAre("1.4.1.3.7 = nothing"));
  EXPECT_THAT(answers_of({.mode = MODE_GETNEXT, .context = "20", .platform_context = "20"}, names),
              ElementsAre("2.1.0 = INTEGER 3", "1.1.0 = OCTETS 02000000000a", "1.1.0 = OCTETS 02000000000a",
                          "2.19.1.5.9 = nothing", "3 = nothing"));
}

// Such a request is one that the platform has not seen: it knows no context of it, or that of another one.
TEST_F(DispatchInContexts, WithoutTheRequestsOwnContextNoTreeIsAnswered) {
  for (const char *told : {"", "vlan-2", "vlan-200"}) {
    const Request exact{.context = "vlan-20", .platform_context = told};
    const Request next{.mode = MODE_GETNEXT, .context = "vlan-20", .platform_context = told};
    EXPECT_THAT(questions_of([&] {
                  EXPECT_THAT(answers_of(exact, {"2.1.0"}), ElementsAre("2.1.0 = noSuchObject"));
                  EXPECT_THAT(answers_of(next, {"2.1.0"}), ElementsAre("2.1.0 = nothing"));
                }),
                IsEmpty());
  }
  EXPECT_THAT(answers_of({.context = "", .platform_context = "vlan-20"}, {"2.1.0"}),
              ElementsAre("2.1.0 = INTEGER 3"));
}

}  // namespace
