#include "host/http/response_collector.h"

#include <utility>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"

namespace Corvane::Host {
namespace {

bool HasNoWhiteSpaceEnds(std::string_view text) {
  return text.empty() ||
         (text.front() != ' ' && text.front() != '\t' && text.back() != ' ' && text.back() != '\t');
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

}  // namespace

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

bool ResponseCollector::CountHeaderBytes(std::size_t bytes) {
  m_headerBytes += bytes;
  return m_headerBytes <= kMaxHeaderBytes || FailHeaderTooLarge();
}

void ResponseCollector::Begin(std::uint32_t status) {
  m_result.status = status;
  m_result.headers.clear();
  m_result.body.clear();
}

bool ResponseCollector::Field(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0 ||
      !HasNoWhiteSpaceEnds(line.substr(0, colon))) {
    // RFC 9112, 5.1 and 5.2: a folded line, or no field at all.
    return Fail(kErrorInvalidResponse, L"the response has a header line that is no field");
  }
  const std::wstring name = LowerAscii(WideFromLatin1(line.substr(0, colon)));
  const std::wstring value = WideFromLatin1(Trim(line.substr(colon + 1)));
  const auto [field, added] = m_result.headers.emplace(name, value);
  if (added) return true;
  if (name == L"content-length") {  // RFC 9112, 6.3
    return field->second == value ||
           Fail(kErrorInvalidResponse, L"the response has two different lengths");
  }
  field->second += L", " + value;
  return true;
}

bool ResponseCollector::Body(std::string_view bytes) {
  const std::wstring* const coding = Find(L"content-encoding");
  if (coding && !EqualsIgnoreAsciiCase(*coding, L"identity")) {
    return Fail(kErrorInvalidResponse, L"the response has a coding that nobody asked for");
  }
  if (bytes.size() > BodyBytesLeft()) return FailBodyTooLarge();
  m_result.body.append(bytes);
  return true;
}

bool ResponseCollector::Fail(std::uint32_t error, std::wstring remark) {
  m_result.error = error;
  m_result.remark = std::move(remark);
  return false;
}

bool ResponseCollector::FailHeaderTooLarge() {
  return Fail(kErrorHeaderTooLarge, L"the response's header is larger than " +
                                        std::to_wstring(kMaxHeaderBytes) + L" bytes");
}

bool ResponseCollector::FailBodyTooLarge() {
  return Fail(kErrorResponseTooLarge,
              L"the response is larger than " + std::to_wstring(m_maxBodyBytes) + L" bytes");
}

const std::wstring* ResponseCollector::Find(const wchar_t* name) const {
  const auto field = m_result.headers.find(name);
  return field == m_result.headers.end() ? nullptr : &field->second;
}

WireResult ResponseCollector::TakeResult() {
  if (const std::wstring* const location = Find(L"location")) {
    for (const wchar_t c : *location) m_result.location.push_back(static_cast<char>(c));
  }
  return std::move(m_result);
}

}  // namespace Corvane::Host
