// What the printer and its jobs are like: attributes kept from the creation, and asked for anew.
#include <algorithm>
#include <string_view>

#include "core/text.h"
#include "core/trace.h"
#include "ipp/ipp_codes.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr std::string_view kAlternative = "_OR_";

const char* StateAttribute(bool selectState) {
  return selectState ? "job-state" : "job-state-reasons";
}

std::vector<std::string> Alternatives(std::string_view name) {
  std::vector<std::string> alternatives;
  for (std::size_t separator = 0; separator != std::string_view::npos;) {
    separator = name.find(kAlternative);
    alternatives.emplace_back(name.substr(0, separator));
    if (separator != std::string_view::npos) name.remove_prefix(separator + kAlternative.size());
  }
  return alternatives;
}

// What the printer is to be asked for: members come with their collections.
std::string AttributeList(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) {
    if (!list.empty()) list += ',';
    list += name.substr(0, name.find('.'));
  }
  return list;
}

// Of the first name that the answer has.
std::vector<std::string> FirstValues(const IPPOperations& answer,
                                     const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    std::vector<std::string> values = answer.ValuesOf(name);
    if (!values.empty()) return values;
  }
  return {};
}

// The text of a value; of several, all with "," between them.
std::wstring TextOf(const _variant_t& value) {
  if (value.vt == VT_BSTR) return value.bstrVal ? value.bstrVal : L"";
  if (value.vt != (VT_ARRAY | VT_BSTR)) return {};
  std::wstring joined;
  BSTR* texts = nullptr;
  if (FAILED(SafeArrayAccessData(value.parray, reinterpret_cast<void**>(&texts)))) return {};
  for (ULONG i = 0; i < value.parray->rgsabound[0].cElements; ++i) {
    if (i > 0) joined += L',';
    joined += texts[i] ? texts[i] : L"";
  }
  SafeArrayUnaccessData(value.parray);
  return joined;
}

bool HasEnded(const std::wstring& state) {
  return state == L"7" || state == L"8" || state == L"9";  // canceled, aborted, completed
}

}  // namespace

HRESULT IPPProviderImpl::GetValue(const char* name, VARIANT* value) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetValue");
  if (!name) return E_FAIL;
  for (const std::string& alternative : Alternatives(name)) {
    if (m_operations->GetValueFromIPPMap(alternative.c_str(), value)) return S_OK;
  }
  return E_FAIL;
}

std::vector<std::string> IPPProviderImpl::ValuesOf(const std::string& name) const {
  return FirstValues(*m_operations, Alternatives(name));
}

HRESULT IPPProviderImpl::Query(const IPPQuery& query, std::vector<std::string>* values) const {
  TraceScope trace(L"Corvane::IPPProviderImpl::Query");
  const std::vector<std::string> alternatives = Alternatives(query.name);
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  // A job is asked for one attribute, or for all of them.
  if (!query.forJob || alternatives.size() == 1) {
    exchange->SetAttributeName(AttributeList(alternatives).c_str());
  }
  exchange->SetJobURI(query.jobUri.c_str());
  exchange->SetResourceURI(query.resourceUri.c_str());
  exchange->SetCharset(query.charset.c_str());
  exchange->SetLanguage(query.language.c_str());
  exchange->SetConnectionFlags(m_operations->ConnectionFlags());
  HTTPResponse* response = nullptr;
  const int operation =
      query.forJob ? IPPOperation::kGetJobAttributes : IPPOperation::kGetPrinterAttributes;
  if (FAILED(exchange->SendIPPRequest(operation, &response, nullptr, IsSecure()))) return E_FAIL;
  if (FAILED(exchange->ParseIPPResponse(response, nullptr))) return E_FAIL;
  *values = FirstValues(*exchange, alternatives);
  return values->empty() ? E_FAIL : S_OK;
}

HRESULT IPPProviderImpl::GetIPPValue(const char* attributeName, bool forJob, VARIANT* value,
                                     const char* uri, const char* resourceUri,
                                     std::uint32_t flags) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetIPPValue");
  if (!attributeName) return E_FAIL;
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  exchange->SetAttributeName(attributeName);
  exchange->SetResourceURI(resourceUri);
  exchange->SetConnectionFlags(flags);
  if (forJob) {
    exchange->SetJobURI(uri);
  } else if (uri) {
    exchange->SetPrinterURI(BstrFromUtf8(uri).Get());
  }
  HTTPResponse* response = nullptr;
  const int operation =
      forJob ? IPPOperation::kGetJobAttributes : IPPOperation::kGetPrinterAttributes;
  if (FAILED(exchange->SendIPPRequest(operation, &response, nullptr, IsSecure()))) return E_FAIL;
  const HRESULT result = exchange->ParseIPPResponse(response, value);
  if (!forJob) {
    trace.Message(kTraceInfo,
                  L"ptrIPPOperations->ParseIPPResponse(httpResponse,&value) GetIPPValue done");
  }
  return result;
}

HRESULT IPPProviderImpl::GetJobs(IPPRequestBase* request, IPPResponseBase* response,
                                 bool selectState) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetJobs");
  if (!request || !request->GetRequestingUserName()) return E_FAIL;
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  exchange->SetAttributeName(StateAttribute(selectState));
  exchange->SetRequestedUserName(request->GetRequestingUserName());
  exchange->SetConnectionFlags(m_operations->ConnectionFlags());
  HTTPResponse* answer = nullptr;
  if (FAILED(exchange->SendIPPRequest(IPPOperation::kGetJobs, &answer, request, IsSecure()))) {
    trace.Message(kTraceSevere, L"GetJobs(struct)..SendIPPRequest() failed");
    return E_FAIL;
  }
  _variant_t value;
  if (FAILED(exchange->ParseIPPResponse(answer, &value))) {
    trace.Message(kTraceSevere, L"GetJobs(struct)..ParseIPPResponse() failed");
    return E_FAIL;
  }
  if (value.vt == VT_EMPTY) {
    trace.Message(kTraceInfo,
                  L"May be we ask for which-jobs=completed but job is still in process else may be "
                  L"reverse condition");
    return S_FALSE;
  }
  return exchange->FormResponseStructure(response) == S_OK ? S_OK : S_FALSE;
}

HRESULT IPPProviderImpl::GetJobs(bool selectState) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetJobs");
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  exchange->SetAttributeName(StateAttribute(selectState));
  exchange->SetRequestedUserName(m_operations->RequestedUserName());
  HTTPResponse* answer = nullptr;
  if (FAILED(exchange->SendIPPRequest(IPPOperation::kGetJobs, &answer, nullptr, IsSecure()))) {
    trace.Message(kTraceSevere, L"GetJobs()..SendIPPRequest() failed");
    return S_FALSE;
  }
  _variant_t asked;
  if (FAILED(exchange->ParseIPPResponse(answer, &asked))) {
    trace.Message(kTraceSevere, L"GetJobs()..ParseIPPResponse() failed");
    return S_FALSE;
  }
  _variant_t value;
  exchange->GetValueFromIPPMap("job-state", &value);
  const std::wstring state = TextOf(value);
  if (state.empty()) {
    trace.Message(kTraceInfo, L"value is empty");
    return S_FALSE;
  }
  value.Clear();
  exchange->GetValueFromIPPMap("job-state-reasons", &value);
  const std::wstring reasons = TextOf(value);
  trace.Message(kTraceInfo, L"Print Job state=%ls and JobstateReasons=%ls", state.c_str(),
                reasons.c_str());
  if (HasEnded(state)) {
    trace.Message(kTraceInfo, L"Job is canceled or completed");
    return S_OK;
  }
  if (reasons.find(L"canceled") != std::wstring::npos) {
    trace.Message(kTraceInfo,
                  L"job-state-reasons can be job-canceled-at-device, canceled-by-user, "
                  L"canceled-by-operator,printer-stopped");
    return S_OK;
  }
  trace.Message(kTraceInfo, L"Job is continuing..Print Job state=%ls and JobstateReasons=%ls",
                state.c_str(), reasons.c_str());
  return S_FALSE;
}

bool IPPProviderImpl::IsSecure() const {
  return KindOfPrinterUri(m_printerUri.c_str()) == PrinterUriKind::kIpps;
}

std::unique_ptr<IPPOperations> IPPProviderImpl::NewExchange() const {
  auto exchange = std::make_unique<IPPOperations>(m_address.Get());
  exchange->SetResourceURI(Utf8(m_resourceUri).c_str());
  exchange->SetPrinterURI(m_printerUri.c_str());
  exchange->SetTimeout(*std::max_element(std::begin(m_timeouts), std::end(m_timeouts)));
  return exchange;
}

}  // namespace Corvane
