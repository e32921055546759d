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
#include "tests/support/process.h"

namespace Corvane::Test {
namespace {

const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";
const std::string kSomeKey = "sha256//" + std::string(43, 'A') + '=';

// A device behind nginx; nginx reads its certificate anew for every handshake.
class PinnedKey : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(m_nginx.MakeCertificate("first", "DNS:elsewhere.test") &&
                m_nginx.MakeCertificate("second", "IP:127.0.0.1"))
        << "openssl";
    Show("first");
    const std::string server =
        "server { listen @PORT0@ ssl; ssl_certificate now$ssl_server_name.pem;"
        " ssl_certificate_key now$ssl_server_name.key; location / { proxy_pass http://127.0.0.1:" +
        std::to_string(m_device.Port()) + "; } }";
    ASSERT_TRUE(m_nginx.Start(server, 1)) << m_nginx.Failure();
    m_seen = m_device.Requests().size();  // of nginx being waited for
    m_options = LoopbackOptions(m_nginx.Port(0));
    m_options.portMap[kIppsPort] = m_nginx.Port(0);
    m_pins = m_nginx.Folder().Path() / "pins";
    m_options.pinFile = m_pins.string();
    m_name = "127.0.0.1:" + std::to_string(m_nginx.Port(0));
  }

  void Show(const std::string& certificate) const {
    for (const char* const kind : {".pem", ".key"}) {
      std::filesystem::copy_file(m_nginx.Folder().Path() / (certificate + kind),
                                 m_nginx.Folder().Path() / ("now" + std::string(kind)),
                                 std::filesystem::copy_options::overwrite_existing);
    }
  }
  // By the program openssl.
  std::string KeyOf(const std::string& certificate) const {
    const std::string file = (m_nginx.Folder().Path() / (certificate + ".pem")).string();
    const ProcessResult result =
        RunProcess({"sh", "-c",
                    "openssl x509 -pubkey -noout -in \"$0\" | openssl pkey -pubin -outform der | "
                    "openssl dgst -sha256 -binary | openssl base64 -A",
                    file});
    EXPECT_EQ(result.output.size(), 44U) << result.error;
    return "sha256//" + result.output;
  }
  std::size_t Requests() { return m_device.Requests().size() - m_seen; }

  void ExpectRefused(const Exchanged& seen) {
    EXPECT_HR(seen.result, ResultFromError(kErrorSecureFailure));
    EXPECT_EQ(seen.error, kErrorSecureFailure);
    EXPECT_EQ(seen.status, 0U);
    EXPECT_EQ(seen.failure.find(L"secret"), std::wstring::npos);
    EXPECT_EQ(Requests(), 0U);
  }

  LoopbackServer m_device{LoopbackServer::AnswerEach(kOk)};
  std::size_t m_seen = 0;
  Nginx m_nginx;
  Host::NetworkOptions m_options;
  std::filesystem::path m_pins;
  std::string m_name;
};

TEST_F(PinnedKey, TheFirstIsTrustedAndNoOther) {
  const std::string first = KeyOf("first");
  const std::string second = KeyOf("second");
  for (const std::string way : kWays) {
    SCOPED_TRACE(way);
    Show("first");
    m_nginx.Folder().Write("pins", "# office");  // and no line end
    const std::string pinned = "# office\n" + m_name + ' ' + first + '\n';
    for (const char* const use : {"first use", "second use"}) {
      const Exchanged seen = ExchangeBy(way, NetworkDevice(m_options), 443, "document");
      EXPECT_EQ(seen.body, "ok") << use << testing::PrintToString(seen.failure);
      EXPECT_EQ(m_nginx.Folder().Read("pins"), pinned) << use;
    }

    Show("second");
    m_options.caFile = (m_nginx.Folder().Path() / "second.pem").string();  // would vouch for it
    m_seen = m_device.Requests().size();
    const Exchanged seen = ExchangeBy(way, NetworkDevice(m_options), 443, "document");
    ExpectRefused(seen);
    EXPECT_TRUE(seen.failure.ends_with(
        ToWideStrictly("the key of " + m_name + " has changed from " + first + " to " + second +
                       "; where the device is known to have a new one, remove line 2 of " +
                       m_pins.string())
            .value()))
        << testing::PrintToString(seen.failure);
    EXPECT_EQ(m_nginx.Folder().Read("pins"), pinned);
    m_options.caFile.clear();
  }
}

TEST_F(PinnedKey, AnOpenConnectionIsHeldToTheFileToo) {
  const Owned<Address> address = NetworkDevice(m_options);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(Exchange(address, L"/x", {}, 443).body, "ok");
  }
  m_nginx.Folder().Write("pins", m_name + ' ' + KeyOf("second") + '\n');
  m_seen = m_device.Requests().size();
  ExpectRefused(Exchange(address, L"/x", {}, 443));
}

TEST_F(PinnedKey, AFileThatCannotBeReliedOnRefuses) {
  m_options.pinFile = (m_nginx.Folder().Path() / "absent/pins").string();
  const Exchanged seen = Exchange(NetworkDevice(m_options), L"/x", {}, 443);
  ExpectRefused(seen);
  EXPECT_TRUE(seen.failure.ends_with(L"cannot be written: No such file or directory"))
      << testing::PrintToString(seen.failure);
}

TEST(PinFile, SaysWhatItIsSureOf) {
  const TempFolder folder;
  const Host::PinFile file((folder.Path() / "pins").string());
  const std::string other = "sha256//" + std::string(43, 'B') + '=';
  for (const Case& c : ReadCases("host/pin_files.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    std::string content = c.Text("file");
    for (std::size_t at; (at = content.find("KEY")) != content.npos;) {
      content.replace(at, 3, kSomeKey);
    }
    folder.Write("pins", content);
    const Host::PinLookup found = file.Find("a:1", 0, false);
    EXPECT_EQ(found.pin ? found.pin->key : "", c.Text("key").empty() ? "" : kSomeKey);
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
