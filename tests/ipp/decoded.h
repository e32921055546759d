// What was read of an answer, as one text to compare.
#ifndef CORVANE_TESTS_IPP_DECODED_H_
#define CORVANE_TESTS_IPP_DECODED_H_

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "base/utf8.h"
#include "ipp/ipp_operations.h"
#include "ipp/wire/values.h"
#include "platform/system.h"

namespace Corvane::Test {

inline std::string JoinValues(const std::vector<std::string>& values) {
  if (values.size() == 1) return values.front();
  std::string joined;
  for (const std::string& value : values) joined.append(joined.empty() ? "[" : "|").append(value);
  return joined.append(1, ']');
}

// The text of one value, "[a|b]" of several, "nothing" of an output that was left alone.
inline std::string Shown(const VARIANT& value) {
  if (value.vt == VT_I4) return "nothing";
  const auto text = [](BSTR bstr) { return ToUtf8({bstr, SysStringLen(bstr)}); };
  if (value.vt == VT_BSTR) return text(value.bstrVal);
  EXPECT_EQ(VT_ARRAY | VT_BSTR, value.vt);
  if (value.vt != (VT_ARRAY | VT_BSTR)) return {};
  const SAFEARRAY& array = *value.parray;
  EXPECT_EQ(1, array.cDims);
  EXPECT_EQ(0, array.rgsabound[0].lLbound);
  std::vector<std::string> texts;
  for (ULONG i = 0; i < array.rgsabound[0].cElements; ++i) {
    texts.push_back(text(static_cast<BSTR*>(array.pvData)[i]));
  }
  return JoinValues(texts);
}

// Of what fills an output: "E_FAIL" for a failure, which leaves that alone.
template <typename Ask>
std::string Asked(Ask ask) {
  _variant_t value(7L, VT_I4);
  const HRESULT result = ask(&value);
  if (result == S_OK) return Shown(value);
  EXPECT_EQ(E_FAIL, result);
  EXPECT_EQ(VT_I4, value.vt);
  return "E_FAIL";
}

inline HRESULT Parse(IPPOperations* operations, std::string_view body, VARIANT* value = nullptr) {
  return operations->ParseIPPContent(reinterpret_cast<const unsigned char*>(body.data()),
                                     static_cast<int>(body.size()), value);
}

// What an answer that was decoded has under a name, or path.
inline std::string Held(const IPPOperations& operations, const char* path) {
  _variant_t value(7L, VT_I4);
  const bool found = operations.GetValueFromIPPMap(path, &value);
  EXPECT_EQ(found, value.vt != VT_I4) << (path ? path : "null");
  return Shown(value);
}

// "group tag name=value|value" in a line for each attribute; collections as they lie on the wire.
inline std::string Told(std::string_view bytes) {
  IPPMessage message;
  ReadIPPMessage(bytes, &message);
  std::string lines;
  for (const IPPGroup& group : message.Groups()) {
    for (const IPPAttribute& attribute : message.AttributesOf(group)) {
      const auto values = message.ValuesOf(attribute);
      char tags[16];
      std::snprintf(tags, sizeof(tags), "%d %X ", group.tag, values.empty() ? 0 : values[0].tag);
      lines.append(lines.empty() ? "" : "\n").append(tags).append(message.NameOf(attribute));
      for (const IPPValue& value : values) {
        lines += &value == &values[0] ? '=' : '|';
        lines += IPPTextOf(message, value);
      }
    }
  }
  return lines;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_IPP_DECODED_H_
