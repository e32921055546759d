// The part of the command line that is of printers.
#ifndef CORVANE_TOOLS_OPTIONS_PRINT_OPTIONS_H_
#define CORVANE_TOOLS_OPTIONS_PRINT_OPTIONS_H_

#include <CLI/CLI.hpp>

#include "tools/options/network_options.h"
#include "tools/options/options.h"

namespace Corvane::Tool {

// `options` and `network` must outlive the parsing.
void AddPrinterUri(CLI::App& command, Options& options);
void AddPrintOptions(CLI::App& command, Options& options, NetworkOptionReader& network);
void AddCancelOptions(CLI::App& command, Options& options, NetworkOptionReader& network);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_PRINT_OPTIONS_H_
