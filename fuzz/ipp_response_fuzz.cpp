// The IPP decoder on any bytes, as an answer: the last byte of its request id says what is asked
// for and of which operation. A failure leaves the output alone, what was read before leaves no
// trace.
#include "corvane/handles.h"
#include "fuzz/input.h"
#include "ipp/ipp_operations.h"
#include "ipp/wire/codes.h"
#include "ipp/wire/values.h"
#include "ipp/wire/writer.h"

namespace {

using Corvane::IPPOperations;
using Corvane::Fuzz::Expect;

// The values with a line end behind each; nothing for an output that was left alone.
std::wstring Texts(const VARIANT& value) {
  std::wstring texts;
  const bool isArray = value.vt == (VT_ARRAY | VT_BSTR);
  const ULONG count = isArray ? value.parray->rgsabound[0].cElements : value.vt == VT_BSTR;
  Expect(isArray ? count > 1 : count == 1 || value.vt == VT_I4);
  const BSTR* text = isArray ? static_cast<BSTR*>(value.parray->pvData) : &value.bstrVal;
  for (ULONG i = 0; i < count; ++i, ++text) texts.append(*text, SysStringLen(*text)) += L'\n';
  return texts;
}

std::wstring LookUp(const IPPOperations& answer, const char* name) {
  _variant_t value(0L);
  Expect(answer.GetValueFromIPPMap(name, &value) == (value.vt != VT_I4));
  return Texts(value);
}

// Every value of a message is reached through its groups or stands before them, has a text, and is
// read again from where it was written anew.
void ExpectSameWhenWrittenAnew(std::string_view bytes) {
  Corvane::IPPMessage message, again;
  const Corvane::IPPReading reading = ReadIPPMessage(bytes, &message);
  Expect(message.End() <= bytes.size());
  if (reading == Corvane::IPPReading::kMalformed) return;
  const auto header = Corvane::MakeIPPHeader(message.Header().code);
  std::string anew(header.begin(), header.end());
  std::size_t inGroups = 0, texts = 0;
  for (const Corvane::IPPGroup& group : message.Groups()) {
    inGroups += message.AttributesOf(group).size();
  }
  Expect(inGroups <= message.Attributes().size());
  for (const Corvane::IPPAttribute& attribute : message.Attributes()) {
    std::string_view name = message.NameOf(attribute);
    for (const Corvane::IPPValue& value : message.ValuesOf(attribute)) {
      texts += IPPTextOf(message, value).size();
      Corvane::AppendIPPValue(&anew, value.tag, name, message.BytesOf(value));
      if (value.tag != Corvane::IPPTag::kMemberAttrName) name = {};
    }
  }
  Expect(ReadIPPMessage(anew, &again) == Corvane::IPPReading::kNoEnd);
  for (const Corvane::IPPAttribute& attribute : again.Attributes()) {
    for (const auto& value : again.ValuesOf(attribute)) texts -= IPPTextOf(again, value).size();
  }
  Expect(texts == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static constexpr const char* kAsked[] = {nullptr, "a", "a.b", "job-id", ".", "a.", "all", "a,b"};
  const unsigned flags = size < 8 ? 0 : data[7];
  const char* const asked = kAsked[flags % 8];
  const bool isJobOperation = (flags & 8) != 0, isGetJobs = (flags & 16) != 0;
  const int length = static_cast<int>(size);
  const bool hasHeader = length >= 8 && data[0] == 2;
  const int status = hasHeader ? data[2] << 8 | data[3] : 0;

  ExpectSameWhenWrittenAnew({reinterpret_cast<const char*>(data), size});

  IPPOperations fresh(nullptr), used(nullptr);
  for (auto* answer : {&fresh, &used}) {
    if (isJobOperation) answer->SetJobOperations();
  }
  char form[Corvane::kIPPRequestSize];
  int formLength = 0;
  used.FormIPPRequestBasedOnOperation(form, isGetJobs ? 10 : 0, &formLength, nullptr);
  used.SetAttributeName(asked);
  static constexpr unsigned char kEarlier[] = {2, 0, 0,   1, 0, 0, 0, 9, 1, 0x21,
                                               0, 1, 'a', 0, 4, 0, 0, 0, 9, 3};
  used.ParseIPPContent(kEarlier, sizeof(kEarlier), nullptr);
  _variant_t value(0L);
  const HRESULT result = used.ParseIPPContent(data, length, &value);
  const HRESULT whole = fresh.ParseIPPContent(data, length, nullptr);
  const std::wstring found = LookUp(used, asked);
  Expect(whole == E_FAIL || (hasHeader && !(isJobOperation && status != 0 && status != 0x404)));
  Expect(result == whole || (result == E_FAIL && found.empty() && flags % 8 < 6 && !isGetJobs));
  Expect(Texts(value).empty() || (result == S_OK && Texts(value) == found));
  for (const char* name : {"a", "a.b", "a.b.c", "a.", "status-code"}) {
    Expect(LookUp(used, name) == LookUp(fresh, name));
  }
  Expect(LookUp(used, "a.b").empty() || !LookUp(used, "a").empty());
  Expect(LookUp(used, "a.b.c").empty() || !LookUp(used, "a.b").empty());

  const auto told = Corvane::RefPtr<Corvane::IPPResponseBase>::Adopt(CreateIPPResponse());
  Expect(used.FormResponseStructure(told.Get()) == S_OK);
  Expect(told->GetSuccessStatus() == (hasHeader ? std::to_string(status) : "NOT_SET_ERROR"));
  Expect(LookUp(used, "status-code").empty() != hasHeader);
  return 0;
}
