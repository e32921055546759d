// What the decoder gave, as one text to compare.
#ifndef CORVANE_TESTS_IPP_DECODED_H_
#define CORVANE_TESTS_IPP_DECODED_H_

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "core/text.h"
#include "ipp/ipp_operations.h"
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
  const auto text = [](BSTR bstr) { return Narrow({bstr, SysStringLen(bstr)}); };
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

inline HRESULT Parse(IPPOperations* operations, std::string_view body, VARIANT* value) {
  return operations->ParseIPPContent(reinterpret_cast<const unsigned char*>(body.data()),
                                     static_cast<int>(body.size()), value);
}

// Decodes and asks for an attribute at once; "E_FAIL" for a failure, which leaves the output alone.
inline std::string Decoded(IPPOperations* operations, std::string_view body,
                           const char* attribute = nullptr) {
  operations->SetAttributeName(attribute);
  _variant_t value(7L, VT_I4);
  const HRESULT result = Parse(operations, body, &value);
  if (result == S_OK) return Shown(value);
  EXPECT_EQ(E_FAIL, result);
  EXPECT_EQ(VT_I4, value.vt);
  return "E_FAIL";
}

inline std::string Decoded(std::string_view body, const char* attribute = nullptr) {
  IPPOperations operations(nullptr);
  return Decoded(&operations, body, attribute);
}

// What an answer that was decoded has under a name, or path.
inline std::string Held(const IPPOperations& operations, const char* path) {
  _variant_t value(7L, VT_I4);
  const bool found = operations.GetValueFromIPPMap(path, &value);
  EXPECT_EQ(found, value.vt != VT_I4) << (path ? path : "null");
  return Shown(value);
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_IPP_DECODED_H_
