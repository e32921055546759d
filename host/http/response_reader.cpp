#include "host/http/response_reader.h"

#include <algorithm>
#include <utility>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"

namespace Corvane::Host {
namespace {

constexpr std::string_view kVersion = "HTTP/1.";
constexpr std::size_t kStatusLineBytes = 12;  // "HTTP/1.1 200", without a reason
constexpr std::size_t kStatusAt = 9;          // in it
constexpr std::size_t kMaxChunkDigits = 16;   // of a size of 64 bits

constexpr std::uint32_t kFirstStatus = 100;
constexpr std::uint32_t kSwitchingProtocols = 101;
constexpr std::uint32_t kFirstFinalStatus = 200;
constexpr std::uint32_t kNoContent = 204;
constexpr std::uint32_t kNotModified = 304;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// -1 for what is no hexadecimal digit.
int HexValue(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

std::string_view TrimFieldValue(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

const std::wstring* WireResult::Find(const wchar_t* name) const {
  const auto field = headers.find(name);
  return field == headers.end() ? nullptr : &field->second;
}

std::string WireResult::BytesOf(const wchar_t* name) const {
  std::string bytes;
  if (const std::wstring* const value = Find(name)) {
    for (const wchar_t c : *value) bytes.push_back(static_cast<char>(c));
  }
  return bytes;
}

bool ResponseReader::Feed(std::string_view bytes) {
  while (!bytes.empty() && !Done()) {
    if (InLines()) {
      TakeLine(&bytes);
    } else {
      TakeBody(&bytes);
    }
  }
  if (!bytes.empty()) m_doubtful = true;
  return !Failed();
}

void ResponseReader::End() {
  if (Done()) return;
  if (m_state == State::kBodyToEnd) {
    m_state = State::kDone;
    m_doubtful = true;
  } else {
    // RFC 9112, 8: an incomplete message.
    Fail(kErrorConnection, HasHead() || m_state == State::kFields || !m_line.empty()
                               ? L"the connection ended within the response"
                               : L"the connection ended without a response");
  }
}

bool ResponseReader::Fail(std::uint32_t error, std::wstring remark) {
  m_state = State::kFailed;
  m_result.error = error;
  m_result.remark = std::move(remark);
  return false;
}

WireResult ResponseReader::TakeResult() {
  m_result.reusable = m_state == State::kDone && !m_doubtful && StaysOpen();
  return std::move(m_result);
}

// RFC 9112, 9.3.
bool ResponseReader::StaysOpen() const {
  const std::wstring* const value = m_result.Find(L"connection");
  const std::wstring options = value ? LowerAscii(*value) : std::wstring();
  return m_http10 ? options.find(L"keep-alive") != options.npos
                  : options.find(L"close") == options.npos;
}

bool ResponseReader::CountHeaderBytes(std::size_t bytes) {
  m_headerBytes += bytes;
  return m_headerBytes <= kMaxHeaderBytes || FailHeaderTooLarge();
}

bool ResponseReader::FailHeaderTooLarge() {
  return Fail(kErrorHeaderTooLarge, L"the response's header is larger than " +
                                        std::to_wstring(kMaxHeaderBytes) + L" bytes");
}

bool ResponseReader::FailBodyTooLarge() {
  return Fail(kErrorResponseTooLarge,
              L"the response is larger than " + std::to_wstring(m_maxBodyBytes) + L" bytes");
}

bool ResponseReader::Malformed(const wchar_t* what) {
  return Fail(kErrorInvalidResponse, std::wstring(L"the response has ") + what);
}

bool ResponseReader::InLines() const {
  return m_state == State::kStatusLine || m_state == State::kFields ||
         m_state == State::kChunkSize || m_state == State::kChunkEnd || m_state == State::kTrailers;
}

void ResponseReader::TakeLine(std::string_view* bytes) {
  const std::size_t lineFeed = bytes->find('\n');
  const std::size_t taken = lineFeed == bytes->npos ? bytes->size() : lineFeed + 1;
  if (taken > kMaxHeaderBytes - m_line.size()) {
    FailHeaderTooLarge();
    return;
  }
  m_line.append(bytes->substr(0, taken));
  bytes->remove_prefix(taken);
  if (!CanContinue() || lineFeed == bytes->npos) return;
  OnLine(std::exchange(m_line, {}));
}

// Whether the line, as far as it has come, can still be the one that is due: what is no HTTP must
// not be waited for.
bool ResponseReader::CanContinue() {
  if (m_state == State::kStatusLine && !std::string_view(m_line).starts_with(kVersion) &&
      !kVersion.starts_with(m_line)) {
    return Malformed(L"no status line");
  }
  if (m_state == State::kChunkEnd && !std::string_view("\r\n").starts_with(m_line)) {
    return Malformed(L"a chunk that is longer than its size");
  }
  return true;
}

void ResponseReader::OnLine(std::string_view line) {
  const std::size_t size = line.size();
  line.remove_suffix(1);
  const bool carriageReturn = line.ends_with('\r');
  if (carriageReturn) line.remove_suffix(1);
  // RFC 9112, 2.2, and RFC 9110, 5.5: a bare CR or a NUL means something else to each reader.
  if (line.find_first_of(std::string_view("\r\0", 2)) != line.npos) {
    Malformed(L"a stray control character in a line");
    return;
  }
  switch (m_state) {
    case State::kStatusLine:
      if (CountHeaderBytes(size)) OnStatusLine(line);
      return;
    case State::kFields:
      if (!CountHeaderBytes(size)) return;
      if (line.empty()) {
        OnHeadEnd();
      } else {
        OnField(line);
      }
      return;
    case State::kChunkSize:
      if (carriageReturn) {
        OnChunkSize(line);
      } else {
        Malformed(L"a malformed chunk size");
      }
      return;
    case State::kChunkEnd:
      m_state = State::kChunkSize;
      return;
    default:  // a trailer
      if (CountHeaderBytes(size) && line.empty()) m_state = State::kDone;
      return;
  }
}

// RFC 9112, 4. The space in front of a missing reason is often missing, too.
void ResponseReader::OnStatusLine(std::string_view line) {
  std::uint32_t status = 0;
  bool wellFormed = line.size() >= kStatusLineBytes && IsDigit(line[kVersion.size()]) &&
                    line[kVersion.size() + 1] == ' ' &&
                    (line.size() == kStatusLineBytes || line[kStatusLineBytes] == ' ');
  for (std::size_t i = kStatusAt; wellFormed && i < kStatusLineBytes; ++i) {
    wellFormed = IsDigit(line[i]);
    status = status * 10 + static_cast<std::uint32_t>(line[i] - '0');
  }
  if (!wellFormed || status < kFirstStatus) {
    Malformed(L"no status line");
    return;
  }
  m_http10 = line[kVersion.size()] == '0';
  m_result.status = status;
  m_result.headers.clear();
  m_state = State::kFields;
}

void ResponseReader::OnField(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == line.npos || colon == 0 || TrimFieldValue(line.substr(0, colon)).size() != colon) {
    Malformed(L"a malformed header line");  // RFC 9112, 5.1 and 5.2: a folded one, too
    return;
  }
  const std::wstring name = LowerAscii(WideFromLatin1(line.substr(0, colon)));
  const std::wstring value = WideFromLatin1(TrimFieldValue(line.substr(colon + 1)));
  const auto [field, added] = m_result.headers.emplace(name, value);
  if (added) return;
  if (name != L"content-length") {
    field->second += L", " + value;
  } else if (field->second != value) {  // RFC 9112, 6.3
    Malformed(L"two different lengths");
  }
}

// RFC 9112, 6.3: where the body ends.
void ResponseReader::OnHeadEnd() {
  const std::uint32_t status = m_result.status;
  const std::wstring* const coding = m_result.Find(L"transfer-encoding");
  const std::wstring* const length = m_result.Find(L"content-length");
  if (status == kSwitchingProtocols) {  // RFC 9110, 15.2.2: nobody asked for it
    Malformed(L"a change of protocol");
  } else if (status < kFirstFinalStatus) {
    m_state = State::kStatusLine;
  } else if (coding && (length || m_http10)) {  // RFC 9112, 6.1: a sign of smuggling
    Malformed(L"two different lengths");
  } else if (coding && !EqualsIgnoreAsciiCase(*coding, L"chunked")) {
    Malformed(L"an unknown transfer coding");
  } else if (m_answers == Answers::kHead || status == kNoContent || status == kNotModified) {
    m_state = State::kDone;
  } else if (coding) {
    m_state = State::kChunkSize;
  } else if (length) {
    FrameByLength(*length);
  } else {
    m_state = State::kBodyToEnd;
  }
}

// RFC 9110, 8.6. One that 64 bits do not hold is too large for any limit.
void ResponseReader::FrameByLength(std::wstring_view length) {
  if (length.empty() || length.find_first_not_of(L"0123456789") != length.npos) {
    Malformed(L"a malformed length");
    return;
  }
  std::uint64_t value = 0;
  for (const wchar_t c : length) {
    value = value * 10 + static_cast<std::uint64_t>(c - L'0');
    if (value > BodyBytesLeft()) {
      FailBodyTooLarge();
      return;
    }
  }
  m_bytesLeft = value;
  m_state = value == 0 ? State::kDone : State::kBodyOfLength;
}

// RFC 9112, 7.1 and 7.1.1.
void ResponseReader::OnChunkSize(std::string_view line) {
  std::size_t digits = 0;
  std::uint64_t size = 0;
  while (digits < line.size() && HexValue(line[digits]) >= 0) {
    if (digits == kMaxChunkDigits) break;
    size = size << 4 | static_cast<std::uint64_t>(HexValue(line[digits++]));
  }
  const std::string_view rest = line.substr(digits);
  const std::size_t extension = rest.find_first_not_of(" \t");
  if (digits == 0 || (extension != rest.npos && rest[extension] != ';')) {
    Malformed(L"a malformed chunk size");
  } else if (CountHeaderBytes(rest.size())) {
    if (size > BodyBytesLeft()) {
      FailBodyTooLarge();
      return;
    }
    m_bytesLeft = size;
    m_state = size == 0 ? State::kTrailers : State::kChunkData;
  }
}

void ResponseReader::TakeBody(std::string_view* bytes) {
  const bool toEnd = m_state == State::kBodyToEnd;
  const auto taken =
      toEnd ? bytes->size()
            : static_cast<std::size_t>(std::min<std::uint64_t>(bytes->size(), m_bytesLeft));
  const std::wstring* const coding = m_result.Find(L"content-encoding");
  if (coding && !EqualsIgnoreAsciiCase(*coding, L"identity")) {
    Malformed(L"an unknown content coding");
    return;
  }
  if (taken > BodyBytesLeft()) {
    FailBodyTooLarge();
    return;
  }
  m_result.body.append(bytes->substr(0, taken));
  bytes->remove_prefix(taken);
  if (toEnd) return;
  m_bytesLeft -= taken;
  if (m_bytesLeft != 0) return;
  m_state = m_state == State::kChunkData ? State::kChunkEnd : State::kDone;
}

}  // namespace Corvane::Host
