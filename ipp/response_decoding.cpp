// The answer's body: its attributes, and what is asked of them.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "core/text.h"
#include "core/trace.h"
#include "core/variant.h"
#include "ipp/ipp_codes.h"
#include "ipp/ipp_operations.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr int kHeaderSize = 8;
constexpr int kMajorVersion = 2;
// No attribute has such a name (RFC 8011, 5.1.4: keywords end at 255); a longer one is a stream out
// of step.
constexpr int kMaxNameSize = 1023;

int ShortAt(const unsigned char* bytes) { return bytes[0] << 8 | bytes[1]; }

// The size that a value of the tag must have; 0 for any.
int FixedSize(int tag) {
  switch (tag) {
    case IPPTag::kBoolean:
      return 1;
    case IPPTag::kInteger:
    case IPPTag::kEnum:
      return 4;
    case IPPTag::kRangeOfInteger:
      return 8;
    case IPPTag::kResolution:
      return 9;
    case IPPTag::kDateTime:
      return 11;
    default:
      return 0;
  }
}

// A value with language is its language and its text, each behind its length (RFC 8010, 3.9). Gives
// where the text begins; 0 for a value that has no such parts and is taken as it stands.
int TextBehindLanguage(const unsigned char* value, int size) {
  if (size < 4) return 0;
  const int language = ShortAt(value);
  if (language > size - 4) return 0;
  const int begin = language + 4;
  return ShortAt(value + begin - 2) == size - begin ? begin : 0;
}

// Decimal digits as far as there are any; the nearest number for one too large.
std::int32_t ToInteger(const std::string& text) {
  const long long number = std::strtoll(text.c_str(), nullptr, 10);
  return static_cast<std::int32_t>(std::clamp<long long>(
      number, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

_variant_t ArrayOf(const std::vector<std::string>& texts) {
  std::vector<UniqueBstr> converted;
  converted.reserve(texts.size());
  for (const std::string& text : texts) converted.push_back(BstrFromUtf8(text));
  VARIANT array;
  VariantInit(&array);
  array.parray = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size()));
  if (!array.parray) _com_issue_error(E_OUTOFMEMORY);
  array.vt = VT_ARRAY | VT_BSTR;
  _variant_t owned(array, false);
  BSTR* elements = nullptr;
  _com_util::CheckError(SafeArrayAccessData(array.parray, reinterpret_cast<void**>(&elements)));
  for (UniqueBstr& text : converted) *elements++ = text.Release();
  SafeArrayUnaccessData(array.parray);
  return owned;
}

_variant_t TextOf(const std::string& text) {
  VARIANT value;
  VariantInit(&value);
  value.bstrVal = BstrFromUtf8(text).Release();
  value.vt = VT_BSTR;
  return _variant_t(value, false);
}

}  // namespace

HRESULT IPPOperations::ParseIPPResponse(HTTPResponse* response, VARIANT* value) {
  TraceScope trace(L"Corvane::IPPOperations::ParseIPPResponse");
  if (!response) return E_FAIL;
  const char* const body = response->GetContent();
  const std::uint32_t length = response->GetContentLength();
  if (length > static_cast<std::uint32_t>(std::numeric_limits<int>::max())) return E_FAIL;
  const HRESULT result = ParseIPPContent(reinterpret_cast<const unsigned char*>(body),
                                         static_cast<int>(length), value);
  return FAILED(result) ? E_FAIL : S_OK;
}

HRESULT IPPOperations::ParseIPPResponse(HTTPResponse* response, VARIANT* value, int operation) {
  m_operation = operation;
  return ParseIPPResponse(response, value);
}

HRESULT IPPOperations::ParseIPPContent(const unsigned char* body, int length, VARIANT* value) {
  TraceScope trace(L"Corvane::IPPOperations::ParseIPPContent");
  m_length = length;
  return ReadResponseData(body, value) == -1 ? E_FAIL : S_OK;
}

int IPPOperations::ReadResponseData(const unsigned char* body, VARIANT* value) {
  TraceScope trace(L"Corvane::IPPOperations::ReadResponseData");
  m_attributes.Reset({});
  if (!body) return -1;
  m_position = 0;
  m_unread = m_length;
  if (m_length > 0) m_attributes.Reset({body, static_cast<std::size_t>(m_length)});
  unsigned char header[kHeaderSize];
  if (CopyContentToBuffer(header, body, kHeaderSize) < kHeaderSize) return -1;
  if (header[0] != kMajorVersion) return -1;
  m_statusCode = ShortAt(header + 2);
  m_attributes.AddText("status-code", std::to_string(m_statusCode));
  if (m_statusCode != IPPStatus::kOk) {
    trace.Message(kTraceInfo, L"IPP status is not success %d", m_statusCode);
    if (m_jobOperation && m_statusCode != IPPStatus::kNotPossible) return -1;
  }
  return ReadAttributes(body, value);
}

int IPPOperations::ReadAttributes(const unsigned char* body, VARIANT* value) {
  unsigned char tag = 0;
  while (CopyContentToBuffer(&tag, body, 1) == 1) {
    if (tag == IPPTag::kEndOfAttributes) {
      const bool found = GetValueFromIPPMap(m_attributeName.Get(), value);
      return found || !value || !AsksForOneValue() ? 0 : -1;
    }
    if (tag < IPPTag::kFirstValue) {
      m_attributes.BeginGroup(tag == IPPTag::kJobAttributes);
      continue;
    }
    if (!ReadName(body, tag) || !ReadValue(body, tag)) return -1;
  }
  return 0;
}

// A list of jobs may be empty, and of a list of attributes the printer answers those that it has.
bool IPPOperations::AsksForOneValue() const {
  const char* const name = m_attributeName.Get();
  return m_operation != IPPOperation::kGetJobs &&
         !(name && (std::strcmp(name, "all") == 0 || std::strchr(name, ',')));
}

// The name of an attribute; that of an additional value, or of a collection's member, is no new
// one.
bool IPPOperations::ReadName(const unsigned char* body, int tag) {
  int size = 0;
  if (!ReadLength(body, &size) || size > kMaxNameSize) return false;
  const int position = Skip(size);
  if (position < 0) return false;
  if (size > 0 && tag != IPPTag::kMemberAttrName) {
    m_attributes.BeginAttribute(static_cast<std::size_t>(position), static_cast<std::size_t>(size));
  }
  return true;
}

bool IPPOperations::ReadValue(const unsigned char* body, int tag) {
  using Kind = AttributeMap::Kind;
  int size = 0;
  if (!ReadLength(body, &size)) return false;
  int position = Skip(size);
  if (position < 0) return false;
  const auto add = [&](Kind kind) {
    m_attributes.Add(kind, static_cast<std::size_t>(position), static_cast<std::size_t>(size));
  };
  if (const int fixed = FixedSize(tag); fixed != 0 && fixed != size) return true;  // no such value
  switch (tag) {
    case IPPTag::kInteger:
    case IPPTag::kEnum:
      add(Kind::kNumber);
      break;
    case IPPTag::kBoolean:
      add(Kind::kBoolean);
      break;
    case IPPTag::kDateTime:
      add(Kind::kDateTime);
      break;
    case IPPTag::kResolution:
      add(Kind::kResolution);
      break;
    case IPPTag::kRangeOfInteger:
      add(Kind::kRange);
      break;
    case IPPTag::kOctetString:
      add(Kind::kSetStart);
      add(Kind::kOctets);
      add(Kind::kSetEnd);
      break;
    case IPPTag::kBegCollection:
      add(Kind::kSetStart);
      break;
    case IPPTag::kEndCollection:
      add(Kind::kSetEnd);
      break;
    case IPPTag::kMemberAttrName:
      add(Kind::kMemberName);
      break;
    case IPPTag::kTextWithLanguage:
    case IPPTag::kNameWithLanguage: {
      const int begin = TextBehindLanguage(body + position, size);
      position += begin;
      size -= begin;
      add(Kind::kText);
      break;
    }
    default:
      // Out-of-band values, as "unknown", and types to come have no text.
      if (tag >= IPPTag::kText && tag <= IPPTag::kMimeMediaType) add(Kind::kText);
      if (tag == IPPTag::kCharset) m_attributes.TakeCharset();
  }
  return true;
}

bool IPPOperations::ReadLength(const unsigned char* body, int* length) {
  unsigned char bytes[2];
  if (CopyContentToBuffer(bytes, body, 2) < 2) return false;
  *length = ShortAt(bytes);
  return true;
}

int IPPOperations::CopyContentToBuffer(void* destination, const unsigned char* body, int count) {
  const int position = count > 0 ? Skip(count) : -1;
  if (position < 0) return 0;
  std::memcpy(destination, body + position, static_cast<std::size_t>(count));
  return count;
}

int IPPOperations::Skip(int count) {
  if (count < 0 || count > m_unread) return -1;
  const int position = m_position;
  m_position += count;
  m_unread -= count;
  return position;
}

bool IPPOperations::GetValueFromIPPMap(const char* name, VARIANT* out) const {
  TraceScope trace(L"Corvane::IPPOperations::GetValueFromIPPMap");
  if (!name || !*name || !out) return false;
  const std::vector<std::string> values = m_attributes.Values(name);
  if (values.empty()) return false;
  MoveTo(values.size() == 1 ? TextOf(values.front()) : ArrayOf(values), out);
  return true;
}

HRESULT IPPOperations::FormResponseStructure(IPPResponseBase* out) {
  TraceScope trace(L"Corvane::IPPOperations::FormResponseStructure");
  if (!out) return E_FAIL;
  const auto status = m_attributes.First("status-code");
  out->SetSuccess(status ? status->c_str() : "NOT_SET_ERROR");
  out->SetRequestID("100");
  if (const auto error = m_attributes.First("document-access-error")) {
    out->SetDocumentAccessError(error->c_str());
  }
  if (const auto uri = m_attributes.First("job-uri")) out->SetJobURI(uri->c_str());
  if (const auto id = m_attributes.First("job-id")) out->SetJobID(ToInteger(*id));
  if (const auto state = m_attributes.First("job-state")) {
    const char* name = nullptr;
    GetJobState(ToInteger(*state), &name);
    if (name) out->SetJobState(name);
  }
  std::string reasons;
  for (const std::string& reason : m_attributes.Entries("job-state-reasons")) {
    reasons += reason + ',';
  }
  if (!reasons.empty()) reasons.pop_back();
  if (!reasons.empty()) out->SetJobStateReasons(reasons.c_str());
  return S_OK;
}

std::vector<IPPJob> IPPOperations::Jobs() const { return JobsOf(m_attributes); }

void IPPOperations::GetJobState(int state, const char** text) {
  static constexpr const char* kStates[] = {
      "Pending",  "Pending_held", "Processing", "Processing_stopped",
      "Canceled", "Aborted",      "Completed"};
  constexpr int kFirst = 3;
  constexpr int kLast = kFirst + static_cast<int>(std::size(kStates)) - 1;
  if (text && state >= kFirst && state <= kLast) *text = kStates[state - kFirst];
}

}  // namespace Corvane
