// The file of known keys: what it says, what it refuses, and that all agree on it.
#include "host/trust/pin_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "corvane/error_codes.h"
#include "tests/support/cases.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

const std::string kKey = "sha256//" + std::string(43, 'B') + '=';

struct PinFile : testing::Test {
  const TempFolder m_folder;
  const std::string m_path = (m_folder.Path() / "pins").string();
  const Host::PinFile m_file{m_path};
};

TEST_F(PinFile, SaysWhatItIsSureOf) {
  for (const Case& c : ReadCases("host/pin_files.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    const std::string content = c.Text("file");
    m_folder.Write("pins", content);
    const Host::PinLookup found = m_file.Find("a:1", 0, false);
    EXPECT_EQ(found.pin ? found.pin->key : "", c.Text("key"));
    EXPECT_EQ(found.error, c.Text("fault").empty() ? 0 : kErrorSecureFailure);
    EXPECT_NE(found.remark.find(c.Wide("fault")), std::wstring::npos);
    // A new key is written below what is sound, and nothing else is.
    EXPECT_EQ(m_file.Record("a:1", kKey, 0, false).error, found.error);
    const bool isNew = found.error == 0 && !found.pin;
    const std::string end = content.empty() || content.ends_with('\n') ? "" : "\n";
    EXPECT_EQ(m_folder.Read("pins"), isNew ? content + end + "a:1 " + kKey + '\n' : content);
  }
}

TEST_F(PinFile, IsOneOfASensibleSize) {
  constexpr std::size_t kMost = std::size_t{1} << 20;
  const auto refused = [](const Host::PinLookup& lookup, const wchar_t* why) {
    EXPECT_EQ(lookup.error, kErrorSecureFailure);
    EXPECT_NE(lookup.remark.find(why), std::wstring::npos) << testing::PrintToString(lookup.remark);
  };
  EXPECT_EQ(m_file.Find("a:1", 0, false).error, 0U);  // there is none
  const std::size_t room = kMost - kKey.size() - 5;
  m_folder.Write("pins", std::string(room, '\n'));
  EXPECT_TRUE(m_file.Record("a:1", kKey, 0, false).pin);
  m_folder.Write("pins", std::string(room + 1, '\n'));
  refused(m_file.Record("a:1", kKey, 0, false), L"has no room for another key");
  m_folder.Write("pins", std::string(kMost + 1, '\n'));
  refused(m_file.Find("a:1", 0, false), L"is larger than 1048576 bytes");
  refused(Host::PinFile(m_folder.Path().string()).Find("a:1", 0, false), L"is no file");
}

TEST_F(PinFile, WaitsForItsLockNoLongerThanTold) {
  const int lock = open(m_path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  for (const bool cancels : {false, true}) {
    const std::int64_t waitMs = cancels ? 60'000 : 50;
    for (const auto& lookup :
         {m_file.Find("a:1", waitMs, cancels), m_file.Record("a:1", kKey, waitMs, cancels)}) {
      EXPECT_EQ(lookup.error, cancels ? kErrorCancelled : kErrorTimeout);
      EXPECT_FALSE(lookup.pin);
    }
  }
  close(lock);
  EXPECT_TRUE(m_file.Record("a:1", kKey, 0, false).pin);
}

// A lock is of each opening of the file: threads find each other as processes do.
TEST_F(PinFile, AllAgreeOnOneKeyAndLoseNone) {
  m_folder.Write("pins", "");
  std::filesystem::create_symlink("pins", m_folder.Path() / "link");
  const Host::PinFile file((m_folder.Path() / "link").string());
  const auto record = [&file](const std::string& name, const std::string& key) {
    const Host::PinLookup recorded = file.Record(name, key, 20'000, false);
    return recorded.pin ? recorded.pin->key : "";
  };
  std::vector<std::thread> threads;
  for (const char digit : {'0', '1', '2', '3'}) {
    threads.emplace_back([&record, digit] {
      std::string key = kKey;
      key[10] = digit;
      const std::string common = record("common:1", key);
      for (const char round : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'}) {
        EXPECT_EQ(record({'o', digit, ':', round}, key), key);
        EXPECT_EQ(record("common:1", key), common);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::string text = m_folder.Read("pins");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4 * 10 + 1);
  EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Path() / "link"));
}

}  // namespace
}  // namespace Corvane::Test
