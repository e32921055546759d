#include "providers/ws_provider_impl.h"

#include "core/text.h"
#include "providers/soap_get.h"

namespace Corvane {
namespace {

constexpr wchar_t kDeviceService[] = L"urn:zq:imaging:con:service:device:DeviceService";
constexpr wchar_t kMakeAndModel[] = L"//dd:MakeAndModel";

}  // namespace

WSProvider* WSProviderImpl::Create(Address* address) {
  TraceScope trace(L"Corvane::WSProviderImpl::Create");
  return CreateIfPresent<WSProviderImpl>(address, kDeviceService, kMakeAndModel);
}

WSProviderImpl::WSProviderImpl(Address* address) : XMLProvider(address, kWsPort) {
  TraceScope trace(L"Corvane::WSProviderImpl::WSProviderImpl");
}

WSProviderImpl::~WSProviderImpl() { TraceScope trace(L"Corvane::WSProviderImpl::~WSProviderImpl"); }

HRESULT WSProviderImpl::GetResourcePath(const wchar_t* resourceURI, wchar_t* buffer,
                                        std::uint32_t bufferSize, std::uint32_t* requiredLength) {
  if (!requiredLength) return E_FAIL;
  std::wstring path;
  const HRESULT result = GetPathFromResourceURI(resourceURI, &path);
  *requiredLength = 0;
  return result == S_OK ? CopyToBuffer(path, buffer, bufferSize, requiredLength) : result;
}

HRESULT WSProviderImpl::GetPathFromResourceURI(const wchar_t* resourceURI, std::wstring* path) {
  if (!resourceURI) return E_FAIL;
  std::wstring_view fields = resourceURI;
  const std::size_t lastColon = fields.rfind(L':');
  if (lastColon == std::wstring_view::npos || lastColon == 0) return E_FAIL;
  fields = fields.substr(0, lastColon);
  const std::size_t fieldColon = fields.rfind(L':');
  if (fieldColon == std::wstring_view::npos) return E_FAIL;
  *path = L"/";
  *path += fields.substr(fieldColon + 1);
  return S_OK;
}

void WSProviderImpl::BuildGetEnvelope(const wchar_t* resourceURI, const wchar_t* path,
                                      std::string* envelope) {
  const auto narrow = [](const wchar_t* text) { return Narrow(text ? text : L""); };
  const wchar_t* const host = DeviceAddress() ? DeviceAddress()->GetAddress() : nullptr;
  *envelope = BuildSoapGet({narrow(resourceURI), NewMessageId(), narrow(host), narrow(path)});
}

HRESULT WSProviderImpl::GetContent(const wchar_t* resourceURI, std::string* content) {
  TraceScope trace(L"Corvane::WSProviderImpl::GetContent");
  if (!DeviceAddress() || !content) return E_FAIL;
  std::wstring path;
  if (GetPathFromResourceURI(resourceURI, &path) != S_OK) return E_FAIL;
  RefPtr<HTTPRequest> request;
  if (const HRESULT result = CreateRequest(&request); result != S_OK) return result;
  request->SetMethod(L"POST");
  request->SetURI(path.c_str());
  request->SetUserName(m_userName.empty() ? L"guest" : m_userName.c_str());
  if (!m_password.empty()) request->SetPassword(m_password.c_str());
  std::string envelope;
  BuildGetEnvelope(resourceURI, path.c_str(), &envelope);
  request->SetRequestData(envelope.data(), static_cast<std::uint32_t>(envelope.size()));
  request->SetContentType(L"application/soap+xml");
  return ReadResponse(request.Get(), content);
}

}  // namespace Corvane

Corvane::WSProvider* CreateWSProvider(Corvane::Address* address) {
  Corvane::TraceScope trace(L"Corvane::CreateWSProvider");
  return Corvane::WSProviderImpl::Create(address);
}
