#include "tools/output_json.h"

#include <cstddef>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "tools/output_text.h"
#include "tools/text_escape.h"
#include "tools/utf8.h"

namespace Corvane::Tool {
namespace {

using Json = nlohmann::ordered_json;

Json JsonOf(const VARIANT& value) {
  switch (value.vt) {
    case VT_I1:
      return static_cast<signed char>(value.cVal);
    case VT_UI1:
      return value.bVal;
    case VT_I2:
      return value.iVal;
    case VT_UI2:
      return value.uiVal;
    case VT_I4:
    case VT_INT:
      return value.lVal;
    case VT_UI4:
    case VT_UINT:
      return value.ulVal;
    case VT_I8:
      return value.llVal;
    case VT_UI8:
      return value.ullVal;
    default:
      return Utf8FromWide(TextOf(value));
  }
}

// The library leaves DEL, C1 and directional controls as they are. They stand within strings only,
// where an escape means the same.
std::string EscapeControls(const std::string& json) {
  const std::wstring text = WideFromUtf8(json);
  std::string out;
  for (std::size_t position = 0; position < text.size();) {
    const char32_t codePoint = NextCodePoint(text, position);
    if (codePoint >= 0x20 && IsControl(codePoint)) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(codePoint) & 0xFFFF);
      out += escape;
    } else {
      AppendUtf8(out, codePoint);
    }
  }
  return out;
}

}  // namespace

std::string FormatJson(const std::vector<NamedValue>& answers) {
  Json object = Json::object();
  for (const NamedValue& answer : answers) {
    object[Utf8FromWide(answer.name)] =
        answer.result == S_OK ? JsonOf(answer.value.Get()) : Json(nullptr);
  }
  return EscapeControls(object.dump(2)) + '\n';
}

}  // namespace Corvane::Tool
