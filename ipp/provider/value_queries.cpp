// What the printer and its jobs are like: attributes kept from the creation, and asked for anew.
#include <algorithm>
#include <string_view>

#include "base/utf8.h"
#include "core/text.h"
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr std::string_view kAlternative = "_OR_";

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

}  // namespace

HRESULT IPPProviderImpl::GetValue(const char* name, VARIANT* value) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetValue");
  if (!name) return E_FAIL;
  std::string_view rest = name;
  for (std::size_t separator; (separator = rest.find(kAlternative)) != std::string_view::npos;
       rest.remove_prefix(separator + kAlternative.size())) {
    const std::string alternative(rest.substr(0, separator));
    if (m_operations->GetValueFromIPPMap(alternative.c_str(), value)) return S_OK;
  }
  return m_operations->GetValueFromIPPMap(rest.data(), value) ? S_OK : E_FAIL;
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

bool IPPProviderImpl::IsSecure() const {
  return KindOfPrinterUri(m_printerUri.c_str()) == PrinterUriKind::kIpps;
}

std::unique_ptr<IPPOperations> IPPProviderImpl::NewExchange(std::uint32_t limitMs) const {
  auto exchange = std::make_unique<IPPOperations>(m_address.Get());
  exchange->SetResourceURI(ToUtf8(m_resourceUri).c_str());
  exchange->SetPrinterURI(m_printerUri.c_str());
  std::uint32_t longest = 0;
  for (const auto& timeout : m_timeouts) longest = std::max(longest, timeout.load());
  exchange->SetTimeout(std::min(longest, limitMs));
  exchange->SetConnectionFlags(m_operations->ConnectionFlags());
  return exchange;
}

std::wstring IPPProviderImpl::JoinedValue(const IPPOperations& answer, std::string_view name) {
  std::string joined;
  for (const std::string& value : answer.ValuesOf(name)) {
    joined += joined.empty() ? value : ',' + value;
  }
  return BstrFromUtf8(joined).Get();
}

}  // namespace Corvane
