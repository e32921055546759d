// Caches in the Linux store: one that cannot be used, and a printer's.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/test_store.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

constexpr char kRegistry[] = "registry:Software\\Corvane";

TEST(UnusableStore, IsSaidAndCostsNoAnswer) {
  const TestStore store;
  std::filesystem::create_directory(store.File().parent_path());
  const RecordedDevice device(Item("x"), "<x>1</x>");
  const std::pair<const char*, std::string> kCases[] = {
      {"text", "not a database at all, but long enough to be read as the head of one .........."},
      {"a database cut short", std::string("SQLite format 3\0", 16) + std::string(40, '\x01')},
  };
  for (const auto& [name, content] : kCases) {
    std::ofstream(store.File(), std::ios::binary | std::ios::trunc) << content;
    for (const std::string cache : {kRegistry, "printer:Lobby"}) {
      const ProcessResult result = device.Run("get", {"x", "--cache", cache});
      EXPECT_EQ(result.output, "x\t1\n") << name << cache;
      EXPECT_EQ(result.exitStatus, 0) << name << cache;
      EXPECT_EQ(LinesOf(result.error).size(), 1u) << name << cache << result.error;
      EXPECT_TRUE(Contains(result.error, "the cache cannot be read")) << result.error;
      for (const char* const command : {"show", "clear"}) {
        const ProcessResult failed = RunTool({"cache", command, "--cache", cache});
        EXPECT_EQ(failed.exitStatus, 5) << name << cache << command;
        EXPECT_EQ(failed.output, "") << name << cache << command;
        EXPECT_TRUE(Contains(failed.error, "cannot be read: its file")) << failed.error;
      }
    }
  }
}

TEST(UnusableStore, ThatCannotBeMadeIsEmptyAndSaid) {
  const TestStore restores;
  setenv("CORVANE_STORE", "/proc/corvane/store.db", 1);
  const RecordedDevice device(Item("x"), "<x>1</x>");
  const ProcessResult result = device.Run("get", {"x", "--cache", kRegistry});
  EXPECT_EQ(result.output, "x\t1\n");
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_TRUE(Contains(result.error, "the cache cannot be written")) << result.error;
  EXPECT_EQ(RunTool({"cache", "show", "--cache", kRegistry}).output, "The cache is empty.\n");
}

TEST(PrinterCache, KeepsShowsAndClears) {
  const TestStore store;
  const RecordedDevice device(Item("Long", "LifeSpan='36000'") + Item("Kept"),
                              "<Long>1</Long><Kept>1</Kept>");
  const std::vector<std::string> names = {"Kept", "Long", "--cache", "printer:Lobby"};
  EXPECT_EQ(device.Run("get", names).output, "Kept\t1\nLong\t1\n");
  device.Serve("80/values.xml", "<V><Long>2</Long><Kept>2</Kept></V>");
  const ProcessResult second = device.Run("get", names);
  EXPECT_EQ(second.output, "Kept\t1\nLong\t1\n");
  EXPECT_EQ(second.error, "");
  const std::vector<std::string> lines = LinesOf(
      RunTool({"cache", "show", "--cache", "printer:Lobby", "--spec", device.Specification()})
          .output);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], "  Kept\t1\tnever goes stale");
  EXPECT_TRUE(lines[2].ends_with(" old\tfresh")) << lines[2];
  EXPECT_EQ(RunTool({"cache", "clear", "--cache", "printer:Lobby"}).output,
            "Removed 4 values and 0 keys.\n");
  EXPECT_EQ(device.Run("get", names).output, "Kept\t2\nLong\t2\n");
}

}  // namespace
}  // namespace Corvane::Test
