// The device, as the host reaches it.
#ifndef CORVANE_ADDRESS_H_
#define CORVANE_ADDRESS_H_

#include <cstdint>

#include "corvane/disposable.h"

namespace Corvane {

class HTTPRequest;
class MIBConnection;

// The ports that devices are asked at. A host may connect to another one in their place.
constexpr std::uint32_t kHttpPort = 80;   // PLSXML resources; whether a printer is there at all
constexpr std::uint32_t kSnmpPort = 161;  // UDP (RFC 3417)
constexpr std::uint32_t kIppsPort = 443;  // IPP over TLS (RFC 7472, of a printer that uses HTTPS's)
constexpr std::uint32_t kIppPort = 631;   // IPP (RFC 8010)
constexpr std::uint32_t kWsPort = 7627;   // WS-Management resources
constexpr std::uint32_t kQuarnPort = 8080;  // QUARN resources

// One device. The host implements it and gives it to every factory, which takes references of its
// own. The library may call it from several threads at once. Results: 0 is success; a negative
// value is a failure. Operations marked "host" are never called by the library: they serve programs
// that use the same transport themselves.
class CORVANE_API Address : public virtual Corvane::IDisposable {
 public:
  Address();
  Address(const Address& other);
  Address& operator=(const Address& other);

  // host: how messages name the device; credentials never appear in it. Owned by the address.
  virtual const wchar_t* GetDisplayName() = 0;
  // Host text of the device, an IP literal or a name, without a port. Owned by the address, valid
  // while it lives.
  virtual const wchar_t* GetAddress() = 0;
  // host: the port that a connection to `port` really goes to.
  virtual std::uint32_t GetMappedPort(std::uint32_t port) = 0;
  // host: why the last exchange of any request of this address failed, in a sentence; empty when it
  // did not. Owned by the address, valid until the next exchange.
  virtual const wchar_t* GetLastFailure() = 0;
  // A fresh request to `port` (kQuarnPort, kWsPort or kHttpPort) of the device, with one reference
  // of the caller's.
  virtual HRESULT CreateHTTPRequest(HTTPRequest** request, std::uint32_t port) = 0;
  // The same for IPP (kIppPort, or kIppsPort with TLS); the object is also a TqHTTPRequestEx.
  virtual HRESULT CreateIPPHTTPRequest(HTTPRequest** request, std::uint32_t port) = 0;
  // An SNMP session to the device, with one reference of the caller's.
  virtual HRESULT GetMIBConnection(MIBConnection** connection) = 0;
  // host: credentials for requests that set none of their own; null or empty takes them away.
  virtual void SetUserName(const wchar_t* userName) = 0;
  virtual void SetPassword(const wchar_t* password) = 0;
  // host: limits of one exchange in milliseconds, for connecting and in all; E_INVALIDARG for 0.
  virtual HRESULT SetTimeouts(std::uint32_t connectMs, std::uint32_t totalMs) = 0;

 protected:
  ~Address();
};

}  // namespace Corvane

#endif  // CORVANE_ADDRESS_H_
