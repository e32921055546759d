#include "tools/ipp/jobs.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ipp/wire/codes.h"
#include "ipp/wire/values.h"
#include "tools/ipp/ipp_values.h"
#include "tools/ipp/printer_address.h"
#include "tools/ipp/printer_uri.h"
#include "tools/ipp/user_jobs.h"
#include "tools/options/device.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kState = "job-state";
constexpr std::string_view kReasons = "job-state-reasons";

IPPMessage AskForJob(const Options& options) {
  const PrinterUri uri = ParsePrinterUri(options.printerUri);
  const std::string user = RequestingUser(options.user);
  const RefPtr<Address> device = OpenDevice(ReachPrinter(options, uri));
  std::string problem;
  std::optional<IPPMessage> answer =
      AskForJobs(*device.Get(), uri, user, options.completed, &problem);
  if (!answer) throw Failure(kNoAnswer, "the printer tells no jobs: " + problem);
  return *std::move(answer);
}

// Null for what the printer does not tell.
Json JobJson(const IPPMessage& answer, const IPPValue* value) {
  if (!value) return nullptr;
  if (const auto text = TextOf(answer, *value)) return *text;
  if (const auto number = IPPNumberOf(answer, *value)) return *number;
  return nullptr;
}

Json ListedJobOf(const IPPMessage& answer, const IPPGroup& group) {
  Json job = Json::object();
  for (const std::string_view name : kJobAttributes) {
    const IPPAttribute* const attribute = answer.Find(group, name);
    const auto values = attribute ? answer.ValuesOf(*attribute) : std::span<const IPPValue>();
    Json& told = job[std::string(name)];
    if (name == kReasons && attribute) {
      told = Json::array();
      for (const IPPValue& value : values) told.push_back(JobJson(answer, &value));
    } else {
      told = JobJson(answer, values.empty() ? nullptr : &values.front());
    }
    const char* const state =
        name == kState && told.is_number() ? JobStateName(told.get<std::int32_t>()) : nullptr;
    if (state) told = state;
  }
  return job;
}

std::string JobFieldOf(const Json& value) {
  std::string field;
  if (value.is_string()) field = EscapeText(value.get_ref<const std::string&>());
  if (value.is_number()) field = value.dump();
  if (value.is_array()) {
    for (const Json& each : value) {
      if (!field.empty()) field += ',';
      field += JobFieldOf(each);
    }
  }
  return field.empty() ? "-" : field;
}

std::string JobListLine(const Json& job) {
  std::string line;
  for (const Json& value : job) {
    if (!line.empty()) line += '\t';
    line += JobFieldOf(value);
  }
  return line + '\n';
}

}  // namespace

CommandResult ListJobs(const Options& options) {
  const IPPMessage answer = AskForJob(options);
  CommandResult result;
  for (const char* const choice : {"my-jobs", "which-jobs"}) {
    if (answer.Find(IPPTag::kUnsupportedAttributes, choice)) {
      result.problems +=
          std::string("the printer does not choose by ") + choice + ": these may be other jobs\n";
    }
  }
  Json jobs = Json::array();
  for (const IPPGroup& group : answer.Groups()) {
    if (group.tag != IPPTag::kJobAttributes) continue;
    if (options.json) {
      jobs.push_back(ListedJobOf(answer, group));
    } else {
      result.output += JobListLine(ListedJobOf(answer, group));
    }
  }
  if (options.json) result.output = JsonText(jobs);
  return result;
}

}  // namespace Corvane::Tool
