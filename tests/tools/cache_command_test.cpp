// Caches on the command line: values that outlive a run, "cache show", "cache clear".
#include <chrono>
#include <thread>

#include "base/utf8.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_store.h"
#include "tests/tools/tool_test.h"

namespace Corvane::Test {
namespace {

class CacheCommandTest : public ToolTest {
 protected:
  CacheCommandTest() { m_names["cache"] = "registry:" + ToUtf8(m_key.Path()); }

  // The records of a file: values of keys "below" the cache's, a "text" or "bytes" of a "type".
  void Fill(const std::string& file) const {
    for (const Case& c : ReadCases("tools/" + file)) {
      const std::wstring name = c.Wide("name");
      const std::string bytes = c.Text("bytes");
      const RegistryKey::Value value{static_cast<DWORD>(c.Number("type")),
                                     {bytes.begin(), bytes.end()}};
      m_key.Set(c.Wide("below"), name, c.Find("text") ? RegistryKey::Text(c.Wide("text")) : value);
      const auto expires = c.Find("expires");
      if (expires)
        m_key.Set(c.Wide("below"), name + L".Expires", RegistryKey::Text(ToWide(*expires)));
    }
  }
  bool HasKey(const std::wstring& path) const {
    UniqueHkey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.Receive()) ==
           ERROR_SUCCESS;
  }
  // A device whose three values are `value` from now on.
  void ServeValues(const std::string& value) const {
    std::string values;
    for (const std::string name : {"Kept", "Brief", "Long"}) {
      values.append("<" + name + ">").append(value).append("</" + name + ">");
    }
    Serve("80/zq/device/product_information.xml",
          "<P><ProductSerialNumber>1</ProductSerialNumber></P>");
    Serve("80/values.xml", "<V>" + values + "</V>");
  }

  const TestStore m_store;
  const RegistryKey m_key;
};

TEST_F(CacheCommandTest, FreshValuesOutliveTheRun) {
  const std::string get = "get --device @device@ --cache @cache@ --spec @data@/";
  ServeValues("1");
  Expect(get + "lifespans.xml Kept Brief Long", "Kept\t1\nBrief\t1\nLong\t1\n");
  ServeValues("2");
  std::this_thread::sleep_for(std::chrono::milliseconds(110));
  Expect("cache show --cache @cache@ --spec @data@/lifespans.xml",
         "1, PLSXML:\n  Brief\t1\t* s old\tstale\n  Kept\t1\tnever goes stale\n"
         "  Long\t1\t* s old\tfresh\n");
  Expect(get + "lifespans.xml Kept Brief Long", "Kept\t1\nBrief\t2\nLong\t1\n");
  // How long a value is fresh is up to today's specification.
  Expect(get + "brief_lifespans.xml Long", "Long\t2\n");
}

TEST_F(CacheCommandTest, ShowsWhatTheLibraryWouldMakeOfAStore) {
  Fill("cache_shown.txt");
  Expect("cache show --cache @cache@", ReadData("tools/cache_shown.out"));
  Expect("cache show --json --cache @cache@ --spec @data@/cache_shown.xml",
         ReadData("tools/cache_shown.json"));
}

TEST_F(CacheCommandTest, ClearingTakesOnlyWhatIsACaches) {
  Fill("cache_cleared.txt");
  const std::string left = ReadData("tools/cache_left.out");
  Expect("cache clear --cache @cache@", "Removed 11 values and 8 keys.\n" + left);
  EXPECT_EQ(m_key.Values(L"SN1\\QUARN").size(), 5u);
  EXPECT_EQ(m_key.Values(L"SN1\\Vendor").size(), 2u);
  for (const wchar_t* const gone : {L"SN2", L"IPP", L"SN1\\QUARN\\WS"}) {
    EXPECT_FALSE(HasKey(m_key.Path(gone)));
  }
  Expect("cache clear --cache @cache@", "Removed 0 values and 0 keys.\n" + left);
}

TEST_F(CacheCommandTest, ACacheThatIsAllItsOwnIsGoneWhenCleared) {
  Expect("cache show --cache @cache@", "The cache is empty.\n");
  m_key.Set(L"SN1\\QUARN", L"K", RegistryKey::Text(L"v"));
  m_key.Set(L"SN1\\QUARN", L"K.Expires", RegistryKey::Text(L"0"));
  Expect("cache clear --cache @cache@", "Removed 2 values and 3 keys.\n");
  EXPECT_FALSE(HasKey(m_key.Path()));
  EXPECT_TRUE(HasKey(L"Software"));
}

}  // namespace
}  // namespace Corvane::Test
