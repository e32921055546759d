// A scripted device: an Address whose requests are answered from a table, or by a printer that
// derives from it, and recorded call by call.
#ifndef CORVANE_TESTS_SUPPORT_FAKE_DEVICE_H_
#define CORVANE_TESTS_SUPPORT_FAKE_DEVICE_H_

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/transport.h"
#include "tests/support/counted.h"

namespace Corvane::Test {

// Its requests may be used on several threads, what is public here only by one at a time.
class FakeDevice : public Counted<Address> {
 public:
  struct Answer {
    std::string body;
    std::uint32_t status = 200;
    HRESULT result = S_OK;  // of GetResponse
    bool nullResponse = false;
    bool nullBody = false;
    std::uint32_t error = 0;  // the request's GetLastError
  };
  struct Head {
    std::uint32_t port = 0;
    std::wstring path;
    bool isAuthorized = false;  // by a header
    bool isWhole = false;       // its body comes in one piece
  };
  // What the device does with one request.
  class Exchange {
   public:
    virtual ~Exchange() = default;
    // Bytes of the body; false when no more are wanted.
    virtual bool Take(const Head& head, std::string_view bytes) = 0;
    // Behind the body, or behind a Take that was false.
    virtual Answer Finish(const Head& head) = 0;
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
  bool takesBodies = true;

  // Every call on this address and its requests, in order: "SetURI /x", "GetResponse", "Dispose",
  // ...
  std::vector<std::wstring> calls;
  std::string lastRequestBody;  // of a chunked one the content
  std::string faults;           // of framing and of turns: there should be none

  void Serve(std::uint32_t port, const wchar_t* path, std::string body) {
    answers[{port, path}] = {std::move(body)};
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

 protected:
  virtual std::unique_ptr<Exchange> Begin();

 private:
  friend class FakeRequest;

  template <typename Request>
  HRESULT Create(HTTPRequest** request, const wchar_t* call, std::uint32_t port);
  void Record(std::wstring call);

  std::mutex m_lock;  // guards calls and faults while requests are made
};

class FakeResponse : public HTTPResponse {
 public:
  explicit FakeResponse(FakeDevice::Answer its = {}) : answer(std::move(its)) {}

  std::uint32_t GetStatusCode() override { return answer.status; }
  const wchar_t* GetHeader(const wchar_t*) override { return nullptr; }
  const wchar_t* GetContentType() override { return L""; }
  std::uint32_t GetContentLength() override {
    return static_cast<std::uint32_t>(answer.body.size());
  }
  const char* GetContent() override { return answer.nullBody ? nullptr : answer.body.c_str(); }

  FakeDevice::Answer answer;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_FAKE_DEVICE_H_
