#include <gtest/gtest.h>

#include <vector>

#include "corvane/error_codes.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "ipp/ipp_operations.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"
#include "tests/support/fake_device.h"
#include "tests/support/hr.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

constexpr HRESULT kHostFailure = ResultFromError(kErrorTimeout);

class HttpExchangeTest : public ::testing::Test {
 protected:
  HttpExchangeTest() {
    m_device.AddRef();
    m_device.SetNoDelete(true);
    m_operations.emplace(&m_device);
    m_operations->SetResourceURI("/ipp/print");
    m_operations->SetAttributeName("all");
    m_request->SetUsername("user\xC3\xA9");
    m_request->SetPassword("secret");
    m_request->AddExtraHTTPHeader(L"X-Cache-Control-Too", L"1");
    Answer() = {"body", 200, S_OK, false, false, 0};
  }

  FakeDevice::Answer& Answer(std::uint32_t port = 631) {
    return m_device.answers[{port, L"/ipp/print"}];
  }
  HRESULT Print(bool chunked, int pieceLength, void* context = nullptr) {
    return m_operations->SendPrintJobRequest(&m_response, m_request.Get(), chunked, pieceLength,
                                             context, false);
  }
  HRESULT Piece(std::string_view bytes) {
    m_operations->SetPrinterFileBufferContent(bytes.data(), static_cast<int>(bytes.size()));
    return Print(true, static_cast<int>(bytes.size()));
  }
  // A body as this operation's own request is, without a document.
  std::string Encoded(int operation) {
    IPPOperations operations(nullptr);
    operations.SetResourceURI("/ipp/print");
    operations.SetAttributeName("all");
    char buffer[kIPPRequestSize];
    int length = 0;
    operations.FormIPPRequestBasedOnOperation(buffer, operation, &length, m_request.Get());
    return std::string(buffer, static_cast<std::size_t>(length));
  }

  FakeDevice m_device;
  std::optional<IPPOperations> m_operations;
  const RefPtr<IPPRequestBase> m_request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  HTTPResponse* m_response = nullptr;
};

TEST_F(HttpExchangeTest, CallsTheHostInOrder) {
  m_operations->SetTimeout(1500);
  ASSERT_HR(m_operations->SendIPPRequest(IPPOperation::kGetPrinterAttributes, &m_response,
                                         m_request.Get(), false),
            S_OK);
  EXPECT_EQ((std::vector<std::wstring>{
                L"CreateIPPHTTPRequest 631", L"SetMethod POST", L"SetURI /ipp/print",
                L"SetContentType application/ipp", L"SetOption 1500",
                L"AddHeader X-Cache-Control-Too: 1", L"AddHeader Connection: Keep-Alive",
                L"AddHeader Pragma: no-cache", L"SetRequestData", L"GetResponse"}),
            m_device.calls);
  EXPECT_EQ(Encoded(IPPOperation::kGetPrinterAttributes), m_device.lastRequestBody);
  EXPECT_STREQ("body", m_response->GetContent());
  m_operations.reset();
  EXPECT_EQ(L"~HTTPRequest", m_device.calls.back());
  EXPECT_EQ(1u, m_device.References());
}

TEST_F(HttpExchangeTest, NamesTheReasonOfAFailure) {
  static const struct {
    const char* name;
    FakeDevice::Answer answer;
    HRESULT result;
    DWORD lastError;
  } kCases[] = {
      {"success", {"x", 200, S_OK, false, false, 0}, S_OK, 7},
      {"a success other than 0", {"x", 200, S_FALSE, false, false, 0}, S_OK, 7},
      {"no body", {"", 200, S_OK, false, false, 0}, E_FAIL, 200},
      {"a null body", {"x", 200, S_OK, false, true, 0}, E_FAIL, 200},
      {"not authenticated", {"x", 401, S_OK, false, false, 0}, E_FAIL, kIPPNotAuthorized},
      {"not found", {"x", 404, S_OK, false, false, 0}, E_FAIL, 404},
      {"server error", {"x", 500, S_OK, false, false, 0}, E_FAIL, 500},
      {"no response", {"x", 200, S_OK, true, false, 0}, E_FAIL, 7},
      {"time-out", {"x", 200, kHostFailure, false, false, kErrorTimeout}, E_FAIL, kErrorTimeout},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    Answer(443) = test.answer;
    SetLastError(7);
    EXPECT_HR(m_operations->SendIPPRequest(IPPOperation::kGetPrinterAttributes, &m_response,
                                           nullptr, true),
              test.result);
    EXPECT_EQ(test.lastError, GetLastError());
    EXPECT_EQ(test.result == S_OK, m_response != nullptr);
  }
}

TEST_F(HttpExchangeTest, SendsNothingWhenThereIsNothingToSend) {
  const auto send = [this](int operation) {
    return m_operations->SendIPPRequest(operation, &m_response, m_request.Get(), false);
  };
  EXPECT_HR(send(1), E_FAIL);
  EXPECT_HR(send(16385), E_FAIL);
  EXPECT_HR(send(IPPOperation::kGetJobs), E_FAIL);  // of nobody
  EXPECT_HR(m_operations->SendIPPRequest(IPPOperation::kPrintJob, &m_response, nullptr, false),
            E_FAIL);
  m_device.createResult = E_NOTIMPL;
  EXPECT_HR(send(2), E_FAIL);
  m_device.createResult = S_OK;
  m_device.nullRequest = true;
  EXPECT_HR(send(2), E_FAIL);
  EXPECT_EQ(0, m_device.Requests());
  IPPOperations withoutDevice(nullptr);
  EXPECT_HR(withoutDevice.SendIPPRequest(11, &m_response, nullptr, false), E_FAIL);
  EXPECT_HR(
      withoutDevice.SendPrintJobRequest(&m_response, m_request.Get(), true, 0, nullptr, false),
      E_FAIL);
  m_device.nullRequest = false;
  EXPECT_HR(send(16384), S_OK);
}

TEST_F(HttpExchangeTest, TakesTheDocumentAlongWithPrintJobOnly) {
  m_operations->SetPrinterFileBufferContent("%PDF", 4);
  m_operations->SetPrinterFileBufferContent(nullptr, 2);
  m_operations->SetPrinterFileBufferContent("x", -1);
  m_operations->SendIPPRequest(IPPOperation::kPrintJob, &m_response, m_request.Get(), false);
  EXPECT_EQ(Encoded(IPPOperation::kPrintJob) + "%PDF", m_device.lastRequestBody);
  m_operations->SendIPPRequest(IPPOperation::kPrintJobWithCredentials, &m_response, m_request.Get(),
                               false);
  EXPECT_EQ(Encoded(IPPOperation::kPrintJob), m_device.lastRequestBody);
}

TEST_F(HttpExchangeTest, HandsCredentialsToTheCallersRequest) {
  RefPtr<HTTPRequest> request;
  m_device.CreateIPPHTTPRequest(request.Receive(), 443);
  Answer(443) = Answer();
  EXPECT_HR(m_operations->SendIPPRequest(request.Get(), m_request.Get(), IPPOperation::kCreateJob,
                                         &m_response),
            S_OK);
  EXPECT_EQ(
      (std::vector<std::wstring>{
          L"CreateIPPHTTPRequest 443", L"SetMethod POST", L"SetURI /ipp/print",
          L"SetUserName user\x00E9", L"SetPassword secret", L"SetContentType application/ipp",
          L"SetOption 0", L"AddHeader X-Cache-Control-Too: 1", L"AddHeader Connection: Keep-Alive",
          L"AddHeader Pragma: no-cache", L"SetRequestData", L"GetResponse"}),
      m_device.calls);
  for (const bool withRequest : {false, true}) {
    SetLastError(0);
    EXPECT_HR(m_operations->SendIPPRequest(withRequest ? request.Get() : nullptr,
                                           withRequest ? nullptr : m_request.Get(), 5, &m_response),
              E_FAIL);
    EXPECT_EQ(87u, GetLastError());
  }
}

TEST_F(HttpExchangeTest, PrintsInOnePiece) {
  m_operations->SetPrinterFileBufferContent("%PDF", 4);
  ASSERT_HR(Print(false, 0), S_OK);
  const std::string body = Encoded(IPPOperation::kPrintJob) + "%PDF";
  EXPECT_EQ(body, m_device.lastRequestBody);
  const std::wstring size = std::to_wstring(body.size());
  EXPECT_EQ((std::vector<std::wstring>{
                L"CreateIPPHTTPRequest 631", L"SetMethod POST", L"SetURI /ipp/print",
                L"SetContentType application/ipp", L"AddHeader X-Cache-Control-Too: 1",
                L"AddHeader Connection: Keep-Alive", L"AddHeader Pragma: no-cache",
                L"SetUserName user\x00E9", L"SetPassword secret", L"Ex::SetOption host",
                L"SetContentLength " + size, L"SendBody " + size, L"GetResponse"}),
            m_device.calls);
}

TEST_F(HttpExchangeTest, PrintsInChunks) {
  m_operations->SetTimeout(20);
  m_operations->SetPrinterFileBufferContent("%PDF", 4);
  void* const context = reinterpret_cast<void*>(9);
  ASSERT_HR(Print(true, 4, context), S_OK);
  m_device.calls.erase(m_device.calls.begin(), m_device.calls.begin() + 9);
  const std::string big(0xABC, 'x');
  m_operations->SetPrinterFileBufferContent(big.data(), static_cast<int>(big.size()));
  EXPECT_HR(Print(true, 0xABD), E_FAIL);  // more than there is
  EXPECT_HR(Print(true, -1), E_FAIL);
  EXPECT_HR(Print(true, 0xABC), S_OK);
  EXPECT_EQ(nullptr, m_response);
  EXPECT_HR(Print(true, 0), S_OK);
  EXPECT_NE(nullptr, m_response);

  const std::string first = Encoded(IPPOperation::kPrintJob) + "%PDF";
  char sizeLine[16];
  std::snprintf(sizeLine, sizeof(sizeLine), "%zX\r\n", first.size());
  EXPECT_EQ(sizeLine + first + "\r\nABC\r\n" + big + "\r\n0\r\n\r\n", m_device.lastRequestBody);
  EXPECT_EQ((std::vector<std::wstring>{
                L"AddHeader Transfer-Encoding: chunked", L"AddHeader Content-Type: application/ipp",
                L"Ex::SetOption 20", L"BeginChunkedSend 9", L"WriteChunk 9", L"WriteChunk 0",
                L"WriteChunk 0", L"FinishChunkedSend", L"GetResponse"}),
            m_device.calls);

  m_device.calls.clear();
  EXPECT_HR(Print(true, 0), S_OK);  // the next document
  EXPECT_EQ(L"CreateIPPHTTPRequest 631", m_device.calls[2]);
}

TEST_F(HttpExchangeTest, EndsAJobThatHadNoDocument) {
  EXPECT_HR(Print(true, 0), S_OK);
  EXPECT_HR(Print(true, 0), S_OK);
  EXPECT_TRUE(m_device.lastRequestBody.ends_with("\r\n0\r\n\r\n"));
}

TEST_F(HttpExchangeTest, JudgesTheAnswerToAPrintJob) {
  static const struct {
    const char* name;
    FakeDevice::Answer answer;
    HRESULT result;
    DWORD error;  // 7: as it was
  } kCases[] = {
      {"not authenticated", {"x", 401, S_OK, false, false, 0}, kIPPNotAuthenticated, 7},
      {"server error", {"x", 500, S_OK, false, false, 0}, E_FAIL, 500},
      {"no body", {"", 200, S_OK, false, false, 0}, E_FAIL, 200},
      {"no response", {"x", 200, S_OK, true, false, 0}, E_FAIL, 7},
      {"the host's failure",
       {"x", 200, kHostFailure, false, false, kErrorTimeout},
       kHostFailure,
       kErrorTimeout},
      {"the answer was lost",
       {"x", 200, kAnswerLost, false, false, kErrorConnection},
       S_FALSE,
       kErrorConnection},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    Answer() = test.answer;
    EXPECT_HR(Print(false, 0), test.result);
    EXPECT_EQ(nullptr, m_response);
    EXPECT_HR(Piece("x"), S_OK);
    SetLastError(7);
    EXPECT_HR(Print(true, 0), test.result);
    EXPECT_EQ(test.error, GetLastError());
    EXPECT_EQ(L"~HTTPRequest", m_device.calls.back());
  }
}

TEST_F(HttpExchangeTest, BeginsAnewAfterAChunkThatCouldNotBeSent) {
  Answer().error = 413;
  m_device.writeResult = E_FAIL;
  EXPECT_HR(Piece("a"), E_FAIL);
  EXPECT_EQ(413u, GetLastError());
  EXPECT_EQ(L"~HTTPRequest", m_device.calls.back());
  m_device.writeResult = S_OK;
  EXPECT_HR(Piece("b"), S_OK);
  m_device.writeResult = E_FAIL;
  EXPECT_HR(Piece("c"), E_FAIL);
  EXPECT_EQ(L"~HTTPRequest", m_device.calls.back());
  m_device.beginResult = E_FAIL;
  EXPECT_HR(Piece("d"), E_FAIL);
  EXPECT_EQ(0, m_device.Requests());
}

TEST_F(HttpExchangeTest, PrintsOverAnExtendedRequestOnly) {
  m_device.plainIppRequest = true;
  EXPECT_HR(Print(false, 0), E_FAIL);
  EXPECT_HR(Print(true, 0), E_FAIL);
  EXPECT_EQ(0, m_device.Requests());
  m_device.createResult = E_FAIL;
  const TraceRecorder recorder(kTraceInfo);
  EXPECT_HR(Print(true, 0), E_FAIL);
  EXPECT_TRUE(recorder.HasMessage(16, L"Corvane::IPPOperations::SendPrintJobRequest",
                                  L"failed to createhttpRequest"));
}

}  // namespace
}  // namespace Corvane::Test
