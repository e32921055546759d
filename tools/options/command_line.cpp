#include "tools/options/command_line.h"

#include <CLI/CLI.hpp>

#include "tools/options/network_options.h"
#include "tools/options/print_options.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

constexpr char kDescription[] =
    "Reads named values from a printer. A data-map specification says which names there are and\n"
    "where the device keeps them.\n";

constexpr char kFooter[] =
    "Examples:\n"
    "  corvane get --device 192.0.2.7 --spec office-printer.xml Model Status\n"
    "  corvane dump --device recorded:examples/recorded/office-printer \\\n"
    "      --spec examples/office-printer.xml --json\n"
    "  corvane get --device 192.0.2.7 --spec office-printer.xml \\\n"
    "      --cache 'registry:SOFTWARE\\Corvane' Model\n"
    "  corvane cache show --cache 'registry:SOFTWARE\\Corvane' --spec office-printer.xml\n"
    "  corvane probe 192.0.2.7\n"
    "  corvane jobs --device 192.0.2.7 --uri ipp://192.0.2.7/ipp/print --json\n"
    "  corvane print --uri ipp://192.0.2.7/ipp/print --copies 2 report.pdf\n"
    "  corvane cancel --uri ipp://192.0.2.7/ipp/print 17\n"
    "\n"
    "Exit status:\n"
    "  0  every name has a value\n"
    "  1  some name has no value; the error stream says why\n"
    "  2  bad usage, or a file or printer named there that cannot be opened\n"
    "  3  no data map of the specification fits the device; \"probe\", \"jobs\" and \"cancel\": "
    "no\n"
    "     answer, or no such job\n"
    "  4  the output cannot be written, or memory ran out\n"
    "  5  \"cache\" could not read or change the cache, or a part of it\n"
    "  6  \"print\": cancelled, here or at the printer\n"
    "  7  \"print\": not printed; \"cancel\": the printer did not cancel the job\n"
    "  8  \"print\": perhaps printed: printing it again may print it twice";

constexpr char kQueryFooter[] =
    "A cache that cannot be read or written is told on the error stream and costs no answer.\n"
    "\n"
    "Secrets of SNMP are not for the command line, where other users can see them: the community\n"
    "(\"public\" unless given) and the passphrases come from CORVANE_SNMP_COMMUNITY,\n"
    "CORVANE_SNMP_AUTH_PASSPHRASE and CORVANE_SNMP_PRIV_PASSPHRASE, or from the lines\n"
    "\"community = TEXT\", \"auth-passphrase = TEXT\" and \"priv-passphrase = TEXT\" of the file "
    "of\n"
    "--snmp-secrets, which wins. Without a passphrase version 3 does not sign or not encrypt.\n"
    "\n"
    "Run \"corvane --help\" for examples and exit statuses.";

constexpr char kShowFooter[] =
    "A cache keeps with each value when it was fetched. How long it stays fresh only the data map\n"
    "says, and only with --spec is it told. \"passed over\" is a value that the library does not "
    "read,\n"
    "because in the order of names another one stands between it and its .Expires, or the two\n"
    "before it are no pair. An empty or missing cache is no error.";

constexpr char kClearFooter[] =
    "Deletes the values of known protocols with a time in their .Expires, and the keys that are\n"
    "then empty. Everything else in the place stays, and is told.";

constexpr char kProbeFooter[] =
    "Prints a line for each of QUARN, WS, PLSXML, SNMP and IPP (at /ipp/print): protocol, port,\n"
    "yes or no, model, serial number, UUID, name, and the state or what went wrong; \"-\" for "
    "what\n"
    "the device does not tell. All are asked at once, with 3 seconds for an exchange unless\n"
    "--timeout says otherwise. Secrets of SNMP are taken as by \"get\".";

constexpr char kJobsFooter[] =
    "Prints a line for each job of the user: id, state, state reasons, name, user and URI; \"-\"\n"
    "for what the printer does not tell. The connection is to port 631 of the device, with ipps\n"
    "to 443, unless --uri or --port names another; the printer is told all of --uri.";

void AddCacheOption(CLI::App& command, std::string& cache, const char* text) {
  command.add_option("--cache", cache, text)->type_name("CACHE");
}

void AddSpecification(CLI::App& command, std::string& specification) {
  command.add_option("--spec", specification, "the data-map specification")->type_name("FILE");
}

void AddTrace(CLI::App& command, Options& options) {
  command.add_flag("--trace", options.trace, "tell on the error stream what the library does");
}

void AddQueryOptions(CLI::App& command, Options& options, std::string& cache,
                     NetworkOptionReader& network) {
  command
      .add_option("--device", options.device,
                  "the device: an IP address, a host name, or recorded:FOLDER (for an IPP data "
                  "map an IP address)")
      ->type_name("ADDRESS")
      ->required();
  AddSpecification(command, options.specification);
  command.get_option("--spec")->required();
  AddCacheOption(command, cache,
                 "keep values here, and answer fresh ones from here: registry:PATH (below "
                 "HKEY_LOCAL_MACHINE) or printer:NAME");
  command.add_flag("--json", options.json, "write one JSON object");
  AddTrace(command, options);
  network.AddTo(command);
  network.AddSnmpTo(command);
  command.footer(kQueryFooter);
}

void AddProbeOptions(CLI::App& command, Options& options, NetworkOptionReader& network) {
  command
      .add_option("ADDRESS", options.device,
                  "the device: an IP address, a host name, or recorded:FOLDER")
      ->type_name("")
      ->required();
  command.add_flag("--json", options.json, "write a JSON array of objects");
  AddTrace(command, options);
  network.AddTo(command);
  network.AddSnmpTo(command);
  command.footer(kProbeFooter);
}

void AddJobsOptions(CLI::App& command, Options& options, NetworkOptionReader& network) {
  command.add_option("--device", options.device, "the device: an IP address or a host name")
      ->type_name("ADDRESS")
      ->required();
  AddPrinterUri(command, options);
  command.add_option("--user", options.user, "whose jobs; yours unless given")->type_name("NAME");
  command.add_flag("--completed", options.completed, "jobs that have ended, instead of the others");
  command.add_flag("--json", options.json, "write a JSON array of objects");
  network.AddTo(command);
  command.footer(kJobsFooter);
}

}  // namespace

std::optional<Options> ParseOptions(int argc, const char* const* argv) {
  Options options;
  NetworkOptionReader network;
  std::string cacheText;
  CLI::App app(kDescription, "corvane");
  app.footer(kFooter);
  app.set_version_flag("--version", "corvane " CORVANE_VERSION, "Print the version and exit");
  app.allow_windows_style_options(false);  // else "/x" as a value is taken for an option
  app.require_subcommand(0, 1);            // else an unknown command is reported as none

  CLI::App& get = *app.add_subcommand("get", "Print the values of the names given, one a line");
  CLI::App& dump = *app.add_subcommand("dump", "Print every value of the data map that fits");
  AddQueryOptions(get, options, cacheText, network);
  AddQueryOptions(dump, options, cacheText, network);
  get.add_option("NAME", options.names,
                 "what to read: an item's name, PREFIX:NAME, or NAME.002, a step of a walk")
      ->type_name("")
      ->required();

  CLI::App& probe =
      *app.add_subcommand("probe", "Tell which protocols a device answers, and as whom");
  AddProbeOptions(probe, options, network);
  CLI::App& jobs = *app.add_subcommand("jobs", "Print a user's jobs of an IPP printer");
  AddJobsOptions(jobs, options, network);

  CLI::App& print = *app.add_subcommand("print", "Print a document on an IPP printer");
  AddPrintOptions(print, options, network);
  CLI::App& cancel = *app.add_subcommand("cancel", "Cancel a user's job of an IPP printer");
  AddCancelOptions(cancel, options, network);

  CLI::App& cache = *app.add_subcommand("cache", "Show or clear what a cache keeps");
  cache.require_subcommand(0, 1);
  CLI::App& show = *cache.add_subcommand("show", "Print the values of a cache and their age");
  AddSpecification(show, options.specification);
  show.add_flag("--json", options.json, "write one JSON object");
  show.footer(kShowFooter);
  CLI::App& clear = *cache.add_subcommand("clear", "Delete the values of a cache");
  clear.footer(kClearFooter);
  for (CLI::App* const command : {&show, &clear}) {
    AddCacheOption(*command, cacheText, "registry:PATH (below HKEY_LOCAL_MACHINE) or printer:NAME");
    command->get_option("--cache")->required();
  }

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    app.exit(request);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    ThrowUsage(error.what());
  }
  if (cache.parsed() && !show.parsed() && !clear.parsed()) {
    ThrowUsage("cache: expected a command: show or clear");
  }
  if (app.get_subcommands().empty()) {
    ThrowUsage("expected a command: get, dump, probe, jobs, print, cancel or cache");
  }
  if (dump.parsed()) options.command = Command::kDump;
  if (probe.parsed()) options.command = Command::kProbe;
  if (jobs.parsed()) options.command = Command::kJobs;
  if (print.parsed()) options.command = Command::kPrint;
  if (cancel.parsed()) options.command = Command::kCancel;
  if (show.parsed()) options.command = Command::kCacheShow;
  if (clear.parsed()) options.command = Command::kCacheClear;
  options.network = network.Take();
  const bool hasCache = cache.parsed() || get.count("--cache") + dump.count("--cache") > 0;
  if (hasCache) options.cache = ParseCacheLocation(cacheText);
  return options;
}

}  // namespace Corvane::Tool
