// What the command line says.
#ifndef CORVANE_TOOLS_OPTIONS_OPTIONS_H_
#define CORVANE_TOOLS_OPTIONS_OPTIONS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/options/cache_location.h"
#include "tools/options/snmp_arguments.h"

namespace Corvane::Tool {

enum class Command { kGet, kDump, kProbe, kJobs, kPrint, kCancel, kCacheShow, kCacheClear };

// In the order of IPPRequestBase::SetPrintingSides.
inline constexpr const char* kSides[] = {"one-sided", "two-sided-long-edge",
                                         "two-sided-short-edge"};

// What "print" prints, and how. What is not given is the printer's to choose.
struct PrintArguments {
  std::string file;  // "-" is the input
  std::string jobName;
  std::int32_t copies = 0;
  std::string sides;
  std::string color;
  bool chunked = false;
};

// How a device on the network is reached. Texts are UTF-8.
struct NetworkArguments {
  std::map<std::uint32_t, std::uint32_t> portMap;  // port asked for -> port connected to
  std::set<std::uint32_t> tlsPorts;                // beside the host's own
  std::string caFile;
  std::optional<std::uint32_t> timeoutMs;  // one exchange in all
  SnmpArguments snmp;

  // Not of the command line: what a command itself settles.
  std::optional<std::uint32_t> usualTimeoutMs;  // without `timeoutMs`, in place of the host's own
  std::optional<std::size_t> maxResponseBytes;  // a longer body fails its exchange
  std::string trustFile;  // keys that printers are known by, see Host::NetworkOptions::pinFile
  std::string account;    // credentials of the exchanges
  std::string password;

  // On the command line.
  bool AnyGiven() const {
    return !portMap.empty() || !tlsPorts.empty() || !caFile.empty() || timeoutMs.has_value() ||
           snmp.AnyGiven();
  }
};

// Texts are UTF-8.
struct Options {
  Command command = Command::kGet;
  std::string device;              // of all but "cache"; of "print" and "cancel" perhaps
  std::string specification;       // of "get", "dump" and perhaps "cache show"
  std::vector<std::string> names;  // of "get"
  std::string printerUri;          // of "jobs", "print" and "cancel", as the next
  std::string user;                // empty: who is logged in
  bool completed = false;          // of "jobs"
  PrintArguments print;
  std::optional<std::int32_t> jobId;  // of "cancel"
  std::string trustFile;              // of "print" and "cancel", as the next two
  std::string account;
  std::string secretsFile;  // its password
  NetworkArguments network;
  std::optional<CacheLocation> cache;  // always of "cache"
  bool json = false;
  bool trace = false;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_OPTIONS_H_
