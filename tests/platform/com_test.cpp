// Apartments and activation.
#include <gtest/gtest.h>

#include <thread>

#include "corvane/platform.h"
#include "tests/support/hr.h"
#include "tests/support/wine.h"

namespace {

using Corvane::Test::UnderWine;

constexpr CLSID kDocumentClass = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};
constexpr CLSID kUnknownClass = {0x12345678, 0, 0, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr DWORD kInproc = CLSCTX_INPROC_SERVER;
constexpr DWORD kLocalServer = 0x4;

struct Outer final : IUnknown {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
    *object = this;
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

// Each test has a thread of its own: apartments belong to threads.
template <typename Body>
void OnNewThread(Body body) {
  std::thread(body).join();
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

TEST(ComTest, ChecksTheOutputBeforeTheApartment) {
  OnNewThread([] {
    EXPECT_HR(CoCreateInstance(kDocumentClass, nullptr, kInproc, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_HR(CoGetClassObject(kDocumentClass, kInproc, nullptr, IID_IClassFactory, nullptr),
              E_INVALIDARG);
    Outer outer;
    void* object = &outer;
    EXPECT_HR(CoCreateInstance(kUnknownClass, &outer, 0, IID_IUnknown, &object),
              CO_E_NOTINITIALIZED);
    EXPECT_EQ(nullptr, object);
    object = &outer;
    EXPECT_HR(CoGetClassObject(kUnknownClass, 0, nullptr, IID_IUnknown, &object),
              CO_E_NOTINITIALIZED);
    EXPECT_EQ(nullptr, object);
  });
}

TEST(ComTest, RefusesWhatItCannotCreate) {
  OnNewThread([] {
    ASSERT_HR(CoInitialize(nullptr), S_OK);
    Outer outer;
    const auto refused = [&](const CLSID& id, IUnknown* aggregate, DWORD context, const IID& iid) {
      void* object = &outer;
      const HRESULT result = CoCreateInstance(id, aggregate, context, iid, &object);
      EXPECT_EQ(nullptr, object);
      return result;
    };
    EXPECT_HR(refused(kUnknownClass, nullptr, kInproc, IID_IUnknown), REGDB_E_CLASSNOTREG);
    EXPECT_HR(refused(kDocumentClass, nullptr, kLocalServer, IID_IUnknown), REGDB_E_CLASSNOTREG);
    EXPECT_HR(refused(kUnknownClass, &outer, kInproc, IID_IUnknown), REGDB_E_CLASSNOTREG);
    EXPECT_HR(refused(kDocumentClass, &outer, kInproc, IID_IUnknown), CLASS_E_NOAGGREGATION);
    EXPECT_HR(refused(kDocumentClass, &outer, kInproc, IID_IClassFactory), CLASS_E_NOAGGREGATION);
    EXPECT_HR(refused(kDocumentClass, nullptr, kInproc, IID_IClassFactory), E_NOINTERFACE);
    CoUninitialize();
  });
}

TEST(ComTest, CreatesDocumentsThroughTheClassObject) {
  OnNewThread([] {
    ASSERT_HR(CoInitialize(nullptr), S_OK);
    Outer outer;
    void* object = &outer;
    EXPECT_HR(CoGetClassObject(kDocumentClass, kInproc, nullptr, IID_IXMLDOMDocument, &object),
              E_NOINTERFACE);
    EXPECT_EQ(nullptr, object);
    ASSERT_HR(CoGetClassObject(kDocumentClass, kInproc, nullptr, IID_IClassFactory, &object), S_OK);
    IClassFactory* factory = static_cast<IClassFactory*>(object);
    EXPECT_HR(factory->CreateInstance(&outer, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(nullptr, object);
    object = &outer;
    EXPECT_HR(factory->CreateInstance(nullptr, IID_IClassFactory, &object), E_NOINTERFACE);
    EXPECT_EQ(nullptr, object);
    ASSERT_HR(factory->CreateInstance(nullptr, IID_IXMLDOMDocument, &object), S_OK);
    EXPECT_EQ(0u, static_cast<IUnknown*>(object)->Release());
    factory->Release();
    CoUninitialize();
  });
}

}  // namespace
