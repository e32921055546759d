#include "tools/jobs.h"

#include <cstddef>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/device.h"
#include "tools/ipp_exchange.h"
#include "tools/ipp_values.h"
#include "tools/json_text.h"
#include "tools/printer_uri.h"
#include "tools/text_escape.h"

namespace Corvane::Tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kState[] = "job-state";
constexpr char kReasons[] = "job-state-reasons";
constexpr const char* kColumns[] = {
    "job-id", kState, kReasons, "job-name", "job-originating-user-name", "job-uri"};

// The names of Linux and of Windows.
std::string LoginName() {
  for (const char* const variable : {"USER", "USERNAME"}) {
    const char* const name = std::getenv(variable);
    if (name && *name) return name;
  }
  return {};
}

std::string UserOf(const Options& options) {
  constexpr std::size_t kMaxUserBytes = 255;  // RFC 8011, 5.1.3
  std::string user = options.user.empty() ? LoginName() : options.user;
  if (user.empty()) ThrowUsage("no login name in the environment: say --user NAME");
  if (user.size() > kMaxUserBytes) ThrowUsage("--user has more than 255 bytes");
  return user;
}

std::string MessageFor(const Options& options, const PrinterUri& uri) {
  return BuildIPPRequest(IPPOperation::kGetJobs, uri.text,
                         {MakeAttribute("requesting-user-name", IPPTag::kName, {UserOf(options)}),
                          MakeAttribute("requested-attributes", IPPTag::kKeyword,
                                        {std::begin(kColumns), std::end(kColumns)}),
                          MakeAttribute("which-jobs", IPPTag::kKeyword,
                                        {options.completed ? "completed" : "not-completed"}),
                          MakeAttribute("my-jobs", IPPTag::kBoolean, {std::string(1, '\1')})});
}

IPPAnswer Ask(const Options& options) {
  const PrinterUri uri = ParsePrinterUri(options.printerUri);
  if (IsRecorded(options)) ThrowUsage("jobs: a recorded device has none");
  const std::string message = MessageFor(options, uri);
  Options reached = options;
  reached.network.maxResponseBytes = kMaxIPPAnswerBytes;
  // A mapping of the command line wins.
  if (uri.port) reached.network.portMap.emplace(uri.servicePort, *uri.port);
  const Ref<Address> device = OpenDevice(reached);
  std::string problem;
  std::optional<IPPAnswer> answer =
      ExchangeIPP(*device.Get(), uri.servicePort, uri.path, message, &problem);
  if (answer && !answer->IsSuccessful()) problem = StatusText(*answer);
  if (!problem.empty()) throw Failure(kNoAnswer, "the printer tells no jobs: " + problem);
  return *std::move(answer);
}

Json JsonOf(const IPPValue& value) {
  if (const auto text = TextOf(value)) return *text;
  if (const auto number = NumberOf(value)) return *number;
  return nullptr;
}

// Null for what the printer does not tell.
Json JobOf(const IPPGroup& group) {
  Json job = Json::object();
  for (const char* const name : kColumns) {
    const IPPAttribute* const attribute = group.Find(name);
    job[name] = attribute ? JsonOf(attribute->values.front()) : Json(nullptr);
  }
  const auto state = NumberOf(group.Find(kState));
  if (const char* const name = state ? JobStateName(*state) : nullptr) job[kState] = name;
  if (const IPPAttribute* const reasons = group.Find(kReasons)) {
    job[kReasons] = Json::array();
    for (const IPPValue& value : reasons->values) job[kReasons].push_back(JsonOf(value));
  }
  return job;
}

std::string FieldOf(const Json& value) {
  std::string field;
  if (value.is_string()) field = EscapeText(value.get_ref<const std::string&>());
  if (value.is_number()) field = value.dump();
  if (value.is_array()) {
    for (const Json& each : value) {
      if (!field.empty()) field += ',';
      field += FieldOf(each);
    }
  }
  return field.empty() ? "-" : field;
}

std::string LineOf(const Json& job) {
  std::string line;
  for (const char* const name : kColumns) {
    if (!line.empty()) line += '\t';
    line += FieldOf(job[name]);
  }
  return line + '\n';
}

}  // namespace

CommandResult ListJobs(const Options& options) {
  const IPPAnswer answer = Ask(options);
  CommandResult result;
  for (const char* const choice : {"my-jobs", "which-jobs"}) {
    if (answer.Find(IPPTag::kUnsupportedGroup, choice)) {
      result.problems +=
          std::string("the printer does not choose by ") + choice + ": these may be other jobs\n";
    }
  }
  Json jobs = Json::array();
  for (const IPPGroup& group : answer.groups) {
    if (group.tag != IPPTag::kJobGroup) continue;
    if (options.json) {
      jobs.push_back(JobOf(group));
    } else {
      result.output += LineOf(JobOf(group));
    }
  }
  if (options.json) result.output = JsonText(jobs);
  return result;
}

}  // namespace Corvane::Tool
