// A scripted device: an Address whose requests answer from a table and record every call.
#ifndef CORVANE_TESTS_SUPPORT_FAKE_DEVICE_H_
#define CORVANE_TESTS_SUPPORT_FAKE_DEVICE_H_

#include <map>
#include <string>
#include <vector>

#include "corvane/transport.h"
#include "tests/support/counted.h"

namespace Corvane::Test {

class FakeDevice final : public Counted<Address> {
 public:
  struct Answer {
    std::string body;
    std::uint32_t status = 200;
    HRESULT result = S_OK;  // of GetResponse
    bool nullResponse = false;
    bool nullBody = false;
    std::uint32_t error = 0;  // the request's GetLastError
  };

  // Answers of a path on a port, GET and POST alike; without one the status is 404.
  std::map<std::pair<std::uint32_t, std::wstring>, Answer> answers;
  std::wstring host = L"printer.example";
  HRESULT createResult = S_OK;  // of CreateHTTPRequest
  bool nullRequest = false;
  MIBConnection* snmp = nullptr;  // what GetMIBConnection gives; the device answers none without it
  HRESULT snmpResult = S_OK;

  bool plainIppRequest = false;  // a request for IPP that is no TqHTTPRequestEx
  HRESULT beginResult = S_OK;    // of BeginChunkedSend
  HRESULT writeResult = S_OK;    // of WriteChunk

  // Every call on this address and its requests, in order: "SetURI /x", "GetResponse", "Dispose",
  // ...
  std::vector<std::wstring> calls;
  std::string lastRequestBody;  // all chunks of a chunked one

  void Serve(std::uint32_t port, const wchar_t* path, std::string body) {
    answers[{port, path}] = {std::move(body), 200, S_OK, false, false};
  }
  // Exchanges so far.
  int Requests() const;

  const wchar_t* GetDisplayName() override { return L"fake"; }
  const wchar_t* GetAddress() override { return host.c_str(); }
  std::uint32_t GetMappedPort(std::uint32_t port) override { return port; }
  const wchar_t* GetLastFailure() override { return L""; }
  HRESULT CreateHTTPRequest(HTTPRequest** request, std::uint32_t port) override;
  HRESULT CreateIPPHTTPRequest(HTTPRequest** request, std::uint32_t port) override;
  HRESULT GetMIBConnection(MIBConnection** connection) override;
  void SetUserName(const wchar_t*) override {}
  void SetPassword(const wchar_t*) override {}
  HRESULT SetTimeouts(std::uint32_t, std::uint32_t) override { return S_OK; }
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_FAKE_DEVICE_H_
