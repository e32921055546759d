// A collection over a device that answers from tables.
#ifndef CORVANE_TESTS_SUPPORT_DEVICE_TEST_H_
#define CORVANE_TESTS_SUPPORT_DEVICE_TEST_H_

#include <utility>

#include "base/utf8.h"
#include "corvane/corvane.h"
#include "tests/support/cases.h"
#include "tests/support/dom.h"
#include "tests/support/fake_device.h"
#include "tests/support/fake_snmp.h"
#include "tests/support/hr.h"

namespace Corvane::Test {

class DeviceTest : public ParsingTest {
 protected:
  // Makes the collection; when that is to fail there is none, and the output is left alone.
  void Make(const wchar_t* xml, HRESULT expected = S_OK, ICacheProvider* cache = nullptr) {
    auto* const untouched = reinterpret_cast<DataCollection*>(this);
    DataCollection* made = untouched;
    EXPECT_HR(CreateDataCollectionFromXML(m_device.Get(), xml, &made, cache), expected);
    if (expected == S_OK) m_collection = RefPtr<DataCollection>::Adopt(made);
    EXPECT_EQ(expected != S_OK, made == untouched);
  }

  // The value as TextOf writes it, or the result in brackets; the output is left alone then.
  std::wstring Get(const wchar_t* name) {
    _variant_t value(L"untouched");
    const HRESULT result = m_collection->GetValue(name, &value);
    if (result == S_OK) return TextOf(value);
    EXPECT_EQ(L"untouched", TextOf(value));
    return L'[' + ToWide(HrText(result)) + L']';
  }

  // What the device was asked since the last time: by HTTP and IPP, then by SNMP.
  std::wstring TakeCalls() {
    std::wstring text;
    for (auto* const calls : {&m_device->calls, &m_snmp.calls}) {
      for (const std::wstring& call : std::exchange(*calls, {})) {
        text.append(text.empty() ? L"" : L", ").append(call);
      }
    }
    return text;
  }

  // Asks for the values of a data file, in order: each sees what the ones before have stored.
  void AskAll(const char* file) {
    TakeCalls();
    for (const Case& c : ReadCases(file)) {
      SCOPED_TRACE(c.Where());
      EXPECT_EQ(c.Wide("answer"), Get(c.Wide("asked").c_str()));
      EXPECT_EQ(c.Wide("calls"), TakeCalls());
    }
  }

  FakeSnmp m_snmp;
  const RefPtr<FakeDevice> m_device = RefPtr<FakeDevice>::Share(new FakeDevice);
  RefPtr<DataCollection> m_collection;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_DEVICE_TEST_H_
