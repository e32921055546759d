// The SNMP provider, for clients that address object identifiers themselves.
#ifndef CORVANE_OID_PROVIDER_H_
#define CORVANE_OID_PROVIDER_H_

#include "corvane/address.h"
#include "corvane/disposable.h"

namespace Corvane {

// Values at OIDs of one device, in dotted decimal, through the SNMP session of the device's
// `Address` (RFC 3416). Used by one thread at a time. Every operation is one call on the session (a
// trigger makes two), whose result comes back unchanged; 0 is success. E_FAIL, without an exchange,
// for a null argument or a count or size of 0. The caller clears the variants.
class CORVANE_API OIDProvider : public Corvane::IDisposable {
 public:
  OIDProvider();
  OIDProvider(const OIDProvider&) = delete;
  OIDProvider& operator=(const OIDProvider&) = delete;
  virtual ~OIDProvider();

  // The value of `oid`. An `oid` of the form "READ;TRIGGER" reads READ, then sets TRIGGER to the
  // integer 1 (VT_INT), and the result is that of the set: `value` holds what the read left in it.
  // With nothing behind the ";" nothing is set.
  virtual HRESULT GetValue(const wchar_t* oid, VARIANT* value) = 0;
  // The OID after `oid` and its value; `nextOidSize` counts wide characters with the terminator.
  virtual HRESULT GetNextOidAndValue(const wchar_t* oid, wchar_t* nextOid, unsigned nextOidSize,
                                     VARIANT* value) = 0;
  // `count` OIDs and `count` initialised variants, as MIBConnection::GetMultipleValues.
  virtual HRESULT GetMultipleValues(const wchar_t** oids, VARIANT* values, unsigned count) = 0;
};

}  // namespace Corvane

extern "C" {

// Asks the device once for the description of its first host-resources device
// (1.3.6.1.2.1.25.3.2.1.3.1): null when there is no session, no answer or an empty text, or for a
// null address (the thread's last error is then 87); else an object with one reference, the
// caller's. An answer that cannot become text is raised as _com_error.
CORVANE_API Corvane::OIDProvider* CreateOIDProvider(Corvane::Address* address);

}  // extern "C"

namespace Corvane {
using ::CreateOIDProvider;
}

#endif  // CORVANE_OID_PROVIDER_H_
