// URLs, address texts and connections.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>
#include <string>

#include "corvane/platform.h"
#include "platform/system.h"
#include "tests/support/wine.h"

namespace {

using Corvane::Test::SkipRow;
using Corvane::Test::UnderWine;
using Corvane::Test::WineDefect;

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
std::wstring Part(const std::wstring& url, const wchar_t* place, DWORD length) {
  if (place == nullptr) return length == 0 ? L"none" : L"no place for a length";
  if (place < url.data() || place + length > url.data() + url.size()) return L"outside of the URL";
  return std::to_wstring(place - url.data()) + L":" + std::wstring(place, length);
}

struct UrlCase {
  std::wstring url;
  int scheme;
  int port;
  std::wstring host;
  std::wstring path;
  const char* wineDefect = nullptr;
};

void ExpectParts(const UrlCase& c) {
  const std::string name = testing::PrintToString(c.url);
  if (c.wineDefect != nullptr && SkipRow(name.c_str(), WineDefect(c.wineDefect))) return;
  URL_COMPONENTSW parts = WantingItsParts();
  SetLastError(kSentinel);
  ASSERT_TRUE(InternetCrackUrlW(c.url.c_str(), 0, 0, &parts)) << name << ' ' << GetLastError();
  EXPECT_EQ(kSentinel, GetLastError());
  EXPECT_EQ(c.scheme, parts.nScheme) << name;
  EXPECT_EQ(c.port, parts.nPort) << name;
  EXPECT_EQ(L"0:" + c.url.substr(0, c.url.find(L':')),
            Part(c.url, parts.lpszScheme, parts.dwSchemeLength));
  EXPECT_EQ(c.host, Part(c.url, parts.lpszHostName, parts.dwHostNameLength)) << name;
  EXPECT_EQ(c.path, Part(c.url, parts.lpszUrlPath, parts.dwUrlPathLength)) << name;
}

constexpr char kLastColon[] = "Wine 8 takes what follows the last colon for a port, also in [::1]";
constexpr char kEmptyPort[] = "Wine 8 takes an empty port for 0, not for the scheme's own";
constexpr char kAnyPort[] = "Wine 8 takes any text for a port and lets its number wrap around";
constexpr char kAnyScheme[] = "Wine 8 takes an empty scheme, or the beginning of one, for it";

TEST(CrackUrlTest, FindsThePartsInPlace) {
  constexpr int kUnknown = INTERNET_SCHEME_UNKNOWN;
  constexpr int kHttp = INTERNET_SCHEME_HTTP;
  constexpr int kHttps = INTERNET_SCHEME_HTTPS;
  for (const UrlCase& c : {
           // Schemes and their ports.
           UrlCase{L"http://h", kHttp, 80, L"7:h", L"8:"},
           {L"HtTpS://h/x", kHttps, 443, L"8:h", L"9:/x"},
           {L"ftp://h/x", INTERNET_SCHEME_FTP, 21, L"6:h", L"7:/x"},
           {L"ipp://h/ipp/print", kUnknown, 0, L"6:h", L"7:/ipp/print"},
           {L"ipps://h:443/x", kUnknown, 443, L"7:h", L"12:/x"},
           {L"1.+-://h/x", kUnknown, 0, L"7:h", L"8:/x"},
           {L"h:80/x", kUnknown, 0, L"none", L"2:80/x", kAnyScheme},
           // The host's end, its brackets and the user information before it.
           {L"ipp://h?x", kUnknown, 0, L"6:h", L"7:?x"},
           {L"ipp://h#x", kUnknown, 0, L"6:h", L"7:#x"},
           {L"ipp://h:631?x/y", kUnknown, 631, L"6:h", L"11:?x/y"},
           {L"ipp://u:p@h:631/x@y", kUnknown, 631, L"10:h", L"15:/x@y"},
           {L"ipp://a@b@h/x", kUnknown, 0, L"8:b@h", L"11:/x"},
           {L"ipp://[fe80::1]:631/x", kUnknown, 631, L"6:[fe80::1]", L"19:/x"},
           {L"ipp://u@[::1]:631/x", kUnknown, 631, L"8:[::1]", L"17:/x"},
           {L"http://[::1]/x", kHttp, 80, L"7:[::1]", L"12:/x", kLastColon},
           {L"ipp://[fe80::1%253]", kUnknown, 0, L"6:[fe80::1%253]", L"19:", kLastColon},
           {L"http://h\\x/y", kHttp, 80, L"7:h\\x", L"10:/y"},
           {L"ipp:// h i/a b\t", kUnknown, 0, L"6: h i", L"10:/a b\t"},
           // Ports.
           {L"http://h:65535/x", kHttp, 65535, L"7:h", L"14:/x"},
           {L"http://h:0000000631", kHttp, 631, L"7:h", L"19:"},
           {L"http://h:0/x", kHttp, 0, L"7:h", L"10:/x"},
           {L"ipp://h:/x", kUnknown, 0, L"6:h", L"8:/x"},
           {L"https://h:/x", kHttps, 443, L"8:h", L"10:/x", kEmptyPort},
           // No host.
           {L"ipp:///x", kUnknown, 0, L"6:", L"6:/x"},
           {L"ipp:////x", kUnknown, 0, L"6:", L"6://x"},
           {L"http://", kHttp, 80, L"7:", L"7:"},
           {L"ipp://:631/x", kUnknown, 631, L"6:", L"10:/x"},
           {L"http:", kHttp, 0, L"none", L"5:"},
           {L"ipp:/x", kUnknown, 0, L"none", L"4:/x"},
           {L"http:\\\\h\\x", kHttp, 0, L"none", L"5:\\\\h\\x"},
           {L"file:///c:/x", INTERNET_SCHEME_FILE, 0, L"none", L"7:/c:/x"},
           {L"file://h/x", INTERNET_SCHEME_FILE, 0, L"none", L"7:h/x"},
           // The path and what it holds.
           {L"ipp://h//..//%41;p?q#f", kUnknown, 0, L"6:h", L"7://..//%41;p?q#f"},
           {L"ipp://h/\u00E9\\x", kUnknown, 0, L"6:h", L"7:/\u00E9\\x"},
           {L"ipp://h/x\r\n?y", kUnknown, 0, L"6:h", L"7:/x\r"},
       }) {
    ExpectParts(c);
  }
}

// The lengths that a caller gives ask for a part, and do not bound it.
TEST(CrackUrlTest, FindsPartsOfAnyLength) {
  const std::wstring scheme(300, L's');
  const std::wstring host(3000, L'h');
  const std::wstring path = L"/" + std::wstring(70'000, L'p');
  ExpectParts(
      {scheme + L"://" + host + path, INTERNET_SCHEME_UNKNOWN, 0, L"303:" + host, L"3303:" + path});
}

TEST(CrackUrlTest, RefusesWhatIsNoUrl) {
  const struct {
    const wchar_t* url;
    DWORD error;
    const char* wineDefect = nullptr;
  } cases[] = {{L"", ERROR_INVALID_PARAMETER},
               {L"USB001", ERROR_INTERNET_UNRECOGNIZED_SCHEME},
               {L"h/x:", ERROR_INTERNET_UNRECOGNIZED_SCHEME},
               {L"//h/x", ERROR_INTERNET_UNRECOGNIZED_SCHEME},
               {L" ipp://h/x", ERROR_INTERNET_UNRECOGNIZED_SCHEME},
               {L"i_pp://h/x", ERROR_INTERNET_UNRECOGNIZED_SCHEME},
               {L"://h/x", ERROR_INTERNET_UNRECOGNIZED_SCHEME, kAnyScheme},
               {L"ipp://h:631x/x", ERROR_INTERNET_INVALID_URL, kAnyPort},
               {L"ipp://h:+631/x", ERROR_INTERNET_INVALID_URL, kAnyPort},
               {L"ipp://h:\u0661/x", ERROR_INTERNET_INVALID_URL, kAnyPort},
               {L"ipp://h:65536/x", ERROR_INTERNET_INVALID_URL, kAnyPort},
               {L"ipp://h:4294967927/x", ERROR_INTERNET_INVALID_URL, kAnyPort},
               {L"ipp://fe80::631/x", ERROR_INTERNET_INVALID_URL, kLastColon},
               {L"ipp://[fe80::1/x", ERROR_INTERNET_INVALID_URL, kLastColon},
               {L"ipp://[::1]x/x", ERROR_INTERNET_INVALID_URL, kLastColon},
               {L"ipp://[::1]:y:631/x", ERROR_INTERNET_INVALID_URL, kLastColon}};
  for (const auto& c : cases) {
    const std::string name = testing::PrintToString(std::wstring(c.url));
    if (c.wineDefect != nullptr && SkipRow(name.c_str(), WineDefect(c.wineDefect))) continue;
    URL_COMPONENTSW parts = WantingItsParts();
    parts.nPort = 7;
    SetLastError(kSentinel);
    EXPECT_FALSE(InternetCrackUrlW(c.url, 0, 0, &parts)) << name;
    EXPECT_EQ(c.error, GetLastError()) << name;
    EXPECT_EQ(nullptr, parts.lpszUrlPath) << name;
    EXPECT_EQ(7, parts.nPort) << name;
  }
}

TEST(CrackUrlTest, ChecksItsArguments) {
  URL_COMPONENTSW parts = WantingItsParts();
  EXPECT_FALSE(InternetCrackUrlW(nullptr, 0, 0, &parts));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
  SetLastError(kSentinel);
  EXPECT_FALSE(InternetCrackUrlW(L"http://h", 0, 0, nullptr));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
  ASSERT_TRUE(InternetCrackUrlW(L"http://h/xyz", 10, 0, &parts));
  EXPECT_EQ(2u, parts.dwUrlPathLength);
  if (UnderWine()) GTEST_SKIP() << "Wine 8 does not look at dwStructSize";
  EXPECT_EQ(104u, sizeof(parts));
  parts.dwStructSize = 60;
  SetLastError(kSentinel);
  EXPECT_FALSE(InternetCrackUrlW(L"http://h", 0, 0, &parts));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
}

// A Winsock of its own, so that no test lives off another's.
class WinsockTest : public testing::Test {
 protected:
  WinsockTest() { EXPECT_EQ(0, WSAStartup(MAKEWORD(2, 2), &m_data)); }
  ~WinsockTest() override { WSACleanup(); }

 private:
  WSADATA m_data{};
};

template <typename Bytes>
std::string Hex(const Bytes& bytes) {
  std::string hex;
  for (const auto byte : std::bit_cast<std::array<unsigned char, sizeof(bytes)>>(bytes)) {
    hex += "0123456789abcdef"[byte >> 4];
    hex += "0123456789abcdef"[byte & 15];
  }
  return hex;
}

// "<address in hexadecimal>[%<scope>]:<port>, <bytes>" or "<error>, <bytes>".
std::string Convert(std::wstring text, int family, INT length = 128) {
  sockaddr_storage storage{};
  auto* address = reinterpret_cast<sockaddr*>(&storage);
  SetLastError(kSentinel);
  const int result = WSAStringToAddressW(text.data(), family, nullptr, address, &length);
  const std::string size = ", " + std::to_string(length);
  if (result != 0) return std::to_string(WSAGetLastError()) + size;
  EXPECT_EQ(family, address->sa_family);
  if (family == AF_INET) {
    const auto* ip4 = reinterpret_cast<const sockaddr_in*>(address);
    return Hex(ip4->sin_addr) + ":" + std::to_string(ntohs(ip4->sin_port)) + size;
  }
  const auto* ip6 = reinterpret_cast<const sockaddr_in6*>(address);
  return Hex(ip6->sin6_addr) + "%" + std::to_string(ip6->sin6_scope_id) + ":" +
         std::to_string(ntohs(ip6->sin6_port)) + size;
}

TEST_F(WinsockTest, ReadsAddressTexts) {
  const struct {
    const wchar_t* text;
    int family;
    std::string expected;
  } cases[] = {{L"1.2.3.4", AF_INET, "01020304:0, 16"},
               {L"255.255.255.255:65535", AF_INET, "ffffffff:65535, 16"},
               {L"1.2.3.4:0x50", AF_INET, "01020304:80, 16"},
               {L"1.2.3.4:010", AF_INET, "01020304:8, 16"},
               {L"1.2.3", AF_INET, "01020003:0, 16"},
               {L"1", AF_INET, "00000001:0, 16"},
               {L"0X7f.010", AF_INET, "7f000008:0, 16"},
               {L"::1", AF_INET6, "00000000000000000000000000000001%0:0, 28"},
               {L"[::1]", AF_INET6, "00000000000000000000000000000001%0:0, 28"},
               {L"[::1]:0x50", AF_INET6, "00000000000000000000000000000001%0:80, 28"},
               {L"[FE80::1%3]:631", AF_INET6, "fe800000000000000000000000000001%3:631, 28"},
               {L"::%4294967295", AF_INET6, "00000000000000000000000000000000%4294967295:0, 28"},
               {L"::1:80", AF_INET6, "00000000000000000000000000010080%0:0, 28"},
               {L"::ffff:1.2.3.4", AF_INET6, "00000000000000000000ffff01020304%0:0, 28"},
               {L"1:2:3:4:5:6:7:8", AF_INET6, "00010002000300040005000600070008%0:0, 28"}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.expected, Convert(c.text, c.family)) << testing::PrintToString(c.text);
  }
  EXPECT_EQ("01020304:0, 16", Convert(L"1.2.3.4", AF_INET, 16));
  EXPECT_EQ("10014, 16", Convert(L"1.2.3.4", AF_INET, 15));
  EXPECT_EQ("10014, 28", Convert(L"bad", AF_INET6, 27));
}

TEST_F(WinsockTest, RefusesTextsThatAreNoAddress) {
  for (const wchar_t* text :
       {L"", L"1.2.3.4:", L"1.2.3.4:0", L"1.2.3.4:65536", L"1.2.3.4:80x", L"1.2.3.4: 80",
        L"1.2.3.4:08", L"256.1.1.1", L"1.2.3.65536", L"1.2.3.4 ", L" 1.2.3.4", L"1.2.3.4.5",
        L"1..2", L"localhost", L"::1", L"[::1]:80", L"1.2.3.\u0664"}) {
    EXPECT_EQ("10022, 128", Convert(text, AF_INET)) << testing::PrintToString(text);
  }
  for (const wchar_t* text : {L"", L"[::1]:", L"[::1]:0", L"[::1]:65536", L"[::1]x", L"[::1",
                              L"::1]", L"[]:80", L"[[::1]]:80", L" ::1", L"1.2.3.4", L"::g"}) {
    EXPECT_EQ("10022, 128", Convert(text, AF_INET6)) << testing::PrintToString(text);
  }
  for (const wchar_t* text : {L"::1%", L"fe80::1%eth0", L"::%4294967296", L"[fe80::1]%3:80"}) {
    EXPECT_EQ("10022, 128", Convert(text, AF_INET6)) << testing::PrintToString(text);
  }
  EXPECT_EQ("10022, 128", Convert(L"1.2.3.4", AF_UNSPEC));
  EXPECT_EQ(SOCKET_ERROR, WSAStringToAddressW(nullptr, AF_INET, nullptr, nullptr, nullptr));
  EXPECT_EQ(WSAEINVAL, WSAGetLastError());
}

// The family of a numeric host, or the error.
int FamilyOf(const char* node, int wantedFamily) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  hints.ai_family = wantedFamily;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(node, nullptr, &hints, &found);
  if (error != 0) {
    EXPECT_EQ(error, WSAGetLastError());
    EXPECT_EQ(nullptr, found);
    return error;
  }
  EXPECT_EQ(nullptr, found->ai_next) << node;
  EXPECT_EQ(0, found->ai_socktype) << node;
  EXPECT_EQ(found->ai_family, found->ai_addr->sa_family) << node;
  const int family = found->ai_family;
  freeaddrinfo(found);
  return family;
}

TEST_F(WinsockTest, TellsTheFamilyOfNumericHosts) {
  const struct {
    const char* node;
    int expected;
    int wanted = AF_UNSPEC;
    const char* wineDefect = nullptr;
  } cases[] = {{"1.2.3.4", AF_INET},
               {"1.2", AF_INET},
               {"0x7f.010", AF_INET},
               {"::1", AF_INET6},
               {"fe80::1%1", AF_INET6},
               {"::ffff:1.2.3.4", AF_INET6},
               {"[::1]", AF_INET6},
               {"[::1]:80", AF_INET6},
               {"[::1", WSAHOST_NOT_FOUND},
               {"1.2.3.4:80", WSAHOST_NOT_FOUND},
               {"256.1.1.1", WSAHOST_NOT_FOUND},
               {" 1.2.3.4", WSAHOST_NOT_FOUND},
               {"localhost", WSAHOST_NOT_FOUND},
               {"USB001", WSAHOST_NOT_FOUND},
               {"", WSAHOST_NOT_FOUND},
               {"::1", WSAEAFNOSUPPORT, 77},
               {"::1", WSAHOST_NOT_FOUND, AF_INET, "Wine 8 lets Linux's own number through"}};
  for (const auto& c : cases) {
    if (c.wineDefect != nullptr && SkipRow(c.node, WineDefect(c.wineDefect))) continue;
    EXPECT_EQ(c.expected, FamilyOf(c.node, c.wanted)) << c.node;
  }
}

TEST(WinsockVersionTest, IsTheHighestUpToTheOneAskedFor) {
  const struct {
    WORD asked, granted;
    int result = 0;
  } cases[] = {{MAKEWORD(1, 1), MAKEWORD(1, 1)}, {MAKEWORD(2, 2), MAKEWORD(2, 2)},
               {MAKEWORD(1, 0), MAKEWORD(1, 0)}, {MAKEWORD(2, 0), MAKEWORD(2, 0)},
               {MAKEWORD(1, 9), MAKEWORD(1, 1)}, {MAKEWORD(2, 9), MAKEWORD(2, 2)},
               {MAKEWORD(9, 0), MAKEWORD(2, 2)}, {MAKEWORD(0, 9), 0, WSAVERNOTSUPPORTED}};
  for (const auto& c : cases) {
    WSADATA data{};
    EXPECT_EQ(c.result, WSAStartup(c.asked, &data)) << c.asked;
    if (c.result != 0) continue;
    EXPECT_EQ(c.granted, data.wVersion);
    EXPECT_EQ(MAKEWORD(2, 2), data.wHighVersion);
    EXPECT_EQ(0, WSACleanup());
  }
  EXPECT_EQ(WSAEFAULT, WSAStartup(MAKEWORD(1, 1), nullptr));
}

TEST(WinsockVersionTest, EveryStartupNeedsItsCleanup) {
  WSADATA data{};
  ASSERT_EQ(0, WSAStartup(MAKEWORD(2, 2), &data));
  ASSERT_EQ(0, WSAStartup(MAKEWORD(1, 1), &data));
  EXPECT_EQ(0, WSACleanup());
  const SOCKET made = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  EXPECT_NE(INVALID_SOCKET, made);
  EXPECT_EQ(0, closesocket(made));
  EXPECT_EQ(0, WSACleanup());
  EXPECT_EQ(INVALID_SOCKET, socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
  EXPECT_EQ(WSANOTINITIALISED, WSAGetLastError());
  SetLastError(kSentinel);
  EXPECT_EQ(SOCKET_ERROR, closesocket(made));
  EXPECT_EQ(WSANOTINITIALISED, WSAGetLastError());
  SetLastError(kSentinel);
  EXPECT_EQ(SOCKET_ERROR, WSACleanup());
  EXPECT_EQ(WSANOTINITIALISED, WSAGetLastError());
  if (UnderWine()) GTEST_SKIP() << "Wine 8 reads addresses and connects without WSAStartup";
  EXPECT_EQ("10093, 128", Convert(L"1.2.3.4", AF_INET));
  EXPECT_EQ(WSANOTINITIALISED, FamilyOf("1.2.3.4", AF_UNSPEC));
  sockaddr_in address{};
  EXPECT_EQ(SOCKET_ERROR, connect(made, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
  EXPECT_EQ(WSANOTINITIALISED, WSAGetLastError());
}

// A socket bound to a free port of the loopback address; it listens when told to.
class Listener {
 public:
  explicit Listener(int family) {
    std::wstring loopback = family == AF_INET ? L"127.0.0.1" : L"::1";
    auto* address = reinterpret_cast<sockaddr*>(&m_address);
    m_length = sizeof(m_address);
    WSAStringToAddressW(loopback.data(), family, nullptr, address, &m_length);
    m_socket = socket(family, SOCK_STREAM, IPPROTO_TCP);
    auto length = static_cast<socklen_t>(m_length);
    m_bound = bind(m_socket, address, length) == 0 && getsockname(m_socket, address, &length) == 0;
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { closesocket(m_socket); }

  bool Listen() { return m_bound && listen(m_socket, 1) == 0; }
  const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&m_address); }
  INT Length() const { return m_length; }

 private:
  SOCKET m_socket;
  sockaddr_storage m_address{};
  INT m_length = 0;
  bool m_bound = false;
};

// The error of one attempt with a socket of its own, 0 when it succeeds.
int TryConnect(int family, const void* address, INT length) {
  const SOCKET made = socket(family, SOCK_STREAM, IPPROTO_TCP);
  EXPECT_NE(INVALID_SOCKET, made);
  const int result = connect(made, static_cast<const sockaddr*>(address), length);
  const int error = result == 0 ? 0 : WSAGetLastError();
  EXPECT_EQ(0, closesocket(made));
  return error;
}

TEST_F(WinsockTest, ConnectsToAListenerAlone) {
  for (const int family : {AF_INET, AF_INET6}) {
    Listener listener(family);
    EXPECT_EQ(WSAECONNREFUSED, TryConnect(family, listener.Address(), listener.Length())) << family;
    ASSERT_TRUE(listener.Listen()) << family;
    EXPECT_EQ(0, TryConnect(family, listener.Address(), listener.Length())) << family;
  }
}

TEST_F(WinsockTest, RefusesToConnectToWhatIsNoTarget) {
  Listener listener(AF_INET);
  ASSERT_TRUE(listener.Listen());
  sockaddr_in target{};
  std::memcpy(&target, listener.Address(), sizeof(target));
  EXPECT_EQ(SOCKET_ERROR, connect(INVALID_SOCKET, listener.Address(), listener.Length()));
  EXPECT_EQ(WSAENOTSOCK, WSAGetLastError());
  if (UnderWine()) GTEST_SKIP() << "Wine 8 lets Linux check the address, and crashes without one";
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
  EXPECT_EQ(INVALID_SOCKET, socket(77, SOCK_STREAM, IPPROTO_TCP));
  EXPECT_EQ(WSAEAFNOSUPPORT, WSAGetLastError());
  EXPECT_EQ(INVALID_SOCKET, socket(AF_INET, SOCK_STREAM, IPPROTO_UDP));
  EXPECT_EQ(WSAEPROTONOSUPPORT, WSAGetLastError());
  const SOCKET made = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  EXPECT_EQ(0, closesocket(made));
  for (const SOCKET none : {made, INVALID_SOCKET}) {
    SetLastError(kSentinel);
    EXPECT_EQ(SOCKET_ERROR, closesocket(none));
    EXPECT_EQ(WSAENOTSOCK, WSAGetLastError());
  }
}

}  // namespace
