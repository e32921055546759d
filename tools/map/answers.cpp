#include "tools/map/answers.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/utf8.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

using Json = nlohmann::ordered_json;

Json AnswerJson(const VARIANT& value) {
  switch (value.vt) {
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_INT:
    case VT_UI4:
    case VT_UINT:
    case VT_I8:
      return static_cast<long long>(_variant_t(value));
    case VT_UI8:
      return value.ullVal;
    default:
      return ToUtf8(TextOf(value));
  }
}

}  // namespace

std::wstring TextOf(const VARIANT& value) {
  UniqueVariant text;
  if (FAILED(VariantChangeType(text.Receive(), const_cast<VARIANT*>(&value), 0, VT_BSTR))) {
    return {};
  }
  const BSTR string = text.Get().bstrVal;
  return string ? std::wstring(string, SysStringLen(string)) : std::wstring();
}

std::string FormatLine(const NamedValue& answer) {
  if (answer.result != S_OK) return {};
  return EscapeText(answer.name) + '\t' + EscapeText(TextOf(answer.value.Get())) + '\n';
}

std::string FormatProblem(const NamedValue& answer) {
  char code[32];
  std::snprintf(code, sizeof code, ": no value (0x%08X)", static_cast<unsigned>(answer.result));
  std::string line = EscapeText(answer.name) + code;
  if (!answer.problem.empty()) line += ": " + answer.problem;
  return line;
}

std::string FormatJson(const std::vector<NamedValue>& answers) {
  Json object = Json::object();
  for (const NamedValue& answer : answers) {
    object[ToUtf8(answer.name)] =
        answer.result == S_OK ? AnswerJson(answer.value.Get()) : Json(nullptr);
  }
  return JsonText(object);
}

}  // namespace Corvane::Tool
