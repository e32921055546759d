#include <cerrno>
#include <string>
#include <string_view>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/net/startup.h"
#include "platform/linux/net/winsock.h"

namespace Corvane::Net {
namespace {

DWORD AddressInfoError(int result) {
  switch (result) {
    case EAI_SYSTEM:
      return WsaError(errno);
    case EAI_AGAIN:
      return WSATRY_AGAIN;
    case EAI_FAIL:
      return WSANO_RECOVERY;
    case EAI_MEMORY:
      return WSA_NOT_ENOUGH_MEMORY;
    case EAI_BADFLAGS:
      return WSAEINVAL;
    case EAI_FAMILY:
      return WSAEAFNOSUPPORT;
    case EAI_SOCKTYPE:
      return WSAESOCKTNOSUPPORT;
    case EAI_SERVICE:
      return WSATYPE_NOT_FOUND;
    default:
      return WSAHOST_NOT_FOUND;
  }
}

// `node` without brackets round it, when what stands behind them can only be a port.
std::string WithoutBrackets(std::string_view node) {
  const std::size_t close = node.find(']');
  const bool bracketed = node.starts_with('[') && close != std::string_view::npos &&
                         (close + 1 == node.size() || node[close + 1] == ':');
  return std::string(bracketed ? node.substr(1, close - 1) : node);
}

int ResolveAddressInfo(const char* node, const char* service, const addrinfo* hints,
                       addrinfo** result) {
  addrinfo wanted = hints != nullptr ? *hints : addrinfo{};
  // For any type the system would give each address once a type, Windows gives it once.
  const bool anyType = wanted.ai_socktype == 0 && wanted.ai_protocol == 0;
  if (anyType) wanted.ai_socktype = SOCK_STREAM;
  const std::string host = node != nullptr ? WithoutBrackets(node) : std::string();
  const int failure =
      (getaddrinfo)(node != nullptr ? host.c_str() : nullptr, service, &wanted, result);
  if (failure != 0) return failure;
  for (addrinfo* found = *result; anyType && found != nullptr; found = found->ai_next) {
    found->ai_socktype = 0;
    found->ai_protocol = 0;
  }
  return 0;
}

}  // namespace

int GetAddrInfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
  *result = nullptr;
  if (!RequireStartup()) return WSANOTINITIALISED;
  int failure = EAI_MEMORY;
  BehindWall([&] { return failure = ResolveAddressInfo(node, service, hints, result); });
  if (failure == 0) return 0;
  *result = nullptr;
  const DWORD code = AddressInfoError(failure);
  SetLastError(code);
  return static_cast<int>(code);
}

}  // namespace Corvane::Net
