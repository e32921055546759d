#include "host/recorded/recorded_address.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "corvane/error_codes.h"
#include "tests/host/exchange.h"
#include "tests/support/hr.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

const std::string kBinary = "a\0b\r\n\x1a\tc\0"s;

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
    m_folder.Write("device/8080/binary", kBinary);
    m_address.reset(Host::CreateRecordedAddress(m_folder.Path() / "device"));
    ASSERT_TRUE(m_address);
  }
};

TEST_F(RecordedAddress, ServesWhatTheFolderHolds) {
  using Case = std::pair<const wchar_t*, std::string>;
  for (const auto& [path, body] : {Case{L"/plain", "plain"}, Case{L"/deep/tree.xml", "<tree/>"},
                                   Case{L"/deep/tree", "<tree/>"}, Case{L"/both", "exact"},
                                   Case{L"/folder", "beside the folder"}, Case{L"plain", "plain"},
                                   Case{L"/empty", ""}, Case{L"/binary", kBinary}}) {
    for (const wchar_t* const verb : {L"GET", L"POST"}) {
      const Exchanged seen =
          Exchange(m_address, path, [&](HTTPRequest* request) { request->SetMethod(verb); });
      EXPECT_HR(seen.result, S_OK) << path;
      EXPECT_EQ(seen.status, 200U) << path;
      EXPECT_EQ(seen.body, body) << path;
      EXPECT_EQ(seen.failure, L"") << path;
    }
  }
}

TEST_F(RecordedAddress, NoPathLeavesTheFolder) {
  m_folder.Write("other/outside.xml", "secret");
  const std::wstring absolute = (m_folder.Path() / "outside.xml").wstring();
  const std::wstring surrogate(1, static_cast<wchar_t>(0xD800));
  for (const std::wstring& path : std::vector<std::wstring>{
           L"/absent", L"/deep", L"/", L"", L"/plain?x=1",
           // up
           L"/../outside.xml", L"/../../outside.xml", L"/../outside", L"/deep/../plain",
           L"/deep/../../../other/outside.xml", L"/..\\outside.xml", L"/deep\\tree.xml",
           // what Windows drops
           L"/.. /outside.xml", L"/.../outside.xml", L"/./plain", L"/plain.",
           // empty segments, and whole paths
           L"//plain", L"/deep//tree.xml", L"/plain/", L"/" + absolute, absolute,
           // other spellings
           L"/%2e%2e/outside.xml", L"/..%2foutside.xml", L"/..\uFF0Foutside.xml",
           L"/" + surrogate + L"plain", L"/plain\r\nX: y",
           // other places, and what is no file
           L"/C:/outside.xml", L"/plain:$DATA", L"/plain::$DATA", L"http://evil/outside.xml",
           L"//evil/share/outside.xml", L"/NUL", L"/com1.xml", L"/plai?"}) {
    const Exchanged seen = Exchange(m_address, path);
    EXPECT_EQ(seen.status, 404U) << testing::PrintToString(path);
    EXPECT_EQ(seen.body, "") << testing::PrintToString(path);
    EXPECT_NE(seen.failure, L"") << testing::PrintToString(path);
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
