// The environment as settings.
#include "settings.h"

#include <string>
#include <utility>

#include "platform_test.h"
#include "wire/message.h"

using stpplatform::settings;

namespace {

const char *const kVariables[] = {"STPPLATFORM_SOCKET", "STPPLATFORM_DEADLINE_MS", "STPPLATFORM_DEBUG_LEVEL",
                                  "STPPLATFORM_HISTORY_LEVEL", "STPPLATFORM_HISTORY_FILE"};

class Settings : public testing::Test {
 protected:
  Settings() { clear(); }
  ~Settings() override { clear(); }

  static void clear() {
    for (const char *variable : kVariables) {
      set_environment(variable, std::nullopt);
    }
    LogCapture::take();
  }

  LogCapture log_;
};

void expect_defaults() {
  EXPECT_STREQ(settings().socket_path, stpplatform::wire::kDefaultSocketPath);
  EXPECT_EQ(settings().deadline_ms, 2000U);
  EXPECT_EQ(settings().debug_level, 0U);
  EXPECT_EQ(settings().history_level, 100U);
  EXPECT_STREQ(settings().history_file, "");
}

TEST_F(Settings, AnEmptyEnvironmentMeansTheDefaults) {
  expect_defaults();
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(Settings, GoodValuesAreTaken) {
  set_environment("STPPLATFORM_SOCKET", "/run/other.sock");
  set_environment("STPPLATFORM_DEADLINE_MS", "60000");
  set_environment("STPPLATFORM_DEBUG_LEVEL", "4294967295");
  set_environment("STPPLATFORM_HISTORY_LEVEL", "0");
  set_environment("STPPLATFORM_HISTORY_FILE", "/var/log/history");
  EXPECT_STREQ(settings().socket_path, "/run/other.sock");
  EXPECT_EQ(settings().deadline_ms, 60000U);
  EXPECT_EQ(settings().debug_level, UINT32_MAX);
  EXPECT_EQ(settings().history_level, 0U);
  EXPECT_STREQ(settings().history_file, "/var/log/history");
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST_F(Settings, TheLongestPathsAreTakenWhole) {
  const std::string socket = "/" + std::string(sizeof(sockaddr_un::sun_path) - 2, 's');
  set_environment("STPPLATFORM_SOCKET", socket);
  EXPECT_EQ(settings().socket_path, socket);
  EXPECT_TRUE(LogCapture::take().empty());
}

using BadValue = std::pair<const char *, std::string>;

const BadValue kBadValues[] = {
    {"STPPLATFORM_SOCKET", ""},
    {"STPPLATFORM_SOCKET", "relative.sock"},
    {"STPPLATFORM_SOCKET", "/" + std::string(sizeof(sockaddr_un::sun_path) - 1, 's')},
    {"STPPLATFORM_DEADLINE_MS", ""},
    {"STPPLATFORM_DEADLINE_MS", "0"},
    {"STPPLATFORM_DEADLINE_MS", "60001"},
    {"STPPLATFORM_DEADLINE_MS", "-1"},
    {"STPPLATFORM_DEADLINE_MS", "+5"},
    {"STPPLATFORM_DEADLINE_MS", " 5"},
    {"STPPLATFORM_DEADLINE_MS", "5s"},
    {"STPPLATFORM_DEADLINE_MS", "0x10"},
    {"STPPLATFORM_DEADLINE_MS", "99999999999999999999999"},
    {"STPPLATFORM_DEBUG_LEVEL", "all"},
    {"STPPLATFORM_DEBUG_LEVEL", "4294967296"},
    {"STPPLATFORM_HISTORY_LEVEL", "-1"},
    {"STPPLATFORM_HISTORY_FILE", "history"},
    {"STPPLATFORM_HISTORY_FILE", "/" + std::string(5000, 'h')},
};

TEST_F(Settings, ABadValueIsNamedInTheLogAndTheDefaultTaken) {
  for (const auto &[variable, value] : kBadValues) {
    set_environment(variable, value);
    expect_defaults();
    const std::vector<std::string> log = LogCapture::take();
    ASSERT_EQ(log.size(), 1U) << variable << " '" << value << "'";
    EXPECT_EQ(log[0].find(std::string("stpplatform: ") + variable + ": '" + value + "' is not "), 0U)
        << log[0];
    set_environment(variable, std::nullopt);
  }
}

TEST_F(Settings, ABadValueTakesThePlaceOfAGoodOne) {
  set_environment("STPPLATFORM_DEADLINE_MS", "5");
  set_environment("STPPLATFORM_DEADLINE_MS", "five");
  EXPECT_EQ(settings().deadline_ms, 2000U);
}

}  // namespace
