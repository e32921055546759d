// The probes of a provider's creation over the system's own sockets, in a network where nobody else
// listens. The exchange behind them is scripted.
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "corvane/handles.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "platform/system.h"
#include "tests/support/cases.h"
#include "tests/support/fake_device.h"
#include "tests/support/ipp_bytes.h"

namespace Corvane::Test {
namespace {

class Listener {
 public:
  Listener(int family, std::uint16_t port) : m_socket(socket(family, SOCK_STREAM, IPPROTO_TCP)) {
    sockaddr_in6 any{};  // whose port is where IPv4's is
    any.sin6_family = static_cast<decltype(any.sin6_family)>(family);
    any.sin6_port = htons(port);
    const auto size =
        static_cast<socklen_t>(family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in));
    const int reuse = 1;  // what is left of the case before may still wait there
    setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&reuse),
               sizeof(reuse));
    EXPECT_EQ(0, bind(m_socket, reinterpret_cast<sockaddr*>(&any), size)) << WSAGetLastError();
    EXPECT_EQ(0, listen(m_socket, 5));
  }
  Listener(Listener&& other) noexcept : m_socket(std::exchange(other.m_socket, INVALID_SOCKET)) {}
  ~Listener() {
    if (m_socket != INVALID_SOCKET) closesocket(m_socket);
  }

 private:
  SOCKET m_socket;
};

TEST(PrinterProbe, FindsThePrinterByItsPorts) {
  WSADATA data;
  ASSERT_EQ(0, WSAStartup(MAKEWORD(2, 2), &data));
  for (const Case& c : ReadCases("ipp/probes.txt")) {
    SCOPED_TRACE(c.Where());
    std::vector<Listener> listeners;
    std::istringstream open(c.Text("open"));
    for (int port; open >> port;) {
      listeners.emplace_back(c.Number("ipv") == 6 ? AF_INET6 : AF_INET,
                             static_cast<std::uint16_t>(port));
    }
    const auto device = RefPtr<FakeDevice>::Share(new FakeDevice);
    device->host = c.Wide("host");
    device->Serve(kIppPort, L"/ipp/print", LibraryAnswer(0, ""));
    SetLastError(7);
    const auto provider =
        RefPtr<IPPProvider>::Adopt(CreateIPPPrintProvider(device.Get(), L"ipp://h/ipp/print"));
    EXPECT_EQ(c.Number("error"), provider ? 0 : GetLastError());
  }
  WSACleanup();
}

}  // namespace
}  // namespace Corvane::Test
