// Streamed documents over TLS and through the framing of a real server, nginx.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "corvane/error_codes.h"
#include "tests/host/streaming.h"
#include "tests/support/hr.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/nginx.h"

namespace Corvane::Test {
namespace {

constexpr std::size_t kDocumentBytes = std::size_t{8} << 20;
constexpr std::size_t kPieceBytes = 100'000;

std::string Random(std::size_t bytes) {
  std::string text(bytes, '\0');
  std::minstd_rand generator(1);
  for (char& c : text) c = static_cast<char>(generator() >> 8);
  return text;
}

// Behind nginx, which reads a whole document and hands it on with its length.
class StreamedDocument : public ::testing::Test {
 protected:
  void SetUp() override {
    m_nginx.Folder().Write("passwords", "admin:{PLAIN}pass.word\n");
    const std::string locations =
        " location /ipp { client_max_body_size 0; proxy_pass http://127.0.0.1:" +
        std::to_string(m_printer.Port()) +
        "; }\n location /small { client_max_body_size 1m; proxy_pass http://127.0.0.1:1; }\n"
        " location /guarded { auth_basic \"device\"; auth_basic_user_file passwords;"
        "  client_max_body_size 0; proxy_pass http://127.0.0.1:" +
        std::to_string(m_printer.Port()) + "; }\n}\n";
    ASSERT_TRUE(m_nginx.MakeCertificate("device", "IP:127.0.0.1") &&
                m_nginx.Start("server {\n listen @PORT0@;\n" + locations +
                                  "server {\n listen @PORT1@ ssl;\n ssl_certificate device.pem;\n"
                                  " ssl_certificate_key device.key;\n" +
                                  locations,
                              2))
        << m_nginx.Failure();
    m_options = PrinterOptions(m_nginx.Port(0));
    m_options.portMap[kIppsPort] = m_nginx.Port(1);
    m_options.caFile = (m_nginx.Folder().Path() / "device.pem").string();
  }

  // The first failure of a whole sending, or S_OK.
  static HRESULT Send(Streaming* stream, const std::string& document) {
    HRESULT result = stream->Begin();
    for (std::size_t at = 0; at < document.size() && result == S_OK; at += kPieceBytes) {
      result = stream->Write(Framed(document.substr(at, kPieceBytes)));
    }
    return result;
  }

  LoopbackServer m_printer{
      LoopbackServer::AnswerEach("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok")};
  Nginx m_nginx;
  Host::NetworkOptions m_options;
};

TEST_F(StreamedDocument, ArrivesWhole) {
  const std::string document = Random(kDocumentBytes);
  for (const std::uint32_t port : {631U, 443U}) {
    const Owned<Address> address = NetworkDevice(m_options);
    Streaming stream(address, port);
    ASSERT_HR(Send(&stream, document), S_OK) << port;
    const Exchanged seen = stream.Finish();
    EXPECT_EQ(seen.body, "ok") << port << testing::PrintToString(seen.failure);
    const std::string request = m_printer.Requests().back();
    EXPECT_TRUE(request.ends_with("\r\n\r\n" + document)) << port << request.substr(0, 500);
  }
}

TEST_F(StreamedDocument, IsRefusedBeforeItsEnd) {
  const std::string document = Random(kDocumentBytes);
  for (const std::uint32_t port : {631U, 443U}) {
    SCOPED_TRACE(port);
    const Owned<Address> address = NetworkDevice(m_options);
    Streaming stream(address, port);
    stream.request->SetURI(L"/small");
    EXPECT_HR(Send(&stream, document), ResultFromError(413));
    EXPECT_LT(stream.extended->GetSentBytes(), kDocumentBytes);
    const Exchanged seen = stream.Respond();
    EXPECT_EQ(seen.status, 413U);
    EXPECT_NE(seen.body.find("413 Request Entity Too Large"), std::string::npos);
    EXPECT_TRUE(seen.failure.ends_with(L"HTTP status 413 (before the whole body was sent)"))
        << testing::PrintToString(seen.failure);
  }
}

TEST_F(StreamedDocument, CarriesItsPasswordOverTlsAlone) {
  const struct {
    const char* name;
    std::uint32_t port;
    const wchar_t *addressPassword, *password, *authorization;
    std::uint32_t status;
  } kCases[] = {
      {"TLS, the request's", 443, L"other", L"pass.word", L"", 200},
      {"TLS, the address's", 443, L"pass.word", L"", L"", 200},
      {"TLS, a wrong one", 443, L"", L"word", L"", 401},
      {"TLS, none", 443, L"", L"", L"", 401},
      {"TLS, its own header", 443, L"", L"word", L"Basic YWRtaW46cGFzcy53b3Jk", 200},
      {"in the clear", 631, L"pass.word", L"pass.word", L"", 401},
      {"in the clear, its own header", 631, L"", L"", L"Basic YWRtaW46cGFzcy53b3Jk", 401},
  };
  const std::string document = Random(2 * kPieceBytes);
  m_options.secretsOverTlsOnly = true;
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    const Owned<Address> address = NetworkDevice(m_options);
    address->SetUserName(L"admin");
    address->SetPassword(row.addressPassword);
    Streaming stream(address, row.port);
    stream.request->SetURI(L"/guarded");
    stream.request->SetUserName(L"admin");
    stream.request->SetPassword(row.password);
    if (*row.authorization) stream.request->AddHeader(L"Authorization", row.authorization);
    // A refusal may be seen while sending or behind it.
    const bool sent = Send(&stream, document) == S_OK && stream.Write(kLastChunk) == S_OK;
    if (sent) {
      EXPECT_HR(stream.extended->FinishChunkedSend(), S_OK);
    } else {
      EXPECT_EQ(stream.request->GetLastError(), row.status);
    }
    const Exchanged seen = stream.Respond();
    EXPECT_EQ(seen.status, row.status);
    EXPECT_EQ(seen.failure.find(L"word"), std::wstring::npos);
  }
}

TEST_F(StreamedDocument, GoesToNobodyWhoseCertificateIsNotTrusted) {
  m_options.caFile.clear();
  const Owned<Address> address = NetworkDevice(m_options);
  Streaming stream(address, 443);
  stream.request->SetPassword(L"secret");
  EXPECT_HR(stream.Begin(), ResultFromError(kErrorSecureFailure));
  EXPECT_EQ(stream.Respond().error, kErrorSecureFailure);
  EXPECT_TRUE(m_printer.Requests().empty());
}

}  // namespace
}  // namespace Corvane::Test
