#include "collection/ipp_data_mapper.h"

#include <chrono>
#include <thread>

#include "ipp/wire/codes.h"
#include "ipp/wire/writer.h"
#include "tests/support/device_test.h"

namespace Corvane::Test {
namespace {

class IppDataMapperTest : public DeviceTest {
 protected:
  IppDataMapperTest() {
    m_device->host = L"USB001";  // is not probed
    Serve(3, "low,jam");
    Make(ToWide(ReadData("collection/ipp_map.xml")).c_str());
  }

  void Serve(int printerState, const char* reasons) {
    char answer[kIPPRequestSize] = "\2\0\0\0\0\0\0\x64\4";
    int length = 9;
    IPPWriter attributes(answer, &length);
    attributes.Attribute(IPPTag::kText, "printer-info", "Flur \xC3\xBC");
    attributes.Attribute(IPPTag::kText, "printer-make-and-model", "Quillmere");
    attributes.Integer(IPPTag::kEnum, "printer-state", printerState);
    attributes.Attributes(IPPTag::kKeyword, "printer-state-reasons", reasons);
    attributes.Integer(IPPTag::kInteger, "marker-levels", 64);
    attributes.Integer(IPPTag::kEnum, "job-state", 5);
    attributes.Delimiter(IPPTag::kEndOfAttributes);
    for (const wchar_t* const path : {L"/ipp/print", L"/ipp/two"}) {
      m_device->Serve(kIppPort, path, std::string(answer, static_cast<std::size_t>(length)));
    }
  }
};

TEST_F(IppDataMapperTest, AsksThePrinterForWhatItHasNotTold) {
  for (const Case& c : ReadCases("collection/ipp_values.txt")) {
    SCOPED_TRACE(c.Where());
    const int before = m_device->Requests();
    EXPECT_EQ(c.Wide("answer"), Get(c.Wide("asked").c_str()));
    EXPECT_EQ(c.Find("sent").has_value(), m_device->Requests() > before);
    EXPECT_NE(std::string::npos, m_device->lastRequestBody.find(c.Text("sent")));
  }
}

TEST_F(IppDataMapperTest, ForgetsWhatWentStale) {
  EXPECT_EQ(L"Idle", Get(L"State"));
  EXPECT_EQ(L"jam", Get(L"Many.002"));
  Serve(5, "low");
  EXPECT_EQ(L"5", Get(L"Now"));
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
  EXPECT_EQ(L"5", Get(L"State"));
  EXPECT_EQ(L"low", Get(L"Many"));
  EXPECT_EQ(L"[S_FALSE]", Get(L"Many.002"));
  m_device->answers.clear();
  EXPECT_EQ(L"[E_FAIL]", Get(L"Now"));
  EXPECT_EQ(L"Quillmere", Get(L"Model"));
}

}  // namespace
}  // namespace Corvane::Test
