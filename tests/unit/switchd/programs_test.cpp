// stp-switchd, stp-switchctl and the scenario generator from their command lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <memory>
#include <thread>

#include "keys/key_list.h"
#include "model/derived.h"
#include "sources/scenario/loader.h"
#include "support/program.h"
#include "support/temporary_folder.h"

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kScenario[] = SCENARIOS "/mst-small.toml";
constexpr char kGenerator[] = SCENARIOS "/generate";

class Programs : public testing::Test {
 protected:
  std::unique_ptr<Program> start_switch(const std::string &scenario = kScenario) {
    auto program = std::make_unique<Program>(
        STP_SWITCHD,
        std::vector<std::string>{"--scenario", scenario, "--socket", socket_, "--control", control_});
    while (!program->has_ended() && ctl({"ping"}).status != 0) {
      std::this_thread::yield();
    }
    return program;
  }

  ProgramResult ctl(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--control", control_});
    return run_program(STP_SWITCHCTL, std::move(arguments));
  }

  static mode_t permissions(const std::string &path) {
    struct stat file {};
    EXPECT_EQ(::lstat(path.c_str(), &file), 0) << path;
    return file.st_mode & 07777U;
  }

  TemporaryFolder folder_;
  std::string socket_ = folder_.path("switch.sock");
  std::string control_ = folder_.path("control.sock");
};

TEST_F(Programs, SwitchStopsCleanlyAtSignals) {
  for (const int number : {SIGTERM, SIGINT}) {
    const auto program = start_switch();
    program->signal(number);
    const ProgramResult result = program->wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "stp-switchd: ready: commands on " + socket_ + ", control on " + control_ +
                                 "\nstp-switchd: stopped\n");
    EXPECT_FALSE(std::filesystem::exists(socket_));
    EXPECT_FALSE(std::filesystem::exists(control_));
  }
}

TEST_F(Programs, SwitchKeepsOthersFromItsSockets) {
  const auto program = start_switch();
  EXPECT_EQ(permissions(socket_), 0660U);
  EXPECT_EQ(permissions(control_), 0600U);
}

TEST_F(Programs, SwitchDoesNotStartTwice) {
  const auto program = start_switch();
  const ProgramResult second = run_program(
      STP_SWITCHD, {"--scenario", kScenario, "--socket", socket_, "--control", folder_.path("other.sock")});
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.errors, "stp-switchd: " + socket_ + " is in use\n");
  const ProgramResult third = run_program(
      STP_SWITCHD, {"--scenario", kScenario, "--socket", folder_.path("other.sock"), "--control", control_});
  EXPECT_EQ(third.status, 1);
  EXPECT_EQ(third.errors, "stp-switchd: " + control_ + " is in use\n");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("other.sock")));
  EXPECT_EQ(ctl({"ping"}).status, 0);
}

TEST_F(Programs, SwitchStartsAgainAfterItWasKilled) {
  const auto first = start_switch();
  first->signal(SIGKILL);
  first->wait();
  ASSERT_TRUE(std::filesystem::exists(socket_));
  const auto second = start_switch();
  EXPECT_EQ(ctl({"ping"}).status, 0);
}

TEST_F(Programs, SwitchChecksScenarios) {
  const ProgramResult right = run_program(STP_SWITCHD, {"--scenario", kScenario, "--check"});
  EXPECT_EQ(right.status, 0);
  EXPECT_EQ(right.errors, "");
  const std::string wrong = folder_.write("wrong.toml", "[switch]\nmode = 'stp'\n");
  const ProgramResult checked = run_program(STP_SWITCHD, {"--scenario", wrong, "--check"});
  EXPECT_EQ(checked.status, 78);
  EXPECT_EQ(checked.errors, "stp-switchd: " + wrong + ":2: switch.mode: 'stp' is not mst or rapid-pvst\n");
  const ProgramResult started =
      run_program(STP_SWITCHD, {"--scenario", wrong, "--socket", socket_, "--control", control_});
  EXPECT_EQ(started.status, 78);
  EXPECT_EQ(started.errors, checked.errors);
  const std::string none = folder_.path("none.toml");
  const ProgramResult unread = run_program(STP_SWITCHD, {"--scenario", none, "--check"});
  EXPECT_EQ(unread.status, 78);
  EXPECT_EQ(unread.errors, "stp-switchd: " + none + ": No such file or directory\n");
  EXPECT_FALSE(std::filesystem::exists(socket_));
}

TEST_F(Programs, SwitchListsTheKeysOfScenarios) {
  const ProgramResult result = run_program(STP_SWITCHD, {"--keys"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, stpswitch::list_keys());
}

TEST_F(Programs, SwitchTellsThatItsOutputIsLost) {
  for (const std::string option : {"--keys", "--help"}) {
    const ProgramResult result = run_program("/bin/sh", {"-c", STP_SWITCHD " " + option + " >/dev/full"});
    EXPECT_EQ(result.status, 1) << option;
    EXPECT_EQ(result.errors, "stp-switchd: cannot write to standard output\n") << option;
  }
}

TEST_F(Programs, ToolTellsThatItsOutputIsLost) {
  const ProgramResult result = run_program("/bin/sh", {"-c", STP_SWITCHCTL " --help >/dev/full"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "stp-switchctl: cannot write to standard output\n");
}

TEST_F(Programs, SwitchNamesAGroupThatDoesNotExist) {
  const ProgramResult result =
      run_program(STP_SWITCHD, {"--scenario", kScenario, "--socket", socket_, "--control", control_,
                                "--socket-group", "no-such-group"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "stp-switchd: --socket-group: there is no group 'no-such-group'\n");
}

TEST_F(Programs, SwitchNamesAFolderThatIsMissing) {
  const ProgramResult result = run_program(
      STP_SWITCHD, {"--scenario", kScenario, "--socket", folder_.path("none") + "/s", "--control", control_});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors,
              HasSubstr(folder_.path("none") + " cannot be opened: No such file or directory\n"));
}

TEST_F(Programs, ExplainThemselves) {
  const ProgramResult daemon = run_program(STP_SWITCHD, {"--help"});
  EXPECT_EQ(daemon.status, 0);
  EXPECT_THAT(daemon.output,
              AllOf(HasSubstr("--socket-group"), HasSubstr("EXIT STATUS"), HasSubstr("EXAMPLES")));
  const ProgramResult tool = run_program(STP_SWITCHCTL, {"--help"});
  EXPECT_EQ(tool.status, 0);
  EXPECT_THAT(tool.output, AllOf(HasSubstr("fault"), HasSubstr("EXIT STATUS"), HasSubstr("EXAMPLES")));
}

TEST_F(Programs, TellTheirVersion) {
  for (const auto &[program, name] :
       {std::pair(STP_SWITCHD, "stp-switchd"), std::pair(STP_SWITCHCTL, "stp-switchctl"),
        std::pair(STP_OVERVIEW, "stp-overview")}) {
    const ProgramResult result = run_program(program, {"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, std::string(name) + " " PROJECT_VERSION "\n");
    EXPECT_EQ(result.errors, "");
  }
}

TEST_F(Programs, NameWhatIsWrongWithACommandLine) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong_for_the_switch = {
      {{}, "expected one of --scenario, --linux-bridge and --openvswitch"},
      {{"--check"}, "expected one of --scenario, --linux-bridge and --openvswitch"},
      {{"--scenario", "x", "--linux-bridge", "br0"},
       "expected one of --scenario, --linux-bridge and --openvswitch"},
      {{"--linux-bridge", "br0", "--openvswitch", "br0"},
       "expected one of --scenario, --linux-bridge and --openvswitch"},
      {{"--linux-bridge", "br0", "--check"}, "--check is for a scenario"},
      {{"--linux-bridge", "br0", "--ovsdb", "/x"}, "--ovsdb is for --openvswitch"},
      {{"--linux-bridge", "a-name-of-16-oct"},
       "--linux-bridge: 'a-name-of-16-oct' cannot be a bridge's name, which has 1 to 15 octets"},
      {{"--openvswitch", "br0=4095"}, "--openvswitch: 'br0=4095': '4095' is not a VLAN from 1 to 4094"},
      {{"--scenario"}, "--scenario: 1 required FILE missing"},
      {{"--scenario", "x", "--chek"}, "unknown option '--chek'; did you mean '--check'?"},
      {{"--scenario", "x", "--verbose"}, "unknown option '--verbose'"},
      {{"--scenario", "x", "y"}, "unexpected argument 'y'"},
      {{"--scenari", "x"}, "unknown option '--scenari'; did you mean '--scenario'?"},
      {{"x"}, "unexpected argument 'x'"}};
  for (const auto &[arguments, error] : wrong_for_the_switch) {
    const ProgramResult result = run_program(STP_SWITCHD, arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "stp-switchd: " + error + " (see --help)\n");
  }
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong_for_the_tool = {
      {{}, "expected show, set, reset, ping or fault"},
      {{"restart"}, "'restart' is not show, set, reset, ping or fault"},
      {{"shwo"}, "'shwo' is not show, set, reset, ping or fault; did you mean 'show'?"},
      {{"fault", "dorp"}, "'dorp' is not delay, drop, garbage, disconnect or none; did you mean 'drop'?"},
      {{"fault", "delay"}, "MS is required"},
      {{"fault", "delay", "0"}, "MS: Value 0 not in range 1 to 3600000"},
      {{"fault", "delay", "soon"}, "MS: Value soon not in range 1 to 3600000"},
      {{"fault", "drop", "--count", "0"}, "--count: Value 0 not in range 1 to 1000000"},
      {{"fault", "drop", "--cuont", "2"}, "unknown option '--cuont'; did you mean '--count'?"},
      {{"set", "switch.mode"}, "VALUE is required"},
      {{"set", "switch.mode", "mst", "rapid-pvst"}, "unexpected argument 'rapid-pvst'"},
      {{"show", "--falt"}, "unknown option '--falt'; did you mean '--flat'?"},
      {{"reset", "port.3"}, "unexpected argument 'port.3'"},
      {{"ping", "reset"}, "unexpected argument 'reset'"},
      {{"fault", "none", "reset"}, "unexpected argument 'reset'"},
      {{"fault", "drop", "garbage"}, "unexpected argument 'garbage'"}};
  for (const auto &[arguments, error] : wrong_for_the_tool) {
    const ProgramResult result = ctl(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "stp-switchctl: " + error + " (see --help)\n");
  }
}

TEST_F(Programs, CtlFindsTheSwitchByAVariable) {
  const auto program = start_switch();
  const ProgramResult result =
      run_program("/bin/sh", {"-c", "STPSWITCHD_CONTROL=" + control_ + " " STP_SWITCHCTL " show mst.region"});
  EXPECT_EQ(result.output, "mst.region = campus\n");
}

TEST_F(Programs, CtlTellsThatNoSwitchAnswers) {
  const ProgramResult result = ctl({"ping"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors,
            "stp-switchctl: " + control_ + ": No such file or directory (does stp-switchd run?)\n");
}

TEST_F(Programs, CtlDoesNotWaitForeverForAHungSwitch) {
  const auto program = start_switch();
  program->suspend();
  const ProgramResult result = ctl({"ping"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "stp-switchctl: " + control_ + ": the switch does not answer\n");
}

TEST_F(Programs, CtlShows) {
  const auto program = start_switch();
  EXPECT_EQ(ctl({"show", "access.refused_users"}).output, "access.refused_users = guest\n");
  EXPECT_THAT(ctl({"show", "mst.instance.2"}).output,
              StartsWith("mst.instance.2.vlans = 20-29\nmst.instance.2.remaining_hops = 18\n"));
  EXPECT_EQ(ctl({"show", "port.7.root_port_of"}).output, "port.7.root_port_of = \n");
  EXPECT_EQ(ctl({"show", "switch.loop_guard_default", "--json"}).output,
            "{\n  \"switch.loop_guard_default\": true\n}\n");
  EXPECT_EQ(ctl({"show", "access.refused_users", "--json"}).output,
            "{\n  \"access.refused_users\": [\"guest\"]\n}\n");
  EXPECT_THAT(ctl({"show", "--flat"}).output, AllOf(StartsWith("switch.name = campus-access-1\n"),
                                                    HasSubstr("\naccess.refused_users = guest\n")));
  EXPECT_THAT(ctl({"show", "--flat", "--json"}).output,
              AllOf(StartsWith("{\n  \"switch.name\": \"campus-access-1\",\n  \"switch.mode\": \"mst\",\n"),
                    HasSubstr("\n  \"access.refused_users\": [\"guest\"]"), EndsWith("\n}\n")));
}

TEST_F(Programs, CtlShowsTheTreesAndTheirPortsOnOneScreen) {
  const auto program = start_switch();
  EXPECT_EQ(ctl({"show"}).output, R"(Switch         campus-access-1
Mode           mst
Region         campus, revision 3, digest 43bb10a0...
Regional root  24576 / 00:00:5e:00:53:2a, cost 2000

Tree  Root port      Hops  VLANs
0     Ethernet1/11   19    1-9,31-99,200-4094
1     Ethernet1/11   19    10-19,30
2     port-channel1  18    20-29
10    -              20    100-199

Port           Link    Flags  Guards     0   1   2   10
port-channel1  p2p     P      loop       a   D!  R   D
port-channel2  p2p     P      root,loop  D   D   D!  D
Ethernet1/1    p2p     E      root       D   D   -   -
Ethernet1/2    p2p     BP     root,loop  D!  D!  -   -
Ethernet1/3    shared  -      root,loop  D   -   D!  -
Ethernet1/4    down    E      root,loop  -   -   -   -
Ethernet1/10   p2p     -      loop       D   -   D!  -
Ethernet1/11   p2p     P      loop       R   R   -   -
Ethernet1/12   shared  -      loop       D   -   D   -
Ethernet1/13   shared  -      loop       b   -   b   -
Ethernet1/14   p2p     PS     loop       D   D   -   -
Ethernet1/15   p2p     PX     loop       D   -   -   D

Port           Blocked by  In trees
port-channel1  loop guard  1
port-channel2  root guard  2
Ethernet1/2    root guard  0-1
Ethernet1/3    root guard  2
Ethernet1/10   loop guard  2

R root, D designated, a alternate, b backup, - none, ! inconsistent
E edge, B boundary, P peer, X dispute, S pre-standard
)");
  const ProgramResult json = ctl({"show", "--json"});
  EXPECT_THAT(json.output, AllOf(StartsWith("{\n  \"mode\": \"mst\",\n  \"name\": \"campus-access-1\",\n"),
                                 EndsWith("\n}\n")));
  const std::string file = folder_.write("overview.json", json.output);
  const ProgramResult shown = run_program("/bin/sh", {"-c", STP_OVERVIEW " <" + file});
  EXPECT_EQ(shown.output, ctl({"show"}).output);
}

TEST_F(Programs, OverviewNamesWhatItCannotShow) {
  const std::string file = folder_.write("overview.json", "{}");
  const ProgramResult lacking = run_program("/bin/sh", {"-c", STP_OVERVIEW " <" + file});
  EXPECT_EQ(lacking.status, 1);
  EXPECT_EQ(lacking.output, "");
  EXPECT_EQ(lacking.errors, "stp-overview: name: it is missing\n");
  const ProgramResult empty = run_program("/bin/sh", {"-c", STP_OVERVIEW " </dev/null"});
  EXPECT_EQ(empty.status, 1);
  EXPECT_EQ(empty.errors, "stp-overview: standard input is not JSON at octet 1\n");
  const ProgramResult wrong = run_program(STP_OVERVIEW, {file});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.errors, "stp-overview: unexpected argument '" + file + "' (see --help)\n");
  EXPECT_THAT(run_program(STP_OVERVIEW, {"--help"}).output, StartsWith("stp-overview - shows"));
  EXPECT_EQ(run_program("/bin/sh", {"-c", STP_OVERVIEW " --help >/dev/full"}).errors,
            "stp-overview: cannot write to standard output\n");
}

TEST_F(Programs, CtlShowsNothingOfAnEmptyList) {
  const auto program = start_switch(folder_.write("empty.toml", "switch.mode = 'mst'\n"));
  EXPECT_EQ(ctl({"show", "port"}).output, "");
  EXPECT_EQ(ctl({"show", "port", "--json"}).output, "{}\n");
}

TEST_F(Programs, CtlRefusesWhatIsNotUtf8) {
  const auto program = start_switch();
  const ProgramResult result = ctl({"set", "mst.region", "\xFF"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "stp-switchctl: the key or the value is not UTF-8\n");
}

TEST_F(Programs, CtlSets) {
  const auto program = start_switch();
  EXPECT_EQ(ctl({"set", "switch.mode", "rapid-pvst"}).status, 0);
  EXPECT_EQ(ctl({"set", "mst.region", ""}).status, 0);
  EXPECT_EQ(ctl({"set", "port.3.name", "--", "-odd-"}).status, 0);
  EXPECT_EQ(ctl({"set", "access.refused_users", "guest,ops"}).status, 0);
  EXPECT_THAT(ctl({"show", "--flat"}).output,
              AllOf(HasSubstr("switch.mode = rapid-pvst\n"), HasSubstr("mst.region = \n"),
                    HasSubstr("port.3.name = -odd-\n"), HasSubstr("access.refused_users = guest,ops\n")));
  EXPECT_THAT(program->errors(), HasSubstr("stp-switchd: switch.mode = rapid-pvst\n"));
}

TEST_F(Programs, CtlResets) {
  const auto program = start_switch();
  const std::string before = ctl({"show", "--flat"}).output;
  EXPECT_EQ(ctl({"set", "switch.mode", "rapid-pvst"}).status, 0);
  EXPECT_EQ(ctl({"fault", "drop"}).status, 0);
  EXPECT_EQ(ctl({"reset"}).status, 0);
  EXPECT_EQ(ctl({"show", "--flat"}).output, before);
  EXPECT_THAT(program->errors(), EndsWith("stp-switchd: fault drop\nstp-switchd: reset\n"));
}

TEST_F(Programs, CtlTellsWhatTheSwitchRefuses) {
  const auto program = start_switch();
  const ProgramResult set = ctl({"set", "port.3.channel", "9"});
  EXPECT_EQ(set.status, 1);
  EXPECT_EQ(set.errors, "stp-switchctl: port.3.channel: there is no port-channel 9\n");
  EXPECT_EQ(ctl({"show", "port.3.channel"}).output, "port.3.channel = 0\n");
  const ProgramResult show = ctl({"show", "port.99"});
  EXPECT_EQ(show.status, 1);
  EXPECT_EQ(show.errors, "stp-switchctl: port.99: the switch has no such key\n");
}

TEST_F(Programs, CtlRefusesTextThatIsNotUtf8) {
  const auto program = start_switch();
  EXPECT_EQ(ctl({"set", "mst.region", "\xFF"}).status, 2);
  EXPECT_EQ(ctl({"show", "mst.region"}).output, "mst.region = campus\n");
}

TEST_F(Programs, CtlOrdersFaults) {
  const auto program = start_switch();
  const std::vector<std::vector<std::string>> orders = {{"fault", "delay", "300", "--count", "2"},
                                                        {"fault", "drop"},
                                                        {"fault", "garbage", "--count", "1"},
                                                        {"fault", "disconnect"},
                                                        {"fault", "none"}};
  for (const auto &order : orders) {
    EXPECT_EQ(ctl(order).status, 0) << order[1];
    std::string words;
    for (size_t i = 1; i < order.size(); ++i) {
      words += (i == 1 ? "" : " ") + order[i];
    }
    EXPECT_EQ(ctl({"fault"}).output, words + "\n");
  }
  EXPECT_THAT(program->errors(), HasSubstr("fault delay, count 2\nstp-switchd: fault drop\n"
                                           "stp-switchd: fault garbage, count 1\n"
                                           "stp-switchd: fault disconnect\nstp-switchd: fault none\n"));
}

class Generator : public testing::Test {
 protected:
  static ProgramResult generate(std::vector<std::string> arguments) {
    return run_program(kGenerator, std::move(arguments));
  }
};

TEST_F(Generator, MakesRightScenariosOfAnySize) {
  const std::vector<std::vector<std::string>> sizes = {
      {},
      {"--ports", "1", "--vlans", "1", "--instances", "0", "--channels", "0"},
      {"--ports", "1", "--vlans", "2", "--instances", "1", "--channels", "1", "--mode", "rapid-pvst"},
      {"--ports", "3967", "--vlans", "4094", "--instances", "64", "--channels", "4095", "--seed", "7"}};
  for (const auto &arguments : sizes) {
    const ProgramResult result = generate(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_NO_THROW(stpswitch::parse_scenario(result.output, "generated.toml"));
  }
}

TEST_F(Generator, MakesWhatItWasAskedFor) {
  const auto state = stpswitch::parse_scenario(generate({"--ports", "500", "--vlans", "300", "--instances",
                                                         "8", "--channels", "20", "--mode", "rapid-pvst"})
                                                   .output,
                                               "generated.toml");
  EXPECT_EQ(state.ports.size(), 500U);
  EXPECT_EQ(state.port_channels.size(), 20U);
  EXPECT_EQ(state.mst_instances.size(), 8U);
  EXPECT_EQ(state.settings.mode, stpswitch::SpanningTreeMode::kRapidPvst);
  EXPECT_EQ(stpswitch::print_vlans(stpswitch::cist_vlans(state)), "1,301-4094");
  const auto guarded = std::count_if(state.ports.begin(), state.ports.end(), [](const auto &entry) {
    return entry.second.root_guard.value_or(false);
  });
  EXPECT_GT(guarded, 25);
  EXPECT_LT(guarded, 250);
  const auto edges = std::count_if(state.ports.begin(), state.ports.end(),
                                   [](const auto &entry) { return entry.second.edge.value_or(false); });
  EXPECT_GT(edges, 200);
  EXPECT_LT(edges, 400);
}

TEST_F(Generator, LeadsToTheRootOfEveryTreeByTheFirstPortChannels) {
  for (const auto &[mode, trees] : {std::pair("mst", "0-4"), std::pair("rapid-pvst", "1-100")}) {
    const auto state = stpswitch::parse_scenario(generate({"--mode", mode}).output, "generated.toml");
    EXPECT_EQ(
        stpswitch::print_trees(state.port_channels.at(1).role.exceptions.at(stpswitch::PortRole::kRoot)),
        trees);
    EXPECT_EQ(
        stpswitch::print_trees(state.port_channels.at(2).role.exceptions.at(stpswitch::PortRole::kAlternate)),
        trees);
    EXPECT_TRUE(state.port_channels.at(3).role.exceptions.empty());
  }
}

TEST_F(Generator, RepeatsItselfForASeed) {
  EXPECT_EQ(generate({"--seed", "5"}).output, generate({"--seed", "5"}).output);
  EXPECT_NE(generate({"--seed", "5"}).output, generate({"--seed", "6"}).output);
}

TEST_F(Generator, NamesWrongArguments) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{"--ports", "0"}, "--ports: '0' is not in 1..3967"},
      {{"--ports", "3968"}, "--ports: '3968' is not in 1..3967"},
      {{"--vlans", "many"}, "--vlans: 'many' is not in 1..4094"},
      {{"--channels", "-1"}, "--channels"},
      {{"--instances", "65"}, "--instances: '65' is not in 0..64"},
      {{"--instances", "3", "--vlans", "3"}, "--instances: 3 instances need more than 3 VLANs"},
      {{"--mode", "stp"}, "--mode"}};
  for (const auto &[arguments, reason] : wrong) {
    const ProgramResult result = generate(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr(reason));
    EXPECT_EQ(result.output, "");
  }
}

}  // namespace
