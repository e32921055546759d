// Documents and a real printer that keeps what it gets: over ipp and ipps, whole and in pieces, and
// cancelled (Linux).
#include <gtest/gtest.h>
#include <poll.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "corvane/error_codes.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "host/network_address.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"
#include "tests/ipp/callers_attribute.h"
#include "tests/ipp/decoded.h"
#include "tests/ipp/streamed_document.h"
#include "tests/support/hr.h"
#include "tests/support/peers/ippeveprinter.h"
#include "tests/support/peers/private_network.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

constexpr std::size_t kDocumentBytes = std::size_t{50} << 20;
constexpr auto kErrorTimeout = std::chrono::seconds(20);

class RealPrint : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const std::string failure = PrivateNetworkFailure(); !failure.empty()) {
      GTEST_SKIP() << failure;
    }
    ASSERT_NO_FATAL_FAILURE(StartPrinter());
    Host::NetworkOptions options;
    options.host = L"127.0.0.1";
    options.portMap = {{kIppsPort, 631}};  // the printer speaks plainly and over TLS on one port
    options.pinFile = (m_folder.Path() / "pins").string();
    m_address = RefPtr<Address>::Adopt(Host::CreateNetworkAddress(options));
    m_request->SetRequestingUserName("anna");
    m_request->SetJobName("letter");
    m_request->AddIPPRequest(
        CallersText(kIPPOperationGroup, IPPTag::kMimeMediaType, "document-format", "text/plain"));
  }

  // Its keys are its own. A job is processed as long as there is a file "hold".
  void StartPrinter() {
    m_printer.emplace();
    const std::filesystem::path folder = m_printer->Folder().Path();
    const std::filesystem::path command = m_printer->Folder().Write(
        "print", "#!/bin/sh\nwhile [ -e '" + folder.string() + "/hold' ]; do sleep 0.02; done\n");
    std::filesystem::permissions(command, std::filesystem::perms::owner_all);
    std::filesystem::create_directory(folder / "keys");
    ASSERT_TRUE(m_printer->Start("-f text/plain -K keys -c '" + command.string() + "'", 631))
        << m_printer->Failure();
  }

  RefPtr<IPPProvider> MakeProvider(bool secure) const {
    return RefPtr<IPPProvider>::Adopt(
        secure ? CreateSecureIPPPrintProvider(m_address.Get(), L"ipps://127.0.0.1/ipp/print", 0)
               : CreateIPPPrintProvider(m_address.Get(), L"ipp://127.0.0.1/ipp/print"));
  }
  HRESULT PrintWhole(IPPProvider* provider, std::string_view document) const {
    return provider->PrintJob(m_request.Get(), m_response.Get(), document.data(),
                              static_cast<std::int32_t>(document.size()), false);
  }
  // Of the job that was printed last, asked of the printer until it is the one wanted.
  std::string AwaitState(IPPProvider* provider, std::string_view wanted) const {
    const auto end = std::chrono::steady_clock::now() + kErrorTimeout;
    for (;;) {
      _variant_t value(7L, VT_I4);
      EXPECT_HR(
          provider->GetIPPValue("job-state", true, &value, m_response->GetJobURI(), nullptr, 0),
          S_OK);
      std::string state = Shown(value);
      if (state == wanted || std::chrono::steady_clock::now() > end) return state;
      poll(nullptr, 0, 10);
    }
  }
  // Whether another client sees a job that goes on; what it says, when it says neither.
  static std::string GoingOn() {
    const std::string output =
        RunProcess({"ipptool", "-tv", "ipp://127.0.0.1:631/ipp/print", "get-jobs.test"}).output;
    if (output.find("status-code = successful-ok") == std::string::npos) return output;
    return output.find("job-id (integer)") != std::string::npos ? "a job" : "none";
  }

  const TempFolder m_folder;
  std::optional<Ippeveprinter> m_printer;
  RefPtr<Address> m_address;
  const RefPtr<IPPRequestBase> m_request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  const RefPtr<IPPResponseBase> m_response = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
};

// Over TLS, or plainly.
class RealPrintOver : public RealPrint, public ::testing::WithParamInterface<bool> {};

INSTANTIATE_TEST_SUITE_P(Scheme, RealPrintOver, ::testing::Bool(),
                         [](const auto& test) { return test.param ? "ipps" : "ipp"; });

TEST_P(RealPrintOver, BringsEveryByteOfALargeDocument) {
  const std::string document = RandomDocument(kDocumentBytes);
  const auto provider = MakeProvider(GetParam());
  ASSERT_TRUE(provider) << GetLastError() << m_address->GetLastFailure();
  for (const bool chunked : {false, true}) {
    SCOPED_TRACE(chunked ? "in pieces" : "whole");
    ASSERT_HR(chunked ? PrintPieces(provider.Get(), m_request.Get(), m_response.Get(), document)
                      : PrintWhole(provider.Get(), document),
              S_OK)
        << GetLastError();
    EXPECT_EQ("9", AwaitState(provider.Get(), "9"));
    const auto files = DocumentsIn(m_printer->SpoolFolder());
    ASSERT_EQ(1u, files.size()) << ::testing::PrintToString(files);
    EXPECT_TRUE(Holds(files[0], document));
    std::filesystem::remove(files[0]);
  }
}

TEST_P(RealPrintOver, LeavesThePrinterWithoutACancelledJob) {
  const auto provider = MakeProvider(GetParam());
  ASSERT_TRUE(provider) << GetLastError() << m_address->GetLastFailure();
  const std::filesystem::path hold = m_printer->Folder().Write("hold", "");
  ASSERT_HR(PrintWhole(provider.Get(), "text"), S_OK);
  EXPECT_EQ("5", AwaitState(provider.Get(), "5"));
  EXPECT_EQ("a job", GoingOn());
  EXPECT_HR(provider->CancelJob(m_request.Get(), m_response.Get()), S_OK);
  std::filesystem::remove(hold);
  EXPECT_EQ("7", AwaitState(provider.Get(), "7"));
  EXPECT_EQ("none", GoingOn());
  EXPECT_HR(provider->CancelJob(m_request.Get(), m_response.Get()), S_FALSE);
}

TEST_P(RealPrintOver, LeavesThePrinterWithoutADocumentThatIsCancelledHalfSent) {
  const auto provider = MakeProvider(GetParam());
  ASSERT_TRUE(provider) << GetLastError() << m_address->GetLastFailure();
  const std::string piece = RandomDocument(100'000);
  const auto length = static_cast<std::int32_t>(piece.size());
  const auto write = [&] {
    return provider->PrintJobWrite(m_request.Get(), m_response.Get(), piece.data(), length);
  };
  ASSERT_HR(provider->PrintJob(m_request.Get(), m_response.Get(), piece.data(), length, true),
            S_OK);
  ASSERT_HR(write(), S_OK);
  EXPECT_EQ("a job", GoingOn());
  EXPECT_HR(provider->CancelJob(m_request.Get(), m_response.Get()), S_OK);
  EXPECT_HR(write(), E_FAIL);
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
  EXPECT_EQ("7", AwaitState(provider.Get(), "7"));
  EXPECT_EQ("none", GoingOn());
  // The next one has nothing of it.
  ASSERT_HR(PrintPieces(provider.Get(), m_request.Get(), m_response.Get(), piece), S_OK);
  EXPECT_EQ("9", AwaitState(provider.Get(), "9"));
}

TEST_F(RealPrint, TrustsTheKeyOfThePrinterOnFirstUseAndNoOtherOne) {
  const auto provider = MakeProvider(true);
  ASSERT_TRUE(provider) << GetLastError() << m_address->GetLastFailure();
  m_printer.reset();
  ASSERT_NO_FATAL_FAILURE(StartPrinter());
  SetLastError(0);
  EXPECT_FALSE(MakeProvider(true));
  EXPECT_EQ(kErrorSecureFailure, GetLastError());
  EXPECT_HR(PrintWhole(provider.Get(), "text"), E_FAIL);
  EXPECT_EQ(kErrorSecureFailure, GetLastError());
  EXPECT_TRUE(DocumentsIn(m_printer->SpoolFolder()).empty());
  EXPECT_TRUE(MakeProvider(false)) << GetLastError();
}

}  // namespace
}  // namespace Corvane::Test
