// The texts of the log, against the C library's.
#include "format.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using stpsnmp::Format;

namespace {

constexpr size_t kRoom = 40;
constexpr char kUntouched = '#';

std::string written(size_t room, Format format, ...) {
  std::string text(kRoom, kUntouched);
  va_list arguments;
  va_start(arguments, format);
  const char *const end = stpsnmp::write_text(format, arguments, text.data(), text.data() + room);
  va_end(arguments);
  const auto length = static_cast<size_t>(end - text.data());
  EXPECT_EQ(text.substr(length), std::string(kRoom - length, kUntouched)) << "written behind the end";
  return text.substr(0, length);
}

// The same text from the C library, which needs room for a terminator.
__attribute__((format(printf, 2, 3))) std::string printed(size_t room, const char *format, ...) {
  char text[kRoom + 1];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, room + 1, format, arguments);
  va_end(arguments);
  return text;
}

#define EXPECT_SAME(...)                                               \
  for (size_t room = 0; room <= kRoom; ++room) {                       \
    EXPECT_EQ(written(room, __VA_ARGS__), printed(room, __VA_ARGS__)); \
  }

TEST(Format, WritesLiteralsAsTheyAre) {
  EXPECT_EQ(written(kRoom, ""), "");
  EXPECT_EQ(written(kRoom, "\nNo next port\n"), "\nNo next port\n");
}

TEST(Format, WritesEachConversion) {
  EXPECT_EQ(written(kRoom, "%s(%d): 0x%x of %u\n", "find", -7, 0x1A00000FU, 4294967295U),
            "find(-7): 0x1a00000f of 4294967295\n");
  EXPECT_EQ(written(kRoom, "%d", 0), "0");
  EXPECT_EQ(written(kRoom, "%s%s%s", "", "a", ""), "a");
}

TEST(Format, CutsWhereTheCLibraryDoes) {
  EXPECT_SAME("%s(%d) found next port : %d\n", "search", 74, 129);
  EXPECT_SAME("%s", "a text that is longer than there is room for it");
  EXPECT_SAME("%u,%u,%u,%u,%u,%u,%u", 1U, 22U, 333U, 4444U, 55555U, 666666U, 7777777U);
  EXPECT_SAME("literal %x literal %x literal %x literal", 0xABCDEF01U, 0U, 0xFFU);
}

TEST(Format, WritesNumbersOfEverySizeAsTheCLibraryDoes) {
  std::vector<uint32_t> numbers{0, std::numeric_limits<uint32_t>::max()};
  for (uint32_t bit = 0; bit < 32; ++bit) {
    const uint32_t power = 1U << bit;
    numbers.insert(numbers.end(), {power - 1, power, power + 1});
  }
  for (uint64_t power = 1; power <= numbers[1]; power *= 10) {
    const auto small = static_cast<uint32_t>(power);
    numbers.insert(numbers.end(), {small - 1, small, 0U - small});
  }
  for (const uint32_t number : numbers) {
    const auto with_sign = static_cast<int32_t>(number);
    EXPECT_EQ(written(kRoom, "[%d]", with_sign), printed(kRoom, "[%d]", with_sign));
    EXPECT_EQ(written(kRoom, "[%u]", number), printed(kRoom, "[%u]", number));
    EXPECT_EQ(written(kRoom, "[%x]", number), printed(kRoom, "[%x]", number));
  }
}

}  // namespace
