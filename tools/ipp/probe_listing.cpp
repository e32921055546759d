#include "tools/ipp/probe.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

using Json = nlohmann::ordered_json;

// `text` is escaped.
std::string ProbeField(const std::string& text) { return '\t' + (text.empty() ? "-" : text); }

std::string ProbeLine(const Finding& finding) {
  std::string line = std::string(finding.protocol) + '\t' + std::to_string(finding.port);
  line += finding.answers ? "\tyes" : "\tno";
  for (const std::string* const text :
       {&finding.model, &finding.serial, &finding.uuid, &finding.name}) {
    line += ProbeField(EscapeText(*text));
  }
  return line + ProbeField(finding.problem.empty() ? finding.state : finding.problem) + '\n';
}

Json ProbeJson(const Finding& finding) {
  Json object = {
      {"protocol", finding.protocol}, {"port", finding.port}, {"answers", finding.answers}};
  const auto add = [&object](const char* key, const std::string& text) {
    object[key] = text.empty() ? Json(nullptr) : Json(text);
  };
  add("model", finding.model);
  add("serial", finding.serial);
  add("uuid", finding.uuid);
  add("name", finding.name);
  add("state", finding.state);
  add("problem", finding.problem);
  return object;
}

}  // namespace

CommandResult ListFindings(const std::vector<Finding>& findings, bool json) {
  CommandResult result;
  const bool any = std::any_of(findings.begin(), findings.end(),
                               [](const Finding& each) { return each.answers; });
  if (!any) {
    result.status = kNoAnswer;
    result.problems = "the device answers no protocol\n";
  }
  if (json) {
    Json array = Json::array();
    for (const Finding& finding : findings) array.push_back(ProbeJson(finding));
    result.output = JsonText(array);
  } else {
    for (const Finding& finding : findings) result.output += ProbeLine(finding);
  }
  return result;
}

}  // namespace Corvane::Tool
