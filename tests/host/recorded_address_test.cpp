#include "host/recorded/recorded_address.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>

#include "tests/host/exchange.h"
#include "tests/support/cases.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

struct RecordedAddress : testing::Test {
  RecordedAddress() {
    for (const std::string file :
         {"plain", "deep/tree.xml", "both", "both.xml", "folder/inner", "folder.xml"}) {
      m_folder.Write("device/8080/" + file, file);
    }
    m_folder.Write("device/8080/empty", "");
    m_folder.Write("device/8080/binary", "a\0b\r\n\x1a\tc\0"s);
    // A sibling's name begins with the folder's.
    for (const std::string folder : {"", "device/", "device2/", "other/"}) {
      m_folder.Write(folder + "outside.xml", "secret");
    }
    m_address.reset(Host::CreateRecordedAddress(m_folder.Path() / "device"));
  }
  std::string Get(const std::wstring& path) const { return Told(Exchange(m_address, path)); }

  TempFolder m_folder;
  Owned<Address> m_address;
};

TEST_F(RecordedAddress, ServesWhatTheFolderHoldsAndNothingElse) {
  for (const Case& c : ReadCases("host/recorded_paths.txt")) {
    for (const wchar_t* const verb : {L"GET", L"POST"}) {
      const Exchanged seen = Exchange(m_address, c.Wide("path"),
                                      [&](HTTPRequest* request) { request->SetMethod(verb); });
      EXPECT_EQ(Told(seen), c.Text("came")) << c.Where();
      EXPECT_EQ(seen.failure.empty(), seen.status == 200) << c.Where();
    }
  }
  // A whole path, and half a character.
  const std::wstring outside = (m_folder.Path() / "outside.xml").wstring();
  for (const std::wstring& path :
       {outside, L'/' + outside, L'/' + std::wstring(1, static_cast<wchar_t>(0xD800)) + L"plain"}) {
    EXPECT_EQ(Get(path), "404 ") << testing::PrintToString(path);
  }
}

TEST_F(RecordedAddress, FollowsLinksOnlyInside) {
  const fs::path port = m_folder.Path() / "device" / "8080";
  std::error_code error;
  fs::create_symlink(port / "plain", port / "link_inside", error);
  if (error) GTEST_SKIP() << "this system makes no links: " << error.message();
  fs::create_symlink(m_folder.Path() / "outside.xml", port / "link_outside");
  fs::create_directory_symlink(m_folder.Path(), port / "link_folder");
  fs::create_symlink(m_folder.Path() / "device2" / "outside.xml", port / "link_sibling");
  EXPECT_EQ(Get(L"/link_inside"), "200 plain");
  for (const wchar_t* const path :
       {L"/link_outside", L"/link_folder/outside.xml", L"/link_sibling"}) {
    EXPECT_EQ(Get(path), "404 ") << path;
  }
}

TEST_F(RecordedAddress, RefusesFilesAboveTheLimit) {
  constexpr std::uintmax_t kLimit = std::uintmax_t{64} << 20;
  const fs::path file = m_folder.Write("device/8080/large", "");
  fs::resize_file(file, kLimit);
  EXPECT_EQ(Exchange(m_address, L"/large").body.size(), kLimit);
  fs::resize_file(file, kLimit + 1);
  EXPECT_EQ(Get(L"/large"), std::to_string(kErrorResponseTooLarge));
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
