#include "providers/oid_provider_impl.h"

#include <new>
#include <string>

#include "core/trace.h"

namespace Corvane {
namespace {

// hrDeviceDescr of the first device (RFC 2790).
constexpr wchar_t kFirstDeviceDescription[] = L"1.3.6.1.2.1.25.3.2.1.3.1";

bool DescribesItself(MIBConnection* connection) {
  _variant_t probe;
  if (connection->GetValue(kFirstDeviceDescription, &probe) != S_OK) return false;
  if (probe.vt != VT_BSTR) probe.ChangeType(VT_BSTR);
  return SysStringLen(probe.bstrVal) > 0;
}

}  // namespace

OIDProvider::OIDProvider() { TraceScope trace(L"Corvane::OIDProvider::OIDProvider"); }

OIDProvider::~OIDProvider() { TraceScope trace(L"Corvane::OIDProvider::~OIDProvider"); }

OIDProvider* OIDProviderImpl::Create(Address* address) {
  TraceScope trace(L"Corvane::OIDProviderImpl::Create");
  if (!address) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  MIBConnection* opened = nullptr;
  if (address->GetMIBConnection(&opened) != S_OK || !opened) return nullptr;
  const auto connection = RefPtr<MIBConnection>::Adopt(opened);
  if (!DescribesItself(connection.Get())) return nullptr;
  return RefPtr<OIDProvider>::Share(new (std::nothrow) OIDProviderImpl(connection.Get())).Release();
}

OIDProviderImpl::OIDProviderImpl(MIBConnection* connection)
    : m_connection(RefPtr<MIBConnection>::Share(connection)) {
  TraceScope trace(L"Corvane::OIDProviderImpl::OIDProviderImpl");
}

OIDProviderImpl::~OIDProviderImpl() {
  TraceScope trace(L"Corvane::OIDProviderImpl::~OIDProviderImpl");
  m_connection.Reset();
}

const char* OIDProviderImpl::GetTypeName() { return kClassIdentification; }

HRESULT OIDProviderImpl::GetValue(const wchar_t* oid, VARIANT* value) {
  TraceScope trace(L"Corvane::OIDProviderImpl::GetValue");
  if (!oid || !value || !m_connection) return E_FAIL;
  const std::wstring text = oid;
  const std::size_t semicolon = text.find(L';');
  const HRESULT read = m_connection->GetValue(text.substr(0, semicolon).c_str(), value);
  if (semicolon == std::wstring::npos || semicolon + 1 == text.size()) return read;
  VARIANT one;
  VariantInit(&one);
  one.vt = VT_INT;
  one.intVal = 1;
  return m_connection->SetValue(text.c_str() + semicolon + 1, &one);
}

HRESULT OIDProviderImpl::GetNextOidAndValue(const wchar_t* oid, wchar_t* nextOid,
                                            unsigned nextOidSize, VARIANT* value) {
  TraceScope trace(L"Corvane::OIDProviderImpl::GetNextOidAndValue");
  if (!oid || !nextOid || !value || nextOidSize == 0 || !m_connection) return E_FAIL;
  return m_connection->GetNextOidAndValue(oid, nextOid, nextOidSize, value);
}

HRESULT OIDProviderImpl::GetMultipleValues(const wchar_t** oids, VARIANT* values, unsigned count) {
  TraceScope trace(L"Corvane::OIDProviderImpl::GetMultipleValues");
  if (!oids || !values || count == 0 || !m_connection) return E_FAIL;
  return m_connection->GetMultipleValues(oids, values, count);
}

}  // namespace Corvane

Corvane::OIDProvider* CreateOIDProvider(Corvane::Address* address) {
  Corvane::TraceScope trace(L"Corvane::CreateOIDProvider");
  return Corvane::OIDProviderImpl::Create(address);
}
