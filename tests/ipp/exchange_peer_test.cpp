// Exchanges over the reference host with a real server, nginx, and a printer behind it.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "corvane/error_codes.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "host/network_address.h"
#include "ipp/ipp_operations.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"
#include "tests/support/hr.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/nginx.h"

namespace Corvane::Test {
namespace {

constexpr char kAnswer[] = "\2\0\0\0\0\0\0\x64\3";

std::string Random(std::size_t bytes) {
  std::string text(bytes, '\0');
  std::minstd_rand generator(1);
  for (char& c : text) c = static_cast<char>(generator() >> 8);
  return text;
}

class ExchangeWithAServer : public ::testing::Test {
 protected:
  void SetUp() override {
    m_nginx.Folder().Write("passwords", "admin:{PLAIN}secret\n");
    ASSERT_TRUE(m_nginx.Start(
        "server {\n listen @PORT0@;\n client_max_body_size 0;\n"
        " location /ipp/print { proxy_pass http://127.0.0.1:" +
            std::to_string(m_printer.Port()) +
            "; }\n location /guarded { auth_basic \"p\"; auth_basic_user_file passwords; }\n"
            " location /missing { return 404 no; }\n location /broken { return 500 no; }\n"
            " location /empty { return 200; }\n location /closed { return 444; }\n"
            " location /small { client_max_body_size 1k; proxy_pass http://127.0.0.1:1; }\n}\n",
        1))
        << m_nginx.Failure();
    Host::NetworkOptions options;
    options.host = L"127.0.0.1";
    options.portMap = {{kIppPort, m_nginx.Port(0)}};
    m_address = RefPtr<Address>::Adopt(Host::CreateNetworkAddress(options));
    m_request->SetJobName("job");
    m_request->AddExtraHTTPHeader(L"X-Client", L"corvane");
    m_request->AddExtraHTTPHeader(L"Pragma", L"mine");
  }

  IPPOperations& Operations(const char* resource) {
    m_operations.emplace(m_address.Get());
    m_operations->SetResourceURI(resource);
    return *m_operations;
  }
  // A whole document in `pieceSize` bytes at a time, until one fails.
  HRESULT PrintInChunks(const std::string& document, std::size_t pieceSize) {
    HRESULT result = S_OK;
    for (std::size_t at = 0; at <= document.size() && result == S_OK; at += pieceSize) {
      const std::string piece = document.substr(at, pieceSize);
      const int size = static_cast<int>(piece.size());
      m_operations->SetPrinterFileBufferContent(piece.data(), size);
      result = m_operations->SendPrintJobRequest(&m_response, m_request.Get(), true, size, nullptr,
                                                 false);
      if (size == 0) return result;
    }
    return result != S_OK ? result
                          : m_operations->SendPrintJobRequest(&m_response, m_request.Get(), true, 0,
                                                              nullptr, false);
  }
  std::string EncodedPrintJob() {
    char buffer[kIPPRequestSize];
    int length = 0;
    m_operations->FormIPPRequestBasedOnOperation(buffer, IPPOperation::kPrintJob, &length,
                                                 m_request.Get());
    return std::string(buffer, static_cast<std::size_t>(length));
  }

  LoopbackServer m_printer{LoopbackServer::AnswerEach(
      std::string("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n") + std::string(kAnswer, 9))};
  Nginx m_nginx;
  RefPtr<Address> m_address;
  const RefPtr<IPPRequestBase> m_request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  std::optional<IPPOperations> m_operations;
  HTTPResponse* m_response = nullptr;
};

TEST_F(ExchangeWithAServer, BringsEveryByteAndHeader) {
  const std::string document = Random(1'000'000);
  static const struct {
    const char* name;
    std::size_t pieceSize;  // 0: in one piece
    bool asPrintJob;
  } kWays[] = {{"one exchange", 0, false},
               {"one piece", 0, true},
               {"small chunks", 777, true},
               {"large chunks", 400'000, true}};
  for (const auto& way : kWays) {
    SCOPED_TRACE(way.name);
    IPPOperations& operations = Operations("/ipp/print?a=%20b");
    if (way.pieceSize == 0) {
      operations.SetPrinterFileBufferContent(document.data(), static_cast<int>(document.size()));
    }
    if (way.pieceSize != 0) {
      ASSERT_HR(PrintInChunks(document, way.pieceSize), S_OK);
    } else if (way.asPrintJob) {
      ASSERT_HR(
          operations.SendPrintJobRequest(&m_response, m_request.Get(), false, 0, nullptr, false),
          S_OK);
    } else {
      ASSERT_HR(
          operations.SendIPPRequest(IPPOperation::kPrintJob, &m_response, m_request.Get(), false),
          S_OK);
    }
    const std::string request = m_printer.Requests().back();
    const std::size_t head = request.find("\r\n\r\n") + 4;
    EXPECT_TRUE(request.substr(head) == EncodedPrintJob() + document);
    const std::string fields = request.substr(0, head);
    EXPECT_TRUE(fields.starts_with("POST /ipp/print?a=%20b HTTP/1.")) << fields;
    for (const char* const field : {"Content-Type: application/ipp\r\n", "X-Client: corvane\r\n",
                                    "Cache-Control: no-cache\r\n", "Pragma: mine\r\n"}) {
      EXPECT_NE(std::string::npos, fields.find(field)) << field << fields;
    }
    SetLastError(0);
    _variant_t status;
    operations.SetAttributeName("status-code");
    EXPECT_HR(operations.ParseIPPResponse(m_response, &status), S_OK);
    EXPECT_STREQ(L"0", status.bstrVal);
  }
}

TEST_F(ExchangeWithAServer, TellsWhatCameInstead) {
  const std::string document = Random(20'000'000);
  static const struct {
    const char* resource;
    HRESULT exchanged;
    DWORD exchangeError;
    HRESULT printed;
    // While the document is sent: a status that came too early, or a broken connection.
    std::vector<DWORD> earlyErrors;
  } kCases[] = {
      {"/guarded", E_FAIL, kIPPNotAuthorized, kIPPNotAuthenticated, {401, kErrorConnection}},
      {"/missing", E_FAIL, 404, E_FAIL, {404, kErrorConnection}},
      {"/broken", E_FAIL, 500, E_FAIL, {500, kErrorConnection}},
      {"/empty", E_FAIL, 200, E_FAIL, {200, kErrorConnection}},
      {"/closed", E_FAIL, kErrorConnection, ResultFromError(kErrorConnection), {kErrorConnection}},
      {"/small", E_FAIL, 413, E_FAIL, {413, kErrorConnection}},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.resource);
    IPPOperations& operations = Operations(test.resource);
    operations.SetPrinterFileBufferContent(document.data(), 100'000);
    SetLastError(0);
    EXPECT_HR(
        operations.SendIPPRequest(IPPOperation::kPrintJob, &m_response, m_request.Get(), false),
        test.exchanged);
    EXPECT_EQ(test.exchangeError, GetLastError());
    // More than a connection holds: of less, all may be on its way when the device closes.
    const bool isClosed = test.resource == std::string_view("/closed");
    operations.SetPrinterFileBufferContent(document.data(), isClosed ? 20'000'000 : 100'000);
    EXPECT_HR(
        operations.SendPrintJobRequest(&m_response, m_request.Get(), false, 0, nullptr, false),
        test.printed);
    Operations(test.resource);
    SetLastError(0);
    EXPECT_HR(PrintInChunks(document, 1'000'000), E_FAIL);
    EXPECT_NE(0, std::count(test.earlyErrors.begin(), test.earlyErrors.end(), GetLastError()))
        << GetLastError();
    EXPECT_EQ(nullptr, m_response);
  }
}

}  // namespace
}  // namespace Corvane::Test
