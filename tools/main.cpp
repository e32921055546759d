// corvane: named values of a device, on the command line.
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/utf8.h"
#include "corvane/handles.h"
#include "tools/cache/cache.h"
#include "tools/cache/cache_commands.h"
#include "tools/ipp/jobs.h"
#include "tools/ipp/probe.h"
#include "tools/map/answers.h"
#include "tools/map/dom.h"
#include "tools/map/session.h"
#include "tools/map/specification.h"
#include "tools/options/command_line.h"
#include "tools/options/device.h"
#include "tools/output/failure.h"
#include "tools/output/trace_printer.h"
#include "tools/print/print.h"

namespace Corvane::Tool {
namespace {

void PrintErrorLines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::cerr << "corvane: " << text.substr(0, end) << '\n';
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
}

// Writes answers as they come, or as one object at the end.
class AnswerPrinter {
 public:
  explicit AnswerPrinter(bool json) : m_json(json) {}

  // True when there is a value.
  bool Print(NamedValue answer) {
    const bool answered = answer.result == S_OK;
    if (!answered) {
      m_status = kSomeUnanswered;
      PrintErrorLines(FormatProblem(answer));
    }
    if (m_json) {
      m_answers.push_back(std::move(answer));
    } else {
      std::cout << FormatLine(answer) << std::flush;
    }
    return answered;
  }

  ExitStatus Finish() {
    if (m_json) std::cout << FormatJson(m_answers);
    return m_status;
  }

 private:
  const bool m_json;
  ExitStatus m_status = kAllAnswered;
  std::vector<NamedValue> m_answers;
};

void FlushOutput() {
  if (!std::cout.flush()) throw Failure(kSystemFailure, "the output cannot be written");
}

// A table's end is no failure, and a table may be empty.
void PrintSteps(Session& session, const std::wstring& key, AnswerPrinter& printer) {
  for (int step = 1; step <= Session::kMaxSteps; ++step) {
    NamedValue answer = session.Query(Session::StepKey(key, step));
    if (answer.result == S_FALSE || !printer.Print(std::move(answer))) return;
  }
}

ExitStatus PrintValues(const Options& options, Session& session) {
  AnswerPrinter printer(options.json);
  if (options.command == Command::kGet) {
    for (const std::string& name : options.names) printer.Print(session.Query(ToWide(name)));
  } else {
    for (const Session::Key& key : session.Keys()) {
      if (key.isWalk) {
        PrintSteps(session, key.name, printer);
      } else {
        printer.Print(session.Query(key.name));
      }
    }
  }
  const ExitStatus status = printer.Finish();
  FlushOutput();
  return status;
}

ExitStatus RunQuery(const Options& options) {
  std::vector<DataMap> maps = LoadSpecification(options.specification);
  const RefPtr<Address> device = OpenDevice(options);
  std::optional<Cache> cache;
  if (options.cache) cache.emplace(*options.cache);
  if (cache) PrintErrorLines(cache->Problem());
  // Gives its values to the cache when it goes.
  Session session(*device.Get(), std::move(maps), cache ? cache->Provider() : nullptr);
  return PrintValues(options, session);
}

CommandResult ReportOf(const Options& options) {
  switch (options.command) {
    case Command::kProbe:
      return ListFindings(Probe(options), options.json);
    case Command::kJobs:
      return ListJobs(options);
    case Command::kPrint:
      return PrintDocument(options);
    case Command::kCancel:
      return CancelUserJob(options);
    case Command::kCacheShow:
      return ShowCache(*options.cache, options.specification, options.json);
    default:
      return ClearCache(*options.cache);
  }
}

ExitStatus RunReport(const Options& options) {
  const CommandResult result = ReportOf(options);
  std::cout << result.output;
  FlushOutput();
  PrintErrorLines(result.problems);
  return result.status;
}

ExitStatus Run(int argc, const char* const* argv) {
  const std::optional<Options> options = ParseOptions(argc, argv);
  if (!options) return kAllAnswered;
  std::optional<TracePrinter> trace;
  if (options->trace) trace.emplace(std::cerr);
  const ComInitialization com;
  const bool isQuery = options->command == Command::kGet || options->command == Command::kDump;
  return isQuery ? RunQuery(*options) : RunReport(*options);
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
