// What the tests of automation types share.
#ifndef CORVANE_TESTS_PLATFORM_AUTOMATION_FIXTURE_H_
#define CORVANE_TESTS_PLATFORM_AUTOMATION_FIXTURE_H_

#include "corvane/platform.h"

namespace Corvane::Test {

// Lives on the stack: only the balance of references counts.
struct CountedObject final : IUnknown {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  ULONG references = 1;
};

inline VARIANT ReferenceTo(int type, void* value) {
  VARIANT reference{};
  reference.vt = static_cast<VARTYPE>(type | VT_BYREF);
  reference.byref = value;
  return reference;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_PLATFORM_AUTOMATION_FIXTURE_H_
