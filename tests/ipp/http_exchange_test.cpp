// One exchange over the host's transport, call by call.
#include <gtest/gtest.h>

#include <optional>
#include <regex>

#include "base/utf8.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "ipp/ipp_operations.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"
#include "tests/support/cases.h"
#include "tests/support/fake_device.h"
#include "tests/support/hr.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

class HttpExchangeTest : public ::testing::Test {
 protected:
  HttpExchangeTest() {
    m_request->SetUsername("user\xC3\xA9");
    m_request->SetPassword("secret");
    m_request->AddExtraHTTPHeader(L"X-Cache-Control-Too", L"1");
    m_device->Serve(kIppPort, L"/ipp/print", "body");
    for (IPPOperations* const each : {&*m_operations, &m_other}) {
      each->SetResourceURI("/ipp/print");
      each->SetAttributeName("all");
      each->SetTimeout(1500);
    }
  }
  ~HttpExchangeTest() override {
    m_operations.reset();
    EXPECT_EQ(1u, m_device->References());
    EXPECT_EQ("", m_device->faults);
  }

  FakeDevice::Answer& Answer() { return m_device->answers[{kIppPort, L"/ipp/print"}]; }
  HRESULT Ask(int operation) {
    return m_operations->SendIPPRequest(operation, &m_response, m_request.Get(), false);
  }
  HRESULT Print(bool chunked, int pieceLength, void* context = nullptr) {
    return m_operations->SendPrintJobRequest(&m_response, m_request.Get(), chunked, pieceLength,
                                             context, false);
  }
  HRESULT Piece(std::string_view bytes, void* context = nullptr) {
    m_operations->SetPrinterFileBufferContent(bytes.data(), static_cast<int>(bytes.size()));
    return Print(true, static_cast<int>(bytes.size()), context);
  }
  // A body as this operation's own request is, without a document.
  std::string Encoded(int operation) {
    char buffer[kIPPRequestSize];
    int length = 0;
    m_other.FormIPPRequestBasedOnOperation(buffer, operation, &length, m_request.Get());
    return std::string(buffer, static_cast<std::size_t>(length));
  }
  bool GaveRequestBack() const { return m_device->calls.back() == L"~HTTPRequest"; }

  const RefPtr<FakeDevice> m_device = RefPtr<FakeDevice>::Share(new FakeDevice);
  std::optional<IPPOperations> m_operations{std::in_place, m_device.Get()};
  IPPOperations m_other{nullptr};
  const RefPtr<IPPRequestBase> m_request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  HTTPResponse* m_response = nullptr;
};

TEST_F(HttpExchangeTest, CallsTheHostInOrder) {
  const std::string printJob = Encoded(IPPOperation::kPrintJob) + "%PDF";
  const std::vector<Case> ways = ReadCases("ipp/host_calls.txt");
  // What was called and sent since the last time is as the file says.
  auto expect = [&, way = ways.begin()](const std::string& body) mutable {
    SCOPED_TRACE(way->Where());
    EXPECT_EQ(body, m_device->lastRequestBody);
    EXPECT_STREQ("body", m_response->GetContent());
    std::string calls;
    for (const std::wstring& call : std::exchange(m_device->calls, {})) {
      if (call != L"~HTTPRequest") calls += (calls.empty() ? "" : "\n") + ToUtf8(call);
    }
    const std::regex size("(SetContentLength|SendBody) " + std::to_string(printJob.size()));
    EXPECT_EQ((way++)->Text("calls"), std::regex_replace(calls, size, "$1 SIZE"));
    m_operations->EndExchange();
    m_device->calls.clear();
  };
  EXPECT_HR(Ask(IPPOperation::kGetPrinterAttributes), S_OK);
  expect(Encoded(IPPOperation::kGetPrinterAttributes));

  RefPtr<HTTPRequest> own;
  m_device->CreateIPPHTTPRequest(own.Receive(), kIppPort);
  m_device->calls.clear();
  EXPECT_HR(m_operations->SendIPPRequest(own.Get(), m_request.Get(), IPPOperation::kCreateJob,
                                         &m_response),
            S_OK);
  expect(Encoded(IPPOperation::kCreateJob));

  m_operations->SetPrinterFileBufferContent("%PDF", 4);
  EXPECT_HR(Print(false, 0), S_OK);
  expect(printJob);

  const std::string big(0xABC, 'x');
  EXPECT_HR(Piece("%PDF", reinterpret_cast<void*>(9)), S_OK);
  m_operations->SetPrinterFileBufferContent(big.data(), 0xABC);
  EXPECT_HR(Print(true, 0xABD), E_FAIL);  // more than there is
  EXPECT_HR(Print(true, -1), E_FAIL);
  EXPECT_HR(Print(true, 1), S_OK);  // behind it the buffer stays as it was
  EXPECT_HR(Print(true, 0xABC), S_OK);
  EXPECT_EQ(nullptr, m_response);
  EXPECT_HR(Print(true, 0), S_OK);
  expect(printJob + 'x' + big);
  EXPECT_HR(Print(true, 0), S_OK);  // the next document begins, and ends without one
  EXPECT_HR(Print(true, 0), S_OK);
}

TEST_F(HttpExchangeTest, NamesTheReasonOfAFailure) {
  for (const Case& c : ReadCases("ipp/http_answers.txt")) {
    SCOPED_TRACE(c.Where());
    const std::string body = c.Text("body");
    Answer() = {body,
                static_cast<std::uint32_t>(c.Number("status")),
                static_cast<HRESULT>(c.Number("host")),
                body == "none",
                body == "null",
                static_cast<std::uint32_t>(c.Number("error"))};
    const auto expect = [&](const char* result, const char* error, const auto& run) {
      SetLastError(7);
      EXPECT_HR(run(), static_cast<HRESULT>(c.Number(result)));
      EXPECT_EQ(c.Text(error), std::to_string(GetLastError()));
      EXPECT_EQ(c.Number(result) == 0, m_response != nullptr);
      EXPECT_EQ(c.Number(result) != 0, GaveRequestBack());
    };
    expect("asked", "last", [&] { return Ask(IPPOperation::kGetPrinterAttributes); });
    expect("printed", "last2", [&] { return Print(false, 0); });
    EXPECT_HR(Piece("x"), S_OK);
    expect("printed", "last2", [&] { return Print(true, 0); });
  }
}

TEST_F(HttpExchangeTest, SendsNothingWhenThereIsNothingToSend) {
  EXPECT_HR(Ask(1), E_FAIL);
  EXPECT_HR(Ask(16385), E_FAIL);
  EXPECT_HR(Ask(IPPOperation::kGetJobs), E_FAIL);  // of nobody
  EXPECT_HR(m_operations->SendIPPRequest(2, &m_response, nullptr, false), E_FAIL);
  for (const bool withRequest : {false, true}) {
    RefPtr<HTTPRequest> request;
    if (withRequest) m_device->CreateIPPHTTPRequest(request.Receive(), kIppsPort);
    SetLastError(0);
    EXPECT_HR(m_operations->SendIPPRequest(request.Get(), withRequest ? nullptr : m_request.Get(),
                                           5, &m_response),
              E_FAIL);
    EXPECT_EQ(87u, GetLastError());
  }
  m_device->plainIppRequest = true;  // a document needs the extended one
  EXPECT_HR(Print(false, 0), E_FAIL);
  EXPECT_HR(Print(true, 0), E_FAIL);
  m_device->createResult = E_NOTIMPL;
  EXPECT_HR(Ask(2), E_FAIL);
  const TraceRecorder recorder(kTraceInfo);
  EXPECT_HR(Print(true, 0), E_FAIL);
  EXPECT_TRUE(recorder.HasMessage(16, L"Corvane::IPPOperations::SendPrintJobRequest",
                                  L"failed to createhttpRequest"));
  m_device->createResult = S_OK;
  m_device->nullRequest = true;
  EXPECT_HR(Ask(2), E_FAIL);
  EXPECT_HR(m_other.SendIPPRequest(11, &m_response, nullptr, false), E_FAIL);
  EXPECT_HR(m_other.SendPrintJobRequest(&m_response, m_request.Get(), true, 0, nullptr, false),
            E_FAIL);
  EXPECT_EQ(0, m_device->Requests());
  m_device->nullRequest = false;
  EXPECT_HR(Ask(16384), S_OK);
}

TEST_F(HttpExchangeTest, TakesTheDocumentAlongWithPrintJobOnly) {
  m_operations->SetPrinterFileBufferContent("%PDF", 4);
  m_operations->SetPrinterFileBufferContent(nullptr, 2);
  m_operations->SetPrinterFileBufferContent("x", -1);
  EXPECT_HR(Ask(IPPOperation::kPrintJob), S_OK);
  EXPECT_EQ(Encoded(IPPOperation::kPrintJob) + "%PDF", m_device->lastRequestBody);
  EXPECT_HR(Ask(IPPOperation::kPrintJobWithCredentials), S_OK);
  EXPECT_EQ(Encoded(IPPOperation::kPrintJob), m_device->lastRequestBody);
}

TEST_F(HttpExchangeTest, BeginsAnewAfterAChunkThatCouldNotBeSent) {
  Answer().error = 413;
  m_device->takesBodies = false;
  EXPECT_HR(Piece("a"), E_FAIL);
  EXPECT_EQ(413u, GetLastError());
  EXPECT_TRUE(GaveRequestBack());
  m_device->takesBodies = true;
  EXPECT_HR(Piece("b"), S_OK);
  m_device->takesBodies = false;
  EXPECT_HR(Piece("c"), E_FAIL);
  EXPECT_TRUE(GaveRequestBack());
  m_device->beginResult = E_FAIL;
  EXPECT_HR(Piece("d"), E_FAIL);
  EXPECT_EQ(0, m_device->Requests());
}

}  // namespace
}  // namespace Corvane::Test
