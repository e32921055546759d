// COM activation: IUnknown, IClassFactory, the apartment count of a thread, and the one class the
// layer registers, the DOM document {F5078F32-C551-11D3-89B9-0000F81FE221}.
#ifndef CORVANE_LINUX_COM_H_
#define CORVANE_LINUX_COM_H_

#include "corvane/linux/base.h"

extern "C" {
CORVANE_API extern const IID IID_IUnknown;
CORVANE_API extern const IID IID_IDispatch;
CORVANE_API extern const IID IID_IClassFactory;
}

struct IUnknown {
  // S_OK with one reference more in *object; E_NOINTERFACE and NULL when `iid` is not offered;
  // E_POINTER (E_INVALIDARG from the DOM) for a NULL `object`.
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

// The layer offers no late binding: this is the base that the DOM's interfaces have on Windows,
// without operations.
struct IDispatch : public IUnknown {};

struct IClassFactory : public IUnknown {
  // `outer` must be NULL (CLASS_E_NOAGGREGATION). The caller owns one reference to *object.
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;
};

#define CLSCTX_INPROC_SERVER 0x1

extern "C" {

// S_OK for the thread's first call, S_FALSE for every further one; E_INVALIDARG when `reserved` is
// not NULL. Every S_OK and S_FALSE is balanced by one CoUninitialize; one more than that does
// nothing.
CORVANE_API HRESULT WINAPI CoInitialize(void* reserved);
CORVANE_API void WINAPI CoUninitialize();

// Checked in this order: a NULL output (E_POINTER from CoCreateInstance, E_INVALIDARG from
// CoGetClassObject); CO_E_NOTINITIALIZED on a thread without CoInitialize; REGDB_E_CLASSNOTREG for
// an unknown class or a context without CLSCTX_INPROC_SERVER; CLASS_E_NOAGGREGATION; E_NOINTERFACE.
// *object and *factory are NULL after every failure. `reserved` is ignored.
CORVANE_API HRESULT WINAPI CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context,
                                            REFIID iid, void** object);
CORVANE_API HRESULT WINAPI CoGetClassObject(REFCLSID classId, DWORD context, void* reserved,
                                            REFIID iid, void** factory);

}  // extern "C"

#endif  // CORVANE_LINUX_COM_H_
