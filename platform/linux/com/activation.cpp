// Apartment count and activation. No registration: the one class is known at compile time.
#include "corvane/linux/com.h"
#include "corvane/linux/dom.h"
#include "platform/linux/dom/dom_objects.h"

extern "C" {
const IID IID_IUnknown = {
    0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
const IID IID_IDispatch = {
    0x00020400, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
const IID IID_IClassFactory = {
    0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
}

namespace {

thread_local ULONG apartmentCount = 0;

// Stateless and never destroyed, so references to it are not counted.
class DomClassFactory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
    return *object != nullptr ? S_OK : E_NOINTERFACE;
  }

  // What a caller that watches sees of an object that somebody else holds too.
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object == nullptr) return E_INVALIDARG;
    *object = nullptr;
    return outer != nullptr ? CLASS_E_NOAGGREGATION : CreateDomDocument(iid, object);
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

// CO_E_NOTINITIALIZED, REGDB_E_CLASSNOTREG, or S_OK for the document class.
HRESULT CheckActivation(REFCLSID classId, DWORD context) {
  if (apartmentCount == 0) return CO_E_NOTINITIALIZED;
  const bool inProcess = (context & CLSCTX_INPROC_SERVER) != 0;
  return inProcess && classId == CLSID_DOMDocument30 ? S_OK : REGDB_E_CLASSNOTREG;
}

}  // namespace

extern "C" {

HRESULT WINAPI CoInitialize(void* reserved) {
  if (reserved != nullptr) return E_INVALIDARG;
  return apartmentCount++ == 0 ? S_OK : S_FALSE;
}

void WINAPI CoUninitialize() {
  if (apartmentCount != 0) --apartmentCount;
}

HRESULT WINAPI CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid,
                                void** object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  const HRESULT result = CheckActivation(classId, context);
  if (FAILED(result)) return result;
  return outer != nullptr ? CLASS_E_NOAGGREGATION : CreateDomDocument(iid, object);
}

HRESULT WINAPI CoGetClassObject(REFCLSID classId, DWORD context, void*, REFIID iid,
                                void** factory) {
  if (factory == nullptr) return E_INVALIDARG;
  *factory = nullptr;
  const HRESULT result = CheckActivation(classId, context);
  if (FAILED(result)) return result;
  static DomClassFactory domFactory;
  return domFactory.QueryInterface(iid, factory);
}

}  // extern "C"
