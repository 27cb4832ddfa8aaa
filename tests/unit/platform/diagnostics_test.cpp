// The event history and the debug print.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <stdexcept>

#include "event_history.h"
#include "failing_calls.h"
#include "fake_clock.h"
#include "platform/evhist.h"
#include "platform_test.h"
#include "text_line.h"
#include "wire/owned_fd.h"

using stpplatform::EventHistory;

namespace {

constexpr uint32_t kClass = 0x730000;

// Offers a record to the history the way the module does.
int keep(const std::string &text, uint32_t level = 101) {
  evhist_record record{};
  record.level = level;
  std::snprintf(record.text, sizeof record.text, "%s", text.c_str());
  return evhist_hist_event(kClass, static_cast<uint32_t>(std::strlen(record.text)) + 5, &record);
}

// While it lives, no file of the process grows beyond an octet.
class SmallFiles {
 public:
  SmallFiles() : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{1, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~SmallFiles() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  SmallFiles(const SmallFiles &) = delete;
  SmallFiles &operator=(const SmallFiles &) = delete;

 private:
  void (*handler_)(int);
  rlimit before_{};
};

std::vector<std::string> lines_of(std::istream &&input) {
  std::vector<std::string> lines;
  for (std::string line; std::getline(input, line);) {
    lines.push_back(line);
  }
  return lines;
}

class History : public testing::Test {
 protected:
  History() : directory_((std::filesystem::temp_directory_path() / "history-XXXXXX").string()) {
    if (mkdtemp(directory_.data()) == nullptr) {
      throw std::runtime_error("no directory");
    }
    file_ = directory_ + "/history";
    stpplatform::event_history().clear();
  }
  ~History() override {
    set_environment("STPPLATFORM_HISTORY_FILE", std::nullopt);
    set_environment("STPPLATFORM_HISTORY_LEVEL", std::nullopt);
    std::filesystem::remove_all(directory_);
  }

  std::vector<std::string> dump() const {
    const std::string path = directory_ + "/dump";
    FILE *file = std::fopen(path.c_str(), "w");
    stpplatform::event_history().dump(file);
    std::fclose(file);
    return lines_of(std::ifstream(path));
  }

  // The lines without their times.
  static std::vector<std::string> without_times(const std::vector<std::string> &lines) {
    const std::string form = "dddd-dd-ddTdd:dd:dd.ddddddZ ";
    std::vector<std::string> rest;
    for (const std::string &line : lines) {
      std::string time = line.substr(0, form.size());
      std::replace_if(
          time.begin(), time.end(), [](char c) { return c >= '0' && c <= '9'; }, 'd');
      EXPECT_EQ(time, form) << line;
      rest.push_back(line.substr(time.size()));
    }
    return rest;
  }

  std::vector<std::string> save() {
    set_environment("STPPLATFORM_HISTORY_FILE", file_);
    stpplatform::save_event_history();
    return lines_of(std::ifstream(file_));
  }

  std::string not_permitted() const {
    return "stpplatform: " + file_ + ": the event history cannot be written: Operation not permitted\n";
  }

  LogCapture log_;
  std::string directory_;
  std::string file_;
};

TEST_F(History, RecordsComeOutAsTheyWentIn) {
  EXPECT_EQ(keep("get_stpxSpanningTreeType(12) malloc failed \n", 101), 0);
  EXPECT_EQ(keep("\nsearch(7): returning FAILURE.\n", 100), 0);
  EXPECT_EQ(keep("", 100), 0);
  EXPECT_EQ(without_times(dump()),
            (std::vector<std::string>{"0x730000 101 get_stpxSpanningTreeType(12) malloc failed ",
                                      "0x730000 100 search(7): returning FAILURE.", "0x730000 100 "}));
}

TEST_F(History, AFullHistoryGivesUpItsOldestRecords) {
  constexpr size_t kMore = 10;
  for (size_t i = 0; i < EventHistory::kCapacity + kMore; ++i) {
    ASSERT_EQ(keep(std::to_string(i)), 0);
  }
  const std::vector<std::string> lines = without_times(dump());
  ASSERT_EQ(lines.size(), EventHistory::kCapacity);
  for (size_t i = 0; i < lines.size(); ++i) {
    ASSERT_EQ(lines[i], "0x730000 101 " + std::to_string(i + kMore));
  }
}

TEST_F(History, TheLongestTextIsKeptWhole) {
  EXPECT_EQ(keep(std::string(EVHIST_TEXT_SIZE - 1, 'x')), 0);
  EXPECT_EQ(without_times(dump()),
            std::vector<std::string>{"0x730000 101 " + std::string(EVHIST_TEXT_SIZE - 1, 'x')});
}

TEST_F(History, WhatIsNoRecordIsRefused) {
  evhist_record record{};
  std::memset(record.text, 'x', sizeof record.text);
  EXPECT_NE(evhist_hist_event(kClass, 0, &record), 0);
  EXPECT_NE(evhist_hist_event(kClass, 4, &record), 0);
  EXPECT_NE(evhist_hist_event(kClass, 20, &record), 0) << "text without end";
  EXPECT_NE(evhist_hist_event(kClass, sizeof record, &record), 0) << "text without end";
  record.text[sizeof record.text - 1] = '\0';
  EXPECT_NE(evhist_hist_event(kClass, sizeof record + 1, &record), 0);
  EXPECT_NE(evhist_hist_event(kClass, sizeof record, nullptr), 0);
  EXPECT_TRUE(dump().empty());
}

TEST_F(History, NoOctetBehindTheRecordIsRead) {
  const auto record = std::make_unique<uint8_t[]>(7);
  std::memcpy(record.get(), "\x65\0\0\0ab", 7);
  EXPECT_EQ(evhist_hist_event(kClass, 7, record.get()), 0);
  EXPECT_EQ(without_times(dump()), std::vector<std::string>{"0x730000 101 ab"});
}

TEST_F(History, NothingShowsOfWhatStoodInTheSamePlace) {
  for (size_t i = 0; i < EventHistory::kCapacity; ++i) {
    keep(std::string(EVHIST_TEXT_SIZE - 1, 'x'));
  }
  keep("short", 100);
  keep("", 100);
  const std::vector<std::string> lines = without_times(dump());
  ASSERT_EQ(lines.size(), EventHistory::kCapacity);
  EXPECT_EQ(lines[EventHistory::kCapacity - 2], "0x730000 100 short");
  EXPECT_EQ(lines[EventHistory::kCapacity - 1], "0x730000 100 ");
}

TEST_F(History, ATextEndsAtItsFirstZero) {
  evhist_record record{101, "ab\0cd"};
  EXPECT_EQ(evhist_hist_event(kClass, 4 + 6, &record), 0);
  EXPECT_EQ(without_times(dump()), std::vector<std::string>{"0x730000 101 ab"});
}

TEST_F(History, TheLevelDecidesWhatIsKept) {
  const auto kept = [](uint32_t event_class, uint32_t level) {
    return evhist_hist_event_subtype_check(event_class, level) == 0;
  };
  set_environment("STPPLATFORM_HISTORY_LEVEL", std::nullopt);
  EXPECT_TRUE(kept(kClass, 100));
  EXPECT_FALSE(kept(kClass, 101));
  EXPECT_FALSE(kept(kClass + 1, 100));
  set_environment("STPPLATFORM_HISTORY_LEVEL", "101");
  EXPECT_TRUE(kept(kClass, 100));
  EXPECT_TRUE(kept(kClass, 101));
  EXPECT_FALSE(kept(kClass, 102));
  EXPECT_FALSE(kept(kClass + 1, 101));
  set_environment("STPPLATFORM_HISTORY_LEVEL", "0");
  EXPECT_FALSE(kept(kClass, 0));
  EXPECT_FALSE(kept(kClass, 100));
}

TEST_F(History, IsSavedForItsOwnerAloneInPlaceOfAnOlderOne) {
  const mode_t before = umask(0);
  keep("one");
  keep("two");
  EXPECT_EQ(without_times(save()), (std::vector<std::string>{"0x730000 101 one", "0x730000 101 two"}));
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  stpplatform::event_history().clear();
  keep("three");
  EXPECT_EQ(without_times(save()), std::vector<std::string>{"0x730000 101 three"});
  umask(before);
}

TEST_F(History, IsNotSavedWhereNobodyAskedForIt) {
  keep("one");
  set_environment("STPPLATFORM_HISTORY_FILE", std::nullopt);
  stpplatform::save_event_history();
  EXPECT_TRUE(std::filesystem::is_empty(directory_));
}

TEST_F(History, FollowsNoLinkAndWritesIntoNothingButAFile) {
  keep("one");
  const std::string other = directory_ + "/other";
  std::ofstream(other) << "precious";
  std::filesystem::create_symlink(other, file_);
  save();
  std::filesystem::remove(file_);
  std::filesystem::create_hard_link(other, file_);
  save();
  std::filesystem::remove(file_);
  EXPECT_EQ(lines_of(std::ifstream(other)), std::vector<std::string>{"precious"});
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  set_environment("STPPLATFORM_HISTORY_FILE", file_);
  stpplatform::save_event_history();
  std::filesystem::remove(file_);
  std::filesystem::create_directory(file_);
  stpplatform::save_event_history();
  set_environment("STPPLATFORM_HISTORY_FILE", directory_ + "/nowhere/history");
  stpplatform::save_event_history();
  const std::vector<std::string> log = LogCapture::take();
  ASSERT_EQ(log.size(), 5U);
  EXPECT_EQ(log.back(),
            "stpplatform: " + directory_ +
                "/nowhere/history: the event history cannot be written: No such file or directory\n");
}

TEST_F(History, IsNotWrittenIntoAPipeThatSomebodyReads) {
  keep("one");
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  const OwnedFd reader(open(file_.c_str(), O_RDONLY | O_NONBLOCK));
  set_environment("STPPLATFORM_HISTORY_FILE", file_);
  stpplatform::save_event_history();
  EXPECT_EQ(LogCapture::take(), std::vector{not_permitted()});
  char octet = 0;
  EXPECT_EQ(read(reader.get(), &octet, sizeof octet), 0) << "nothing, and nobody writes";
}

TEST_F(History, IsNotWrittenIntoTheFileOfAnotherUser) {
  constexpr uid_t kOther = 1;
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can give a file away";
  }
  keep("one");
  std::ofstream(file_) << "precious";
  ASSERT_EQ(chown(file_.c_str(), kOther, static_cast<gid_t>(-1)), 0);
  EXPECT_EQ(save(), std::vector<std::string>{"precious"});
  EXPECT_EQ(LogCapture::take(), std::vector{not_permitted()});
}

TEST_F(History, IsNotSavedOverAFileThatCannotBeEmptied) {
  keep("one");
  std::ofstream(file_) << "precious";
  failing_calls::fail_next_ftruncate(EIO);
  EXPECT_EQ(save(), std::vector<std::string>{"precious"});
  EXPECT_EQ(LogCapture::take(),
            std::vector<std::string>{"stpplatform: " + file_ +
                                     ": the event history cannot be written: Input/output error\n"});
}

TEST_F(History, SaysSoWhenTheFileFindsNoRoom) {
  keep("one");
  {
    const SmallFiles limit;
    save();
  }
  EXPECT_EQ(LogCapture::take(),
            std::vector<std::string>{"stpplatform: " + file_ +
                                     ": the event history cannot be written: File too large\n"});
}

TEST_F(History, SaysWhenARecordWasLeft) {
  const FixedDate date({1767323045, 678'901'234});
  keep("one");
  EXPECT_EQ(dump(), std::vector<std::string>{"2026-01-02T03:04:05.678901Z 0x730000 101 one"});
}

TEST_F(History, LeavesOutADateThatHasNoFormOrNoYear) {
  constexpr time_t kFirstOfYear10000 = 253'402'300'800;
  for (const time_t seconds : {kFirstOfYear10000, std::numeric_limits<time_t>::max()}) {
    stpplatform::event_history().clear();
    const FixedDate date({seconds, 0});
    keep("one");
    EXPECT_EQ(dump(), std::vector<std::string>{".000000Z 0x730000 101 one"}) << seconds;
  }
}

TEST(DebugPrint, TheLevelDecidesWhatIsPrinted) {
  set_environment("STPPLATFORM_DEBUG_LEVEL", std::nullopt);
  EXPECT_EQ(evhist_chk_int(0, 0, 0, 1), 0);
  EXPECT_EQ(evhist_chk_int(100, 0, 0, 1), 0);
  set_environment("STPPLATFORM_DEBUG_LEVEL", "100");
  EXPECT_NE(evhist_chk_int(100, 0, 0, 1), 0);
  EXPECT_EQ(evhist_chk_int(101, 0, 0, 1), 0);
  set_environment("STPPLATFORM_DEBUG_LEVEL", "101");
  EXPECT_NE(evhist_chk_int(101, 0, 0, 1), 0);
  set_environment("STPPLATFORM_DEBUG_LEVEL", std::nullopt);
}

TEST(DebugPrint, EveryTextIsOneLineOfTheAgentsLog) {
  LogCapture log;
  dbgprint(1, evhist_dbg_modname, 0, "\n%s(%d): returning\n", "search", 12);
  dbgprint(1, evhist_dbg_modname, 0, "one\ntwo\n\n");
  dbgprint(1, evhist_dbg_modname, 0, "%s", "100%s of it");
  dbgprint(1, evhist_dbg_modname, 0, "\n");
  EXPECT_EQ(LogCapture::take(),
            (std::vector<std::string>{"STPSNMP: search(12): returning\n", "STPSNMP: one two\n",
                                      "STPSNMP: 100%s of it\n", "STPSNMP: \n"}));
}

TEST(DebugPrint, LongTextsArePrintedWhole) {
  LogCapture log;
  std::string text(20000, 'x');
  text += "end";
  dbgprint(1, evhist_dbg_modname, 0, "%s\n", text.c_str());
  EXPECT_EQ(LogCapture::take(), std::vector<std::string>{"STPSNMP: " + text + "\n"});
}

TEST(DebugPrint, NothingIsPrintedOfNothing) {
  LogCapture log;
  const char *volatile nothing = nullptr;
  dbgprint(1, nothing, 0, "text");
  // As a program calls it that is compiled without the check of formats.
  void (*const print)(int, const char *, int, const char *, ...) = dbgprint;
  print(1, evhist_dbg_modname, 0, nothing);
  EXPECT_TRUE(LogCapture::take().empty());
}

TEST(TextLine, ControlCharactersBecomeBlanks) {
  char text[] = "\r\n\na\tb\nc\x7F\x1B[1md\n\r\n";
  EXPECT_STREQ(stpplatform::make_line(text), "a b c  [1md");
  char empty[] = "";
  EXPECT_STREQ(stpplatform::make_line(empty), "");
}

}  // namespace
