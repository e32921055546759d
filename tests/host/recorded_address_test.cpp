#include "host/recorded/recorded_address.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <thread>

#include "corvane/error_codes.h"
#include "tests/host/exchange.h"
#include "tests/support/cases.h"
#include "tests/support/hr.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class RecordedAddress : public ::testing::Test {
 protected:
  const std::map<std::string, std::string> m_files = {{"plain", "plain"},
                                                      {"deep/tree.xml", "<tree/>"},
                                                      {"both", "exact"},
                                                      {"both.xml", "extended"},
                                                      {"folder/inner", "inner"},
                                                      {"folder.xml", "beside the folder"},
                                                      {"empty", ""},
                                                      {"binary", "a\0b\r\n\x1a\tc\0"s}};
  TempFolder m_folder;
  Owned<Address> m_address;

  void SetUp() override {
    m_folder.Write("outside.xml", "secret");
    m_folder.Write("device/outside.xml", "secret");
    for (const auto& [name, content] : m_files) m_folder.Write("device/8080/" + name, content);
    m_address.reset(Host::CreateRecordedAddress(m_folder.Path() / "device"));
    ASSERT_TRUE(m_address);
  }
};

TEST_F(RecordedAddress, ServesWhatTheFolderHoldsAndNothingElse) {
  m_folder.Write("other/outside.xml", "secret");
  for (const Case& c : ReadCases("host/recorded_paths.txt")) {
    for (const wchar_t* const verb : {L"GET", L"POST"}) {
      const Exchanged seen = Exchange(m_address, c.Wide("path"),
                                      [&](HTTPRequest* request) { request->SetMethod(verb); });
      const std::string file = c.Text("file");
      EXPECT_HR(seen.result, S_OK) << c.Where();
      EXPECT_EQ(seen.status, file == "-" ? 404U : 200U) << c.Where();
      EXPECT_EQ(seen.body, file == "-" ? "" : m_files.at(file)) << c.Where();
      EXPECT_EQ(seen.failure.empty(), file != "-") << c.Where();
    }
  }
  // A whole path, and half a character.
  for (const std::wstring& path :
       {(m_folder.Path() / "outside.xml").wstring(),
        L'/' + (m_folder.Path() / "outside.xml").wstring(),
        L'/' + std::wstring(1, static_cast<wchar_t>(0xD800)) + L"plain"}) {
    EXPECT_EQ(Exchange(m_address, path).status, 404U) << testing::PrintToString(path);
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
  EXPECT_EQ(Exchange(m_address, L"/link_inside").body, "plain");
  for (const wchar_t* const path :
       {L"/link_outside", L"/link_folder/outside.xml", L"/link_sibling"}) {
    EXPECT_EQ(Exchange(m_address, path).status, 404U) << path;
  }
}

TEST_F(RecordedAddress, RefusesFilesAboveTheLimit) {
  constexpr std::uintmax_t kLimit = std::uintmax_t{64} << 20;
  const fs::path file = m_folder.Write("device/8080/large", "");
  fs::resize_file(file, kLimit);
  EXPECT_EQ(Exchange(m_address, L"/large").body.size(), kLimit);
  fs::resize_file(file, kLimit + 1);
  const Exchanged seen = Exchange(m_address, L"/large");
  EXPECT_HR(seen.result, ResultFromError(kErrorResponseTooLarge));
  EXPECT_EQ(seen.error, kErrorResponseTooLarge);
  EXPECT_EQ(seen.status, 0U);
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
  EXPECT_EQ(Exchange(m_address, L"/plain", [](HTTPRequest* r) { r->SetMethod(L"DELETE"); }).status,
            405U);
  Exchange(m_address, L"/plain", {}, 80);  // of port 8080 alone
  const wchar_t* const mine = m_address->GetLastFailure();
  std::thread([this] {
    EXPECT_NE(Exchange(m_address, L"/theirs", {}, 80).failure.find(L"/theirs"), std::wstring::npos);
  }).join();
  EXPECT_STREQ(mine, L"GET recorded port 80 /plain: HTTP status 404");
  EXPECT_STREQ(m_address->GetLastFailure(), L"GET recorded port 80 /theirs: HTTP status 404");
}

}  // namespace
}  // namespace Corvane::Test
