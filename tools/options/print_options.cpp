#include "tools/options/print_options.h"

#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace Corvane::Tool {
namespace {

constexpr char kPrintFooter[] =
    "Prints a line when the printer has the document: the job's id, its state and its URI. The\n"
    "error stream tells how far it is. A file goes to the printer in one piece, and in pieces\n"
    "with --chunked; the input and files beyond 16 MB always do. Documents in pieces may be of\n"
    "any size, and wait until the printer is idle. (In one piece the library takes 2 GB.)\n"
    "\n"
    "Ctrl-C cancels the job at the printer and drops what is not sent yet; a second one leaves\n"
    "at once. Before anything was sent it just leaves.\n"
    "\n"
    "The printer must answer at port 631. With ipps:// it is spoken to at port 443, or at that of\n"
    "--uri if it is 631; a certificate must be valid for the name in --device, or else in --uri,\n"
    "unless --trust-file is given: then the key that a printer shows first is trusted from then\n"
    "on. The password of --account comes from CORVANE_PASSWORD, or from the line\n"
    "\"password = TEXT\" of the file of --secrets, which wins; it goes out over TLS only.\n"
    "\n"
    "Run \"corvane --help\" for examples and exit statuses.";

constexpr char kCancelFooter[] =
    "Cancels the user's job JOB-ID, or the first that goes on, and prints which. The connection,\n"
    "trust and the password are those of \"print\", but any port will do. \"corvane jobs\" lists\n"
    "the jobs.";

void AddPrinter(CLI::App& command, Options& options, NetworkOptionReader& network) {
  AddPrinterUri(command, options);
  command
      .add_option("--device", options.device,
                  "connect to this IP address or host name, not to the host of the URI")
      ->type_name("ADDRESS");
  command.add_option("--user", options.user, "whose job; yours unless given")->type_name("NAME");
  command.add_option("--account", options.account, "the user name of the printer's own accounts")
      ->type_name("NAME");
  command.add_option("--secrets", options.secretsFile, "take its password from here")
      ->type_name("FILE");
  command
      .add_option("--trust-file", options.trustFile,
                  "trust the key that a printer shows first; keys are kept here")
      ->type_name("FILE");
  command.add_flag("--trace", options.trace, "tell on the error stream what the library does");
  network.AddTo(command);
}

}  // namespace

void AddPrinterUri(CLI::App& command, Options& options) {
  command
      .add_option("--uri", options.printerUri, "the printer: ipp://HOST/PATH or ipps://HOST/PATH")
      ->type_name("URI")
      ->required();
}

void AddPrintOptions(CLI::App& command, Options& options, NetworkOptionReader& network) {
  PrintArguments& print = options.print;
  command.add_option("FILE", print.file, "what to print; - is the input")
      ->type_name("")
      ->required();
  AddPrinter(command, options, network);
  command.add_option("--job-name", print.jobName, "the file's name unless given")
      ->type_name("NAME");
  command.add_option("--copies", print.copies, "1 to 9999")
      ->type_name("N")
      ->check(CLI::Range(1, 9999));
  command
      .add_option("--sides", print.sides, "one-sided, two-sided-long-edge or two-sided-short-edge")
      ->type_name("SIDES")
      ->check(CLI::IsMember(std::vector<std::string>(std::begin(kSides), std::end(kSides))));
  command.add_option("--color", print.color, "color or monochrome")
      ->type_name("MODE")
      ->check(CLI::IsMember({"color", "monochrome"}));
  command.add_flag("--chunked", print.chunked, "send it piece by piece");
  command.footer(kPrintFooter);
}

void AddCancelOptions(CLI::App& command, Options& options, NetworkOptionReader& network) {
  command.add_option("JOB-ID", options.jobId, "which job; the first that goes on unless given")
      ->type_name("")
      ->check(CLI::Range(1, std::numeric_limits<std::int32_t>::max()));
  AddPrinter(command, options, network);
  command.footer(kCancelFooter);
}

}  // namespace Corvane::Tool
