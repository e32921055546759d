#include "tests/support/fake_device.h"

#include <algorithm>

#include "host/common/extended_request.h"

namespace Corvane::Test {
namespace {

class FakeResponse final : public HTTPResponse {
 public:
  FakeDevice::Answer answer;

  std::uint32_t GetStatusCode() override { return answer.status; }
  const wchar_t* GetHeader(const wchar_t*) override { return nullptr; }
  const wchar_t* GetContentType() override { return L""; }
  std::uint32_t GetContentLength() override {
    return static_cast<std::uint32_t>(answer.body.size());
  }
  const char* GetContent() override { return answer.nullBody ? nullptr : answer.body.c_str(); }
};

class FakeRequest : public Counted<HTTPRequest> {
 public:
  FakeRequest(FakeDevice* device, std::uint32_t port) : m_device(device), m_port(port) {}
  ~FakeRequest() override { m_device->calls.push_back(L"~HTTPRequest"); }

  std::uint32_t Dispose() override {
    m_device->calls.push_back(L"Dispose");
    return DisposeImpl();
  }

  const wchar_t* GetURI() override { return m_path.c_str(); }
  void SetURI(const wchar_t* path) override { Record(L"SetURI ", m_path = path); }
  void SetUserName(const wchar_t* name) override { Record(L"SetUserName ", name); }
  void SetPassword(const wchar_t* password) override { Record(L"SetPassword ", password); }
  void SetMethod(const wchar_t* verb) override { Record(L"SetMethod ", verb); }
  void AddHeader(const wchar_t* name, const wchar_t* value) override {
    Record(L"AddHeader ", std::wstring(name) + L": " + value);
  }
  void SetContentType(const wchar_t* type) override { Record(L"SetContentType ", type); }
  void SetRequestData(const void* data, std::uint32_t size) override {
    Record(L"SetRequestData", L"");
    m_device->lastRequestBody.assign(static_cast<const char*>(data), size);
  }
  HRESULT GetResponse(HTTPResponse** response) override {
    Record(L"GetResponse", L"");
    const auto found = m_device->answers.find({m_port, m_path});
    if (found != m_device->answers.end()) {
      m_response.answer = found->second;
    } else {
      m_response.answer.status = 404;
    }
    *response = m_response.answer.nullResponse ? nullptr : &m_response;
    return m_response.answer.result;
  }
  void SetOption(std::uint32_t option) override { Record(L"SetOption ", std::to_wstring(option)); }
  std::uint32_t GetLastError() override { return m_device->answers[{m_port, m_path}].error; }
  void Cancel() override {}

 protected:
  void Record(const wchar_t* call, const std::wstring& argument) {
    m_device->calls.push_back(call + argument);
  }

  FakeDevice* m_device;

 private:
  std::uint32_t m_port;
  std::wstring m_path;
  FakeResponse m_response;
};

class FakeIppRequest final : public Host::ExtendedRequest<FakeRequest> {
 public:
  using ExtendedRequest::ExtendedRequest;

  bool IsSending() override { return false; }
  using ExtendedRequest::SetOption;
  void SetOption(std::uintptr_t option) override {
    const bool isHost = option == reinterpret_cast<std::uintptr_t>(m_device->GetAddress());
    Record(L"Ex::SetOption ", isHost ? L"host" : std::to_wstring(option));
  }
  void SetHeader(const wchar_t* name, const wchar_t* value) override { AddHeader(name, value); }
  void SendBody(const void* data, std::uint32_t size) override {
    Record(L"SendBody ", std::to_wstring(size));
    m_device->lastRequestBody.assign(static_cast<const char*>(data), size);
  }
  HRESULT BeginChunkedSend(std::uintptr_t context) override {
    Record(L"BeginChunkedSend ", std::to_wstring(context));
    m_device->lastRequestBody.clear();
    return m_device->beginResult;
  }
  HRESULT WriteChunk(const void* data, std::uint32_t size, std::uintptr_t context) override {
    Record(L"WriteChunk ", std::to_wstring(context));
    m_device->lastRequestBody.append(static_cast<const char*>(data), size);
    return m_device->writeResult;
  }
  HRESULT FinishChunkedSend() override {
    Record(L"FinishChunkedSend", L"");
    return S_OK;
  }
  std::uint64_t GetSentBytes() override { return 0; }
  void SetContentLength(std::uint32_t size) override {
    Record(L"SetContentLength ", std::to_wstring(size));
  }
};

}  // namespace

int FakeDevice::Requests() const {
  return static_cast<int>(std::count(calls.begin(), calls.end(), L"GetResponse"));
}

HRESULT FakeDevice::CreateHTTPRequest(HTTPRequest** request, std::uint32_t port) {
  calls.push_back(L"CreateHTTPRequest " + std::to_wstring(port));
  if (nullRequest || createResult != S_OK) return createResult;
  auto* const created = new FakeRequest(this, port);
  created->AddRef();
  *request = created;
  return S_OK;
}

HRESULT FakeDevice::CreateIPPHTTPRequest(HTTPRequest** request, std::uint32_t port) {
  calls.push_back(L"CreateIPPHTTPRequest " + std::to_wstring(port));
  if (nullRequest || createResult != S_OK) return createResult;
  FakeRequest* const created =
      plainIppRequest ? new FakeRequest(this, port) : new FakeIppRequest(this, port);
  created->AddRef();
  *request = created;
  return S_OK;
}

HRESULT FakeDevice::GetMIBConnection(MIBConnection** connection) {
  if (snmp) snmp->AddRef();
  *connection = snmp;
  return snmpResult;
}

}  // namespace Corvane::Test
