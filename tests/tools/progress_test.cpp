// How far a document is, in words and as a line on a terminal.
#include "tools/print/progress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <thread>

namespace Corvane::Test {
namespace {

using Tool::FormatBytes;
using Tool::Progress;

TEST(ProgressOfDocument, TellsBytesInRoundNumbers) {
  static constexpr std::pair<std::uint64_t, const char*> kCases[] = {
      {0, "0 bytes"},
      {1, "1 byte"},
      {999, "999 bytes"},
      {1000, "1.0 kB"},
      {999'949, "999.9 kB"},
      {999'950, "1.0 MB"},
      {16'000'000, "16.0 MB"},
      {4'294'967'296, "4.3 GB"},
      {5'000'000'000'000, "5000.0 GB"}};
  for (const auto& [bytes, text] : kCases) EXPECT_EQ(FormatBytes(bytes), text);
}

TEST(ProgressOfDocument, IsDrawnFiveTimesASecondAtMost) {
  std::ostringstream out;
  Progress progress(out, true, 1000);
  for (int i = 0; i < 60; ++i) {
    progress.Tell(250, "sending");
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  progress.Say("printed");
  const std::string text = out.str();
  EXPECT_NE(text.find("\r[#####---------------]  25%  250 bytes of 1.0 kB sent, "),
            std::string::npos)
      << text;
  const auto draws = std::count(text.begin(), text.end(), '#') / 5;
  EXPECT_GE(draws, 2);
  EXPECT_LE(draws, 12);  // even where the pauses take four times as long
  // What was drawn is gone before a line that stays.
  EXPECT_TRUE(text.ends_with(" \rcorvane: printed\n")) << text;
}

TEST(ProgressOfDocument, IsNotDrawnWithoutTerminal) {
  std::ostringstream out;
  Progress progress(out, false, std::nullopt);
  progress.Tell(5, "sending");
  EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace Corvane::Test
