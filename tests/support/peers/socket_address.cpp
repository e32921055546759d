#include "tests/support/peers/socket_address.h"

#include <winsock2.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "host/common/address_base.h"
#include "host/common/extended_request.h"
#include "host/common/request_base.h"
#include "host/http/response_reader.h"

namespace Corvane::Test {
namespace {

using namespace Host;  // error codes, bases, the reader of responses

constexpr std::size_t kBlockBytes = std::size_t{64} << 10;
constexpr std::size_t kMaxResponseBytes = std::size_t{1} << 20;  // against one without end
constexpr DWORD kDefaultTimeoutMs = 30'000;

struct Endpoint {
  std::uint16_t port;
  std::wstring host = L"USB001";
};

// One connection, one message there and one back.
class SocketExchange {
 public:
  explicit SocketExchange(const std::atomic<bool>& cancelled) : m_cancelled(cancelled) {}
  SocketExchange(const SocketExchange&) = delete;
  SocketExchange& operator=(const SocketExchange&) = delete;
  ~SocketExchange() {
    if (m_socket != INVALID_SOCKET) closesocket(m_socket);
  }

  bool Open(std::uint16_t port, DWORD timeoutMs) {
    m_socket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    const char* const timeout = reinterpret_cast<const char*>(&timeoutMs);
    if (m_socket == INVALID_SOCKET ||
        setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, timeout, sizeof(timeoutMs)) != 0 ||
        setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, timeout, sizeof(timeoutMs)) != 0 ||
        connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
      return m_reader.Fail(kErrorCannotConnect, L"no connection");
    }
    return true;
  }

  // False when the exchange has ended before all is sent, also because the device has answered:
  // Receive tells how.
  bool Send(std::string_view bytes, std::atomic<std::uint64_t>* sent) {
    while (!bytes.empty()) {
      if (m_reader.Done() || HasInput()) return false;
      if (m_cancelled.load()) return m_reader.Fail(kErrorCancelled, L"cancelled");
      const int size =
          send(m_socket, bytes.data(), static_cast<int>(std::min(bytes.size(), kBlockBytes)), 0);
      if (size <= 0) {
        // A device that refuses may answer and then close.
        return HasInput() ? false : FailWith(WSAGetLastError());
      }
      bytes.remove_prefix(static_cast<std::size_t>(size));
      if (sent) sent->fetch_add(static_cast<std::uint64_t>(size));
    }
    return true;
  }

  Outcome Receive() {
    char block[4096];
    while (!m_reader.Done()) {
      const int size = recv(m_socket, block, sizeof(block), 0);
      if (m_cancelled.load()) {
        m_reader.Fail(kErrorCancelled, L"cancelled");
      } else if (size > 0) {
        m_reader.Feed({block, static_cast<std::size_t>(size)});
      } else if (size == 0) {
        m_reader.End();
      } else {
        FailWith(WSAGetLastError());
      }
    }
    WireResult result = m_reader.TakeResult();
    if (result.error != 0) return {nullptr, result.error, std::move(result.remark)};
    return {std::make_unique<BufferedResponse>(result.status, std::move(result.headers),
                                               std::move(result.body)),
            0,
            {}};
  }

 private:
  // The device has answered, or gone.
  bool HasInput() const {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(m_socket, &readable);
    timeval now{};
    return select(0, &readable, nullptr, nullptr, &now) > 0;
  }
  bool FailWith(int error) {
    return error == WSAETIMEDOUT ? m_reader.Fail(kErrorTimeout, L"silence")
                                 : m_reader.Fail(kErrorConnection, L"the connection broke");
  }

  const std::atomic<bool>& m_cancelled;
  SOCKET m_socket = INVALID_SOCKET;
  ResponseReader m_reader{kMaxResponseBytes};
};

class SocketRequest final : public ExtendedRequest<RequestBase> {
 public:
  SocketRequest(std::shared_ptr<const Endpoint> device, std::shared_ptr<LastFailure> lastFailure)
      : ExtendedRequest(std::move(lastFailure)), m_device(std::move(device)) {}
  const char* GetTypeName() override { return "Corvane::Test::SocketRequest"; }

  bool IsSending() override { return m_sending.load(); }
  std::uint64_t GetSentBytes() override { return m_sent.load(); }
  void SetOption(std::uint32_t option) override { Settings().timeoutMs = option; }
  void SetOption(std::uintptr_t option) override { SetTimeoutOrHost(option, m_device->host); }
  void SetHeader(const wchar_t* name, const wchar_t* value) override { ReplaceHeader(name, value); }
  void SetContentLength(std::uint32_t size) override { m_contentLength = size; }

  void SendBody(const void* data, std::uint32_t size) override {
    if (Performed()) return SetError(kErrorOutOfOrder);
    if (m_contentLength != size) RefuseSetting(kErrorInvalidParameter);
    m_sending.store(true);
    Settings().body = {static_cast<const char*>(data), size};
    Conclude(PerformOnce());
    Settings().body = {};
    m_whole = m_sent.load() == size;
    m_sending.store(false);
  }
  HRESULT BeginChunkedSend(std::uintptr_t) override {
    if (Performed()) return OutOfOrder();
    return Step([this] {
      Outcome begun = Begin();
      if (begun.error != 0) return begun;
      m_sending.store(true);
      m_stream = std::make_unique<SocketExchange>(Cancelled());
      return SendHead(m_stream.get(), Settings()) ? Outcome() : m_stream->Receive();
    });
  }
  HRESULT WriteChunk(const void* data, std::uint32_t size, std::uintptr_t) override {
    if (!m_sending.load()) return OutOfOrder();
    return Step([&] {
      return m_stream->Send({static_cast<const char*>(data), size}, &m_sent) ? Outcome()
                                                                             : m_stream->Receive();
    });
  }
  HRESULT FinishChunkedSend() override {
    if (!m_sending.exchange(false)) return OutOfOrder();
    m_whole = true;
    return S_OK;
  }
  HRESULT GetResponse(HTTPResponse** response) override {
    if (m_stream) {
      Conclude(Guarded([this]() -> Outcome {
        return m_whole ? m_stream->Receive() : Outcome{nullptr, kErrorOutOfOrder, L"not finished"};
      }));
      m_stream.reset();
      m_sending.store(false);
    }
    const HRESULT result = RequestBase::GetResponse(response);
    return FAILED(result) && std::exchange(m_whole, false) ? kAnswerLost : result;
  }

 private:
  std::wstring Describe(const RequestSettings& settings) const override {
    return m_device->host + settings.uri;
  }

  Outcome Perform(const RequestSettings& settings) override {
    SocketExchange exchange(Cancelled());
    if (SendHead(&exchange, settings)) exchange.Send(settings.body, &m_sent);
    return exchange.Receive();
  }

  bool SendHead(SocketExchange* exchange, const RequestSettings& settings) const {
    std::string head = ToUtf8(settings.verb + L' ' + settings.uri) + " HTTP/1.1\r\nHost: localhost";
    bool chunked = false;
    for (const auto& [name, value] : settings.headers) {
      head += "\r\n" + ToUtf8(name) + ": " + ToUtf8(value);
      chunked = chunked || EqualsIgnoreAsciiCase(name, L"transfer-encoding");
    }
    if (!settings.contentType.empty()) head += "\r\nContent-Type: " + ToUtf8(settings.contentType);
    if (!chunked) head += "\r\nContent-Length: " + std::to_string(settings.body.size());
    return exchange->Open(m_device->port,
                          settings.timeoutMs != 0 ? settings.timeoutMs : kDefaultTimeoutMs) &&
           exchange->Send(head + "\r\n\r\n", nullptr);
  }

  // One step of the streamed exchange; what it gives besides an empty outcome ends that.
  template <typename Work>
  HRESULT Step(Work work) {
    Outcome end = Guarded(work);
    if (end.error == 0 && !end.response) return S_OK;
    const std::uint32_t error = end.error != 0 ? end.error : end.response->GetStatusCode();
    m_stream.reset();
    m_sending.store(false);
    Conclude(std::move(end));
    SetError(error);
    return ResultFromError(error);
  }
  HRESULT OutOfOrder() {
    SetError(kErrorOutOfOrder);
    return ResultFromError(kErrorOutOfOrder);
  }

  const std::shared_ptr<const Endpoint> m_device;
  std::unique_ptr<SocketExchange> m_stream;
  std::uint32_t m_contentLength = 0;
  std::atomic<bool> m_sending{false};
  std::atomic<std::uint64_t> m_sent{0};
  bool m_whole = false;  // the connection has taken every byte of the body
};

class SocketAddress final : public AddressBase {
 public:
  SocketAddress(std::uint16_t port, std::atomic<int>* requests)
      : m_device(new Endpoint{port}), m_requests(requests) {}
  ~SocketAddress() override { WSACleanup(); }
  const char* GetTypeName() override { return "Corvane::Test::SocketAddress"; }

  const wchar_t* GetDisplayName() override { return GetAddress(); }
  const wchar_t* GetAddress() override { return m_device->host.c_str(); }
  std::uint32_t GetMappedPort(std::uint32_t) override { return m_device->port; }
  void SetUserName(const wchar_t*) override {}
  void SetPassword(const wchar_t*) override {}
  HRESULT SetTimeouts(std::uint32_t, std::uint32_t) override { return E_NOTIMPL; }

 private:
  HTTPRequest* MakeRequest(std::uint32_t) override {
    ++*m_requests;
    return new SocketRequest(m_device, Failure());
  }
  HTTPRequest* MakeIPPRequest(std::uint32_t port) override { return MakeRequest(port); }

  const std::shared_ptr<const Endpoint> m_device;
  std::atomic<int>* const m_requests;
};

}  // namespace

Address* CreateSocketAddress(std::uint16_t port, std::atomic<int>* requests) {
  WSADATA data;
  if (WSAStartup(MAKEWORD(2, 2), &data) != 0) return nullptr;
  auto* const address = new SocketAddress(port, requests);
  address->AddRef();
  return address;
}

}  // namespace Corvane::Test
