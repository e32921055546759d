// Caches on the command line: values that outlive a run, "cache show", "cache clear".
#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>
#include <tuple>

#include "base/utf8.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_store.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

using Json = nlohmann::json;

class CacheCommandTest : public testing::Test {
 protected:
  std::string Cache() const { return "registry:" + ToUtf8(m_key.Path()); }

  ProcessResult RunCache(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "cache");
    arguments.insert(arguments.end(), {"--cache", Cache()});
    return RunTool(arguments);
  }

  // Values by name of the one section of the cache that there should be.
  std::map<std::string, Json> Shown(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"show", "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProcessResult result = RunCache(arguments);
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    std::map<std::string, Json> shown;
    const Json listing = Json::parse(result.output);
    for (const Json& section : listing["sections"]) {
      for (const Json& value : section["values"]) shown[value["key"]] = value;
    }
    return shown;
  }

  void SetPair(const std::wstring& below, const std::wstring& name, const std::wstring& value,
               const std::wstring& expires) const {
    ASSERT_EQ(m_key.Set(below, name, RegistryKey::Text(value)), ERROR_SUCCESS);
    ASSERT_EQ(m_key.Set(below, name + L".Expires", RegistryKey::Text(expires)), ERROR_SUCCESS);
  }

  const TestStore m_store;
  const RegistryKey m_key;
};

std::string ValuesOf(const std::string& value) {
  std::string values;
  for (const std::string name : {"Kept", "Brief", "Long"}) {
    values.append("<").append(name).append(">").append(value);
    values.append("</").append(name).append(">");
  }
  return values;
}

TEST_F(CacheCommandTest, FreshValuesOutliveTheRun) {
  const RecordedDevice device(
      Item("Kept") + Item("Brief", "LifeSpan='1'") + Item("Long", "LifeSpan='36000'"),
      ValuesOf("1"));
  const std::vector<std::string> names = {"Kept", "Brief", "Long", "--cache", Cache()};
  EXPECT_EQ(device.Run("get", names).output, "Kept\t1\nBrief\t1\nLong\t1\n");
  device.Serve("80/values.xml", "<V>" + ValuesOf("2") + "</V>");
  std::this_thread::sleep_for(std::chrono::milliseconds(110));
  const auto shown = Shown({"--spec", device.Specification()});
  EXPECT_EQ(shown.at("Kept")["neverGoesStale"], true);
  EXPECT_EQ(shown.at("Brief")["freshness"], "stale");
  EXPECT_EQ(shown.at("Long")["freshness"], "fresh");
  EXPECT_EQ(shown.at("Long")["lifespan"], 36000);
  EXPECT_GT(shown.at("Long")["age"], 0);
  const ProcessResult second = device.Run("get", names);
  EXPECT_EQ(second.output, "Kept\t1\nBrief\t2\nLong\t1\n");
  EXPECT_EQ(second.error, "");

  // How long a value is fresh is up to today's specification.
  device.Specify("<DataMaps><XMLDataMap Protocol='plsxml'>" + Item("Long", "LifeSpan='1'") +
                 "</XMLDataMap></DataMaps>");
  EXPECT_EQ(Shown({"--spec", device.Specification()}).at("Long")["freshness"], "stale");
  EXPECT_EQ(device.Run("get", {"Long", "--cache", Cache()}).output, "Long\t2\n");
}

TEST_F(CacheCommandTest, ShowsWhatTheLibraryWouldMakeOfAStore) {
  const std::wstring below = L"SN\\1\\PLSXML";
  const std::wstring year3000 = L"441481536000000000";
  SetPair(below, L"ns:Name", L"v", L"130000000000000000");
  SetPair(below, L"Never", L"a\tb\x1b[2J\u202e", L"0");
  SetPair(below, L"Future", L"", year3000);
  SetPair(below, L"Odd", L"v", L"12x");
  // "-" sorts before ".": two by two, neither of these is a pair.
  SetPair(below, L"toner", L"1", L"0");
  SetPair(below, L"toner-low", L"2", L"0");
  SetPair(below, L"x.Expires", L"value", L"0");
  m_key.Set(below, L"zAlone", RegistryKey::Number(static_cast<DWORD>(-1)));
  m_key.Set(below, L"zLost.Expires", RegistryKey::Text(L"5"));
  m_key.Set(below, L"zBinary", {REG_BINARY, {1, 2, 3}});
  m_key.Set(below, L"zBinary.Expires", RegistryKey::Text(L"5"));
  m_key.Set(below, L"zShort", {REG_SZ, {'n'}});
  m_key.Set(L"other\\key", L"Ignored", RegistryKey::Text(L"x"));
  const RecordedDevice device(
      Item("Future", "LifeSpan='36000'") + Item("Name", "Prefix='ns' LifeSpan='1'"), "");

  const auto shown = Shown({"--spec", device.Specification()});
  const std::tuple<const char*, const char*, Json, Json, bool> kExpected[] = {
      // key, kind, value, freshness, passed over
      {"ns:Name", "pair", "v", "stale", false},
      {"Never", "pair", "a\tb\x1b[2J\u202e", "fresh", false},
      {"Future", "pair", "", "stale", false},
      {"Odd", "pair", "v", "not in the specification", false},
      {"toner", "pair", "1", "fresh", true},
      {"toner-low", "pair", "2", "fresh", true},
      {"x.Expires", "pair", "value", "fresh", false},
      {"zAlone", "value alone", -1, nullptr, false},
      {"zLost", "companion alone", nullptr, nullptr, false},
      {"zBinary", "foreign", nullptr, nullptr, false},
      {"zBinary.Expires", "foreign", "5", nullptr, false},
      {"zShort", "value alone", "", nullptr, false},
  };
  EXPECT_EQ(shown.size(), std::size(kExpected));
  for (const auto& [key, kind, value, freshness, passedOver] : kExpected) {
    ASSERT_TRUE(shown.contains(key)) << key;
    const Json& entry = shown.at(key);
    EXPECT_EQ(entry["kind"], kind) << key;
    EXPECT_EQ(entry["value"], value) << key;
    EXPECT_EQ(entry.value("freshness", Json()), freshness) << key;
    EXPECT_EQ(entry.value("passedOver", false), passedOver) << key;
  }
  EXPECT_EQ(shown.at("Odd")["timestamp"], nullptr);
  EXPECT_LT(shown.at("Future")["age"], 0);

  const ProcessResult text = RunCache({"show"});
  EXPECT_TRUE(text.output.starts_with("SN\\\\1, PLSXML:\n  Future\t\t")) << text.output;
  EXPECT_TRUE(Contains(text.output, "  zAlone\t-1\ta value without its .Expires\n"));
  EXPECT_TRUE(Contains(text.output, "  Never\ta\\tb\\x1B[2J\\u{202E}\tnever goes stale\n"));
  EXPECT_TRUE(Contains(text.output, " in the future\n")) << text.output;
  for (const char32_t c : ControlsIn(text.output)) EXPECT_TRUE(c == U'\t' || c == U'\n');
}

// The tool once took a number of two bytes for none, where loading takes it for a value without a
// companion.
TEST_F(CacheCommandTest, ANumberOfAnySizeHidesItsNeighbour) {
  m_key.Set(L"SN1\\QUARN", L"A", {REG_DWORD, {1, 2}});
  SetPair(L"SN1\\QUARN", L"Size", L"A4", L"0");
  EXPECT_EQ(RunCache({"show"}).output,
            "SN1, QUARN:\n  A\t513\ta value without its .Expires\n"
            "  Size\tA4\tnever goes stale\tpassed over\n");
  EXPECT_EQ(RunCache({"clear"}).output,
            "Removed 2 values and 0 keys.\n"
            "Left: SN1, QUARN: A (a value without its .Expires)\n");
}

TEST_F(CacheCommandTest, ClearingTakesOnlyWhatIsACaches) {
  const std::wstring below = L"SN1\\QUARN";
  SetPair(below, L"K", L"v", L"0");
  m_key.Set(below, L"Lost.Expires", RegistryKey::Text(L"5"));
  SetPair(below, L"Token", L"v", L"tomorrow");
  m_key.Set(below, L"Alone", RegistryKey::Text(L"v"));
  m_key.Set(below, L"B", {REG_BINARY, {1}});
  m_key.Set(below, L"B.Expires", RegistryKey::Text(L"5"));
  SetPair(L"SN1\\QUARN\\WS", L"K", L"v", L"133000000000000000");
  SetPair(L"SN1\\Vendor", L"K", L"v", L"133000000000000000");
  SetPair(L"SN2\\oid", L"K", L"v", L"0");
  SetPair(L"IPP", L"K", L"v", L"0");  // of a device without a serial number
  SetPair(L"..\\" + m_key.Path().substr(m_key.Path().rfind(L'\\') + 1) + L"x\\SN1\\WS", L"K", L"v",
          L"0");  // ".." is a name

  const ProcessResult result = RunCache({"clear"});
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_TRUE(result.output.starts_with("Removed 11 values and ")) << result.output;
  EXPECT_TRUE(Contains(result.output, "Left: SN1, QUARN: Token (its .Expires holds no time)\n"));
  EXPECT_TRUE(Contains(result.output, "Left: 1 keys that are not of a cache's protocol\n"))
      << result.output;
  EXPECT_EQ(m_key.Values(below).size(), 5u);
  EXPECT_EQ(m_key.Values(L"SN1\\Vendor").size(), 2u);
  EXPECT_EQ(Shown().size(), 4u);
  for (const wchar_t* const gone : {L"SN2", L"IPP", L"SN1\\QUARN\\WS"}) {
    UniqueHkey key;
    EXPECT_EQ(
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_key.Path(gone).c_str(), 0, KEY_READ, key.Receive()),
        ERROR_FILE_NOT_FOUND)
        << ToUtf8(gone);
  }
  EXPECT_EQ(RunCache({"clear"}).output.substr(0, 29), "Removed 0 values and 0 keys.\n");
}

TEST_F(CacheCommandTest, ACacheThatIsAllItsOwnIsGoneWhenCleared) {
  EXPECT_EQ(RunCache({"show"}).output, "The cache is empty.\n");
  SetPair(L"SN1\\QUARN", L"K", L"v", L"0");
  EXPECT_EQ(RunCache({"clear"}).output, "Removed 2 values and 3 keys.\n");
  UniqueHkey key;
  EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_key.Path().c_str(), 0, KEY_READ, key.Receive()),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, KEY_READ, key.Receive()),
            ERROR_SUCCESS);
}

TEST_F(CacheCommandTest, ValuesOfNoDeviceAreShownAndLeft) {
  m_key.Set(L"", L"K", RegistryKey::Text(L"v"));
  m_key.Set(L"", L"K.Expires", RegistryKey::Text(L"0"));
  EXPECT_EQ(RunCache({"show"}).output, "the cache's own key:\n  K\tv\tnever goes stale\n");
  EXPECT_TRUE(Contains(RunCache({"clear"}).output, "Left: the cache's own key: 2 values"));
  EXPECT_EQ(m_key.Values(L"").size(), 2u);
}

}  // namespace
}  // namespace Corvane::Test
