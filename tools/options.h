// The command line.
#ifndef CORVANE_TOOLS_OPTIONS_H_
#define CORVANE_TOOLS_OPTIONS_H_

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Corvane::Tool {

enum class Command { kGet, kDump };

// Texts are UTF-8.
struct Options {
  Command command = Command::kGet;
  std::string device;
  std::string specification;
  std::vector<std::string> names;                  // of "get"
  std::map<std::uint32_t, std::uint32_t> portMap;  // port asked for -> port connected to
  std::set<std::uint32_t> tlsPorts;                // beside the host's own
  std::string caFile;
  std::optional<std::uint32_t> timeoutMs;  // one exchange in all
  bool json = false;
  bool trace = false;

  bool HasNetworkOption() const {
    return !portMap.empty() || !tlsPorts.empty() || !caFile.empty() || timeoutMs.has_value();
  }
};

// Nothing when the arguments asked for help or the version, which has been written to the output.
// Throws Failure with kBadUsage.
std::optional<Options> ParseOptions(int argc, const char* const* argv);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_H_
