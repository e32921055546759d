// The probes of a provider's creation over the system's own sockets, in a network where nobody else
// listens. The exchange behind them is scripted.
#include <gtest/gtest.h>

#include <vector>

#include "ipp/provider/ipp_provider_impl.h"
#include "platform/system.h"
#include "tests/support/fake_device.h"

namespace Corvane::Test {
namespace {

class Listener {
 public:
  Listener(int family, std::uint16_t port) : m_socket(socket(family, SOCK_STREAM, IPPROTO_TCP)) {
    sockaddr_in6 any6{};
    sockaddr_in any4{};
    any6.sin6_family = AF_INET6;
    any4.sin_family = AF_INET;
    any6.sin6_port = any4.sin_port = htons(port);
    const bool is6 = family == AF_INET6;
    const auto* const address =
        is6 ? reinterpret_cast<sockaddr*>(&any6) : reinterpret_cast<sockaddr*>(&any4);
    EXPECT_EQ(0, bind(m_socket, address, is6 ? sizeof(any6) : sizeof(any4))) << WSAGetLastError();
    EXPECT_EQ(0, listen(m_socket, 5));
  }
  Listener(Listener&& other) noexcept : m_socket(std::exchange(other.m_socket, INVALID_SOCKET)) {}
  ~Listener() {
    if (m_socket != INVALID_SOCKET) closesocket(m_socket);
  }

 private:
  SOCKET m_socket;
};

TEST(WindowsProbe, FindsThePrinterByItsPorts) {
  static const struct {
    const char* name;
    const wchar_t* host;
    int family;
    std::vector<std::uint16_t> open;
    DWORD error;  // 0: a provider
  } kCases[] = {
      {"nobody there", L"127.0.0.1", AF_INET, {}, kIPPDeviceSilent},
      {"web server alone", L"127.0.0.1", AF_INET, {80}, kIPPNotOnDevice},
      {"printer", L"127.0.0.1", AF_INET, {631}, 0},
      {"printer with a web server", L"127.0.0.1", AF_INET, {80, 631}, 0},
      {"another port in the host", L"127.0.0.1:9100", AF_INET, {631}, 0},
      {"a name", L"localhost", AF_INET, {80, 631}, kIPPDeviceSilent},
      {"over IPv6", L"::1", AF_INET6, {631}, 0},
      {"web server alone over IPv6", L"::1", AF_INET6, {80}, kIPPNotOnDevice},
      {"listens to the other protocol", L"::1", AF_INET, {631, 80}, kIPPDeviceSilent},
  };
  WSADATA data;
  ASSERT_EQ(0, WSAStartup(MAKEWORD(2, 2), &data));
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    std::vector<Listener> listeners;
    for (const std::uint16_t port : test.open) listeners.emplace_back(test.family, port);
    const auto device = RefPtr<FakeDevice>::Share(new FakeDevice);
    device->host = test.host;
    device->Serve(631, L"/ipp/print", std::string("\2\0\0\0\0\0\0\x64\1\3", 10));
    SetLastError(7);
    const auto provider =
        RefPtr<IPPProvider>::Adopt(CreateIPPPrintProvider(device.Get(), L"ipp://h/ipp/print"));
    EXPECT_EQ(test.error, provider ? 0 : GetLastError());
  }
  WSACleanup();
}

}  // namespace
}  // namespace Corvane::Test
