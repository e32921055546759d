// One HTTP message there and one back, over a lent curl handle.
#ifndef CORVANE_HOST_HTTP_CURL_EXCHANGE_H_
#define CORVANE_HOST_HTTP_CURL_EXCHANGE_H_

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/http/curl_handles.h"
#include "host/http/curl_settings.h"
#include "host/http/response_collector.h"

namespace Corvane::Host {

// What goes out. All texts are checked: nothing in them can begin another line.
struct WireRequest {
  std::string verb;
  std::string url;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string contentType;  // empty: none goes out
  std::string userName;     // both empty: no credentials
  std::string password;
  bool allowsBasic = true;  // to answer a challenge with
  std::string_view body;
  bool hasBody = false;  // an empty one counts
};

struct ExchangeLimits {
  std::int64_t connectMs = 0;
  std::int64_t totalMs = 0;  // 0: none but the next two, which else mean nothing
  // Without a byte of the body taken, or without a line or a byte of the response.
  std::int64_t silenceMs = 0;
  std::int64_t responseMs = 0;  // the response in all, from the end of the body
  std::size_t maxBodyBytes = 0;
};

// Serves one exchange on one thread. Credentials go out only as the answer to a challenge of the
// device, digest (RFC 7616) before basic (RFC 7617), to the URL's own host and port: no redirect is
// followed here, no proxy or .netrc of the environment asked. A request body is sent again only
// when the device refused it with 401, never because a connection broke: the device may have acted
// on it. A limit of silence and a cancel take effect within about a second.
class CurlExchange {
 public:
  CurlExchange(const WireRequest& request, const ExchangeLimits& limits, const TlsTrust& trust,
               const std::atomic<bool>& cancelled);
  CurlExchange(const CurlExchange&) = delete;
  CurlExchange& operator=(const CurlExchange&) = delete;

  WireResult Run(CURL* handle);
  // Bytes of the request's body that the connection took, in the last attempt; after Run.
  std::size_t BodySent() const;

 private:
  using Clock = std::chrono::steady_clock;

  bool Configure();
  bool ConfigureTransfer();
  bool ConfigureMessage();
  bool ConfigureCredentials();
  void AppendHeaderLine(const std::string& line);
  template <typename Value>
  bool Set(CURLoption option, Value value);

  void Finish(CURLcode code);
  void Explain(CURLcode code);
  bool HeaderReceived(std::string_view line);
  std::size_t ReadBody(char* out, std::size_t size);
  bool RewindBody(std::int64_t offset);
  void AttemptBegins();
  void AnswerMoved();
  bool GoesOn(std::int64_t bodySent);

  static std::size_t OnHeader(char* data, std::size_t size, std::size_t count, void* self);
  static std::size_t OnWrite(char* data, std::size_t size, std::size_t count, void* self);
  static std::size_t OnRead(char* data, std::size_t size, std::size_t count, void* self);
  static int OnSeek(void* self, curl_off_t offset, int origin);
  static int OnDebug(CURL*, curl_infotype type, char* data, std::size_t size, void* self);
  static int OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t);

  const WireRequest& m_request;
  const ExchangeLimits& m_limits;
  const TlsTrust& m_trust;
  const std::atomic<bool>& m_cancelled;

  CURL* m_handle = nullptr;
  CurlList m_headerLines;
  CurlMessage m_message{};
  std::size_t m_bodySent = 0;  // taken by curl
  // A kept connection broke behind the body, which is not sent again. curl counts from zero then,
  // but the device may have it.
  bool m_isCutOff = false;
  int m_resends = 0;
  // Of the last attempt.
  bool m_requested = false;                        // its head has gone out
  bool m_answered = false;                         // a final response has begun
  std::int64_t m_bodySeen = 0;                     // taken by the connection, at the last look
  Clock::time_point m_moved;                       // when a byte last went the way that counts
  std::optional<Clock::time_point> m_waitedSince;  // for the response, or its rest

  bool m_headComplete = true;  // what follows a complete head are a body and trailers
  bool m_outOfMemory = false;
  bool m_surplus = false;  // bytes came behind the end of the body
  ResponseCollector m_collector;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CURL_EXCHANGE_H_
