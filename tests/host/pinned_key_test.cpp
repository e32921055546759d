// Trust on first use, against a real nginx whose key changes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "host/trust/pin_file.h"
#include "tests/host/exchange.h"
#include "tests/support/cases.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/nginx.h"

namespace Corvane::Test {
namespace {

const std::string kSomeKey = "sha256//" + std::string(43, 'A') + '=';
// Of the certificates, by the program openssl.
const std::string kStranger = "sha256//PVV0o3kXyJHZYEgr72n6GTel6H6KrO4fkxjjce/nArs=";
const std::string kDevice = "sha256//gqFTzUIELy6hjtOshqcXRiBmYF1qy3+XtmPDfEzY6Wc=";

// A device behind nginx, which reads its certificate anew for every handshake.
struct PinnedKey : testing::Test {
  void SetUp() override {
    Show("stranger");
    const std::string printer = std::to_string(m_printer.Port());
    ASSERT_TRUE(
        m_nginx.Start("server { listen @PORT0@ ssl; ssl_certificate now$ssl_server_name;"
                      " ssl_certificate_key now$ssl_server_name;"
                      " location / { proxy_pass http://127.0.0.1:" +
                          printer + "; } }",
                      1))
        << m_nginx.Failure();
    m_options = LoopbackOptions(m_nginx.Port(0));
    m_options.portMap[kIppsPort] = m_nginx.Port(0);
    m_options.pinFile = (m_folder.Path() / "pins").string();
    m_name = "127.0.0.1:" + std::to_string(m_nginx.Port(0));
  }
  void Show(const std::string& certificate) const {
    m_folder.Write("now", ReadData("host/" + certificate + ".pem"));
  }
  // What is told of an exchange that sends the device nothing.
  std::string Refusal(const std::string& way, const Owned<Address>& address) {
    const std::size_t before = m_printer.Requests().size();
    const Exchanged seen = ExchangeBy(way, address, kIppsPort, "document");
    EXPECT_HR(seen.result, ResultFromError(kErrorSecureFailure));
    EXPECT_EQ(seen.error, kErrorSecureFailure);
    EXPECT_EQ(seen.status, 0U);
    EXPECT_EQ(m_printer.Requests().size(), before);
    return ToUtf8(seen.failure);
  }

  LoopbackServer m_printer{
      LoopbackServer::AnswerEach("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok")};
  Nginx m_nginx;
  const TempFolder& m_folder = m_nginx.Folder();
  Host::NetworkOptions m_options;
  std::string m_name;
};

TEST_F(PinnedKey, TheFirstIsTrustedAndNoOther) {
  for (const std::string way : kWays) {
    SCOPED_TRACE(way);
    Show("stranger");
    m_folder.Write("pins", "# office");  // and no line end
    const std::string pinned = "# office\n" + m_name + ' ' + kStranger + '\n';
    for (const char* const use : {"first use", "second use"}) {
      EXPECT_EQ(Told(ExchangeBy(way, NetworkDevice(m_options), kIppsPort, "document")), "200 ok")
          << use;
      EXPECT_EQ(m_folder.Read("pins"), pinned) << use;
    }
    Show("device");
    Host::NetworkOptions vouched = m_options;
    vouched.caFile = m_folder.Write("ca.pem", ReadData("host/device.pem")).string();
    const std::string told = Refusal(way, NetworkDevice(vouched));
    EXPECT_TRUE(told.ends_with(
        ": the key of " + m_name + " has changed from " + kStranger + " to " + kDevice +
        "; where the device is known to have a new one, remove line 2 of " + m_options.pinFile))
        << told;
    EXPECT_EQ(m_folder.Read("pins"), pinned);
  }
}

TEST_F(PinnedKey, AnOpenConnectionIsHeldToTheFileToo) {
  const Owned<Address> address = NetworkDevice(m_options);
  EXPECT_EQ(Told(ExchangeBy("plain", address, kIppsPort, "document")), "200 ok");
  m_folder.Write("pins", m_name + ' ' + kDevice + '\n');
  Refusal("plain", address);
  m_options.pinFile = (m_folder.Path() / "absent/pins").string();
  const std::string told = Refusal("plain", NetworkDevice(m_options));
  EXPECT_TRUE(told.ends_with("cannot be written: No such file or directory")) << told;
}

TEST(PinFile, SaysWhatItIsSureOf) {
  const TempFolder folder;
  const Host::PinFile file((folder.Path() / "pins").string());
  const std::string other = "sha256//" + std::string(43, 'B') + '=';
  for (const Case& c : ReadCases("host/pin_files.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    const std::string content = c.Text("file");
    folder.Write("pins", content);
    const Host::PinLookup found = file.Find("a:1", 0, false);
    EXPECT_EQ(found.pin ? found.pin->key : "", c.Text("key"));
    EXPECT_EQ(found.error, c.Text("fault").empty() ? 0 : kErrorSecureFailure);
    EXPECT_NE(found.remark.find(c.Wide("fault")), std::wstring::npos);
    // A new key is written below what is sound, and nothing else is.
    const Host::PinLookup recorded = file.Record("a:1", other, 0, false);
    EXPECT_EQ(recorded.error, found.error);
    const bool isNew = found.error == 0 && !found.pin;
    const std::string end = content.empty() || content.ends_with('\n') ? "" : "\n";
    EXPECT_EQ(folder.Read("pins"), isNew ? content + end + "a:1 " + other + '\n' : content);
  }
}

TEST(PinFile, IsOneOfASensibleSize) {
  const TempFolder folder;
  constexpr std::size_t kMost = std::size_t{1} << 20;
  const std::string line = "a:1 " + kSomeKey + '\n';
  const Host::PinFile file((folder.Path() / "pins").string());
  const auto refused = [](const Host::PinLookup& lookup, const wchar_t* why) {
    EXPECT_EQ(lookup.error, kErrorSecureFailure);
    EXPECT_NE(lookup.remark.find(why), std::wstring::npos) << testing::PrintToString(lookup.remark);
  };
  folder.Write("pins", std::string(kMost - line.size(), '\n'));
  EXPECT_TRUE(file.Record("a:1", kSomeKey, 0, false).pin);
  folder.Write("pins", std::string(kMost - line.size() + 1, '\n'));
  refused(file.Record("a:1", kSomeKey, 0, false), L"has no room for another key");
  folder.Write("pins", std::string(kMost + 1, '\n'));
  refused(file.Find("a:1", 0, false), L"is larger than 1048576 bytes");
  refused(Host::PinFile(folder.Path().string()).Find("a:1", 0, false), L"is no file");
  EXPECT_EQ(Host::PinFile((folder.Path() / "absent").string()).Find("a:1", 0, false).error, 0U);
}

TEST(PinFile, WaitsForItsLockNoLongerThanTold) {
  const TempFolder folder;
  const Host::PinFile file((folder.Path() / "pins").string());
  const int lock = open((folder.Path() / "pins").c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  for (const bool cancels : {false, true}) {
    const std::atomic<bool> cancelled{cancels};
    const std::int64_t waitMs = cancels ? 60'000 : 50;
    for (const auto& lookup :
         {file.Find("a:1", waitMs, cancelled), file.Record("a:1", kSomeKey, waitMs, cancelled)}) {
      EXPECT_EQ(lookup.error, cancels ? kErrorCancelled : kErrorTimeout);
      EXPECT_FALSE(lookup.pin);
    }
  }
  close(lock);
  EXPECT_TRUE(file.Record("a:1", kSomeKey, 0, false).pin);
}

// A lock is of each opening of the file: threads find each other as processes do.
TEST(PinFile, AllAgreeOnOneKeyAndLoseNone) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 10;
  const TempFolder folder;
  folder.Write("pins", "");
  std::filesystem::create_symlink("pins", folder.Path() / "link");
  const Host::PinFile file((folder.Path() / "link").string());
  std::vector<std::string> winners(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&file, i, &winner = winners[static_cast<std::size_t>(i)]] {
      std::string key = kSomeKey;
      key[10] = static_cast<char>('0' + i);
      for (int round = 0; round < kRounds; ++round) {
        const std::string own = "own:" + std::to_string(i * kRounds + round);
        const auto mine = file.Record(own, key, 20'000, false);
        const auto common = file.Record("common:1", key, 20'000, false);
        ASSERT_TRUE(mine.pin && common.pin);
        EXPECT_EQ(mine.pin->key, key);
        winner = common.pin->key;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const auto common = file.Find("common:1", 0, false);
  ASSERT_TRUE(common.pin);
  EXPECT_EQ(winners, std::vector<std::string>(kThreads, common.pin->key));
  const std::string text = folder.Read("pins");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), kThreads * kRounds + 1);
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path() / "link"));
}

}  // namespace
}  // namespace Corvane::Test
