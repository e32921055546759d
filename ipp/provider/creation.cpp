// How a provider comes to be: probes, one exchange, its URIs.
#include <algorithm>
#include <new>

#include "base/utf8.h"
#include "core/file_time.h"
#include "core/text.h"
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"

namespace Corvane {
namespace {

// Probes take the host's text by value: the first changes what it is given.
bool AnswersIpp(std::wstring host, std::wstring port) {
  return IPPProviderImpl::DeviceExists(host, port);
}

bool HasIppRequests(const wchar_t* host, const TraceScope& trace) {
  if (IPPProviderImpl::IsUsbPort(host)) return true;
  const std::wstring text = host ? host : L"";
  if (AnswersIpp(text, L"631")) return true;
  trace.Message(kTraceInfo, L"IPP support is not present in the device");
  trace.Message(kTraceInfo, L"Failed with error %d", WSAGetLastError());
  SetLastError(AnswersIpp(text, L"80") ? kIPPNotOnDevice : kIPPDeviceSilent);
  return false;
}

}  // namespace

IPPProviderImpl* IPPProviderImpl::Create(Address* address, const char* resourceUri, bool secure,
                                         std::uint32_t flags) {
  TraceScope trace(L"Corvane::IPPProviderImpl::Create");
  if (!address || !resourceUri) return nullptr;
  if (!HasIppRequests(address->GetAddress(), trace)) return nullptr;
  auto operations = std::make_unique<IPPOperations>(address);
  operations->SetTimeout(kDefaultTimeoutMs);
  if (secure) operations->SetConnectionFlags(flags);
  operations->SetAttributeName("all");
  if (operations->SetResourceURI(resourceUri) != S_OK) {
    SetLastError(kIPPNoResourcePath);
    return nullptr;
  }
  std::uint64_t now = 0;
  GetCurrentFileTime(&now);
  HTTPResponse* response = nullptr;
  if (FAILED(operations->SendIPPRequest(IPPOperation::kGetPrinterAttributes, &response, nullptr,
                                        secure))) {
    return nullptr;
  }
  _variant_t value;
  if (FAILED(operations->ParseIPPResponse(response, &value))) {
    trace.Message(kTraceInfo,
                  L"ptrIPPOperations->ParseIPPResponse(httpResponse,&value) cretae failed");
    return nullptr;
  }
  trace.Message(kTraceInfo, L"ptrIPPOperations->ParseIPPResponse(httpResponse,&value) cretae");
  operations->EndExchange();
  auto provider = RefPtr<IPPProviderImpl>::Share(
      new (std::nothrow) IPPProviderImpl(address, std::move(operations)));
  if (!provider) return nullptr;
  provider->SetUris(BstrFromUtf8(resourceUri).Get(), nullptr);
  provider->m_fetchTime = now;
  return provider.Release();
}

IPPProviderImpl* IPPProviderImpl::Create2(Address* address, const wchar_t* printerUri,
                                          std::uint32_t flags) {
  TraceScope trace(L"Corvane::IPPProviderImpl::Create2");
  if (!address || !printerUri) {
    SetLastError(kIPPInvalidArgument);
    return nullptr;
  }
  std::wstring resourcePath;
  std::wstring wholeUri;
  if (!SplitPrinterUri(printerUri, &resourcePath, &wholeUri)) return nullptr;
  const bool secure = KindOfPrinterUri(wholeUri.c_str()) == PrinterUriKind::kIpps;
  auto provider =
      RefPtr<IPPProviderImpl>::Adopt(Create(address, ToUtf8(resourcePath).c_str(), secure, flags));
  const DWORD error = GetLastError();
  if (provider && !provider->SetUris(resourcePath.c_str(), wholeUri.c_str())) provider.Reset();
  trace.Message(kTraceInfo, L"Resource URI is %ls \r\n", resourcePath.c_str());
  trace.Message(kTraceInfo, L"Resource URI is %ls \r\n", wholeUri.c_str());
  if (!provider) SetLastError(error);
  return provider.Release();
}

IPPProviderImpl::IPPProviderImpl(Address* address, std::unique_ptr<IPPOperations> operations)
    : m_address(RefPtr<Address>::Share(address)), m_operations(std::move(operations)) {
  TraceScope trace(L"Corvane::IPPProviderImpl::IPPProviderImpl");
}

IPPProviderImpl::~IPPProviderImpl() {
  TraceScope trace(L"Corvane::IPPProviderImpl::~IPPProviderImpl");
  StopAllThreadsRunning();
}

const char* IPPProviderImpl::GetTypeName() { return kClassIdentification; }

bool IPPProviderImpl::SetUris(const wchar_t* resourceUri, const wchar_t* printerUri) {
  if (!resourceUri) return false;
  m_resourceUri = resourceUri;
  if (printerUri && *printerUri) m_printerUri = printerUri;
  return true;
}

void IPPProviderImpl::SetTimeouts(std::uint32_t connectMs, std::uint32_t sendMs,
                                  std::uint32_t receiveMs) {
  TraceScope trace(L"Corvane::IPPProviderImpl::SetTimeouts");
  m_timeouts[0] = connectMs;
  m_timeouts[1] = sendMs;
  m_timeouts[2] = receiveMs;
}

}  // namespace Corvane

namespace {

// Of a URI of that kind alone.
Corvane::IPPProvider* CreateProviderFor(Corvane::PrinterUriKind kind, Corvane::Address* address,
                                        const wchar_t* printerUri, std::uint32_t flags) {
  if (Corvane::KindOfPrinterUri(printerUri) == kind) {
    return Corvane::IPPProviderImpl::Create2(address, printerUri, flags);
  }
  SetLastError(Corvane::kIPPInvalidArgument);
  return nullptr;
}

}  // namespace

Corvane::IPPProvider* CreateIPPProvider(Corvane::Address* address, const char* resourceUri) {
  Corvane::TraceScope trace(L"Corvane::CreateIPPProvider");
  return Corvane::IPPProviderImpl::Create(address, resourceUri, false, Corvane::kIPPDefaultFlags);
}

Corvane::IPPProvider* CreateIPPPrintProvider(Corvane::Address* address, const wchar_t* printerUri) {
  Corvane::TraceScope trace(L"Corvane::CreateIPPPrintProvider");
  return CreateProviderFor(Corvane::PrinterUriKind::kIpp, address, printerUri, 0);
}

Corvane::IPPProvider* CreateSecureIPPPrintProvider(Corvane::Address* address,
                                                   const wchar_t* printerUri, std::uint32_t flags) {
  Corvane::TraceScope trace(L"Corvane::CreateSecureIPPPrintProvider");
  return CreateProviderFor(Corvane::PrinterUriKind::kIpps, address, printerUri, flags);
}
