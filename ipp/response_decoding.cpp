// The answer's body: its attributes, and what is asked of them.
#include <algorithm>
#include <cstring>
#include <limits>

#include "base/decimal.h"
#include "core/com.h"
#include "core/text.h"
#include "core/trace.h"
#include "corvane/ipp_provider.h"
#include "ipp/ipp_operations.h"
#include "ipp/wire/codes.h"
#include "ipp/wire/values.h"
#include "ipp/wire/writer.h"
#include "platform/system.h"

namespace Corvane {
namespace {

_variant_t DecodedArray(const std::vector<std::string>& texts) {
  VARIANT array;
  VariantInit(&array);
  array.parray = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size()));
  if (!array.parray) _com_issue_error(E_OUTOFMEMORY);
  array.vt = VT_ARRAY | VT_BSTR;
  _variant_t owned(array, false);
  BSTR* element = static_cast<BSTR*>(array.parray->pvData);
  for (const std::string& text : texts) *element++ = BstrFromUtf8(text).Release();
  return owned;
}

_variant_t DecodedText(const std::string& text) {
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
  ReadIPPMessage({}, &m_answer);
  m_statusCode.reset();
  if (!body) return -1;
  m_position = 0;
  const std::string_view bytes(reinterpret_cast<const char*>(body),
                               static_cast<std::size_t>(std::max(m_length, 0)));
  const std::optional<IPPHeader> header = ReadIPPHeader(bytes);
  if (!header || !header->IsSpoken()) {
    if (header && header->IsVersion1()) SetLastError(kIPPVersion1);
    return -1;
  }
  m_statusCode = header->code;
  if (header->code != IPPStatus::kOk) {
    trace.Message(kTraceInfo, L"IPP status is not success %d", header->code);
    if (m_jobOperation && header->code != IPPStatus::kNotPossible) return -1;
  }
  const IPPReading reading = ReadIPPMessage(bytes, &m_answer);
  m_position = static_cast<int>(m_answer.End());
  if (reading == IPPReading::kMalformed) return -1;
  if (reading == IPPReading::kNoEnd) return 0;
  const bool found = GetValueFromIPPMap(m_attributeName.Get(), value);
  return found || !value || !AsksForOneValue() ? 0 : -1;
}

// A list of jobs may be empty, and of a list of attributes the printer answers those that it has.
bool IPPOperations::AsksForOneValue() const {
  const char* const name = m_attributeName.Get();
  return m_operation != IPPOperation::kGetJobs &&
         !(name && (std::strcmp(name, "all") == 0 || std::strchr(name, ',')));
}

int IPPOperations::CopyContentToBuffer(void* destination, const unsigned char* body, int count) {
  if (count < 1 || count > m_length - m_position) return 0;
  std::memcpy(destination, body + m_position, static_cast<std::size_t>(count));
  m_position += count;
  return count;
}

std::vector<std::string> IPPOperations::ValuesOf(std::string_view name) const {
  std::vector<std::string> values = IPPValuesAt(m_answer, name);
  if (m_statusCode && name == "status-code") {
    values.insert(values.begin(), std::to_string(*m_statusCode));
  }
  return values;
}

bool IPPOperations::GetValueFromIPPMap(const char* name, VARIANT* out) const {
  TraceScope trace(L"Corvane::IPPOperations::GetValueFromIPPMap");
  if (!name || !*name || !out) return false;
  const std::vector<std::string> values = ValuesOf(name);
  if (values.empty()) return false;
  MoveTo(values.size() == 1 ? DecodedText(values.front()) : DecodedArray(values), out);
  return true;
}

HRESULT IPPOperations::FormResponseStructure(IPPResponseBase* out) {
  TraceScope trace(L"Corvane::IPPOperations::FormResponseStructure");
  if (!out) return E_FAIL;
  const auto first = [this](const char* name) -> std::optional<std::string> {
    std::vector<std::string> values = ValuesOf(name);
    return values.empty() ? std::nullopt : std::optional(std::move(values.front()));
  };
  out->SetSuccess(first("status-code").value_or("NOT_SET_ERROR").c_str());
  out->SetRequestID(std::to_string(kIPPRequestId).c_str());
  if (const auto error = first("document-access-error"))
    out->SetDocumentAccessError(error->c_str());
  if (const auto uri = first("job-uri")) out->SetJobURI(uri->c_str());
  if (const auto id = first("job-id")) out->SetJobID(LeadingInt32(*id));
  if (const auto state = first("job-state")) {
    const char* name = nullptr;
    GetJobState(LeadingInt32(*state), &name);
    if (name) out->SetJobState(name);
  }
  std::string reasons;
  for (const std::string& reason : ValuesOf("job-state-reasons")) reasons += reason + ',';
  if (!reasons.empty()) reasons.pop_back();
  if (!reasons.empty()) out->SetJobStateReasons(reasons.c_str());
  return S_OK;
}

std::vector<IPPJob> IPPOperations::Jobs() const { return JobsOf(m_answer); }

void IPPOperations::GetJobState(int state, const char** text) {
  static constexpr const char* kStates[] = {
      "Pending",  "Pending_held", "Processing", "Processing_stopped",
      "Canceled", "Aborted",      "Completed"};
  constexpr int kFirst = 3;
  constexpr int kLast = kFirst + static_cast<int>(std::size(kStates)) - 1;
  if (text && state >= kFirst && state <= kLast) *text = kStates[state - kFirst];
}

}  // namespace Corvane
