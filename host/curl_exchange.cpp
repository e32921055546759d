// Receiving, and what came of it. The settings are in curl_exchange_settings.cpp.
#include "host/curl_exchange.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "host/curl_errors.h"
#include "host/error_codes.h"
#include "host/text.h"

namespace Corvane::Host {
namespace {

// All heads of one exchange, against a device that sends header lines, interim responses or
// challenges without end.
constexpr std::size_t kMaxHeaderBytes = std::size_t{64} << 10;
constexpr std::uint32_t kUnauthorized = 401;

bool HasNoWhiteSpaceEnds(std::string_view text) {
  return text.empty() ||
         (text.front() != ' ' && text.front() != '\t' && text.back() != ' ' && text.back() != '\t');
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// "HTTP/1.1 401 Unauthorized" is 401; 0 for what is no status line.
std::uint32_t StatusOf(std::string_view line) {
  const std::size_t space = line.find(' ');
  if (space == std::string_view::npos || line.size() < space + 4) return 0;
  std::uint32_t status = 0;
  for (const char digit : line.substr(space + 1, 3)) {
    if (digit < '0' || digit > '9') return 0;
    status = status * 10 + static_cast<std::uint32_t>(digit - '0');
  }
  return status;
}

}  // namespace

CurlExchange::CurlExchange(const WireRequest& request, const ExchangeLimits& limits,
                           const TlsTrust& trust, const std::atomic<bool>& cancelled)
    : m_request(request), m_limits(limits), m_trust(trust), m_cancelled(cancelled) {}

WireResult CurlExchange::Run(CURL* handle) {
  m_handle = handle;
  if (Configure()) {
    Finish(curl_easy_perform(handle));
  } else {
    m_result.error = kInvalidParameter;
    m_result.remark = L"the request cannot be sent";
  }
  return std::move(m_result);
}

void CurlExchange::Finish(CURLcode code) {
  if (code != CURLE_OK) return Explain(code);
  // To curl, a head that breaks off is a whole one.
  if (!m_headComplete || m_result.status == 0) return Explain(CURLE_PARTIAL_FILE);
  const auto location = m_result.headers.find(L"location");
  if (location != m_result.headers.end()) {
    for (const wchar_t c : location->second) m_result.location.push_back(static_cast<char>(c));
  }
  // Chunked and with a length too: where the body ends is the sender's secret (RFC 9112, 6.3).
  m_result.reusable = !m_surplus && !(m_result.headers.contains(L"transfer-encoding") &&
                                      m_result.headers.contains(L"content-length"));
}

void CurlExchange::Explain(CURLcode code) {
  const auto explain = [this](std::uint32_t error, std::wstring remark) {
    m_result.error = error;
    m_result.remark = std::move(remark);
  };
  if (m_outOfMemory) return explain(kOutOfMemory, L"out of memory");
  switch (m_doubt) {
    case Doubt::kHeaderTooLarge:
      return explain(kHeaderTooLarge, L"the response's header is larger than " +
                                          std::to_wstring(kMaxHeaderBytes) + L" bytes");
    case Doubt::kBodyTooLarge:
      return explain(kResponseTooLarge, L"the response is larger than " +
                                            std::to_wstring(m_limits.maxBodyBytes) + L" bytes");
    case Doubt::kFraming:
      return explain(kInvalidServerResponse, L"the response has two different lengths");
    case Doubt::kCoding:
      return explain(kInvalidServerResponse, L"the response has a coding that nobody asked for");
    case Doubt::kNone:
      break;
  }
  curl_off_t connected = 0;
  curl_off_t begun = 0;
  curl_easy_getinfo(m_handle, CURLINFO_PRETRANSFER_TIME_T, &connected);
  curl_easy_getinfo(m_handle, CURLINFO_STARTTRANSFER_TIME_T, &begun);
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      if (connected == 0 && m_limits.connectMs < m_limits.totalMs) {
        return explain(kTimeout,
                       L"no connection within " + std::to_wstring(m_limits.connectMs) + L" ms");
      }
      return explain(kTimeout, L"timed out after " + std::to_wstring(m_limits.totalMs) + L" ms");
    case CURLE_FILESIZE_EXCEEDED:
      m_doubt = Doubt::kBodyTooLarge;
      return Explain(code);
    case CURLE_OUT_OF_MEMORY:
      // This is also what curl says of one line without end, for which there is no callback.
      if (begun != 0) {
        m_doubt = Doubt::kHeaderTooLarge;
        return Explain(code);
      }
      break;
    case CURLE_SEND_FAIL_REWIND:
      return explain(kConnectionError, L"the connection broke while the body was sent");
    case CURLE_ABORTED_BY_CALLBACK:
      return explain(kOperationCancelled, L"cancelled");
    default:
      break;
  }
  // Curl's text can quote the device.
  const char* const text = m_message[0] ? m_message.data() : curl_easy_strerror(code);
  std::string printable(text, strnlen(text, m_message.size()));
  std::replace_if(
      printable.begin(), printable.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  explain(ErrorFromCurl(code), Widen(printable));
}

// False ends the exchange.
bool CurlExchange::HeaderReceived(std::string_view line) {
  m_headerBytes += line.size();
  if (m_headerBytes > kMaxHeaderBytes) {
    m_doubt = Doubt::kHeaderTooLarge;
    return false;
  }
  if (line.starts_with("HTTP/")) {
    m_headComplete = false;
    m_result.status = StatusOf(line);
    m_result.headers.clear();
    m_result.body.clear();
    return true;
  }
  if (m_headComplete) return true;  // a trailer, which changes nothing
  if (Trim(line).empty()) {
    m_headComplete = true;
    return true;
  }
  return FieldReceived(line);
}

bool CurlExchange::FieldReceived(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0 ||
      !HasNoWhiteSpaceEnds(line.substr(0, colon))) {
    m_doubt = Doubt::kFraming;  // RFC 9112, 5.1 and 5.2: a folded line, or no field at all
    return false;
  }
  const std::wstring name = LowerAscii(Widen(line.substr(0, colon)));
  const std::wstring value = Widen(Trim(line.substr(colon + 1)));
  const auto [field, added] = m_result.headers.emplace(name, value);
  if (added) return true;
  if (name == L"content-length") {
    if (field->second == value) return true;
    m_doubt = Doubt::kFraming;
    return false;
  }
  field->second += L", " + value;
  return true;
}

bool CurlExchange::BodyReceived(std::string_view bytes) {
  const auto coding = m_result.headers.find(L"content-encoding");
  if (coding != m_result.headers.end() && !EqualsIgnoreCase(coding->second, L"identity")) {
    m_doubt = Doubt::kCoding;
    return false;
  }
  if (bytes.size() > m_limits.maxBodyBytes - m_result.body.size()) {
    m_doubt = Doubt::kBodyTooLarge;
    return false;
  }
  m_result.body.append(bytes);
  return true;
}

std::size_t CurlExchange::ReadBody(char* out, std::size_t size) {
  const std::size_t bytes = std::min(size, m_request.body.size() - m_bodySent);
  std::memcpy(out, m_request.body.data() + m_bodySent, bytes);
  m_bodySent += bytes;
  return bytes;
}

bool CurlExchange::RewindBody(std::int64_t offset) {
  if (offset != 0 || (m_bodySent != 0 && m_result.status != kUnauthorized)) return false;
  m_bodySent = 0;
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
  try {
    return exchange->BodyReceived({data, size * count}) ? size * count : 0;
  } catch (const std::exception&) {  // the string's own limit, too
    exchange->m_outOfMemory = true;
    return 0;
  }
}

std::size_t CurlExchange::OnRead(char* data, std::size_t size, std::size_t count, void* self) {
  return static_cast<CurlExchange*>(self)->ReadBody(data, size * count);
}

int CurlExchange::OnSeek(void* self, curl_off_t offset, int origin) {
  return origin == SEEK_SET && static_cast<CurlExchange*>(self)->RewindBody(offset)
             ? CURL_SEEKFUNC_OK
             : CURL_SEEKFUNC_FAIL;
}

// Curl skips what comes behind a body and keeps the connection; it tells only here.
int CurlExchange::OnDebug(CURL*, curl_infotype type, char* data, std::size_t size, void* self) {
  const std::string_view text(data, size);
  if (type == CURLINFO_TEXT && (text.starts_with("Excess") || text.starts_with("Leftovers"))) {
    static_cast<CurlExchange*>(self)->m_surplus = true;
  }
  return 0;
}

int CurlExchange::OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<CurlExchange*>(self)->m_cancelled.load() ? 1 : 0;
}

}  // namespace Corvane::Host
