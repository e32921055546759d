#include "tools/ipp/printer_address.h"

#include <cstdlib>

#include "base/utf8.h"
#include "tools/ipp/ipp_exchange.h"
#include "tools/options/device.h"
#include "tools/options/secret_file.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {

Options ReachPrinter(const Options& options, const PrinterUri& uri) {
  if (IsRecorded(options)) ThrowUsage("a recorded device has no printer");
  Options reached = options;
  if (reached.device.empty()) reached.device = uri.host;
  NetworkArguments& network = reached.network;
  network.maxResponseBytes = kMaxIPPAnswerBytes;
  // A mapping of the command line wins.
  if (uri.port) network.portMap.emplace(uri.servicePort, *uri.port);
  network.trustFile = options.trustFile;
  if (options.account.empty()) {
    if (!options.secretsFile.empty()) ThrowUsage("--secrets is for --account");
    return reached;
  }
  const bool isTls = uri.IsSecure() || network.tlsPorts.contains(uri.servicePort);
  if (!isTls) ThrowUsage("--account: a password goes out with ipps:// only");
  network.account = options.account;
  network.password = AccountPassword(options.secretsFile);
  return reached;
}

std::string AccountPassword(const std::string& secretsFile) {
  constexpr std::string_view kWord = "password";
  if (!secretsFile.empty()) {
    const auto secrets = ReadSecretFile("--secrets", secretsFile, {kWord});
    if (const auto entry = secrets.find(kWord); entry != secrets.end()) {
      return ToUtf8(entry->second);
    }
  }
  const char* const text = std::getenv("CORVANE_PASSWORD");
  if (!text || !*text) {
    ThrowUsage("--account: set CORVANE_PASSWORD, or write password into the file of --secrets");
  }
  return text;
}

}  // namespace Corvane::Tool
