// Receiving, and what came of it. The settings are in curl_exchange_settings.cpp.
#include "host/http/curl_exchange.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "corvane/error_codes.h"
#include "host/http/curl_errors.h"
#include "host/http/time_remarks.h"
#include "host/trust/pinned_trust.h"

namespace Corvane::Host {
namespace {

constexpr std::uint32_t kFirstFinalStatus = 200;
constexpr std::uint32_t kUnauthorized = 401;
// The first answers the challenge, the second a nonce that went stale while a long body was on its
// way. A device that challenges for ever would have a document sent for ever.
constexpr int kMaxResends = 2;

}  // namespace

CurlExchange::CurlExchange(const WireRequest& request, const ExchangeLimits& limits,
                           const TlsTrust& trust, const std::atomic<bool>& cancelled)
    : m_request(request),
      m_limits(limits),
      m_trust(trust),
      m_cancelled(cancelled),
      m_collector(limits.maxBodyBytes) {}

WireResult CurlExchange::Run(CURL* handle) {
  m_handle = handle;
  if (!Configure()) {
    m_collector.Fail(kErrorInvalidParameter, L"the request cannot be sent");
    return m_collector.TakeResult();
  }
  Finish(curl_easy_perform(handle));
  // Chunked and with a length too: where the body ends is the sender's secret (RFC 9112, 6.3).
  const bool reusable = !m_surplus && !(m_collector.Find(L"transfer-encoding") &&
                                        m_collector.Find(L"content-length"));
  WireResult result = m_collector.TakeResult();
  result.reusable = reusable && result.error == 0;
  return result;
}

void CurlExchange::Finish(CURLcode code) {
  if (code != CURLE_OK) return Explain(code);
  // To curl, a head that breaks off is a whole one.
  if (!m_headComplete || m_collector.Result().status == 0) Explain(CURLE_PARTIAL_FILE);
}

void CurlExchange::Explain(CURLcode code) {
  const auto explain = [this](std::uint32_t error, std::wstring remark) {
    m_collector.Fail(error, std::move(remark));
  };
  if (m_outOfMemory) return explain(kErrorOutOfMemory, L"out of memory");
  if (m_collector.Failed()) return;
  curl_off_t connected = 0;
  curl_off_t begun = 0;
  curl_easy_getinfo(m_handle, CURLINFO_PRETRANSFER_TIME_T, &connected);
  curl_easy_getinfo(m_handle, CURLINFO_STARTTRANSFER_TIME_T, &begun);
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      if (m_limits.totalMs == 0 || (connected == 0 && m_limits.connectMs < m_limits.totalMs)) {
        return explain(kErrorTimeout,
                       L"no connection within " + std::to_wstring(m_limits.connectMs) + L" ms");
      }
      return explain(kErrorTimeout,
                     L"timed out after " + std::to_wstring(m_limits.totalMs) + L" ms");
    case CURLE_FILESIZE_EXCEEDED:
      m_collector.FailBodyTooLarge();
      return;
    case CURLE_OUT_OF_MEMORY:
      // This is also what curl says of one line without end, for which there is no callback.
      if (begun == 0) break;
      m_collector.FailHeaderTooLarge();
      return;
    case CURLE_SEND_FAIL_REWIND:
      return explain(kErrorConnection, L"the connection broke before the answer to the body");
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
      return explain(ErrorFromCurl(code), KeyChanged(m_handle, m_trust));
    case CURLE_ABORTED_BY_CALLBACK:
      return explain(kErrorCancelled, L"cancelled");
    default:
      break;
  }
  explain(ErrorFromCurl(code), Words(code, m_message));
}

// False ends the exchange.
bool CurlExchange::HeaderReceived(std::string_view line) {
  AnswerMoved();
  if (!m_collector.CountHeaderBytes(line.size())) return false;
  if (line.starts_with("HTTP/")) {
    m_headComplete = false;
    m_collector.Begin(StatusOf(line));
    m_answered = m_collector.Result().status >= kFirstFinalStatus;
    return true;
  }
  if (m_headComplete) return true;  // a trailer, which changes nothing
  m_headComplete = line.find_first_not_of(" \t\r\n") == std::string_view::npos;
  return m_headComplete || m_collector.Field(line);
}

std::size_t CurlExchange::ReadBody(char* out, std::size_t size) {
  const std::size_t bytes = std::min(size, m_request.body.size() - m_bodySent);
  std::memcpy(out, m_request.body.data() + m_bodySent, bytes);
  m_bodySent += bytes;
  return bytes;
}

bool CurlExchange::RewindBody(std::int64_t offset) {
  if (offset != 0 || (m_bodySent != 0 && m_collector.Result().status != kUnauthorized)) {
    m_isCutOff = true;
    return false;
  }
  const bool again = std::exchange(m_bodySent, 0) != 0;  // refused: nobody acted on it
  if (again && ++m_resends > kMaxResends) {
    return m_collector.Fail(kErrorInvalidResponse,
                            L"the device asks for credentials again and again");
  }
  return true;
}

std::size_t CurlExchange::BodySent() const {
  if (m_isCutOff) return m_bodySent;
  curl_off_t taken = 0;
  curl_easy_getinfo(m_handle, CURLINFO_SIZE_UPLOAD_T, &taken);
  return std::min(m_bodySent, static_cast<std::size_t>(taken));
}

// A request's head has gone out: the first, or one that answers a challenge.
void CurlExchange::AttemptBegins() {
  m_requested = true;
  m_answered = false;
  m_bodySeen = 0;
  m_moved = Clock::now();
  m_waitedSince.reset();
}

// What comes while the body goes out, as interim responses, does not count for it.
void CurlExchange::AnswerMoved() {
  if (m_waitedSince) m_moved = Clock::now();
}

// False ends the exchange. `bodySent`: bytes that the connection has taken.
bool CurlExchange::GoesOn(std::int64_t bodySent) {
  if (m_cancelled.load()) return false;
  if (m_limits.totalMs != 0) return true;  // curl's own limit
  if (!m_requested) return true;           // connecting has its limit, too
  const Clock::time_point now = Clock::now();
  if (std::exchange(m_bodySeen, bodySent) != bodySent) m_moved = now;
  const bool bodyEnded = m_answered || bodySent >= static_cast<std::int64_t>(m_request.body.size());
  if (bodyEnded && !m_waitedSince) m_waitedSince = now;
  if (now - m_moved >= std::chrono::milliseconds(m_limits.silenceMs)) {
    return m_collector.Fail(
        kErrorTimeout, bodyEnded ? Silent(m_limits.silenceMs) : NothingTaken(m_limits.silenceMs));
  }
  if (m_waitedSince && now - *m_waitedSince >= std::chrono::milliseconds(m_limits.responseMs)) {
    return m_collector.Fail(kErrorTimeout, NoWholeResponse(m_limits.responseMs));
  }
  return true;
}

// Curl calls these from C: no exception may pass.

std::size_t CurlExchange::OnHeader(char* data, std::size_t size, std::size_t count, void* self) {
  auto* const exchange = static_cast<CurlExchange*>(self);
  try {
    return exchange->HeaderReceived({data, size * count}) ? size * count : 0;
  } catch (const std::bad_alloc&) {
    exchange->m_outOfMemory = true;
    return 0;
  }
}

std::size_t CurlExchange::OnWrite(char* data, std::size_t size, std::size_t count, void* self) {
  auto* const exchange = static_cast<CurlExchange*>(self);
  exchange->AnswerMoved();
  try {
    return exchange->m_collector.Body({data, size * count}) ? size * count : 0;
  } catch (const std::exception&) {  // the string's own limit, too
    exchange->m_outOfMemory = true;
    return 0;
  }
}

std::size_t CurlExchange::OnRead(char* data, std::size_t size, std::size_t count, void* self) {
  return static_cast<CurlExchange*>(self)->ReadBody(data, size * count);
}

int CurlExchange::OnSeek(void* self, curl_off_t offset, int origin) {
  auto* const exchange = static_cast<CurlExchange*>(self);
  try {
    return origin == SEEK_SET && exchange->RewindBody(offset) ? CURL_SEEKFUNC_OK
                                                              : CURL_SEEKFUNC_FAIL;
  } catch (const std::bad_alloc&) {
    exchange->m_outOfMemory = true;
    return CURL_SEEKFUNC_FAIL;
  }
}

// Curl skips what comes behind a body and keeps the connection; it tells only here. And only here,
// that it sends the request once more.
int CurlExchange::OnDebug(CURL*, curl_infotype type, char* data, std::size_t size, void* self) {
  if (type == CURLINFO_HEADER_OUT) static_cast<CurlExchange*>(self)->AttemptBegins();
  const std::string_view text(data, size);
  if (type == CURLINFO_TEXT && (text.starts_with("Excess") || text.starts_with("Leftovers"))) {
    static_cast<CurlExchange*>(self)->m_surplus = true;
  }
  return 0;
}

int CurlExchange::OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t bodySent) {
  auto* const exchange = static_cast<CurlExchange*>(self);
  try {
    return exchange->GoesOn(bodySent) ? 0 : 1;
  } catch (const std::bad_alloc&) {
    exchange->m_outOfMemory = true;
    return 1;
  }
}

}  // namespace Corvane::Host
