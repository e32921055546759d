// Reads one HTTP/1.1 response from the bytes of a connection.
#ifndef CORVANE_HOST_HTTP_RESPONSE_READER_H_
#define CORVANE_HOST_HTTP_RESPONSE_READER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/common/buffered_response.h"

namespace Corvane::Host {

// What came back: a whole response, or an error code with a remark for people.
struct WireResult {
  std::uint32_t error = 0;
  std::wstring remark;
  std::uint32_t status = 0;
  BufferedResponse::Headers headers;
  std::string body;
  // The connection stands where the next response begins, beyond doubt, and stays open.
  bool reusable = false;

  // The value of a field, named in lower case; null for none.
  const std::wstring* Find(const wchar_t* name) const;
  // The same as the bytes that came; empty for none.
  std::string BytesOf(const wchar_t* name) const;
};

// All heads of one response, against a device that sends header lines or interim responses without
// end.
constexpr std::size_t kMaxHeaderBytes = std::size_t{64} << 10;

// Fed as the bytes come, in pieces of any size. Strict (RFC 9112): what frames the message must be
// beyond doubt, or the response fails with kErrorInvalidResponse. Interim responses are skipped;
// trailers change nothing; bytes behind the end only keep the connection from further use. Lines
// may end with a bare LF (RFC 9112, 2.2), but not where chunks are framed. The request must not
// have been CONNECT, whose response is framed otherwise.
//
// Bounded: kMaxHeaderBytes for all heads, trailers and chunk extensions, the given limit for the
// body.
class ResponseReader {
 public:
  enum class Answers { kAnyRequest, kHead };  // a response to HEAD has no body
  explicit ResponseReader(std::size_t maxBodyBytes, Answers answers = Answers::kAnyRequest)
      : m_maxBodyBytes(maxBodyBytes), m_answers(answers) {}

  // False when the response has failed.
  bool Feed(std::string_view bytes);
  // The connection has ended: so has a body without another end; any other response fails.
  void End();
  // No more can be read; false.
  bool Fail(std::uint32_t error, std::wstring remark);

  // The head of a final response has been read whole.
  bool HasHead() const { return m_state >= State::kBodyOfLength && !Failed(); }
  // The response is whole, or has failed.
  bool Done() const { return m_state >= State::kDone; }
  bool Failed() const { return m_state == State::kFailed; }
  const WireResult& Result() const { return m_result; }
  WireResult TakeResult();

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
  void OnField(std::string_view line);
  void OnHeadEnd();
  void OnChunkSize(std::string_view line);
  void FrameByLength(std::wstring_view length);
  bool StaysOpen() const;
  bool CountHeaderBytes(std::size_t bytes);
  std::size_t BodyBytesLeft() const { return m_maxBodyBytes - m_result.body.size(); }
  bool Malformed(const wchar_t* what);
  bool FailHeaderTooLarge();
  bool FailBodyTooLarge();

  const std::size_t m_maxBodyBytes;
  const Answers m_answers;
  State m_state = State::kStatusLine;
  std::string m_line;             // begun, up to its LF
  std::uint64_t m_bytesLeft = 0;  // of the body or of the chunk
  std::size_t m_headerBytes = 0;
  bool m_http10 = false;
  bool m_doubtful = false;  // where the next response begins
  WireResult m_result;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_RESPONSE_READER_H_
