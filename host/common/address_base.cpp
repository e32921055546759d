#include "host/common/address_base.h"

#include "base/exception_wall.h"

namespace Corvane::Host {
namespace {

constexpr std::uint32_t kMaxPort = 65535;

}  // namespace

HRESULT AddressBase::Create(Maker make, HTTPRequest** request, std::uint32_t port) {
  return BehindWall<HRESULT>(E_OUTOFMEMORY, [&]() -> HRESULT {
    if (!request) return E_POINTER;
    *request = nullptr;
    if (port == 0 || port > kMaxPort) return E_INVALIDARG;
    HTTPRequest* const made = (this->*make)(port);
    if (!made) return E_NOTIMPL;
    made->AddRef();
    *request = made;
    return S_OK;
  });
}

HRESULT AddressBase::CreateHTTPRequest(HTTPRequest** request, std::uint32_t port) {
  return Create(&AddressBase::MakeRequest, request, port);
}

HRESULT AddressBase::CreateIPPHTTPRequest(HTTPRequest** request, std::uint32_t port) {
  return Create(&AddressBase::MakeIPPRequest, request, port);
}

HRESULT AddressBase::MakeConnection(MIBConnection**) { return E_NOTIMPL; }

HRESULT AddressBase::GetMIBConnection(MIBConnection** connection) {
  return BehindWall<HRESULT>(E_OUTOFMEMORY, [&]() -> HRESULT {
    if (!connection) return E_POINTER;
    *connection = nullptr;
    MIBConnection* made = nullptr;
    const HRESULT result = MakeConnection(&made);
    if (FAILED(result)) return result;
    made->AddRef();
    *connection = made;
    return S_OK;
  });
}

}  // namespace Corvane::Host
