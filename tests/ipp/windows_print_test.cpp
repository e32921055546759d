// The Windows library prints to a real printer, whose port and spool folder the environment gives
// (see tests/support/with_ippeveprinter).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "tests/ipp/callers_attribute.h"
#include "tests/ipp/streamed_document.h"
#include "tests/support/hr.h"
#include "tests/support/peers/socket_address.h"

namespace Corvane::Test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kMimeMediaType = 0x49;  // RFC 8010, 3.5.2

class WindowsPrint : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* const port = std::getenv("CORVANE_TEST_PRINTER_PORT");
    const char* const spool = std::getenv("CORVANE_TEST_PRINTER_SPOOL");
    if (!port || !spool) GTEST_SKIP() << "the environment gives no printer";
    m_spool = std::string("Z:") + spool;  // where Wine has the files of the other system
    for (const auto& file : DocumentsIn(m_spool)) std::filesystem::remove(file);
    m_address = RefPtr<Address>::Adopt(
        CreateSocketAddress(static_cast<std::uint16_t>(std::atoi(port)), &m_requests));
    m_provider = RefPtr<IPPProvider>::Adopt(
        CreateIPPPrintProvider(m_address.Get(), L"ipp://localhost/ipp/print"));
    ASSERT_TRUE(m_provider) << GetLastError() << m_address->GetLastFailure();
    m_request->SetRequestingUserName("anna");
    m_request->SetJobName("letter");
    m_request->AddIPPRequest(
        CallersText(kIPPOperationGroup, kMimeMediaType, "document-format", "text/plain"));
  }

  // The one document that the printer has, which it has no longer then.
  void ExpectPrinted(std::string_view document) const {
    EXPECT_STREQ("0", m_response->GetSuccessStatus());
    EXPECT_GT(m_response->GetJobID(), 0);
    const auto files = DocumentsIn(m_spool);
    ASSERT_EQ(1u, files.size());
    EXPECT_TRUE(Holds(files[0], document));
    std::filesystem::remove(files[0]);
  }

  std::filesystem::path m_spool;
  std::atomic<int> m_requests{0};
  RefPtr<Address> m_address;
  RefPtr<IPPProvider> m_provider;
  const RefPtr<IPPRequestBase> m_request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  const RefPtr<IPPResponseBase> m_response = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
};

TEST_F(WindowsPrint, BringsEveryByteOfALargeDocument) {
  const std::string document = RandomDocument(std::size_t{50} << 20);
  for (const bool chunked : {false, true}) {
    SCOPED_TRACE(chunked ? "in pieces" : "whole");
    ASSERT_HR(chunked ? PrintPieces(m_provider.Get(), m_request.Get(), m_response.Get(), document)
                      : m_provider->PrintJob(m_request.Get(), m_response.Get(), document.data(),
                                             static_cast<std::int32_t>(document.size()), false),
              S_OK)
        << GetLastError();
    ExpectPrinted(document);
  }
}

// By two threads of the system's, that ask while the sender rests, and end with the document.
TEST_F(WindowsPrint, WatchesTheJobMeanwhile) {
  constexpr int kPolls = 3;  // the printer once, the job twice, a second apart
  ASSERT_HR(m_provider->PrintJob(m_request.Get(), m_response.Get(), "first ", 6, true), S_OK);
  const int wanted = m_requests.load() + kPolls;
  const Clock::time_point limit = Clock::now() + std::chrono::seconds(10);
  while (m_requests.load() < wanted && Clock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_GE(m_requests.load(), wanted);
  ASSERT_HR(m_provider->PrintJobWrite(m_request.Get(), m_response.Get(), "second", 6), S_OK);
  ASSERT_HR(m_provider->PrintJobWrite(m_request.Get(), m_response.Get(), nullptr, 0), S_OK);
  ExpectPrinted("first second");
}

TEST_F(WindowsPrint, DropsAHalfSentDocumentWithItsProvider) {
  ASSERT_HR(m_provider->PrintJob(m_request.Get(), m_response.Get(), "first ", 6, true), S_OK);
  const Clock::time_point start = Clock::now();
  m_provider.Reset();
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
  const int requests = m_requests.load();
  std::this_thread::sleep_for(std::chrono::milliseconds(1200));  // longer than between two polls
  EXPECT_EQ(requests, m_requests.load());
}

}  // namespace
}  // namespace Corvane::Test
