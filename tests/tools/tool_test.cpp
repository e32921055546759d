#include "tests/tools/tool_test.h"

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "base/utf8.h"
#include "tools/output/text.h"

namespace Corvane::Test {
namespace {

bool LineMatches(std::string_view line, std::string_view pattern) {
  const std::size_t star = pattern.find('*');
  if (star == pattern.npos) return line == pattern;
  if (!line.starts_with(pattern.substr(0, star))) return false;
  line.remove_prefix(star);
  pattern.remove_prefix(star + 1);
  while (!LineMatches(line, pattern)) {
    if (line.empty()) return false;
    line.remove_prefix(1);
  }
  return true;
}

}  // namespace

std::vector<std::string> LinesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

std::u32string ControlsIn(const std::string& utf8) {
  std::u32string controls;
  for (std::size_t i = 0; i < utf8.size();) {
    const char32_t c = NextCodePoint(utf8, &i);
    if (Tool::IsControl(c)) controls += c;
  }
  return controls;
}

bool Matches(const std::string& text, const std::string& pattern) {
  const std::vector<std::string> lines = LinesOf(text), patterns = LinesOf(pattern);
  return std::equal(lines.begin(), lines.end(), patterns.begin(), patterns.end(), LineMatches);
}

ToolTest::ToolTest()
    : m_names{{"data", CORVANE_SOURCES "/tests/data/tools"},
              {"examples", CORVANE_SOURCES "/examples"},
              {"device", "recorded:" + Utf8(m_folder.Path() / "device")},
              {"spec", Utf8(m_folder.Path() / "specification.xml")}} {}

void ToolTest::Serve(const std::string& portAndPath, const std::string& body) const {
  m_folder.Write("device/" + portAndPath, body);
}

void ToolTest::Specify(const std::string& xml) const { m_folder.Write("specification.xml", xml); }

std::string ToolTest::Filled(std::string text) const {
  for (const auto& [name, value] : m_names) {
    const std::string mark = '@' + name + '@';
    for (std::size_t at = 0; (at = text.find(mark, at)) != text.npos; at += value.size()) {
      text.replace(at, mark.size(), value);
    }
  }
  return text;
}

std::vector<std::string> ToolTest::Command(const std::string& words) const {
  std::istringstream stream(words);
  std::vector<std::string> command = {CORVANE_TOOL_PATH};
  for (std::string word; stream >> std::quoted(word, '\'', '\0');) command.push_back(Filled(word));
  return command;
}

ProcessResult ToolTest::Run(const std::string& command) const {
  return RunProcess(Command(command));
}

void ToolTest::Expect(const std::string& command, const std::string& output,
                      const std::string& error, int status) const {
  const std::map<std::string, std::string> expected = {
      {"output", output}, {"error", error}, {"status", std::to_string(status)}};
  ExpectResult(Run(command), Case(command, expected));
}

void ToolTest::ExpectResult(const ProcessResult& result, const Case& c) const {
  SCOPED_TRACE(c.Where());
  EXPECT_EQ(result.exitStatus, c.Number("status"));
  for (const auto& [name, text] : {std::pair{"output", result.output}, {"error", result.error}}) {
    const std::string expected = Filled(c.Text(name));
    EXPECT_TRUE(Matches(text, expected)) << text << "not\n" << expected;
    for (const char32_t control : ControlsIn(text)) {
      EXPECT_TRUE(control == '\n' || (control == '\t' && name == std::string("output")));
    }
  }
}

void ToolTest::ExpectCase(const Case& c) const {
  std::string command = c.Text("run");
  if (const auto query = c.Find("query")) {
    const std::string device = c.Find("device").value_or("typical");
    const auto specification = c.Find("specification");
    if (specification) Specify(*specification);
    const std::size_t end = std::min(query->find(' '), query->size());
    command = query->substr(0, end) + " --device recorded:@data@/" + device + " --spec " +
              (specification ? "@spec@" : "@data@/typical.xml") + query->substr(end);
  }
  ExpectResult(Run(command), c);
}

}  // namespace Corvane::Test
