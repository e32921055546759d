// A real printer on port 631, over the reference host (Linux).
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "host/network_address.h"
#include "ipp/wire/codes.h"
#include "tests/ipp/callers_attribute.h"
#include "tests/ipp/decoded.h"
#include "tests/ipp/streamed_document.h"
#include "tests/support/hr.h"
#include "tests/support/peers/ippeveprinter.h"
#include "tests/support/peers/private_network.h"

namespace Corvane::Test {
namespace {

class RealPrinter : public ::testing::TestWithParam<bool> {
 protected:
  // A job is processed as long as there is a file "hold". The printer speaks plainly and over TLS
  // on one port.
  void SetUp() override {
    if (const std::string failure = PrivateNetworkFailure(); !failure.empty()) {
      GTEST_SKIP() << failure;
    }
    const TempFolder& folder = m_printer.Folder();
    const auto command = folder.Write("print", "#!/bin/sh\nwhile [ -e '" + folder.Path().string() +
                                                   "/hold' ]; do sleep 0.02; done\n");
    std::filesystem::permissions(command, std::filesystem::perms::owner_all);
    std::filesystem::create_directory(folder.Path() / "keys");
    ASSERT_TRUE(m_printer.Start("-f text/plain -K keys -c '" + command.string() + "'", kIppPort))
        << m_printer.Failure();
    Host::NetworkOptions options;
    options.host = L"127.0.0.1";
    options.portMap = {{kIppsPort, kIppPort}};
    options.pinFile = (folder.Path() / "pins").string();
    m_address = RefPtr<Address>::Adopt(Host::CreateNetworkAddress(options));
    m_provider = RefPtr<IPPProvider>::Adopt(
        GetParam() ? CreateSecureIPPPrintProvider(m_address.Get(), L"ipps://127.0.0.1/ipp/print", 0)
                   : CreateIPPPrintProvider(m_address.Get(), L"ipp://127.0.0.1/ipp/print"));
    ASSERT_TRUE(m_provider) << GetLastError() << m_address->GetLastFailure();
    m_request->SetRequestingUserName("anna");
    m_request->SetJobName("letter");
    m_request->AddIPPRequest(
        CallersText(kIPPOperationGroup, IPPTag::kMimeMediaType, "document-format", "text/plain"));
  }

  HRESULT Print(std::string_view document, bool chunked) const {
    return m_provider->PrintJob(m_request.Get(), m_response.Get(), document.data(),
                                static_cast<std::int32_t>(document.size()), chunked);
  }
  HRESULT Cancel() const { return m_provider->CancelJob(m_request.Get(), m_response.Get()); }
  // Of the job that was printed last, asked of the printer until it is the one wanted.
  void AwaitState(std::string_view wanted) const {
    std::string state;
    for (int i = 0; i < 2000 && state != wanted; ++i) {
      state = Asked([this](VARIANT* value) {
        return m_provider->GetIPPValue("job-state", true, value, m_response->GetJobURI(), nullptr,
                                       0);
      });
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(wanted, state);
  }

  Ippeveprinter m_printer;
  RefPtr<Address> m_address;
  RefPtr<IPPProvider> m_provider;
  const RefPtr<IPPRequestBase> m_request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  const RefPtr<IPPResponseBase> m_response = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
};
INSTANTIATE_TEST_SUITE_P(Scheme, RealPrinter, ::testing::Bool(),
                         [](const auto& scheme) { return scheme.param ? "ipps" : "ipp"; });

TEST_P(RealPrinter, KeepsEveryByteOfADocument) {
  const std::string document = RandomDocument(std::size_t{50} << 20);
  for (const bool chunked : {false, true}) {
    ASSERT_HR(chunked ? PrintPieces(m_provider.Get(), m_request.Get(), m_response.Get(), document)
                      : Print(document, false),
              S_OK);
    EXPECT_STREQ("0", m_response->GetSuccessStatus());
    AwaitState("9");
    const auto files = DocumentsIn(m_printer.SpoolFolder());
    ASSERT_EQ(1u, files.size()) << ::testing::PrintToString(files);
    EXPECT_TRUE(Holds(files[0], document));
    std::filesystem::remove(files[0]);
  }
}

TEST_P(RealPrinter, CancelsWhatItProcessesAndWhatItHasHalf) {
  const auto hold = m_printer.Folder().Write("hold", "");
  ASSERT_HR(Print("text", false), S_OK);
  AwaitState("5");
  EXPECT_HR(Cancel(), S_OK);
  std::filesystem::remove(hold);
  AwaitState("7");
  EXPECT_HR(Cancel(), S_FALSE);
  ASSERT_HR(Print("half", true), S_OK);
  EXPECT_HR(CancelPrintJob(m_provider.Get(), m_response.Get(), 20'000), S_OK);
  EXPECT_HR(m_provider->PrintJobWrite(m_request.Get(), m_response.Get(), "more", 4),
            S_DEVICECANCELED);
  AwaitState("7");
  ASSERT_HR(Print("the next one", false), S_OK);
  AwaitState("9");
}

}  // namespace
}  // namespace Corvane::Test
