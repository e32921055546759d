// The built tool: what it is asked, and what must come of it.
#ifndef CORVANE_TESTS_TOOLS_TOOL_TEST_H_
#define CORVANE_TESTS_TOOLS_TOOL_TEST_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/support/cases.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {

std::vector<std::string> LinesOf(const std::string& text);
bool Contains(const std::string& text, const std::string& part);
std::string Utf8(const std::filesystem::path& path);
// The controls of an output, in their order.
std::u32string ControlsIn(const std::string& utf8);
// Line by line; '*' in the pattern stands for any text within a line.
bool Matches(const std::string& text, const std::string& pattern);

// In commands and in what is expected "@name@" stands for a text: @data@ and @examples@ for the
// repository's folders tests/data/tools and examples, others for what a test gives them.
class ToolTest : public testing::Test {
 protected:
  ToolTest();

  // For a recorded device and a specification of the test's own: @device@ and @spec@.
  void Serve(const std::string& portAndPath, const std::string& body) const;
  void Specify(const std::string& xml) const;

  std::string Filled(std::string text) const;
  // The tool, then words apart by blanks; one with blanks stands between '.
  std::vector<std::string> Command(const std::string& words) const;
  ProcessResult Run(const std::string& command) const;
  // Matches the streams with patterns. Whatever a device says, they have no controls but line ends
  // and, on the output, tabs.
  void Expect(const std::string& command, const std::string& output, const std::string& error = {},
              int status = 0) const;
  // "run", or "query" of the recorded device "device" (typical) by "specification" (the file
  // typical.xml); "output", "error" and "status".
  void ExpectCase(const Case& c) const;
  void ExpectResult(const ProcessResult& result, const Case& c) const;

  const TempFolder m_folder;
  std::map<std::string, std::string> m_names;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_TOOLS_TOOL_TEST_H_
