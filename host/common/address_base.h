// What every kind of address shares.
#ifndef CORVANE_HOST_COMMON_ADDRESS_BASE_H_
#define CORVANE_HOST_COMMON_ADDRESS_BASE_H_

#include <cstdint>
#include <memory>

#include "corvane/transport.h"
#include "host/common/last_failure.h"

namespace Corvane::Host {

class AddressBase : public Address, public IDisposableImpl {
 public:
  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }

  // Any thread; valid until the same thread asks again, whatever other threads exchange meanwhile.
  const wchar_t* GetLastFailure() override { return m_lastFailure->Get(); }

  // E_POINTER for no output, E_NOTIMPL where there is no SNMP, E_INVALIDARG for options that no
  // agent can be spoken to with, E_OUTOFMEMORY; null then.
  HRESULT GetMIBConnection(MIBConnection** connection) override;

  // E_POINTER for no output, E_INVALIDARG for a port outside 1 to 65535, E_OUTOFMEMORY; null then.
  HRESULT CreateHTTPRequest(HTTPRequest** request, std::uint32_t port) override;
  // The same, and E_NOTIMPL for an address without a network: a recording has nothing that takes a
  // document, and on Windows this host has recordings alone.
  HRESULT CreateIPPHTTPRequest(HTTPRequest** request, std::uint32_t port) override;

 protected:
  AddressBase() : m_lastFailure(std::make_shared<LastFailure>()) {}

  // A new request without a reference yet. It may throw.
  virtual HTTPRequest* MakeRequest(std::uint32_t port) = 0;
  // Null where there is none for IPP.
  virtual HTTPRequest* MakeIPPRequest(std::uint32_t) { return nullptr; }
  // The same for an SNMP session: S_OK with one, or why there is none.
  virtual HRESULT MakeConnection(MIBConnection** connection);

  const std::shared_ptr<LastFailure>& Failure() const { return m_lastFailure; }

 private:
  using Maker = HTTPRequest* (AddressBase::*)(std::uint32_t port);
  HRESULT Create(Maker make, HTTPRequest** request, std::uint32_t port);

  const std::shared_ptr<LastFailure> m_lastFailure;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_ADDRESS_BASE_H_
