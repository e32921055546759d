#include "collection/ipp_data_mapper.h"

#include <chrono>
#include <thread>

#include "core/text.h"
#include "corvane/corvane.h"
#include "ipp/wire/codes.h"
#include "ipp/wire/writer.h"
#include "tests/support/dom.h"
#include "tests/support/fake_device.h"
#include "tests/support/hr.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kSpec[] =
    L"<DataMaps><XMLDataMap Protocol='QUARN'><DataItem Name='Model' URI='/x' XPath='//y'/>"
    L"</XMLDataMap><IPPDataMap><IPPParams Name='Defaults' ResourceURI='/ipp/print' "
    L"JobURI='ipp://p/7'/>"
    L"<StaticDataItem Name='Family'>Office</StaticDataItem>"
    L"<DataItem Name='printer-info'/>"
    L"<DataItem Name='Model' AttributeID='no-such_OR_printer-make-and-model'/>"
    L"<DataItem Name='State' AttributeID='printer-state' LifeSpan='1'>"
    L"<Conversion Contains='3' Value='Idle'/></DataItem>"
    L"<DataItem Name='Now' AttributeID='printer-state' Transient='true'/>"
    L"<DataItem Name='Reasons' AttributeID='printer-state-reasons'>"
    L"<Conversion Contains='jam' Value='Stuck'/></DataItem>"
    L"<DataItem Name='Level' Prefix='toner' AttributeID='marker-levels'/>"
    L"<DataItem Name='Missing' AttributeID='no-such'/>"
    L"<DataItem Name='Job' AttributeID='job-state' Command='Get-Job-Attributes'/>"
    L"<DataItem Name='Other' AttributeID='printer-info' ResourceURI='/ipp/two' Lang='de'/>"
    L"<DataItem Name='Odd' AttributeID='printer-info' Command='Purge-Jobs'/>"
    L"</IPPDataMap></DataMaps>";

class IppDataMapperTest : public ParsingTest {
 protected:
  IppDataMapperTest() {
    m_device->host = L"USB001";  // is not probed
    Serve(3);
    DataCollection* made = nullptr;
    EXPECT_HR(CreateDataCollectionFromXML(m_device.Get(), kSpec, &made, nullptr), S_OK);
    m_collection = RefPtr<DataCollection>::Adopt(made);
  }

  void Serve(int printerState) {
    char answer[kIPPRequestSize] = "\2\0\0\0\0\0\0\x64\4";
    int length = 9;
    IPPWriter attributes(answer, &length);
    attributes.Attribute(IPPTag::kText, "printer-info", "Flur \xC3\xBC");
    attributes.Attribute(IPPTag::kText, "printer-make-and-model", "Quillmere");
    attributes.Integer(IPPTag::kEnum, "printer-state", printerState);
    attributes.Attributes(IPPTag::kKeyword, "printer-state-reasons", "low,jam");
    attributes.Integer(IPPTag::kInteger, "marker-levels", 64);
    attributes.Integer(IPPTag::kEnum, "job-state", 5);
    attributes.Delimiter(IPPTag::kEndOfAttributes);
    for (const wchar_t* const path : {L"/ipp/print", L"/ipp/two"}) {
      m_device->Serve(631, path, std::string(answer, static_cast<std::size_t>(length)));
    }
  }
  // The value as text, or the result in brackets.
  std::wstring Get(const wchar_t* name) {
    _variant_t value(L"untouched");
    const HRESULT result = m_collection->GetValue(name, &value);
    if (result == S_OK) return std::wstring(static_cast<_bstr_t>(value));
    EXPECT_STREQ(L"untouched", value.bstrVal) << "the output of a failure is left alone";
    wchar_t code[16];
    std::swprintf(code, 16, L"[%x]", static_cast<unsigned>(result));
    return code;
  }
  bool LastRequestHas(const char* text) {
    return m_device->lastRequestBody.find(text) != std::string::npos;
  }

  const RefPtr<FakeDevice> m_device = RefPtr<FakeDevice>::Share(new FakeDevice);
  RefPtr<DataCollection> m_collection;
};

TEST_F(IppDataMapperTest, AnswersFromWhatThePrinterToldAtFirst) {
  const int before = m_device->Requests();
  static const std::pair<const wchar_t*, const wchar_t*> kCases[] = {
      {L"Family", L"Office"},
      {L"printer-info", L"Flur \x00FC"},
      {L"Model", L"Quillmere"},
      {L"ns:Model", L"Quillmere"},
      {L"State", L"Idle"},
      {L"Reasons", L"Stuck"},
      {L"Reasons.001", L"low"},
      {L"Reasons.002", L"Stuck"},
      {L"toner:Level.001", L"64"},
      {L"Reasons.003", L"[1]"},
      {L"Reasons.000", L"[80004005]"},
      {L"Unknown", L"[80004005]"},
      {L"IPPParams", L"[80004005]"},
      {L"IPPParams.001", L"[80004005]"},
      {L"Odd", L"[80004005]"}};
  for (const auto& [name, value] : kCases) EXPECT_EQ(value, Get(name)) << Narrow(name);
  EXPECT_EQ(before, m_device->Requests());
}

TEST_F(IppDataMapperTest, AsksThePrinterForTheRest) {
  EXPECT_EQ(L"[80004005]", Get(L"Missing"));
  EXPECT_TRUE(LastRequestHas("no-such"));
  EXPECT_EQ(L"5", Get(L"Job"));
  EXPECT_TRUE(LastRequestHas("ipp://p/7"));
  const int before = m_device->Requests();
  EXPECT_EQ(L"5", Get(L"Job"));
  EXPECT_EQ(before, m_device->Requests()) << "a job's attribute without a lifespan is kept";
  EXPECT_EQ(L"Flur \x00FC", Get(L"Other"));
  EXPECT_TRUE(LastRequestHas("/ipp/two"));
  EXPECT_TRUE(LastRequestHas("\2de"));
}

TEST_F(IppDataMapperTest, ForgetsWhatWentStale) {
  EXPECT_EQ(L"Idle", Get(L"State"));
  Serve(5);
  EXPECT_EQ(L"5", Get(L"Now"));
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
  EXPECT_EQ(L"5", Get(L"State"));
  m_device->answers.clear();
  EXPECT_EQ(L"[80004005]", Get(L"Now"));
  EXPECT_EQ(L"Quillmere", Get(L"Model"));
}

}  // namespace
}  // namespace Corvane::Test
