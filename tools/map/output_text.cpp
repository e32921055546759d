#include "tools/map/output_text.h"

#include <cstdio>

#include "tools/output/text_escape.h"

namespace Corvane::Tool {

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

}  // namespace Corvane::Tool
