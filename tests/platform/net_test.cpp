// URLs, address texts and connections.
#include <array>
#include <bit>
#include <cstring>
#include <iomanip>
#include <sstream>
#include <string>

#include "base/utf8.h"
#include "corvane/platform.h"
#include "tests/platform/net_fixture.h"
#include "tests/support/cases.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

constexpr DWORD kSentinel = 4711;  // a last error that nothing here sets

URL_COMPONENTSW WantingItsParts() {
  URL_COMPONENTSW parts{};
  parts.dwStructSize = sizeof(parts);
  parts.dwSchemeLength = 32;
  parts.dwHostNameLength = 256;
  parts.dwUrlPathLength = 2048;
  return parts;
}

// "<offset>:<text>" of a part, "none" without one.
std::string Part(const std::wstring& url, const wchar_t* place, DWORD length) {
  if (place == nullptr) return length == 0 ? "none" : "no place for a length";
  if (place < url.data() || place + length > url.data() + url.size()) return "outside of the URL";
  return std::to_string(place - url.data()) + ":" + ToUtf8(std::wstring_view(place, length));
}

// As in the data file.
std::string Crack(const std::wstring& url) {
  URL_COMPONENTSW parts = WantingItsParts();
  parts.nPort = 7;
  SetLastError(kSentinel);
  if (!InternetCrackUrlW(url.c_str(), 0, 0, &parts)) {
    EXPECT_EQ(nullptr, parts.lpszUrlPath);
    EXPECT_EQ(7, parts.nPort);
    return "error " + std::to_string(GetLastError());
  }
  EXPECT_EQ(kSentinel, GetLastError());
  EXPECT_EQ("0:" + ToUtf8(url.substr(0, url.find(L':'))),
            Part(url, parts.lpszScheme, parts.dwSchemeLength));
  std::ostringstream all;
  all << parts.nScheme << ' ' << parts.nPort << " host "
      << Part(url, parts.lpszHostName, parts.dwHostNameLength) << " path "
      << Part(url, parts.lpszUrlPath, parts.dwUrlPathLength);
  return all.str();
}

TEST(CrackUrlTest, FindsThePartsInPlace) {
  for (const Case& c : CasesHere("platform/urls.txt")) {
    EXPECT_EQ(c.Text("expected"), Crack(c.Wide("url"))) << c.Where();
  }
  // The lengths that a caller gives ask for a part, and do not bound it.
  const std::wstring host(3000, L'h');
  const std::wstring path = L"/" + std::wstring(70'000, L'p');
  EXPECT_EQ("-1 0 host 303:" + ToUtf8(host) + " path 3303:" + ToUtf8(path),
            Crack(std::wstring(300, L's') + L"://" + host + path));
}

TEST(CrackUrlTest, ChecksItsArguments) {
  const auto refused = [](const wchar_t* url, URL_COMPONENTSW* parts) {
    SetLastError(kSentinel);
    return !InternetCrackUrlW(url, 0, 0, parts) && GetLastError() == ERROR_INVALID_PARAMETER;
  };
  URL_COMPONENTSW parts = WantingItsParts();
  EXPECT_TRUE(refused(nullptr, &parts));
  EXPECT_TRUE(refused(L"http://h", nullptr));
  ASSERT_TRUE(InternetCrackUrlW(L"http://h/xyz", 10, 0, &parts));
  EXPECT_EQ(2u, parts.dwUrlPathLength);
  if (UnderWine()) GTEST_SKIP() << "Wine 8 does not look at dwStructSize";
  EXPECT_EQ(104u, sizeof(parts));
  parts.dwStructSize = 60;
  EXPECT_TRUE(refused(L"http://h", &parts));
}

template <typename Bytes>
std::string Hex(const Bytes& bytes) {
  std::ostringstream hex;
  for (const int byte : std::bit_cast<std::array<unsigned char, sizeof(bytes)>>(bytes)) {
    hex << std::hex << std::setw(2) << std::setfill('0') << byte;
  }
  return hex.str();
}

// As in the data file.
std::string Convert(std::wstring text, int family, INT length = 128) {
  sockaddr_storage storage{};
  auto* address = reinterpret_cast<sockaddr*>(&storage);
  SetLastError(kSentinel);
  const int result = WSAStringToAddressW(text.data(), family, nullptr, address, &length);
  std::ostringstream all;
  if (result != 0) {
    all << WSAGetLastError();
  } else if (address->sa_family == AF_INET) {
    const auto* ip4 = reinterpret_cast<const sockaddr_in*>(address);
    all << Hex(ip4->sin_addr) << ':' << ntohs(ip4->sin_port);
  } else {
    const auto* ip6 = reinterpret_cast<const sockaddr_in6*>(address);
    all << Hex(ip6->sin6_addr) << '%' << ip6->sin6_scope_id << ':' << ntohs(ip6->sin6_port);
  }
  EXPECT_EQ(result == 0 ? family : 0, address->sa_family);
  all << ", " << length;
  return all.str();
}

TEST_F(WinsockTest, ReadsAddressTexts) {
  for (const Case& c : ReadCases("platform/addresses.txt")) {
    const int family = c.Number("family") == 4 ? AF_INET : AF_INET6;
    EXPECT_EQ(c.Text("expected"), Convert(c.Wide("text"), family)) << c.Where();
  }
  EXPECT_EQ("01020304:0, 16", Convert(L"1.2.3.4", AF_INET, 16));
  EXPECT_EQ("10014, 16", Convert(L"1.2.3.4", AF_INET, 15));
  EXPECT_EQ("10014, 28", Convert(L"bad", AF_INET6, 27));
  EXPECT_EQ("10022, 128", Convert(L"1.2.3.4", AF_UNSPEC));
  EXPECT_EQ(SOCKET_ERROR, WSAStringToAddressW(nullptr, AF_INET, nullptr, nullptr, nullptr));
  EXPECT_EQ(WSAEINVAL, WSAGetLastError());
}

// The family of a numeric host, or the error.
std::string FamilyOf(const std::string& node, int wantedFamily) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  hints.ai_family = wantedFamily;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(node.c_str(), nullptr, &hints, &found);
  if (error != 0) {
    EXPECT_EQ(error, WSAGetLastError());
    EXPECT_EQ(nullptr, found);
    return std::to_string(error);
  }
  EXPECT_EQ(nullptr, found->ai_next);
  EXPECT_EQ(0, found->ai_socktype);
  EXPECT_EQ(found->ai_family, found->ai_addr->sa_family);
  const int family = found->ai_family;
  freeaddrinfo(found);
  return family == AF_INET ? "IPv4" : family == AF_INET6 ? "IPv6" : "another";
}

TEST_F(WinsockTest, TellsTheFamilyOfNumericHosts) {
  for (const Case& c : CasesHere("platform/numeric_hosts.txt")) {
    SCOPED_TRACE(c.Where());
    const auto wanted = static_cast<int>(c.Number("wanted"));
    EXPECT_EQ(c.Text("found"), FamilyOf(c.Text("host"), wanted == 4 ? AF_INET : wanted));
  }
}

TEST(WinsockVersionTest, IsTheHighestUpToTheOneAskedFor) {
  WSADATA data{};
  // With the minor number in the higher byte.
  const WORD asked[] = {0x0101, 0x0202, 0x0001, 0x0002, 0x0901, 0x0902, 0x0009};
  const WORD granted[] = {0x0101, 0x0202, 0x0001, 0x0002, 0x0101, 0x0202, 0x0202};
  for (std::size_t i = 0; i < std::size(asked); ++i) {
    EXPECT_EQ(0, WSAStartup(asked[i], &data)) << asked[i];
    EXPECT_EQ(granted[i], data.wVersion);
    EXPECT_EQ(0x0202, data.wHighVersion);
    EXPECT_EQ(0, WSACleanup());
  }
  EXPECT_EQ(WSAVERNOTSUPPORTED, WSAStartup(MAKEWORD(0, 9), &data));
  EXPECT_EQ(WSAEFAULT, WSAStartup(MAKEWORD(1, 1), nullptr));
}

// Of a call that must have failed.
int ErrorOf(std::intptr_t result) {
  EXPECT_EQ(SOCKET_ERROR, result);
  const int error = WSAGetLastError();
  SetLastError(kSentinel);
  return error;
}

TEST(WinsockVersionTest, EveryStartupNeedsItsCleanup) {
  WSADATA data{};
  ASSERT_EQ(0, WSAStartup(MAKEWORD(2, 2), &data));
  ASSERT_EQ(0, WSAStartup(MAKEWORD(1, 1), &data));
  EXPECT_EQ(0, WSACleanup());
  const SOCKET made = StreamSocket(AF_INET);
  EXPECT_NE(INVALID_SOCKET, made);
  EXPECT_EQ(0, closesocket(made));
  EXPECT_EQ(0, WSACleanup());
  EXPECT_EQ(WSANOTINITIALISED, ErrorOf(static_cast<std::intptr_t>(StreamSocket(AF_INET))));
  EXPECT_EQ(WSANOTINITIALISED, ErrorOf(closesocket(made)));
  EXPECT_EQ(WSANOTINITIALISED, ErrorOf(WSACleanup()));
  if (UnderWine()) GTEST_SKIP() << "Wine 8 reads addresses and connects without WSAStartup";
  EXPECT_EQ("10093, 128", Convert(L"1.2.3.4", AF_INET));
  EXPECT_EQ("10093", FamilyOf("1.2.3.4", AF_UNSPEC));
  const sockaddr address{};
  EXPECT_EQ(WSANOTINITIALISED, ErrorOf(connect(made, &address, sizeof(address))));
}

TEST_F(WinsockTest, ConnectsToAListenerAlone) {
  for (const int family : {AF_INET, AF_INET6}) {
    Listener listener(family);
    EXPECT_EQ(WSAECONNREFUSED, listener.Connect()) << family;
    listener.Listen();
    EXPECT_EQ(0, listener.Connect()) << family;
  }
}

TEST_F(WinsockTest, RefusesToConnectToWhatIsNoTarget) {
  Listener listener(AF_INET);
  listener.Listen();
  EXPECT_EQ(WSAENOTSOCK, ErrorOf(connect(INVALID_SOCKET, listener.Address(), listener.Length())));
  if (UnderWine()) GTEST_SKIP() << "Wine 8 lets Linux check the address, and crashes without one";
  sockaddr_in target{};
  std::memcpy(&target, listener.Address(), sizeof(target));
  EXPECT_EQ(WSAEFAULT, TryConnect(AF_INET, nullptr, sizeof(target)));
  EXPECT_EQ(WSAEFAULT, TryConnect(AF_INET, &target, sizeof(target) - 1));
  sockaddr_in anywhere = target;
  anywhere.sin_addr.s_addr = 0;
  EXPECT_EQ(WSAEADDRNOTAVAIL, TryConnect(AF_INET, &anywhere, sizeof(anywhere)));
  target.sin_port = 0;
  EXPECT_EQ(WSAEADDRNOTAVAIL, TryConnect(AF_INET, &target, sizeof(target)));
  sockaddr_in6 nowhere{};
  nowhere.sin6_family = AF_INET6;
  nowhere.sin6_port = 1;
  EXPECT_EQ(WSAEADDRNOTAVAIL, TryConnect(AF_INET6, &nowhere, sizeof(nowhere)));
  nowhere.sin6_addr.s6_addr[15] = 1;
  EXPECT_EQ(WSAEAFNOSUPPORT, TryConnect(AF_INET, &nowhere, sizeof(nowhere)));
}

TEST_F(WinsockTest, RefusesSocketsThatAreNone) {
  EXPECT_EQ(WSAEAFNOSUPPORT, ErrorOf(static_cast<std::intptr_t>(StreamSocket(77))));
  const SOCKET datagrams = socket(AF_INET, SOCK_STREAM, IPPROTO_UDP);
  EXPECT_EQ(WSAEPROTONOSUPPORT, ErrorOf(static_cast<std::intptr_t>(datagrams)));
  const SOCKET made = StreamSocket(AF_INET);
  EXPECT_EQ(0, closesocket(made));
  EXPECT_EQ(WSAENOTSOCK, ErrorOf(closesocket(made)));
  EXPECT_EQ(WSAENOTSOCK, ErrorOf(closesocket(INVALID_SOCKET)));
}

}  // namespace
}  // namespace Corvane::Test
