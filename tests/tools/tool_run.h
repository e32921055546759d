// The built tool over recorded devices of the test's own.
#ifndef CORVANE_TESTS_TOOLS_TOOL_RUN_H_
#define CORVANE_TESTS_TOOLS_TOOL_RUN_H_

#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "base/utf8.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"
#include "tools/output/text_escape.h"

namespace Corvane::Test {

inline std::vector<std::string> ToolCommand(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), CORVANE_TOOL_PATH);
  return arguments;
}

inline ProcessResult RunTool(const std::vector<std::string>& arguments) {
  return RunProcess(ToolCommand(arguments));
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

inline std::vector<std::string> LinesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The controls of an output, in their order.
inline std::u32string ControlsIn(const std::string& utf8) {
  std::u32string controls;
  for (std::size_t i = 0; i < utf8.size();) {
    const char32_t c = NextCodePoint(utf8, &i);
    if (Tool::IsControl(c)) controls += c;
  }
  return controls;
}

inline std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

// A recorded device that answers as PLSXML, and a specification. `items` are the item elements of
// its one data map; they find their values in /values.xml, whose root holds `values`.
class RecordedDevice {
 public:
  RecordedDevice(const std::string& items, const std::string& values) {
    m_folder.Write("device/80/zq/device/product_information.xml",
                   "<P><ProductSerialNumber>1</ProductSerialNumber></P>");
    m_folder.Write("device/80/values.xml", "<V xmlns:d='urn:test'>" + values + "</V>");
    Specify("<DataMaps><XMLDataMap Protocol='PLSXML'>" + items + "</XMLDataMap></DataMaps>");
  }

  void Specify(const std::string& xml) const { m_folder.Write("specification.xml", xml); }
  void Serve(const std::string& portAndPath, const std::string& body) const {
    m_folder.Write("device/" + portAndPath, body);
  }

  std::string Address() const { return "recorded:" + Utf8(m_folder.Path() / "device"); }
  std::string Specification() const { return Utf8(m_folder.Path() / "specification.xml"); }

  ProcessResult Run(const std::string& command, const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = {command, "--device", Address(), "--spec",
                                          Specification()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunTool(arguments);
  }

 private:
  TempFolder m_folder;
};

// An item whose value is the element of its own name.
inline std::string Item(const std::string& name, const std::string& more = {}) {
  return "<DataItem Name='" + name + "' URI='/values.xml' XPath='//" + name + "' " + more + "/>";
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_TOOLS_TOOL_RUN_H_
