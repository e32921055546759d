// The extended request to a device on the network: a body streamed while it is made.
#ifndef CORVANE_HOST_HTTP_IPP_REQUEST_CURL_H_
#define CORVANE_HOST_HTTP_IPP_REQUEST_CURL_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

#include "host/common/extended_request.h"
#include "host/http/http_request_curl.h"
#include "host/http/wire_exchange.h"

namespace Corvane::Host {

// A plain request until BeginChunkedSend; that makes its one exchange a streamed one, over a
// connection of its own that nothing else uses before or after.
class CurlIPPRequest final : public ExtendedRequest<CurlRequest> {
 public:
  CurlIPPRequest(std::shared_ptr<NetworkDevice> device, std::shared_ptr<LastFailure> lastFailure,
                 std::uint32_t port);
  const char* GetTypeName() override { return "Corvane::Host::CurlIPPRequest"; }

  HRESULT GetResponse(HTTPResponse** response) override;
  void SetOption(std::uint32_t option) override;

  void SetOption(std::uintptr_t option) override;
  void SetHeader(const wchar_t* name, const wchar_t* value) override { ReplaceHeader(name, value); }
  void SetContentLength(std::uint32_t size) override { m_contentLength = size; }
  void SendBody(const void* data, std::uint32_t size) override;
  HRESULT BeginChunkedSend(std::uintptr_t context) override;
  HRESULT WriteChunk(const void* data, std::uint32_t size, std::uintptr_t context) override;
  HRESULT FinishChunkedSend() override;
  bool IsSending() override { return m_sending.load(); }
  std::uint64_t GetSentBytes() override { return SentBytes().load(); }

 protected:
  ExchangeLimits Limits(const RequestSettings& settings,
                        const DeviceSettings& device) const override;

 private:
  Outcome OpenStream();
  HRESULT EndStream(Outcome failure);
  HRESULT OutOfOrder();

  std::optional<std::uint32_t> m_contentLength;
  std::optional<ExchangeClock> m_clock;  // of the next
  std::optional<WireExchange> m_stream;  // from a good begin to the response or a failure
  bool m_finished = false;               // its body
  // The device may have acted on the body, whose response is not told yet.
  bool m_wholeSent = false;
  std::uint32_t m_streamError = 0;  // what ended it early
  std::atomic<bool> m_sending{false};
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_IPP_REQUEST_CURL_H_
