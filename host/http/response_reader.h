// Reads one HTTP/1.1 response from the bytes of a connection.
#ifndef CORVANE_HOST_HTTP_RESPONSE_READER_H_
#define CORVANE_HOST_HTTP_RESPONSE_READER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/http/response_collector.h"

namespace Corvane::Host {

// Fed as the bytes come, in pieces of any size. Strict (RFC 9112): what frames the message must be
// beyond doubt, or the response fails with kErrorInvalidResponse. Interim responses are skipped;
// trailers change nothing; bytes behind the end are ignored. Lines may end with a bare LF (RFC
// 9112, 2.2), but not where chunks are framed. The request must not have been HEAD or CONNECT,
// whose responses are framed otherwise.
//
// Bounded: kMaxHeaderBytes for all heads, trailers and chunk extensions, the given limit for the
// body.
class ResponseReader {
 public:
  explicit ResponseReader(std::size_t maxBodyBytes) : m_collector(maxBodyBytes) {}

  // False when the response has failed.
  bool Feed(std::string_view bytes);
  // The connection has ended: so has a body without another end; any other response fails.
  void End();
  // No more can be read; false.
  bool Fail(std::uint32_t error, std::wstring remark);

  // The head of a final response has been read whole.
  bool HasHead() const { return m_state >= State::kBodyOfLength && m_state != State::kFailed; }
  // The response is whole, or has failed.
  bool Done() const { return m_state >= State::kDone; }
  const WireResult& Result() const { return m_collector.Result(); }
  WireResult TakeResult() { return m_collector.TakeResult(); }

 private:
  enum class State {
    kStatusLine,
    kFields,
    kBodyOfLength,
    kBodyToEnd,
    kChunkSize,
    kChunkData,
    kChunkEnd,
    kTrailers,
    kDone,
    kFailed
  };

  bool InLines() const;
  void TakeLine(std::string_view* bytes);
  void TakeBody(std::string_view* bytes);
  bool CanContinue();
  void OnLine(std::string_view line);
  void OnStatusLine(std::string_view line);
  void OnHeadEnd();
  void OnChunkSize(std::string_view line);
  void FrameByLength(std::wstring_view length);
  bool Malformed(const wchar_t* what);

  State m_state = State::kStatusLine;
  std::string m_line;             // begun, up to its LF
  std::uint64_t m_bytesLeft = 0;  // of the body or of the chunk
  bool m_http10 = false;
  ResponseCollector m_collector;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_RESPONSE_READER_H_
