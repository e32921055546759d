// Specifications that cannot be read: one line that names the file.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/wine.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

ProcessResult Dump(const TempFolder& folder, const std::filesystem::path& specification) {
  return RunTool(
      {"dump", "--device", "recorded:" + Utf8(folder.Path()), "--spec", Utf8(specification)});
}

TEST(BadSpecification, IsRefusedInOneLineThatNamesTheFile) {
  const struct {
    const char* name;
    std::string content;
    const char* complaint;
  } kCases[] = {
      {"empty", "", "the file is empty"},
      {"blank", " \n\n", "cannot be read as XML"},
      {"text", "Model = //Model\n", "cannot be read as XML"},
      {"binary", std::string("\x89PNG\r\n\x1a\n\0\0", 10), "cannot be read as XML"},
      {"cut short", "<DataMaps>\n<XMLDataMap Protocol='WS'>\n", "cannot be read as XML"},
      {"another root", "<Maps/>", "the root element is not DataMaps"},
      {"root in lower case", "<datamaps/>", "the root element is not DataMaps"},
      {"deeper down", "<x><DataMaps/></x>", "the root element is not DataMaps"},
  };
  for (const auto& row : kCases) {
    const TempFolder folder;
    const auto file = folder.Write("bad.xml", row.content);
    const ProcessResult result = Dump(folder, file);
    EXPECT_EQ(result.exitStatus, 2) << row.name;
    EXPECT_EQ(result.output, "") << row.name;
    EXPECT_EQ(result.error.rfind("corvane: ", 0), 0u) << row.name;
    EXPECT_NE(result.error.find("bad.xml:"), std::string::npos) << row.name << result.error;
    EXPECT_NE(result.error.find(row.complaint), std::string::npos) << row.name << result.error;
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << row.name;
  }
}

TEST(BadSpecification, WithoutADataMapFitsNoDevice) {
  for (const char* content : {"<DataMaps/>", "<DataMaps><!-- soon --></DataMaps>"}) {
    const TempFolder folder;
    const ProcessResult result = Dump(folder, folder.Write("none.xml", content));
    EXPECT_EQ(result.exitStatus, 3) << content;
    EXPECT_NE(result.error.find("holds no data map"), std::string::npos) << result.error;
  }
}

TEST(BadSpecification, MissingFileAndFolderAreToldApart) {
  const TempFolder folder;
  const ProcessResult missing = Dump(folder, folder.Path() / "gone.xml");
  EXPECT_NE(missing.error.find("gone.xml: no such file\n"), std::string::npos) << missing.error;
  EXPECT_EQ(missing.exitStatus, 2);
  const ProcessResult directory = Dump(folder, folder.Path());
  EXPECT_NE(directory.error.find(": is a folder\n"), std::string::npos) << directory.error;
  EXPECT_EQ(directory.exitStatus, 2);
}

TEST(BadSpecification, MalformedXmlIsPlacedByLineAndColumn) {
  if (UnderWine()) GTEST_SKIP() << "Wine's parser tells no line and column";
  const struct {
    const char* name;
    std::string content;
    const char* place;
  } kCases[] = {
      {"bare ampersand", "<DataMaps>\n  <a b='x & y'/>\n</DataMaps>", "bad.xml:2:"},
      {"crossed tags", "<DataMaps>\n<a>\n</b>\n</DataMaps>", "bad.xml:3:"},
      {"document type", "<!DOCTYPE DataMaps>\n<DataMaps/>", "bad.xml:1:"},
  };
  for (const auto& row : kCases) {
    const TempFolder folder;
    const ProcessResult result = Dump(folder, folder.Write("bad.xml", row.content));
    const std::size_t place = result.error.find(row.place);
    ASSERT_NE(place, std::string::npos) << row.name << ": " << result.error;
    const char column = result.error[place + std::string(row.place).size()];
    EXPECT_TRUE(column >= '1' && column <= '9') << row.name << ": " << result.error;
    EXPECT_EQ(result.exitStatus, 2) << row.name;
  }
}

}  // namespace
}  // namespace Corvane::Test
