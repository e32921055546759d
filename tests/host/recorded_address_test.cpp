#include "host/recorded_address.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>

#include "tests/host/exchange.h"
#include "tests/support/hr.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class RecordedAddress : public ::testing::Test {
 protected:
  TempFolder m_folder;
  Owned<Address> m_address;

  void SetUp() override {
    m_folder.Write("outside.xml", "secret");
    m_folder.Write("device/outside.xml", "secret");
    m_folder.Write("device/8080/plain", "plain");
    m_folder.Write("device/8080/deep/tree.xml", "<tree/>");
    m_folder.Write("device/8080/both", "exact");
    m_folder.Write("device/8080/both.xml", "extended");
    m_folder.Write("device/8080/folder/inner", "inner");
    m_folder.Write("device/8080/folder.xml", "beside the folder");
    m_folder.Write("device/8080/empty", "");
    m_folder.Write("device/8080/binary",
                   "a\0b\r\n\x1a"
                   "c\0"s);
    m_address.reset(Host::CreateRecordedAddress(m_folder.Path() / "device"));
    ASSERT_TRUE(m_address);
  }
};

TEST_F(RecordedAddress, ServesWhatTheFolderHolds) {
  const struct {
    const char* name;
    const wchar_t* path;
    std::uint32_t status;
    std::string body;
  } kCases[] = {
      {"exact name", L"/plain", 200, "plain"},
      {"with the extension", L"/deep/tree.xml", 200, "<tree/>"},
      {"without the extension", L"/deep/tree", 200, "<tree/>"},
      {"exact before extended", L"/both", 200, "exact"},
      {"a folder is no file", L"/folder", 200, "beside the folder"},
      {"no slash in front", L"plain", 200, "plain"},
      {"empty file", L"/empty", 200, ""},
      {"bytes unchanged", L"/binary", 200,
       "a\0b\r\n\x1a"
       "c\0"s},
      {"no such file", L"/absent", 404, ""},
      {"a folder", L"/deep", 404, ""},
      {"the root", L"/", 404, ""},
      {"nothing", L"", 404, ""},
      {"a query is part of the name", L"/plain?x=1", 404, ""},
  };
  for (const auto& row : kCases) {
    for (const wchar_t* const verb : {L"GET", L"POST"}) {
      const Exchanged seen = Exchange(m_address.get(), 8080, row.path,
                                      [verb](HTTPRequest* request) { request->SetMethod(verb); });
      EXPECT_HR(seen.result, S_OK) << row.name;
      EXPECT_EQ(seen.status, row.status) << row.name;
      EXPECT_EQ(seen.body, row.body) << row.name;
      EXPECT_EQ(seen.failure.empty(), row.status == 200) << row.name;
    }
  }
}

TEST_F(RecordedAddress, NoPathLeavesTheFolder) {
  fs::create_directory(m_folder.Path() / "other");
  m_folder.Write("other/outside.xml", "secret");
  const std::wstring absolute = (m_folder.Path() / "outside.xml").wstring();
  const struct {
    const char* name;
    std::wstring path;
  } kCases[] = {
      {"parent", L"/../outside.xml"},
      {"parents", L"/../../outside.xml"},
      {"parent, extension added", L"/../outside"},
      {"parent inside", L"/deep/../plain"},
      {"parent of the folder's sibling", L"/deep/../../../other/outside.xml"},
      {"backslash", L"/..\\outside.xml"},
      {"backslash inside", L"/deep\\tree.xml"},
      {"dots and spaces that Windows drops", L"/.. /outside.xml"},
      {"more dots", L"/.../outside.xml"},
      {"dot", L"/./plain"},
      {"dot at the end", L"/plain."},
      {"empty segment", L"//plain"},
      {"empty segment inside", L"/deep//tree.xml"},
      {"slash at the end", L"/plain/"},
      {"absolute", L"/" + absolute},
      {"absolute alone", absolute},
      {"encoded dots", L"/%2e%2e/outside.xml"},
      {"encoded slash", L"/..%2foutside.xml"},
      {"wide slash", L"/..\uFF0Foutside.xml"},
      {"lone surrogate", std::wstring(L"/") + static_cast<wchar_t>(0xD800) + L"plain"},
      {"drive", L"/C:/outside.xml"},
      {"stream", L"/plain:$DATA"},
      {"stream with its type", L"/plain::$DATA"},
      {"another host", L"http://evil/outside.xml"},
      {"share", L"//evil/share/outside.xml"},
      {"line end", L"/plain\r\nX: y"},
      {"device", L"/NUL"},
      {"device with an extension", L"/com1.xml"},
      {"wildcard", L"/plai?"},
  };
  for (const auto& row : kCases) {
    const Exchanged seen = Exchange(m_address.get(), 8080, row.path.c_str());
    EXPECT_EQ(seen.status, 404U) << row.name;
    EXPECT_EQ(seen.body, "") << row.name;
  }
}

TEST_F(RecordedAddress, FollowsLinksOnlyInside) {
  const fs::path port = m_folder.Path() / "device" / "8080";
  std::error_code error;
  fs::create_symlink(port / "plain", port / "link_inside", error);
  if (error) GTEST_SKIP() << "this system makes no links: " << error.message();
  fs::create_symlink(m_folder.Path() / "outside.xml", port / "link_outside");
  fs::create_directory_symlink(m_folder.Path(), port / "link_folder");
  // A sibling whose name begins with the folder's.
  m_folder.Write("device2/secret", "secret");
  fs::create_symlink(m_folder.Path() / "device2" / "secret", port / "link_sibling");
  EXPECT_EQ(Exchange(m_address.get(), 8080, L"/link_inside").body, "plain");
  for (const wchar_t* const path :
       {L"/link_outside", L"/link_folder/outside.xml", L"/link_sibling"}) {
    EXPECT_EQ(Exchange(m_address.get(), 8080, path).status, 404U) << path;
  }
}

TEST_F(RecordedAddress, RefusesFilesAboveTheLimit) {
  constexpr std::uintmax_t kLimit = std::uintmax_t{64} << 20;
  const fs::path file = m_folder.Write("device/8080/large", "");
  fs::resize_file(file, kLimit);
  EXPECT_EQ(Exchange(m_address.get(), 8080, L"/large").body.size(), kLimit);
  fs::resize_file(file, kLimit + 1);
  const Exchanged seen = Exchange(m_address.get(), 8080, L"/large");
  EXPECT_HR(seen.result, static_cast<HRESULT>(0x80072F98));
  EXPECT_EQ(seen.error, 12184U);
  EXPECT_EQ(seen.status, 0U);
}

TEST_F(RecordedAddress, SeparatesPortsAndTellsFailures) {
  EXPECT_EQ(Exchange(m_address.get(), 80, L"/plain").failure,
            L"GET recorded port 80 /plain: HTTP status 404");
  EXPECT_EQ(Exchange(m_address.get(), 8080, L"/plain").failure, L"");
  EXPECT_EQ(Exchange(m_address.get(), 8080, L"/plain",
                     [](HTTPRequest* request) { request->SetMethod(L"DELETE"); })
                .status,
            405U);
}

TEST_F(RecordedAddress, EmptiesOutputsOfWhatItCannotMake) {
  auto* request = reinterpret_cast<HTTPRequest*>(this);
  EXPECT_HR(m_address->CreateHTTPRequest(&request, 0), E_INVALIDARG);
  EXPECT_EQ(request, nullptr);
  request = reinterpret_cast<HTTPRequest*>(this);
  EXPECT_HR(m_address->CreateIPPHTTPRequest(&request, 631), E_NOTIMPL);
  EXPECT_EQ(request, nullptr);
  auto* connection = reinterpret_cast<MIBConnection*>(this);
  EXPECT_HR(m_address->GetMIBConnection(&connection), E_NOTIMPL);
  EXPECT_EQ(connection, nullptr);
  EXPECT_EQ(Host::CreateRecordedAddress(m_folder.Path() / "absent"), nullptr);
  EXPECT_EQ(Host::CreateRecordedAddress(m_folder.Path() / "outside.xml"), nullptr);
}

TEST_F(RecordedAddress, ARequestServesOneExchangeAndOutlivesItsAddress) {
  HTTPRequest* made = nullptr;
  ASSERT_HR(m_address->CreateHTTPRequest(&made, 8080), S_OK);
  const Owned<HTTPRequest> request(made);
  m_address.reset();
  request->SetURI(L"/plain");
  HTTPResponse* first = nullptr;
  ASSERT_HR(request->GetResponse(&first), S_OK);
  auto* second = reinterpret_cast<HTTPResponse*>(this);
  EXPECT_TRUE(FAILED(request->GetResponse(&second)));
  EXPECT_EQ(second, nullptr);
  EXPECT_STREQ(first->GetContent(), "plain");
}

TEST_F(RecordedAddress, AFailureTextStaysWhileOtherThreadsExchange) {
  Exchange(m_address.get(), 80, L"/mine");
  const wchar_t* const mine = m_address->GetLastFailure();
  std::thread([this] {
    EXPECT_NE(Exchange(m_address.get(), 80, L"/theirs").failure.find(L"/theirs"),
              std::wstring::npos);
  }).join();
  EXPECT_STREQ(mine, L"GET recorded port 80 /mine: HTTP status 404");
  EXPECT_STREQ(m_address->GetLastFailure(), L"GET recorded port 80 /theirs: HTTP status 404");
}

}  // namespace
}  // namespace Corvane::Test
