#include "host/http/ipp_request_curl.h"

#include <algorithm>
#include <string>
#include <utility>

#include "corvane/error_codes.h"
#include "host/http/request_head.h"

namespace Corvane::Host {

CurlIPPRequest::CurlIPPRequest(std::shared_ptr<NetworkDevice> device,
                               std::shared_ptr<LastFailure> lastFailure, std::uint32_t port)
    : ExtendedRequest(std::move(device), std::move(lastFailure), port, true) {}

void CurlIPPRequest::SetOption(std::uint32_t option) { Settings().timeoutMs = option; }

void CurlIPPRequest::SetOption(std::uintptr_t option) {
  SetTimeoutOrHost(option, Device().AddressText());
}

ExchangeLimits CurlIPPRequest::Limits(const RequestSettings& settings,
                                      const DeviceSettings& device) const {
  ExchangeLimits limits = CurlRequest::Limits(settings, device);
  if (!m_sending.load()) return limits;
  // The body may take any time in all.
  limits.silenceMs = std::exchange(limits.totalMs, 0);
  limits.responseMs = std::max<std::int64_t>(limits.silenceMs, device.totalTimeoutMs);
  return limits;
}

void CurlIPPRequest::SendBody(const void* data, std::uint32_t size) {
  if (Performed()) return SetError(kErrorOutOfOrder);
  if ((!data && size != 0) || m_contentLength.value_or(size) != size) {
    RefuseSetting(kErrorInvalidParameter);
  }
  m_sending.store(true);
  Settings().body = {static_cast<const char*>(data), data ? size : 0};
  Conclude(PerformOnce());
  Settings().body = {};
  m_wholeSent = size != 0 && SentBytes().load() == size;
  m_sending.store(false);
}

HRESULT CurlIPPRequest::BeginChunkedSend(std::uintptr_t) {
  if (Performed()) return OutOfOrder();
  m_sending.store(true);
  Outcome failure = Guarded([this] {
    Outcome begun = Begin();
    return begun.error == 0 ? OpenStream() : std::move(begun);
  });
  return failure.error == 0 && !failure.response ? S_OK : EndStream(std::move(failure));
}

// An outcome without error and response: the stream is open.
Outcome CurlIPPRequest::OpenStream() {
  const DeviceSettings device = Device().Settings();
  WireRequest request;
  request.url = Url(Settings());
  std::string head;
  const wchar_t* fault = BuildWireRequest(Settings(), device, true, &request);
  if (!fault) fault = BuildStreamedHead(request, &head);
  if (fault) return {nullptr, kErrorInvalidParameter, fault};

  m_clock.emplace(Limits(Settings(), device));
  Connected connected =
      Device().Pool().Connect(request.url, ConnectionPool::Kind::kNew, *m_clock, Cancelled());
  if (!connected.connection) return {nullptr, connected.error, std::move(connected.remark)};
  m_stream.emplace(std::move(connected.connection), ResponseReader(Device().MaxResponseBytes()),
                   StopSending::kAtAnyAnswer, &*m_clock, Cancelled());
  if (m_stream->Send(head, nullptr)) return {};
  return OutcomeOf(m_stream->Receive(), L"before the body was sent");
}

HRESULT CurlIPPRequest::WriteChunk(const void* data, std::uint32_t size, std::uintptr_t) {
  if (m_streamError != 0) return ResultFromError(m_streamError);
  if (!m_stream || m_finished) return OutOfOrder();
  Outcome failure = Guarded([this, data, size]() -> Outcome {
    if (!data && size != 0) return {nullptr, kErrorInvalidParameter, L"a chunk without data"};
    if (m_stream->Send({static_cast<const char*>(data), size}, &SentBytes())) return {};
    return OutcomeOf(m_stream->Receive(), L"before the whole body was sent");
  });
  return failure.error == 0 && !failure.response ? S_OK : EndStream(std::move(failure));
}

HRESULT CurlIPPRequest::FinishChunkedSend() {
  if (m_streamError != 0) return ResultFromError(m_streamError);
  if (!m_stream || m_finished) return OutOfOrder();
  m_finished = true;
  m_sending.store(false);
  return S_OK;
}

HRESULT CurlIPPRequest::GetResponse(HTTPResponse** response) {
  if (response && m_stream) {
    Conclude(Guarded([this]() -> Outcome {
      if (!m_finished) return {nullptr, kErrorOutOfOrder, L"the streamed body was not finished"};
      return OutcomeOf(m_stream->Receive(), {});
    }));
    m_stream.reset();
    m_sending.store(false);
    m_wholeSent = m_finished;
  }
  const HRESULT result = CurlRequest::GetResponse(response);
  const bool lost = response && std::exchange(m_wholeSent, false) && FAILED(result);
  return lost ? kAnswerLost : result;
}

// `failure`: an error, or a response that came too early, whose status is the error then.
HRESULT CurlIPPRequest::EndStream(Outcome failure) {
  m_streamError = failure.error != 0 ? failure.error : failure.response->GetStatusCode();
  m_stream.reset();
  Conclude(std::move(failure));
  SetError(m_streamError);
  m_sending.store(false);
  return ResultFromError(m_streamError);
}

HRESULT CurlIPPRequest::OutOfOrder() {
  SetError(kErrorOutOfOrder);
  return ResultFromError(kErrorOutOfOrder);
}

}  // namespace Corvane::Host
