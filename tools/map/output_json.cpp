#include "tools/map/output_json.h"

#include "base/utf8.h"
#include "tools/map/output_text.h"
#include "tools/output/json_text.h"

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
      return ToUtf8(TextOf(value));
  }
}

}  // namespace

std::string FormatJson(const std::vector<NamedValue>& answers) {
  Json object = Json::object();
  for (const NamedValue& answer : answers) {
    object[ToUtf8(answer.name)] =
        answer.result == S_OK ? JsonOf(answer.value.Get()) : Json(nullptr);
  }
  return JsonText(object);
}

}  // namespace Corvane::Tool
