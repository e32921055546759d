// Life and copies of a VARIANT.
#include <iterator>

#include "corvane/linux/com.h"
#include "platform/linux/automation/variant_types.h"

namespace {

// By type, from VT_EMPTY to VT_UINT.
constexpr std::uint8_t kElementBytes[] = {0, 0, 2, 4, 4, 8, 8, 8, 8, 8, 4, 2, sizeof(VARIANT),
                                          8, 0, 0, 1, 1, 2, 4, 8, 8, 4, 4};

}  // namespace

UINT ElementBytes(VARTYPE type) {
  return type < std::size(kElementBytes) ? kElementBytes[type] : 0;
}

bool IsKnownType(VARTYPE type) {
  constexpr VARTYPE kModifiers = VT_ARRAY | VT_BYREF;
  const VARTYPE plain = static_cast<VARTYPE>(type & ~kModifiers);
  return ElementBytes(plain) != 0 || type <= VT_NULL;
}

HRESULT Dereference(const VARIANT& source, VARIANT* view) {
  const VARIANT* current = &source;
  if (current->vt == (VT_BYREF | VT_VARIANT)) {
    current = current->pvarVal;
    if (current == nullptr || current->vt == (VT_BYREF | VT_VARIANT)) return E_INVALIDARG;
  }
  if (!V_ISBYREF(current)) {
    *view = *current;
    return S_OK;
  }
  const VARTYPE type = static_cast<VARTYPE>(current->vt & ~VT_BYREF);
  const UINT bytes = V_ISARRAY(current) ? sizeof(SAFEARRAY*) : ElementBytes(type);
  if (bytes == 0 || current->byref == nullptr) return E_INVALIDARG;
  VariantInit(view);
  std::memcpy(&view->llVal, current->byref, bytes);
  view->vt = type;
  return S_OK;
}

HRESULT Duplicate(const VARIANT& source, VARIANT* copy) {
  *copy = source;
  if (V_ISBYREF(&source)) return S_OK;
  if (V_ISARRAY(&source)) {
    const HRESULT result = SafeArrayCopy(source.parray, &copy->parray);
    if (FAILED(result)) copy->vt = VT_EMPTY;
    return result;
  }
  switch (source.vt) {
    case VT_BSTR:
      copy->bstrVal = SysAllocStringByteLen(reinterpret_cast<const char*>(source.bstrVal),
                                            SysStringByteLen(source.bstrVal));
      if (copy->bstrVal == nullptr) {
        copy->vt = VT_EMPTY;
        return E_OUTOFMEMORY;
      }
      break;
    case VT_UNKNOWN:
    case VT_DISPATCH:
      if (source.punkVal != nullptr) source.punkVal->AddRef();
      break;
    default:
      break;
  }
  return S_OK;
}

HRESULT Replace(VARIANT* destination, VARIANT value) {
  const HRESULT result = VariantClear(destination);
  if (SUCCEEDED(result)) {
    *destination = value;
  } else {
    VariantClear(&value);
  }
  return result;
}

extern "C" {

void WINAPI VariantInit(VARIANTARG* variant) { *variant = VARIANT{}; }

HRESULT WINAPI VariantClear(VARIANTARG* variant) {
  if (!IsKnownType(variant->vt)) return DISP_E_BADVARTYPE;
  if (!V_ISBYREF(variant)) {
    if (V_ISARRAY(variant)) {
      const HRESULT result = SafeArrayDestroy(variant->parray);
      if (FAILED(result)) return result;
    } else if (variant->vt == VT_BSTR) {
      SysFreeString(variant->bstrVal);
    } else if (variant->vt == VT_UNKNOWN || variant->vt == VT_DISPATCH) {
      if (variant->punkVal != nullptr) variant->punkVal->Release();
    }
  }
  variant->vt = VT_EMPTY;
  return S_OK;
}

HRESULT WINAPI VariantCopy(VARIANTARG* destination, const VARIANTARG* source) {
  if (!IsKnownType(source->vt)) return DISP_E_BADVARTYPE;
  if (destination == source) return S_OK;
  const HRESULT result = VariantClear(destination);
  return FAILED(result) ? result : Duplicate(*source, destination);
}

HRESULT WINAPI VariantCopyInd(VARIANT* destination, const VARIANTARG* source) {
  if (!V_ISBYREF(source)) return VariantCopy(destination, source);
  VARIANT view;
  HRESULT result = Dereference(*source, &view);
  if (FAILED(result)) return result;
  if (!IsKnownType(view.vt)) return DISP_E_BADVARTYPE;
  // The reference may lead into the destination: copy before clearing it.
  VARIANT copy;
  result = Duplicate(view, &copy);
  return FAILED(result) ? result : Replace(destination, copy);
}

}  // extern "C"
