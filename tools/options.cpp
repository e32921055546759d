#include "tools/options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <iostream>
#include <string_view>

#include "tools/failure.h"
#include "tools/text_escape.h"

namespace Corvane::Tool {
namespace {

constexpr std::uint32_t kLastPort = 65535;
constexpr double kMaxTimeoutSeconds = 24 * 60 * 60;  // keeps the milliseconds within 32 bits

constexpr char kDescription[] =
    "Reads named values from a printer. A data-map specification says which names there are and\n"
    "where the device keeps them.\n";

constexpr char kFooter[] =
    "Examples:\n"
    "  corvane get --device 192.0.2.7 --spec office-printer.xml Model Status\n"
    "  corvane dump --device recorded:examples/recorded/office-printer \\\n"
    "      --spec examples/office-printer.xml --json\n"
    "\n"
    "Exit status:\n"
    "  0  every name has a value\n"
    "  1  some name has no value; the error stream says why\n"
    "  2  bad usage, or a specification that cannot be read\n"
    "  3  no data map of the specification fits the device\n"
    "  4  the output cannot be written, or memory ran out";

// What the arguments say, before ports and times are read out of it.
struct RawOptions {
  std::vector<std::string> ports;
  std::vector<std::string> tlsPorts;
  double timeoutSeconds = 0;
};

[[noreturn]] void ThrowUsage(const std::string& text) {
  throw Failure(kBadUsage, EscapeText(text) + "\nRun \"corvane --help\" for help.");
}

std::uint32_t ParsePort(std::string_view text, const std::string& argument) {
  std::uint32_t port = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stop != end || port == 0 || port > kLastPort) {
    ThrowUsage(argument + ": a port is a number from 1 to 65535");
  }
  return port;
}

void TakeRawOptions(const RawOptions& raw, bool hasTimeout, Options& options) {
  for (const std::string& text : raw.ports) {
    const std::size_t equals = text.find('=');
    const std::string argument = "--port " + text;
    if (equals == std::string::npos) ThrowUsage(argument + ": expected FROM=TO");
    const std::uint32_t from = ParsePort(std::string_view(text).substr(0, equals), argument);
    options.portMap[from] = ParsePort(std::string_view(text).substr(equals + 1), argument);
  }
  for (const std::string& text : raw.tlsPorts) {
    options.tlsPorts.insert(ParsePort(text, "--tls " + text));
  }
  if (hasTimeout) {
    const double seconds = raw.timeoutSeconds;
    if (!(seconds >= 0.001 && seconds <= kMaxTimeoutSeconds)) {
      ThrowUsage("--timeout: expected seconds from 0.001 to 86400");
    }
    options.timeoutMs = static_cast<std::uint32_t>(std::lround(seconds * 1000));
  }
}

void AddOptions(CLI::App& command, Options& options, RawOptions& raw) {
  command
      .add_option("--device", options.device,
                  "the device: an IP address, a host name, or recorded:FOLDER")
      ->type_name("ADDRESS")
      ->required();
  command.add_option("--spec", options.specification, "the data-map specification")
      ->type_name("FILE")
      ->required();
  // A repeated option takes one argument a time: what follows is a name.
  command
      .add_option(
          "--port", raw.ports,
          "connect to TO instead of the protocol's port FROM (QUARN 8080, WS 7627, PLSXML 80)")
      ->type_name("FROM=TO")
      ->allow_extra_args(false);
  command.add_option("--tls", raw.tlsPorts, "speak TLS where the protocol's port is PORT")
      ->type_name("PORT")
      ->allow_extra_args(false);
  command.add_option("--cacert", options.caFile, "trust these certificates (PEM) only")
      ->type_name("FILE");
  command.add_option("--timeout", raw.timeoutSeconds, "the longest that one exchange may take")
      ->type_name("SECONDS");
  command.add_flag("--json", options.json, "write one JSON object");
  command.add_flag("--trace", options.trace, "tell on the error stream what the library does");
  command.footer("Run \"corvane --help\" for examples and exit statuses.");
}

}  // namespace

std::optional<Options> ParseOptions(int argc, const char* const* argv) {
  Options options;
  RawOptions raw;
  CLI::App app(kDescription, "corvane");
  app.footer(kFooter);
  app.set_version_flag("--version", "corvane " CORVANE_VERSION, "Print the version and exit");
  app.allow_windows_style_options(false);  // else "/x" as a value is taken for an option
  app.require_subcommand(0, 1);            // else an unknown command is reported as none

  CLI::App& get = *app.add_subcommand("get", "Print the values of the names given, one a line");
  CLI::App& dump = *app.add_subcommand("dump", "Print every value of the data map that fits");
  AddOptions(get, options, raw);
  AddOptions(dump, options, raw);
  get.add_option("NAME", options.names, "what to read: an item's name, or PREFIX:NAME")
      ->type_name("")
      ->required();

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    app.exit(request);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    ThrowUsage(error.what());
  }
  if (!get.parsed() && !dump.parsed()) ThrowUsage("expected a command: get or dump");
  options.command = get.parsed() ? Command::kGet : Command::kDump;
  TakeRawOptions(raw, get.count("--timeout") + dump.count("--timeout") > 0, options);
  return options;
}

}  // namespace Corvane::Tool
