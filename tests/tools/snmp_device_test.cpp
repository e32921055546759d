// The tool against a real SNMP agent (Linux).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "tests/support/peers/snmpd.h"
#include "tests/support/test_store.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

// A secret that may show nowhere.
constexpr char kCanary[] = "canary-5Xq9!secret";

class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::string& value) : m_name(name) {
    setenv(name, value.c_str(), 1);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { unsetenv(m_name); }

 private:
  const char* const m_name;
};

constexpr char kPrinter[] =
    "override 1.3.6.1.2.1.25.3.2.1.3.1 octet_str \"Quillmere 420dn\"\n"
    "override 1.3.6.1.2.1.1.5.0 octet_str lobby\n"
    "override 1.3.6.1.2.1.1.6.0 octet_str \"Floor 2\"\n"
    "override 1.3.6.1.2.1.43.5.1.1.17.1 octet_str QM42\n"
    "override 1.3.6.1.2.1.43.10.2.1.4.1.1 counter 20418\n"
    "override 1.3.6.1.2.1.25.3.5.1.1.1 integer 3\n"
    "override 1.3.6.1.2.1.43.11.1.1.6.1.1 octet_str Black\n"
    "override 1.3.6.1.2.1.43.11.1.1.6.1.2 octet_str Cyan\n"
    "override 1.3.6.1.2.1.43.11.1.1.9.1.1 integer 64\n"
    "override 1.3.6.1.2.1.43.11.1.1.9.1.2 integer -3\n"
    "override 1.3.6.1.4.1.11.2.3.9.4.2.1.1.3.3.0 octet_str QM42-0071934\n";

class SnmpDevice : public testing::Test {
 protected:
  void Start(const std::string& access) {
    ASSERT_TRUE(m_agent.Start(access + kPrinter)) << m_agent.Failure();
  }

  ProcessResult Run(const std::string& command, const std::vector<std::string>& more,
                    const std::string& specification = CORVANE_EXAMPLES "/snmp-printer.xml") {
    std::vector<std::string> arguments = {command,
                                          "--device",
                                          "127.0.0.1",
                                          "--spec",
                                          specification,
                                          "--port",
                                          "161=" + std::to_string(std::max<int>(m_agent.Port(), 1)),
                                          "--timeout",
                                          "3"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunTool(arguments);
  }

  std::string Secrets(const std::string& content,
                      std::filesystem::perms permissions = std::filesystem::perms::owner_all,
                      const std::string& name = "secrets") {
    const auto file = m_folder.Write(name, content);
    std::filesystem::permissions(file, permissions);
    return Utf8(file);
  }

  Snmpd m_agent;
  const TempFolder m_folder;
};

TEST_F(SnmpDevice, IsDumpedWithEveryStepOfItsWalks) {
  Start("rocommunity public\n");
  const ProcessResult text = Run("dump", {});
  EXPECT_EQ(
      text.output,
      "HostName\tlobby\nsupply:Level.001\t64\nsupply:Level.002\tSome left\nLocation\tFloor 2\n"
      "Model\tQuillmere 420dn\nsupply:Name.001\tBlack\nsupply:Name.002\tCyan\n"
      "PageCount\t20418\nSerialNumber\tQM42\nSource\tSNMP\nStatus\tReady\n");
  EXPECT_EQ(text.error, "");  // the display's table is empty
  EXPECT_EQ(text.exitStatus, 0);
}

TEST_F(SnmpDevice, SaysWhyAnItemHasNoValue) {
  Start("rocommunity public\n");
  const auto specification =
      m_folder.Write("specification.xml",
                     "<DataMaps><OIDDataMap><DataItem Name='NoOid'/><DataItem Name='Gone' "
                     "OID='1.3.6.1.4.1.9.1.0'/>"
                     "<DataItem Name='Bad' OID='1.x'/><NextDataItem Name='W' UntilEnd='true' "
                     "OID='1.3.6.1.2.1.43.11.1.1.6.1'/></OIDDataMap></DataMaps>");
  const std::pair<const char*, const char*> kCases[] = {
      {"NoOid", "its item has no OID"},
      {"Nothing", "the data map has no such item"},
      {"NoOid.001", "its item has no OID"},
      {"W.003", "(0x00000001): its walk has no such step"},
      {"W.1", "a step of a walk is 001 to 999"},
      {"Gone", "1.3.6.1.4.1.9.1.0"},
      {"Bad", "1.x"},
  };
  for (const auto& [name, why] : kCases) {
    const ProcessResult result = Run("get", {name, "W.002"}, Utf8(specification));
    EXPECT_EQ(result.output, "W.002\tCyan\n") << name;
    EXPECT_EQ(result.exitStatus, 1) << name;
    EXPECT_EQ(LinesOf(result.error).size(), 1u) << result.error;
    EXPECT_TRUE(Contains(result.error, why)) << result.error;
  }
}

TEST_F(SnmpDevice, CachedValuesNeedNoAgentBeyondItsProbe) {
  Start("rocommunity public\n");
  const TestStore store;
  const std::vector<std::string> arguments = {"HostName", "--trace", "--cache",
                                              "registry:SOFTWARE\\T"};
  for (const bool isCached : {false, true}) {
    const ProcessResult result = Run("get", arguments);
    EXPECT_EQ(result.output, "HostName\tlobby\n");
    EXPECT_NE(Contains(result.error, "::GetMultipleValues"), isCached) << result.error;
  }
  const ProcessResult shown = RunTool({"cache", "show", "--cache", "registry:SOFTWARE\\T"});
  EXPECT_TRUE(shown.output.starts_with("QM42-0071934, OID:\n  HostName\tlobby\t")) << shown.output;
}

TEST_F(SnmpDevice, TakesSecretsFromEnvironmentAndFileAndShowsThemNowhere) {
  const std::string canary = kCanary;
  Start("rocommunity " + canary + "\ncreateUser reader SHA-256 " + canary + "A AES " + canary +
        "P\nrouser reader priv\n");
  const std::string file =
      Secrets("# mine\r\n community =  " + canary + " \r\n\nauth-passphrase=" + canary +
              "A\npriv-passphrase = " + canary + "P");
  const std::string wrong =
      Secrets("auth-passphrase = " + canary + "x\npriv-passphrase = " + canary + "y",
              std::filesystem::perms::owner_read, "wrong");
  const std::vector<std::string> kVersion3 = {"--snmp-version", "3",           "--snmp-user",
                                              "reader",         "--snmp-auth", "sha256"};
  const auto plus = [](std::vector<std::string> a, const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
  };
  struct Case {
    const char* name;
    std::pair<const char*, std::string> variable;
    std::vector<std::string> arguments;
    int exitStatus;
  };
  const std::vector<Case> cases = {
      {"no secret", {"CORVANE_X", ""}, {}, 3},
      {"community, environment", {"CORVANE_SNMP_COMMUNITY", canary}, {}, 0},
      {"community, version 1", {"CORVANE_SNMP_COMMUNITY", canary}, {"--snmp-version", "1"}, 0},
      {"community, file wins", {"CORVANE_SNMP_COMMUNITY", "x"}, {"--snmp-secrets", file}, 0},
      {"wrong community", {"CORVANE_SNMP_COMMUNITY", canary + "z"}, {}, 3},
      {"version 3", {"CORVANE_X", ""}, plus(kVersion3, {"--snmp-secrets", file}), 0},
      {"version 3, no passphrase", {"CORVANE_X", ""}, kVersion3, 2},
      {"version 3, no privacy", {"CORVANE_SNMP_AUTH_PASSPHRASE", canary + "A"}, kVersion3, 3},
      {"version 3, short", {"CORVANE_SNMP_AUTH_PASSPHRASE", canary.substr(0, 7)}, kVersion3, 2},
      {"wrong passphrases", {"CORVANE_X", ""}, plus(kVersion3, {"--snmp-secrets", wrong}), 3},
  };
  for (const Case& c : cases) {
    const ScopedVariable variable(c.variable.first, c.variable.second);
    const ProcessResult result = Run("get", plus(c.arguments, {"Model", "--trace"}));
    EXPECT_EQ(result.exitStatus, c.exitStatus) << c.name << result.error;
    EXPECT_EQ(result.output, c.exitStatus == 0 ? "Model\tQuillmere 420dn\n" : "") << c.name;
    for (const std::string& text : {result.output, result.error}) {
      EXPECT_FALSE(Contains(text, canary.substr(0, 7))) << c.name << text;
    }
  }
}

TEST_F(SnmpDevice, RefusesBadSecretsByLineWithoutShowingThem) {
  using std::filesystem::perms;
  const std::string canary = kCanary;
  struct Case {
    std::string content;
    perms permissions;
    const char* complaint;
  };
  const perms kPrivate = perms::owner_read | perms::owner_write;
  const Case kCases[] = {
      {"community = " + canary, kPrivate | perms::group_read, "run: chmod 600 "},
      {"community = " + canary, kPrivate | perms::others_write, "run: chmod 600 "},
      {canary, kPrivate, "secrets:1: expected community,"},
      {"\n# c\nComunity = " + canary, kPrivate, "secrets:3: expected community,"},
      {"community = x\ncommunity = " + canary, kPrivate, "secrets:2: a second community"},
      {"priv-passphrase =", kPrivate, "secrets:1: nothing behind the ="},
      {"community = \xff" + canary, kPrivate, "secrets:1: not UTF-8"},
      {std::string(70'000, '\n'), kPrivate, "longer than 64 KiB"},
  };
  for (const Case& c : kCases) {
    const ProcessResult result =
        Run("get", {"x", "--snmp-secrets", Secrets(c.content, c.permissions)});
    EXPECT_EQ(result.exitStatus, 2) << c.complaint;
    EXPECT_TRUE(Contains(result.error, c.complaint)) << result.error;
    EXPECT_FALSE(Contains(result.error, "canary")) << result.error;
  }
  EXPECT_TRUE(Contains(Run("get", {"x", "--snmp-secrets", "/no/where"}).error, "no such file"));
}

TEST_F(SnmpDevice, RefusesOptionsThatDoNotGoTogether) {
  const std::pair<std::vector<std::string>, const char*> kCases[] = {
      {{"--snmp-version", "4"}, "expected one of 1, 2c, 3"},
      {{"--snmp-user", "u"}, "--snmp-user is for --snmp-version 3"},
      {{"--snmp-version", "3"}, "needs a --snmp-user"},
      {{"--snmp-version", "3", "--snmp-user", std::string(33, 'u')}, "more than 32 bytes"},
      {{"--snmp-version", "3", "--snmp-user", "u", "--snmp-auth", "crc"}, "expected one of MD5"},
      {{"--snmp-version", "3", "--snmp-user", "u", "--snmp-priv", "AES"}, "no authentication pass"},
  };
  for (const auto& [arguments, complaint] : kCases) {
    std::vector<std::string> all = arguments;
    all.push_back("x");
    const ProcessResult result = Run("get", all);
    EXPECT_EQ(result.exitStatus, 2) << complaint;
    EXPECT_TRUE(Contains(result.error, complaint)) << result.error;
  }
}

}  // namespace
}  // namespace Corvane::Test
