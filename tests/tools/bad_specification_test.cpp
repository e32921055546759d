// Specifications that cannot be read: one line that names the file.
#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/wine.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

TEST(BadSpecification, IsRefusedInOneLineThatNamesTheFile) {
  const RecordedDevice device("", "");
  const std::tuple<std::string, const char*, int> kCases[] = {
      {"", "the file is empty", 2},
      {" \n\n", "cannot be read as XML", 2},
      {"Model = //Model\n", "cannot be read as XML", 2},
      {std::string("\x89PNG\r\n\x1a\n\0\0", 10), "cannot be read as XML", 2},
      {"<DataMaps>\n<XMLDataMap Protocol='WS'>\n", "cannot be read as XML", 2},
      {"<datamaps/>", "the root element is not DataMaps", 2},
      {"<x><DataMaps/></x>", "the root element is not DataMaps", 2},
      {"<DataMaps><!-- soon --></DataMaps>", "holds no data map", 3}};
  for (const auto& [content, complaint, exitStatus] : kCases) {
    device.Specify(content);
    const ProcessResult result = device.Run("dump", {});
    EXPECT_EQ(result.exitStatus, exitStatus) << content;
    EXPECT_EQ(result.output, "") << content;
    EXPECT_TRUE(result.error.starts_with("corvane: ")) << result.error;
    EXPECT_EQ(Contains(result.error, "specification.xml:"), exitStatus == 2) << result.error;
    EXPECT_TRUE(Contains(result.error, complaint)) << content << result.error;
    EXPECT_EQ(LinesOf(result.error).size(), 1u) << result.error;
  }
}

TEST(BadSpecification, MissingFileAndFolderAreToldApart) {
  const RecordedDevice device("", "");
  const std::string folder = Utf8(std::filesystem::path(device.Specification()).parent_path());
  for (const auto& [file, complaint] :
       {std::pair{device.Specification() + "x", ": no such file\n"}, {folder, ": is a folder\n"}}) {
    const ProcessResult result = RunTool({"dump", "--device", device.Address(), "--spec", file});
    EXPECT_TRUE(result.error.ends_with(complaint)) << result.error;
    EXPECT_EQ(result.exitStatus, 2) << file;
  }
}

TEST(BadSpecification, MalformedXmlIsPlacedByLineAndColumn) {
  if (UnderWine()) GTEST_SKIP() << "Wine's parser tells no line and column";
  const RecordedDevice device("", "");
  for (const auto& [content, place] :
       {std::pair{"<DataMaps>\n  <a b='x & y'/>\n</DataMaps>", "specification.xml:2:"},
        {"<DataMaps>\n<a>\n</b>\n</DataMaps>", "specification.xml:3:"},
        {"<!DOCTYPE DataMaps>\n<DataMaps/>", "specification.xml:1:"}}) {
    device.Specify(content);
    const std::string error = device.Run("dump", {}).error;
    const std::size_t at = error.find(place);
    ASSERT_NE(at, std::string::npos) << content << error;
    const char column = error.at(at + std::string(place).size());
    EXPECT_TRUE(column >= '1' && column <= '9') << error;
  }
}

}  // namespace
}  // namespace Corvane::Test
