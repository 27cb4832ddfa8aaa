// Keys of sources that only read.
#include "sources/read_only.h"

#include <gtest/gtest.h>

#include <array>

#include "keys/config_error.h"

using namespace stpswitch;

namespace {

constexpr std::array<SetInstead, 2> kOfInterfaces = {
    {{"path_cost", "tool cost % N"}, {"priority", "tool port-priority % N"}}};
constexpr std::array<SetInstead, 1> kOfBridge = {{{"priority", "tool bridge-priority % N"}}};
constexpr ReadOnlyKeys kKeys = {kOfInterfaces, kOfBridge, "is nobody's to set"};

std::string refusal_of(const std::string &key) {
  SwitchState now;
  now.ports[3].name = "veth3";
  now.port_channels[3].name = "bond0";
  try {
    refuse_to_set(kKeys, now, "br0", key);
  } catch (const ConfigError &error) {
    EXPECT_EQ(error.key(), key);
    return error.what();
  }
}

TEST(ReadOnlySources, NameTheCommandThatSetsAKey) {
  EXPECT_EQ(refusal_of("port.3.path_cost"), "port.3.path_cost: is set with 'tool cost veth3 N'");
  EXPECT_EQ(refusal_of("port_channel.3.priority"),
            "port_channel.3.priority: is set with 'tool port-priority bond0 N'");
  EXPECT_EQ(refusal_of("bridge.priority"), "bridge.priority: is set with 'tool bridge-priority br0 N'");
  EXPECT_EQ(refusal_of("tree.0.priority"), "tree.0.priority: is set with 'tool bridge-priority br0 N'");
}

TEST(ReadOnlySources, RefuseEveryOtherKey) {
  for (const std::string key :
       {"port.3.name", "port_channel.3.", "mst.region", "bridge.path_cost", "", "."}) {
    EXPECT_EQ(refusal_of(key), key + ": is nobody's to set");
  }
}

TEST(ReadOnlySources, NameNoCommandForAnInterfaceThatTheyDoNotHave) {
  for (const std::string key :
       {"port.4.path_cost", "port_channel.1.priority", "port.x.path_cost", "port.3x.path_cost",
        "port..path_cost", "port.path_cost", "port.3.3.path_cost", "port.99999999999.path_cost"}) {
    EXPECT_EQ(refusal_of(key), key + ": the switch has no such interface");
  }
}

}  // namespace
