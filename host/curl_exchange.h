// One HTTP message there and one back, over a lent curl handle.
#ifndef CORVANE_HOST_CURL_EXCHANGE_H_
#define CORVANE_HOST_CURL_EXCHANGE_H_

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/buffered_response.h"
#include "host/curl_handles.h"

namespace Corvane::Host {

// What goes out. All texts are checked: nothing in them can begin another line.
struct WireRequest {
  std::string verb;
  std::string url;
  std::vector<std::string> headerLines;  // "Name: value"
  std::string userName;                  // both empty: no credentials
  std::string password;
  std::string_view body;
  bool hasBody = false;  // an empty one counts
};

struct ExchangeLimits {
  std::int64_t connectMs = 0;
  std::int64_t totalMs = 0;  // above 0
  std::size_t maxBodyBytes = 0;
};

struct TlsTrust {
  bool verify = true;
  std::string caFile;  // empty: the system's certificates
};

// What came back: a whole response, or an error code with a remark for people.
struct WireResult {
  std::uint32_t error = 0;
  std::wstring remark;
  std::uint32_t status = 0;
  BufferedResponse::Headers headers;
  std::string body;
  std::string location;  // the header's bytes; empty for none
  // The connection stands where the next response begins, beyond doubt.
  bool reusable = false;
};

// Serves one exchange on one thread. Credentials go out only as the answer to a challenge of the
// device, digest (RFC 7616) before basic (RFC 7617), to the URL's own host and port: no redirect is
// followed here, no proxy or .netrc of the environment asked. A request body is sent again only
// when the device refused it with 401, never because a connection broke: the device may have acted
// on it.
class CurlExchange {
 public:
  CurlExchange(const WireRequest& request, const ExchangeLimits& limits, const TlsTrust& trust,
               const std::atomic<bool>& cancelled);
  CurlExchange(const CurlExchange&) = delete;
  CurlExchange& operator=(const CurlExchange&) = delete;

  WireResult Run(CURL* handle);

 private:
  enum class Doubt { kNone, kHeaderTooLarge, kBodyTooLarge, kFraming, kCoding };

  bool Configure();
  bool ConfigureSafety();
  bool ConfigureTransfer();
  bool ConfigureMessage();
  bool ConfigureCredentials();
  template <typename Value>
  bool Set(CURLoption option, Value value);

  void Finish(CURLcode code);
  void Explain(CURLcode code);
  bool HeaderReceived(std::string_view line);
  bool FieldReceived(std::string_view line);
  bool BodyReceived(std::string_view bytes);
  std::size_t ReadBody(char* out, std::size_t size);
  bool RewindBody(std::int64_t offset);

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
  std::array<char, CURL_ERROR_SIZE> m_message{};
  std::size_t m_bodySent = 0;
  std::size_t m_headerBytes = 0;  // of all the exchange's responses, 1xx and challenges too
  bool m_headComplete = true;     // what follows a complete head are a body and trailers
  bool m_outOfMemory = false;
  bool m_surplus = false;  // bytes came behind the end of the body
  Doubt m_doubt = Doubt::kNone;
  WireResult m_result;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_CURL_EXCHANGE_H_
