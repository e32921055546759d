// Winsock over the system's sockets. Addresses and their constants are the system's own types.
//
// Every operation but WSAStartup and WSAGetLastError fails with WSANOTINITIALISED while the process
// has not called WSAStartup. Failures are the thread's last error. Unlike on Windows, sockets
// outlive the last WSACleanup.
#ifndef CORVANE_PLATFORM_LINUX_NET_WINSOCK_H_
#define CORVANE_PLATFORM_LINUX_NET_WINSOCK_H_

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "corvane/linux/base.h"

typedef int SOCKET;  // the descriptor

#define INVALID_SOCKET (-1)
#define SOCKET_ERROR (-1)

#define WSA_NOT_ENOUGH_MEMORY 8
#define WSAEINTR 10004
#define WSAEACCES 10013
#define WSAEFAULT 10014
#define WSAEINVAL 10022
#define WSAEMFILE 10024
#define WSAEWOULDBLOCK 10035
#define WSAEINPROGRESS 10036
#define WSAEALREADY 10037
#define WSAENOTSOCK 10038
#define WSAEPROTOTYPE 10041
#define WSAEPROTONOSUPPORT 10043
#define WSAESOCKTNOSUPPORT 10044
#define WSAEOPNOTSUPP 10045
#define WSAEAFNOSUPPORT 10047
#define WSAEADDRINUSE 10048
#define WSAEADDRNOTAVAIL 10049
#define WSAENETDOWN 10050
#define WSAENETUNREACH 10051
#define WSAENETRESET 10052
#define WSAECONNABORTED 10053
#define WSAECONNRESET 10054
#define WSAENOBUFS 10055
#define WSAEISCONN 10056
#define WSAENOTCONN 10057
#define WSAETIMEDOUT 10060
#define WSAECONNREFUSED 10061
#define WSAEHOSTDOWN 10064
#define WSAEHOSTUNREACH 10065
#define WSAVERNOTSUPPORTED 10092
#define WSANOTINITIALISED 10093
#define WSASYSCALLFAILURE 10107  // an error of the system that Winsock has no name for
#define WSATYPE_NOT_FOUND 10109
#define WSAHOST_NOT_FOUND 11001
#define WSATRY_AGAIN 11002
#define WSANO_RECOVERY 11003

#ifndef MAKEWORD
#define MAKEWORD(low, high) static_cast<WORD>(((low)&0xFF) | (((high)&0xFF) << 8))
#endif

typedef struct WSAData {
  WORD wVersion;      // granted; the major version is the low byte
  WORD wHighVersion;  // the highest there is, 2.2
  USHORT iMaxSockets;
  USHORT iMaxUdpDg;
  char* lpVendorInfo;  // untouched
  char szDescription[257];
  char szSystemStatus[129];
} WSADATA;

typedef struct _WSAPROTOCOL_INFOW WSAPROTOCOL_INFOW;  // never looked at

extern "C" {

// Every success is undone by one WSACleanup. 0 with the highest version up to `version`; the result
// (not the last error) tells a failure
//   WSAVERNOTSUPPORTED  below version 1.0
//   WSAEFAULT           `data` is NULL
int WINAPI WSAStartup(WORD version, WSADATA* data);

// SOCKET_ERROR only without a WSAStartup to undo.
int WINAPI WSACleanup();

// The same as GetLastError.
int WINAPI WSAGetLastError();

// WSAENOTSOCK also for a descriptor of something else, which stays open.
int WINAPI closesocket(SOCKET socket);

// AF_INET: "a.b.c.d" or "a.b.c.d:port", the address also in its short, octal and hexadecimal forms.
// AF_INET6: "addr", "[addr]" or "[addr]:port", after the address a scope "%number". Ports are
// decimal, octal ("0...") or hexadecimal ("0x..."), and not 0. *length is the size of `address`,
// and after success what of it was filled. 0, or SOCKET_ERROR with an untouched address
//   WSAEFAULT  *length is too small; it is the size needed then
//   WSAEINVAL  no such text, another family, a NULL argument
INT WINAPI WSAStringToAddressW(wchar_t* text, INT family, WSAPROTOCOL_INFOW* provider,
                               sockaddr* address, INT* length);

}  // extern "C"

namespace Corvane::Net {

// INVALID_SOCKET after a failure. A child that is started does not inherit the socket.
SOCKET Socket(int family, int type, int protocol);

// Blocks until the connection stands or has failed; signals do not end it. 0 or SOCKET_ERROR
//   WSAEFAULT         no address, or fewer bytes than its family has
//   WSAEADDRNOTAVAIL  to port 0 or to the unspecified address, among others
int Connect(SOCKET socket, const sockaddr* address, int length);

// 0, or a code of Winsock (WSAHOST_NOT_FOUND and others) that is also the last error, with a NULL
// *result. An IPv6 literal may stand in brackets and have a port behind them, which is ignored.
// The list is given back with the system's freeaddrinfo.
int GetAddrInfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result);

}  // namespace Corvane::Net

// The C library has these names too, and the rest of the process goes on using those: a call that
// sees this header is led to the layer. "(connect)(...)" still means the system's.
#define socket(...) Corvane::Net::Socket(__VA_ARGS__)
#define connect(...) Corvane::Net::Connect(__VA_ARGS__)
#define getaddrinfo(...) Corvane::Net::GetAddrInfo(__VA_ARGS__)

#endif  // CORVANE_PLATFORM_LINUX_NET_WINSOCK_H_
