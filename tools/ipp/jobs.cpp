#include "tools/ipp/jobs.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/ipp/ipp_values.h"
#include "tools/ipp/printer_address.h"
#include "tools/ipp/printer_uri.h"
#include "tools/ipp/user_jobs.h"
#include "tools/options/device.h"
#include "tools/output/json_text.h"
#include "tools/output/text_escape.h"

namespace Corvane::Tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kState[] = "job-state";
constexpr char kReasons[] = "job-state-reasons";

IPPAnswer Ask(const Options& options) {
  const PrinterUri uri = ParsePrinterUri(options.printerUri);
  const std::string user = RequestingUser(options.user);
  const RefPtr<Address> device = OpenDevice(ReachPrinter(options, uri));
  std::string problem;
  std::optional<IPPAnswer> answer =
      AskForJobs(*device.Get(), uri, user, options.completed, &problem);
  if (!answer) throw Failure(kNoAnswer, "the printer tells no jobs: " + problem);
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
  for (const char* const name : kJobAttributes) {
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
  for (const char* const name : kJobAttributes) {
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
