#include "tests/support/fake_device.h"

#include <algorithm>
#include <optional>

#include "corvane/handles.h"
#include "host/common/extended_request.h"

namespace Corvane::Test {
namespace {

// The content of a chunk whose framing is right (RFC 9112, 7.1); of the last one none.
std::optional<std::string_view> Unframed(std::string_view chunk) {
  const std::size_t digits = chunk.find("\r\n");
  if (digits == 0 || digits > 8) return std::nullopt;
  const std::size_t size = std::strtoul(std::string(chunk, 0, digits).c_str(), nullptr, 16);
  chunk.remove_prefix(digits + 2);
  if (chunk.size() != size + 2 || !chunk.ends_with("\r\n")) return std::nullopt;
  return chunk.substr(0, size);
}

class TableExchange final : public FakeDevice::Exchange {
 public:
  explicit TableExchange(FakeDevice* device) : m_device(*device) {}

  bool Take(const FakeDevice::Head&, std::string_view bytes) override {
    if (!std::exchange(m_hasBegun, true)) m_device.lastRequestBody.clear();
    m_device.lastRequestBody += bytes;
    return m_device.takesBodies;
  }
  FakeDevice::Answer Finish(const FakeDevice::Head& head) override {
    const auto found = m_device.answers.find({head.port, head.path});
    return found == m_device.answers.end() ? FakeDevice::Answer{"", 404} : found->second;
  }

 private:
  FakeDevice& m_device;
  bool m_hasBegun = false;
};

std::string_view Bytes(const void* data, std::uint32_t size) {
  return {static_cast<const char*>(data), size};
}

}  // namespace

class FakeRequest : public Counted<HTTPRequest> {
 public:
  FakeRequest(FakeDevice* device, std::uint32_t port)
      : m_device(device), m_exchange(device->Begin()), m_head{port, L""} {}
  ~FakeRequest() override { Record(L"~HTTPRequest"); }

  std::uint32_t Dispose() override {
    Record(L"Dispose");
    return DisposeImpl();
  }

  const wchar_t* GetURI() override { return m_head.path.c_str(); }
  void SetURI(const wchar_t* path) override { Record(L"SetURI ", m_head.path = path); }
  void SetUserName(const wchar_t* name) override { Record(L"SetUserName ", name); }
  void SetPassword(const wchar_t* password) override { Record(L"SetPassword ", password); }
  void SetMethod(const wchar_t* verb) override { Record(L"SetMethod ", verb); }
  void AddHeader(const wchar_t* name, const wchar_t* value) override {
    Record(L"AddHeader ", std::wstring(name) + L": " + value);
    m_head.isAuthorized |= name == std::wstring_view(L"Authorization");
  }
  void SetContentType(const wchar_t* type) override { Record(L"SetContentType ", type); }
  void SetRequestData(const void* data, std::uint32_t size) override {
    Record(L"SetRequestData");
    m_exchange->Take(m_head, Bytes(data, size));
  }
  HRESULT GetResponse(HTTPResponse** response) override {
    Record(L"GetResponse");
    if (m_phase != Phase::kNew && m_phase != Phase::kOver) Fault(L"half a document");
    if (m_phase != Phase::kOver) Finish();
    *response = m_response.answer.nullResponse ? nullptr : &m_response;
    return m_response.answer.result;
  }
  void SetOption(std::uint32_t option) override { Record(L"SetOption ", std::to_wstring(option)); }
  std::uint32_t GetLastError() override { return m_response.answer.error; }
  void Cancel() override {}

 protected:
  enum class Phase { kNew, kSending, kLastChunk, kOver };

  void Record(const wchar_t* call, const std::wstring& argument = {}) {
    m_device->Record(call + argument);
  }
  HRESULT Fault(const wchar_t* what) {
    const std::lock_guard lock(m_device->m_lock);
    m_device->faults.append(what, what + std::wcslen(what)).append("\n");
    return E_FAIL;
  }
  void Finish() {
    m_response.answer = m_exchange->Finish(m_head);
    m_phase = Phase::kOver;
  }

  FakeDevice* const m_device;
  const std::unique_ptr<FakeDevice::Exchange> m_exchange;
  FakeDevice::Head m_head;
  Phase m_phase = Phase::kNew;

 private:
  FakeResponse m_response;
};

namespace {

class FakeIppRequest final : public Host::ExtendedRequest<FakeRequest> {
 public:
  using ExtendedRequest::ExtendedRequest;

  bool IsSending() override { return m_phase == Phase::kSending; }
  using ExtendedRequest::SetOption;
  void SetOption(std::uintptr_t option) override {
    const bool isHost = option == reinterpret_cast<std::uintptr_t>(m_device->GetAddress());
    Record(L"Ex::SetOption ", isHost ? L"host" : std::to_wstring(option));
  }
  void SetHeader(const wchar_t* name, const wchar_t* value) override { AddHeader(name, value); }
  void SendBody(const void* data, std::uint32_t size) override {
    Record(L"SendBody ", std::to_wstring(size));
    m_head.isWhole = true;
    m_exchange->Take(m_head, Bytes(data, size));
    Finish();
  }
  HRESULT BeginChunkedSend(std::uintptr_t context) override {
    Record(L"BeginChunkedSend ", std::to_wstring(context));
    m_phase = Phase::kSending;
    return m_device->beginResult;
  }
  HRESULT WriteChunk(const void* data, std::uint32_t size, std::uintptr_t context) override {
    Record(L"WriteChunk ", std::to_wstring(context));
    const auto content = Unframed(Bytes(data, size));
    if (!content || m_phase != Phase::kSending) return Fault(L"no chunk, or out of turn");
    if (content->empty()) m_phase = Phase::kLastChunk;
    if (content->empty() || m_exchange->Take(m_head, *content)) return S_OK;
    Finish();
    return E_FAIL;
  }
  HRESULT FinishChunkedSend() override {
    Record(L"FinishChunkedSend");
    if (m_phase != Phase::kLastChunk) return Fault(L"an end out of turn");
    Finish();
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

std::unique_ptr<FakeDevice::Exchange> FakeDevice::Begin() {
  return std::make_unique<TableExchange>(this);
}

void FakeDevice::Record(std::wstring call) {
  const std::lock_guard lock(m_lock);
  calls.push_back(std::move(call));
}

template <typename Request>
HRESULT FakeDevice::Create(HTTPRequest** request, const wchar_t* call, std::uint32_t port) {
  Record(call + std::to_wstring(port));
  if (nullRequest || createResult != S_OK) return createResult;
  *request = RefPtr<HTTPRequest>::Share(new Request(this, port)).Release();
  return S_OK;
}

HRESULT FakeDevice::CreateHTTPRequest(HTTPRequest** request, std::uint32_t port) {
  return Create<FakeRequest>(request, L"CreateHTTPRequest ", port);
}

HRESULT FakeDevice::CreateIPPHTTPRequest(HTTPRequest** request, std::uint32_t port) {
  constexpr wchar_t kCall[] = L"CreateIPPHTTPRequest ";
  return plainIppRequest ? Create<FakeRequest>(request, kCall, port)
                         : Create<FakeIppRequest>(request, kCall, port);
}

HRESULT FakeDevice::GetMIBConnection(MIBConnection** connection) {
  if (snmp) snmp->AddRef();
  *connection = snmp;
  return snmpResult;
}

}  // namespace Corvane::Test
