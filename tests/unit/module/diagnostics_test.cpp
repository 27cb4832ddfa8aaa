#include "diagnostics.h"

#include <string>

#include <gmock/gmock.h>

#include "fake_platform.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using stpsnmp::diagnostics::kRejection;
using stpsnmp::diagnostics::kTrace;

class Diagnostics : public ::testing::Test {
 protected:
  void SetUp() override { fake::reset(); }
};

TEST_F(Diagnostics, GoToTheHistoryWithTheirLevel) {
  STP_LOG(kTrace, "magic %d\n", 9);
  STP_LOG(kRejection, "%s(%d): refused\n", "routine", 12);
  EXPECT_THAT(fake::platform().trace, ElementsAre("log(0x00730000, 101) \"magic 9\\n\"",
                                                  "log(0x00730000, 100) \"routine(12): refused\\n\""));
}

TEST_F(Diagnostics, GoToTheDebugPrintAsFormatAndArguments) {
  fake::platform().history_answers = {{101, 1}};
  fake::platform().print_answers = {{101, 1}};
  STP_LOG(kTrace, "magic %d\n", 9);
  EXPECT_THAT(fake::platform().trace, ElementsAre("dbgprint(1, FAKE, 0) \"magic 9\\n\""));
}

TEST_F(Diagnostics, GoToTheHistoryFirst) {
  fake::platform().print_answers = {{101, 1}};
  STP_LOG(kTrace, "magic %d\n", 9);
  EXPECT_THAT(fake::platform().trace,
              ElementsAre("log(0x00730000, 101) \"magic 9\\n\"", "dbgprint(1, FAKE, 0) \"magic 9\\n\""));
}

TEST_F(Diagnostics, AskEachSinkForTheirOwnLevel) {
  fake::platform().history_answers = {{100, 0}, {101, 1}};
  fake::platform().print_answers = {{100, 0}, {101, 1}};
  STP_LOG(kRejection, "refused");
  STP_LOG(kTrace, "traced");
  EXPECT_THAT(fake::platform().trace,
              ElementsAre("log(0x00730000, 100) \"refused\"", "dbgprint(1, FAKE, 0) \"traced\""));
}

TEST_F(Diagnostics, OnlyZeroMeansThatTheHistoryKeepsThem) {
  for (const int no : {1, 2, -1}) {
    fake::platform().history_answers = {{101, no}};
    STP_LOG(kTrace, "traced");
  }
  EXPECT_THAT(fake::platform().trace, IsEmpty());
}

TEST_F(Diagnostics, AnythingButZeroMeansThatThePrintShowsThem) {
  fake::platform().history_answers = {{101, 1}};
  for (const int yes : {1, 2, -1}) {
    fake::platform().print_answers = {{101, yes}};
    STP_LOG(kTrace, "%d", yes);
  }
  EXPECT_THAT(fake::platform().trace, ElementsAre("dbgprint(1, FAKE, 0) \"1\"", "dbgprint(1, FAKE, 0) \"2\"",
                                                  "dbgprint(1, FAKE, 0) \"-1\""));
}

TEST_F(Diagnostics, AreNotEvenFormattedWhenNobodyTakesThem) {
  fake::platform().history_answers = {{101, 1}};
  int formatted = 0;
  STP_LOG(kTrace, "%d", ++formatted);
  EXPECT_EQ(formatted, 0);
}

TEST_F(Diagnostics, OfExactly511CharactersAreKeptWhole) {
  const std::string text(511, 'x');
  STP_LOG(kTrace, "%s", text.c_str());
  // The fake checks that the record is as long as its text and five bytes more.
  EXPECT_THAT(fake::platform().trace, ElementsAre("log(0x00730000, 101) \"" + text + "\""));
}

TEST_F(Diagnostics, ThatAreLongerAreCutInTheHistoryAndWholeInThePrint) {
  fake::platform().print_answers = {{101, 1}};
  const std::string text(600, 'y');
  STP_LOG(kTrace, "%s", text.c_str());
  EXPECT_THAT(fake::platform().trace, ElementsAre("log(0x00730000, 101) \"" + std::string(511, 'y') + "\"",
                                                  "dbgprint(1, FAKE, 0) \"" + text + "\""));
}

}  // namespace
