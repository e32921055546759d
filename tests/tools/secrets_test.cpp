// SNMP's options, and secrets, which stand in files and variables only (Linux).
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <tuple>

#include "base/utf8.h"
#include "tests/tools/tool_test.h"
#include "tools/options/secret_file.h"
#include "tools/options/snmp_arguments.h"
#include "tools/output/console.h"
#include "tools/output/failure.h"

namespace Corvane::Test {
namespace {

using std::filesystem::perms;

class SecretsTest : public ToolTest {
 protected:
  std::string Write(const Case& c) const {
    const auto file = m_folder.Write("secrets", c.Text("file"));
    const auto bits = c.Find("permissions") ? std::stoi(c.Text("permissions"), nullptr, 8) : 0600;
    std::filesystem::permissions(file, static_cast<perms>(bits));
    return Utf8(file);
  }
};

TEST_F(SecretsTest, BadFilesAreRefusedByLineAndNotShown) {
  for (const Case& c : ReadCases("tools/secret_files.txt")) {
    try {
      Tool::ReadSecretFile("--secrets", Write(c), {"community", "password"});
      ADD_FAILURE() << c.Where();
    } catch (const Tool::Failure& failure) {
      EXPECT_EQ(failure.Status(), Tool::kBadUsage);
      EXPECT_TRUE(Matches(failure.what(), c.Text("complaint"))) << c.Where() << failure.what();
    }
  }
}

// Version, community, user, context, authentication, privacy and milliseconds; enumerators are
// numbers.
std::string TextOf(const Host::SnmpOptions& o) {
  std::ostringstream text;
  text << static_cast<int>(o.version) << '|' << ToUtf8(o.community) << '|' << ToUtf8(o.user) << '|'
       << ToUtf8(o.contextName) << '|' << static_cast<int>(o.auth) << ' '
       << ToUtf8(o.authPassphrase) << '|' << static_cast<int>(o.privacy) << ' '
       << ToUtf8(o.privacyPassphrase) << '|' << o.timeoutMs;
  return text.str();
}

TEST_F(SecretsTest, MakeTheOptionsOfSnmp) {
  for (const Case& c : ReadCases("tools/snmp_options.txt")) {
    SCOPED_TRACE(c.Where());
    for (const char* const secret : {"COMMUNITY", "AUTH_PASSPHRASE", "PRIV_PASSPHRASE"}) {
      setenv((std::string("CORVANE_SNMP_") + secret).c_str(), c.Text(secret).c_str(), 1);
    }
    const std::string file = c.Find("file") ? Write(c) : "";
    std::optional<std::uint32_t> timeoutMs;
    if (c.Find("timeout")) timeoutMs = static_cast<std::uint32_t>(c.Number("timeout"));
    try {
      EXPECT_EQ(TextOf(Tool::SnmpOptionsOf({c.Text("version"), c.Text("user"), c.Text("auth"),
                                            c.Text("privacy"), c.Text("context"), file},
                                           timeoutMs)),
                c.Text("options"));
    } catch (const Tool::Failure& failure) {
      EXPECT_EQ(failure.Status(), Tool::kBadUsage);
      ASSERT_TRUE(c.Find("complaint")) << failure.what();
      EXPECT_TRUE(Matches(failure.what(), c.Text("complaint"))) << failure.what();
    }
  }
  for (const char* const secret : {"COMMUNITY", "AUTH_PASSPHRASE", "PRIV_PASSPHRASE"}) {
    unsetenv((std::string("CORVANE_SNMP_") + secret).c_str());
  }
}

// Jobs of a service or a container, whose environment names nobody, are the account's.
TEST(LoginName, ComesFromTheEnvironmentElseFromTheAccounts) {
  const std::string before = std::getenv("USER") ? std::getenv("USER") : "";
  const passwd* const account = getpwuid(geteuid());
  ASSERT_NE(nullptr, account);
  for (const auto& [user, logname, name] :
       {std::tuple{"ana", "ben", "ana"}, {"", "ben", "ben"}, {"", "", account->pw_name}}) {
    setenv("USER", user, 1);
    setenv("LOGNAME", logname, 1);
    EXPECT_EQ(Tool::LoginName(), name);
  }
  setenv("USER", before.c_str(), 1);
  unsetenv("LOGNAME");
}

}  // namespace
}  // namespace Corvane::Test
