// Trust on first use, against a real nginx whose key changes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "corvane/error_codes.h"

#include "base/letter_case.h"
#include "base/utf8.h"
#include "host/trust/pin_file.h"
#include "tests/host/streaming.h"
#include "tests/support/hr.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/nginx.h"

namespace Corvane::Test {
namespace {

const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";
const std::string kSomeKey = "sha256//" + std::string(43, 'A') + '=';

std::string Content(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// A device behind nginx; nginx reads its certificate anew for every handshake.
class PinnedKey : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(m_nginx.MakeCertificate("first", "DNS:elsewhere.test") &&
                m_nginx.MakeCertificate("second", "IP:127.0.0.1"))
        << "openssl";
    Show("first");
    ASSERT_TRUE(
        m_nginx.Start("server {\n listen @PORT0@ ssl;\n"
                      " ssl_certificate now$ssl_server_name.pem;\n"
                      " ssl_certificate_key now$ssl_server_name.key;\n"
                      " location / { proxy_pass http://127.0.0.1:" +
                          std::to_string(m_device.Port()) + "; }\n}\n",
                      1))
        << m_nginx.Failure();
    m_seen = m_device.Requests().size();  // of nginx being waited for
    m_options = PrinterOptions(m_nginx.Port(0));
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
    const std::string command =
        "cd '" + m_nginx.Folder().Path().string() + "' && openssl x509 -pubkey -noout -in " +
        certificate +
        ".pem | openssl pkey -pubin -outform der | openssl dgst -sha256 -binary | "
        "openssl base64 -A > key";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return "sha256//" + Content(m_nginx.Folder().Path() / "key");
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
  for (const auto& [name, exchange] : kWays) {
    SCOPED_TRACE(name);
    Show("first");
    m_nginx.Folder().Write("pins", "# office");  // and no line end
    const std::string pinned = "# office\n" + m_name + ' ' + first + '\n';
    for (const char* const use : {"first use", "second use"}) {
      const Exchanged seen = exchange(NetworkDevice(m_options), 443, "document", 0);
      EXPECT_EQ(seen.body, "ok") << use << testing::PrintToString(seen.failure);
      EXPECT_EQ(Content(m_pins), pinned) << use;
    }

    Show("second");
    m_options.caFile = (m_nginx.Folder().Path() / "second.pem").string();  // would vouch for it
    m_seen = m_device.Requests().size();
    const Exchanged seen = exchange(NetworkDevice(m_options), 443, "document", 0);
    ExpectRefused(seen);
    EXPECT_TRUE(seen.failure.ends_with(
        ToWideStrictly("the key of " + m_name + " has changed from " + first + " to " + second +
                       "; where the device is known to have a new one, remove line 2 of " +
                       m_pins.string())
            .value()))
        << testing::PrintToString(seen.failure);
    EXPECT_EQ(Content(m_pins), pinned);
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

TEST_F(PinnedKey, AFileThatSaysNothingSureRefuses) {
  const std::string line = m_name + ' ' + kSomeKey + '\n';
  const std::filesystem::path folder = m_nginx.Folder().Path();
  std::filesystem::create_directories(folder / "folder");
  const struct {
    const char *name, *file;
    std::string content;
    const wchar_t* remark;
  } kCases[] = {
      {"no key", "pins", m_name + '\n', L"line 1 is not"},
      {"another hash", "pins", m_name + " sha1//" + std::string(27, 'A') + "=\n", L"line 1 is not"},
      {"half a key", "pins", "\n" + line.substr(0, line.size() - 9), L"line 2 is not"},
      {"two spaces", "pins", m_name + "  " + kSomeKey + '\n', L"line 1 is not"},
      {"no port", "pins", "127.0.0.1 " + kSomeKey + '\n', L"line 1 is not"},
      {"NUL bytes", "pins", std::string(100, '\0'), L"line 1 is not"},
      {"one name twice", "pins", line + line, L"lines 1 and 2 have one name"},
      {"too large", "pins", std::string((1 << 20) + 1, '\n'), L"is larger than 1048576 bytes"},
      {"full", "pins", std::string(1 << 20, '\n'), L"has no room for another key"},
      {"a folder", "folder", "", L"is no file"},
      {"in no folder", "absent/pins", "", L"cannot be written: No such file or directory"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    m_options.pinFile = (folder / row.file).string();
    if (!row.content.empty()) m_nginx.Folder().Write(row.file, row.content);
    for (const auto& [name, exchange] : kWays) {
      SCOPED_TRACE(name);
      const Exchanged seen = exchange(NetworkDevice(m_options), 443, "document", 0);
      ExpectRefused(seen);
      EXPECT_NE(seen.failure.find(row.remark), std::wstring::npos)
          << testing::PrintToString(seen.failure);
    }
    if (!row.content.empty()) {
      EXPECT_TRUE(Content(folder / row.file) == row.content);
    }
  }
}

TEST_F(PinnedKey, ManyFirstUsesAtOnceMakeOneLine) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([this, i] {
      const Exchanged seen = kWays[i % 3].exchange(NetworkDevice(m_options), 443, "document", 0);
      EXPECT_EQ(seen.body, "ok") << testing::PrintToString(seen.failure);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Content(m_pins), m_name + ' ' + KeyOf("first") + '\n');
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

TEST(PinFile, ProcessesAgreeOnOneKeyAndLoseNone) {
  constexpr int kProcesses = 4;
  constexpr int kRounds = 10;
  const TempFolder folder;
  folder.Write("pins", "");
  std::filesystem::create_symlink("pins", folder.Path() / "link");
  const Host::PinFile file((folder.Path() / "link").string());
  const std::atomic<bool> cancelled{false};
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) {
    children.push_back(fork());
    if (children.back() != 0) continue;
    std::string key = kSomeKey;
    key[10] = static_cast<char>('0' + i);
    int winner = 0;
    for (int round = 0; round < kRounds; ++round) {
      const std::string own = "own:" + std::to_string(i * kRounds + round);
      const auto mine = file.Record(own, key, 20'000, cancelled);
      const auto common = file.Record("common:1", key, 20'000, cancelled);
      if (!mine.pin || mine.pin->key != key || !common.pin) _exit(99);
      winner = common.pin->key[10];
    }
    _exit(winner);
  }
  const auto common = [&] { return file.Find("common:1", 20'000, cancelled); };
  std::vector<int> winners;
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    winners.push_back(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  }
  ASSERT_TRUE(common().pin);
  EXPECT_EQ(winners, std::vector<int>(kProcesses, common().pin->key[10]));
  const std::string text = Content(folder.Path() / "pins");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), kProcesses * kRounds + 1);
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path() / "link"));
}

}  // namespace
}  // namespace Corvane::Test
