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
    CoUninitialize();
    CoUninitialize();
    EXPECT_HR(CoInitialize(nullptr), S_OK);
    CoUninitialize();
    CoUninitialize();  // one too many
    EXPECT_HR(CoInitialize(nullptr), S_OK);
    CoUninitialize();
  });
}

TEST(ComTest, RefusesAReservedArgument) {
  if (UnderWine()) GTEST_SKIP() << "Wine 8 ignores the argument";
  OnNewThread([] {
    int reserved = 0;
    EXPECT_HR(CoInitialize(&reserved), E_INVALIDARG);
    EXPECT_HR(CoInitialize(nullptr), S_OK);
    CoUninitialize();
  });
}

TEST(ComTest, ChecksTheOutputBeforeTheApartment) {
  OnNewThread([] {
    EXPECT_HR(
        CoCreateInstance(kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, nullptr),
        E_POINTER);
    EXPECT_HR(
        CoGetClassObject(kDocumentClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, nullptr),
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
  Outer outer;
  const struct {
    const char* name;
    CLSID classId;
    IUnknown* outer;
    DWORD context;
    IID iid;
    HRESULT expected;
  } cases[] = {
      {"unknown class", kUnknownClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
       REGDB_E_CLASSNOTREG},
      {"another process", kDocumentClass, nullptr, kLocalServer, IID_IUnknown, REGDB_E_CLASSNOTREG},
      {"class before aggregation", kUnknownClass, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown,
       REGDB_E_CLASSNOTREG},
      {"aggregation", kDocumentClass, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown,
       CLASS_E_NOAGGREGATION},
      {"aggregation before interface", kDocumentClass, &outer, CLSCTX_INPROC_SERVER,
       IID_IClassFactory, CLASS_E_NOAGGREGATION},
      {"foreign interface", kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, IID_IClassFactory,
       E_NOINTERFACE},
  };
  OnNewThread([&] {
    ASSERT_HR(CoInitialize(nullptr), S_OK);
    for (const auto& c : cases) {
      void* object = &outer;
      EXPECT_HR(CoCreateInstance(c.classId, c.outer, c.context, c.iid, &object), c.expected)
          << c.name;
      EXPECT_EQ(nullptr, object) << c.name;
    }
    CoUninitialize();
  });
}

TEST(ComTest, CreatesDocumentsThroughTheClassObject) {
  OnNewThread([] {
    ASSERT_HR(CoInitialize(nullptr), S_OK);
    void* object = nullptr;
    EXPECT_HR(CoGetClassObject(kDocumentClass, CLSCTX_INPROC_SERVER, nullptr, IID_IXMLDOMDocument,
                               &object),
              E_NOINTERFACE);
    EXPECT_EQ(nullptr, object);
    ASSERT_HR(
        CoGetClassObject(kDocumentClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, &object),
        S_OK);
    IClassFactory* factory = static_cast<IClassFactory*>(object);
    Outer outer;
    EXPECT_HR(factory->CreateInstance(&outer, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(nullptr, object);
    EXPECT_HR(factory->CreateInstance(nullptr, IID_IClassFactory, &object), E_NOINTERFACE);
    EXPECT_EQ(nullptr, object);
    ASSERT_HR(factory->CreateInstance(nullptr, IID_IXMLDOMDocument, &object), S_OK);
    IUnknown* first = static_cast<IUnknown*>(object);
    ASSERT_HR(CoCreateInstance(kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                               &object),
              S_OK);
    IUnknown* second = static_cast<IUnknown*>(object);
    EXPECT_NE(first, second);
    EXPECT_EQ(0u, first->Release());
    EXPECT_EQ(0u, second->Release());
    EXPECT_HR(factory->LockServer(TRUE), S_OK);
    EXPECT_HR(factory->LockServer(FALSE), S_OK);
    factory->Release();
    CoUninitialize();
  });
}

}  // namespace
