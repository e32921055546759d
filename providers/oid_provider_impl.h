// SNMP through the session that the host opens.
#ifndef CORVANE_PROVIDERS_OID_PROVIDER_IMPL_H_
#define CORVANE_PROVIDERS_OID_PROVIDER_IMPL_H_

#include "corvane/handles.h"
#include "corvane/mib_connection.h"
#include "corvane/oid_provider.h"

namespace Corvane {

class OIDProviderImpl : public OIDProvider, public IDisposableImpl {
 public:
  // As CreateOIDProvider.
  static OIDProvider* Create(Address* address);

  // Takes a reference to the session, which may be null; then every operation fails.
  explicit OIDProviderImpl(MIBConnection* connection);
  ~OIDProviderImpl() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  HRESULT GetValue(const wchar_t* oid, VARIANT* value) override;
  HRESULT GetNextOidAndValue(const wchar_t* oid, wchar_t* nextOid, unsigned nextOidSize,
                             VARIANT* value) override;
  HRESULT GetMultipleValues(const wchar_t** oids, VARIANT* values, unsigned count) override;

 private:
  RefPtr<MIBConnection> m_connection;
};

}  // namespace Corvane

#endif  // CORVANE_PROVIDERS_OID_PROVIDER_IMPL_H_
