// Devices that keep to no rule: every exchange ends in time, with its code, in every way that a
// body goes out.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <vector>

#include "tests/host/exchange.h"
#include "tests/support/cases.h"
#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

const std::string kSmall = "document";
const std::string kLarge(20 << 20, 'x');  // no socket buffers take it

LoopbackServer::Script Device(const Case& c) {
  return [c](LoopbackConnection& connection) {
    const std::string reads = c.Text("reads");
    const std::string again = Expanded(c.Text("again"));
    const std::string end = c.Text("end");
    const auto pauseMs = static_cast<int>(c.Number("pause"));
    if (reads.empty()) connection.ReadRequest();
    if (reads == "head") connection.ReadThrough("\r\n\r\n");
    connection.Send(c.Text("answer"));
    while (!again.empty() && connection.Send(again) &&
           (pauseMs == 0 || connection.Pause(pauseMs))) {
    }
    if (end == "half-closes") connection.HalfClose();
    if (end == "resets") {
      const linger hard{1, 0};
      setsockopt(connection.m_socket, SOL_SOCKET, SO_LINGER, &hard, sizeof(hard));
    }
    while (end != "closes" && end != "resets" && connection.Pause(1'000)) {
    }
  };
}

// The answer for one way, else for all.
std::string Of(const Case& c, const std::string& what, const std::string& way) {
  const std::string own = what == "result" ? way : what + ' ' + way;
  return c.Find(own).value_or(c.Text(what));
}

TEST(MisbehavingDevice, GetsTheCodeOfItsFaultInEveryWay) {
  for (const Case& c : ReadCases("host/misbehaving_devices.txt")) {
    for (const std::string way : kWays) {
      SCOPED_TRACE(c.Where() + " " + c.Text("name") + ", " + way);
      const std::string expected = Of(c, "result", way);
      if (expected == "-") continue;
      LoopbackServer server(Device(c));
      Host::NetworkOptions options = LoopbackOptions(server.Port());
      options.maxResponseBytes = std::size_t{1} << 20;
      if (c.Find("total")) options.totalTimeoutMs = static_cast<std::uint32_t>(c.Number("total"));
      const Exchanged seen = ExchangeBy(
          way, NetworkDevice(options), kIppPort, c.Find("reads") ? kLarge : kSmall,
          [&c](HTTPRequest* r) { r->SetOption(static_cast<std::uint32_t>(c.Number("silence"))); });
      EXPECT_EQ(Told(seen), expected) << testing::PrintToString(seen.failure);
      EXPECT_EQ(seen.failure.empty(), seen.status == 200);
      EXPECT_TRUE(seen.failure.ends_with(ToWide(Of(c, "why", way))))
          << testing::PrintToString(seen.failure);
    }
  }
}

TEST(UnreachableDevice, IsToldWithItsReason) {
  // Nobody accepts: once the queue is full, the system answers no further connection.
  std::uint16_t full = 0;
  const int listener = ListenOnLoopback(0, &full);
  std::vector<int> waiting;
  const sockaddr_in address = LoopbackAddress(full);
  for (int i = 0; i < 8; ++i) {
    waiting.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    connect(waiting.back(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  }
  std::uint16_t closed = 0;
  close(ListenOnLoopback(0, &closed));
  for (const std::string way : kWays) {
    SCOPED_TRACE(way);
    Host::NetworkOptions options = LoopbackOptions(full);
    options.connectTimeoutMs = 300;
    const Exchanged late = ExchangeBy(way, NetworkDevice(options), kIppPort, kSmall);
    EXPECT_EQ(late.error, kErrorTimeout);
    EXPECT_TRUE(late.failure.ends_with(L": no connection within 300 ms"))
        << testing::PrintToString(late.failure);
    options = LoopbackOptions(closed);
    EXPECT_EQ(ExchangeBy(way, NetworkDevice(options), kIppPort, kSmall).error, kErrorCannotConnect);
    options.host = L"device.invalid";  // RFC 2606, 2: resolves nowhere
    const auto error = ExchangeBy(way, NetworkDevice(options), kIppPort, kSmall).error;
    // A network without a resolver is late.
    EXPECT_TRUE(error == kErrorNameNotResolved || error == kErrorTimeout) << error;
  }
  for (const int socket : waiting) close(socket);
  close(listener);
}

TEST(CancelledExchange, EndsWhereverItStands) {
  for (const std::string way : kWays) {
    for (const bool whileSending : {true, false}) {
      SCOPED_TRACE(way + (whileSending ? ", sending" : ", waiting"));
      std::atomic<HTTPRequest*> request = nullptr;
      LoopbackServer server([&](LoopbackConnection& connection) {
        whileSending ? connection.ReadThrough("\r\n\r\n") : connection.ReadRequest();
        const Owned<HTTPRequest> cancelled(request.exchange(nullptr));
        cancelled->Cancel();
        while (connection.Pause(1'000)) {
        }
      });
      const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
      const Exchanged seen = ExchangeBy(way, address, kIppPort, whileSending ? kLarge : kSmall,
                                        [&request](HTTPRequest* made) {
                                          made->AddRef();
                                          request = made;
                                        });
      EXPECT_EQ(seen.error, kErrorCancelled) << testing::PrintToString(seen.failure);
      const auto cancel = [](HTTPRequest* made) { made->Cancel(); };
      EXPECT_EQ(ExchangeBy(way, address, kIppPort, kSmall, cancel).error, kErrorCancelled);
    }
  }
}

}  // namespace
}  // namespace Corvane::Test
