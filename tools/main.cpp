// corvane: named values of a device, on the command line.
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/device.h"
#include "tools/failure.h"
#include "tools/handles.h"
#include "tools/options.h"
#include "tools/output_json.h"
#include "tools/output_text.h"
#include "tools/session.h"
#include "tools/specification.h"
#include "tools/trace_printer.h"
#include "tools/utf8.h"

namespace Corvane::Tool {
namespace {

void PrintErrorLines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::cerr << "corvane: " << text.substr(0, end) << '\n';
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
}

std::vector<std::wstring> NamesToQuery(const Options& options, const Session& session) {
  if (options.command == Command::kDump) return session.Keys();
  std::vector<std::wstring> names;
  for (const std::string& name : options.names) names.push_back(WideFromUtf8(name));
  return names;
}

ExitStatus PrintValues(const Options& options, Session& session) {
  ExitStatus status = kAllAnswered;
  std::vector<NamedValue> answers;
  for (const std::wstring& name : NamesToQuery(options, session)) {
    NamedValue answer = session.Query(name);
    if (answer.result != S_OK) {
      status = kSomeUnanswered;
      PrintErrorLines(FormatProblem(answer));
    }
    if (options.json) {
      answers.push_back(std::move(answer));
    } else {
      std::cout << FormatLine(answer) << std::flush;
    }
  }
  if (options.json) std::cout << FormatJson(answers) << std::flush;
  if (!std::cout) throw Failure(kSystemFailure, "the output cannot be written");
  return status;
}

ExitStatus Run(int argc, const char* const* argv) {
  const std::optional<Options> options = ParseOptions(argc, argv);
  if (!options) return kAllAnswered;
  std::optional<TracePrinter> trace;
  if (options->trace) trace.emplace(std::cerr);
  const ComInitialization com;
  std::vector<DataMap> maps = LoadSpecification(options->specification);
  const Ref<Address> device = OpenDevice(*options);
  Session session(*device.Get(), std::move(maps));
  return PrintValues(*options, session);
}

ExitStatus RunReporting(int argc, const char* const* argv) {
  try {
    return Run(argc, argv);
  } catch (const Failure& failure) {
    PrintErrorLines(failure.what());
    return failure.Status();
  } catch (const _com_error&) {
    PrintErrorLines("out of memory");
  } catch (const std::bad_alloc&) {
    PrintErrorLines("out of memory");
  } catch (const std::exception& error) {
    PrintErrorLines(error.what());
  }
  return kSystemFailure;
}

}  // namespace
}  // namespace Corvane::Tool

int main(int argc, char** argv) { return Corvane::Tool::RunReporting(argc, argv); }
