// An SNMP session to the device (RFC 3411 to 3418), opened by the host.
#ifndef CORVANE_MIB_CONNECTION_H_
#define CORVANE_MIB_CONNECTION_H_

#include <cstdint>

#include "corvane/disposable.h"

namespace Corvane {

// OIDs are dotted decimal text; a dot in front is allowed. Values are VT_I4 and VT_BSTR; a number
// that VT_I4 does not hold is its decimal text (other types are handed on, but no cache keeps
// them). Codes go back to the library's caller unchanged; 0
// is success. The caller of an operation clears the variants that it fills. A failure leaves the
// outputs as they were. Operations marked "host" are never called by the library.
class CORVANE_API MIBConnection : public virtual Corvane::IDisposable {
 public:
  MIBConnection();
  MIBConnection(const MIBConnection& other);
  MIBConnection& operator=(const MIBConnection& other);

  virtual bool IsOpen() = 0;  // host
  virtual HRESULT GetValue(const wchar_t* oid, VARIANT* value) = 0;
  // `count` OIDs and `count` initialised variants, in as few requests as the agent bears. S_OK when
  // every value came. S_FALSE when some did: the other variants are VT_EMPTY. A failure when none
  // did.
  virtual HRESULT GetMultipleValues(const wchar_t** oids, VARIANT* values, std::uint32_t count) = 0;
  // The next OID after `oid` and its value; `nextOidChars` counts wide characters with the
  // terminator, and E_OUTOFMEMORY says that they are too few. The end of the agent's MIB is a
  // failure.
  virtual HRESULT GetNextOidAndValue(const wchar_t* oid, wchar_t* nextOid,
                                     std::uint32_t nextOidChars, VARIANT* value) = 0;
  // VT_I4 and VT_INT as INTEGER, VT_BSTR as OCTET STRING.
  virtual HRESULT SetValue(const wchar_t* oid, VARIANT* value) = 0;
  virtual HRESULT SetTimeout(std::uint32_t timeoutMs, std::uint32_t retries) = 0;  // host
  virtual void Close() = 0;                                                        // host

  virtual ~MIBConnection();
};

}  // namespace Corvane

#endif  // CORVANE_MIB_CONNECTION_H_
