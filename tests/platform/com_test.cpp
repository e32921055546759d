// Apartments and activation.
#include <gtest/gtest.h>

#include <thread>

#include "corvane/handles.h"
#include "tests/platform/automation_fixture.h"
#include "tests/support/hr.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

constexpr CLSID kDocument = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};
constexpr CLSID kUnknown = {0x12345678, 0, 0, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr DWORD kInproc = CLSCTX_INPROC_SERVER;
constexpr DWORD kLocalServer = 0x4;

// Each test has a thread of its own: apartments belong to threads.
template <typename Body>
void OnNewThread(Body body) {
  std::thread(body).join();
}

// A call that gives no object, and says so.
template <typename Call>
HRESULT Refused(Call call) {
  void* object = &call;
  const HRESULT result = call(&object);
  EXPECT_EQ(nullptr, object);
  return result;
}
HRESULT Create(const CLSID& id, IUnknown* outer, DWORD context, const IID& iid) {
  return Refused([&](void** out) { return CoCreateInstance(id, outer, context, iid, out); });
}

TEST(ComTest, CountsInitialisationsOfAThread) {
  OnNewThread([] {
    EXPECT_HR(CoInitialize(nullptr), S_OK);
    EXPECT_HR(CoInitialize(nullptr), S_FALSE);
    OnNewThread([] {
      EXPECT_HR(CoInitialize(nullptr), S_OK);
      CoUninitialize();
    });
    CoUninitialize();
    EXPECT_HR(CoInitialize(nullptr), S_FALSE);
    for (int i = 0; i < 3; ++i) CoUninitialize();  // one too many
    EXPECT_HR(CoInitialize(nullptr), S_OK);
    CoUninitialize();
    if (UnderWine()) GTEST_SKIP() << "Wine 8 ignores the reserved argument";
    int reserved = 0;
    EXPECT_HR(CoInitialize(&reserved), E_INVALIDARG);
    EXPECT_HR(CoInitialize(nullptr), S_OK);
    CoUninitialize();
  });
}

TEST(ComTest, ChecksTheOutputThenTheApartmentThenTheRest) {
  OnNewThread([] {
    const auto factory = [](const CLSID& id, DWORD context, const IID& iid) {
      return Refused([&](void** out) { return CoGetClassObject(id, context, nullptr, iid, out); });
    };
    CountedObject outer;
    EXPECT_HR(CoCreateInstance(kDocument, nullptr, kInproc, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_HR(CoGetClassObject(kDocument, kInproc, nullptr, IID_IClassFactory, nullptr),
              E_INVALIDARG);
    EXPECT_HR(Create(kUnknown, &outer, 0, IID_IUnknown), CO_E_NOTINITIALIZED);
    EXPECT_HR(factory(kUnknown, 0, IID_IUnknown), CO_E_NOTINITIALIZED);
    ASSERT_HR(CoInitialize(nullptr), S_OK);
    EXPECT_HR(Create(kUnknown, nullptr, kInproc, IID_IUnknown), REGDB_E_CLASSNOTREG);
    EXPECT_HR(Create(kDocument, nullptr, kLocalServer, IID_IUnknown), REGDB_E_CLASSNOTREG);
    EXPECT_HR(Create(kUnknown, &outer, kInproc, IID_IUnknown), REGDB_E_CLASSNOTREG);
    EXPECT_HR(Create(kDocument, &outer, kInproc, IID_IUnknown), CLASS_E_NOAGGREGATION);
    EXPECT_HR(Create(kDocument, &outer, kInproc, IID_IClassFactory), CLASS_E_NOAGGREGATION);
    EXPECT_HR(Create(kDocument, nullptr, kInproc, IID_IClassFactory), E_NOINTERFACE);
    EXPECT_HR(factory(kDocument, kInproc, IID_IXMLDOMDocument), E_NOINTERFACE);
    RefPtr<IClassFactory> documents;
    ASSERT_HR(
        CoGetClassObject(kDocument, kInproc, nullptr, IID_IClassFactory, documents.ReceiveVoid()),
        S_OK);
    const auto create = [&documents](IUnknown* aggregate, const IID& iid) {
      return Refused([&](void** out) { return documents->CreateInstance(aggregate, iid, out); });
    };
    EXPECT_HR(create(&outer, IID_IUnknown), CLASS_E_NOAGGREGATION);
    EXPECT_HR(create(nullptr, IID_IClassFactory), E_NOINTERFACE);
    RefPtr<IXMLDOMDocument> document;
    ASSERT_HR(documents->CreateInstance(nullptr, IID_IXMLDOMDocument, document.ReceiveVoid()),
              S_OK);
    EXPECT_EQ(0u, document.Release()->Release());
    documents.Reset();
    CoUninitialize();
  });
}

}  // namespace
}  // namespace Corvane::Test
