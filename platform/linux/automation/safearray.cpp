// One-dimensional SAFEARRAYs: descriptor, bounds and elements in one block of memory.
#include <cstddef>
#include <cstdlib>

#include "corvane/linux/com.h"
#include "platform/linux/automation/variant_types.h"

namespace {

// fFeatures, with Windows' values.
constexpr USHORT kHaveIid = 0x0040;
constexpr USHORT kHaveVartype = 0x0080;
constexpr USHORT kBstr = 0x0100;
constexpr USHORT kUnknown = 0x0200;
constexpr USHORT kDispatch = 0x0400;
constexpr USHORT kVariant = 0x0800;
constexpr USHORT kCreateVector = 0x2000;

// Sizes of elements are computed with 32 bits by callers.
constexpr std::size_t kMaxDataBytes = UINT32_MAX;

// The descriptor that callers see does not name the element type: it stands before it.
struct Block {
  alignas(std::max_align_t) VARTYPE type;
  alignas(std::max_align_t) SAFEARRAY array;
};

VARTYPE TypeOf(const SAFEARRAY& array) {
  const char* block = reinterpret_cast<const char*>(&array) - offsetof(Block, array);
  VARTYPE type;
  std::memcpy(&type, block + offsetof(Block, type), sizeof(type));
  return type;
}

USHORT FeaturesOf(VARTYPE type) {
  switch (type) {
    case VT_BSTR:
      return kHaveVartype | kBstr;
    case VT_VARIANT:
      return kHaveVartype | kVariant;
    case VT_UNKNOWN:
      return kHaveIid | kUnknown;
    case VT_DISPATCH:
      return kHaveIid | kDispatch;
    default:
      return kHaveVartype;
  }
}

char* ElementAt(const SAFEARRAY& array, ULONG position) {
  return static_cast<char*>(array.pvData) + std::size_t{position} * array.cbElements;
}

// NULL when `index` lies outside the bounds.
char* FindElement(const SAFEARRAY& array, LONG index) {
  const std::int64_t position = std::int64_t{index} - array.rgsabound[0].lLbound;
  if (position < 0 || position >= array.rgsabound[0].cElements) return nullptr;
  return ElementAt(array, static_cast<ULONG>(position));
}

template <typename T>
T Load(const void* element) {
  T value;
  std::memcpy(&value, element, sizeof(value));
  return value;
}

template <typename T>
void Store(void* element, T value) {
  std::memcpy(element, &value, sizeof(value));
}

// A NULL BSTR stays NULL.
HRESULT CopyBstr(BSTR source, void* destination) {
  BSTR copy = nullptr;
  if (source != nullptr) {
    copy = SysAllocStringByteLen(reinterpret_cast<const char*>(source), SysStringByteLen(source));
    if (copy == nullptr) return E_OUTOFMEMORY;
  }
  Store(destination, copy);
  return S_OK;
}

// `destination` owns nothing before. A VARIANT there is VT_EMPTY after a failure, anything else as
// it was.
HRESULT CopyElement(const SAFEARRAY& array, const char* source, void* destination) {
  if ((array.fFeatures & kVariant) != 0) {
    VARIANT* copy = static_cast<VARIANT*>(destination);
    VariantInit(copy);
    return VariantCopy(copy, reinterpret_cast<const VARIANT*>(source));
  }
  if ((array.fFeatures & kBstr) != 0) return CopyBstr(Load<BSTR>(source), destination);
  if ((array.fFeatures & (kUnknown | kDispatch)) != 0) {
    if (IUnknown* object = Load<IUnknown*>(source)) object->AddRef();
  }
  std::memcpy(destination, source, array.cbElements);
  return S_OK;
}

void FreeElement(const SAFEARRAY& array, char* element) {
  if ((array.fFeatures & kVariant) != 0) {
    VariantClear(reinterpret_cast<VARIANT*>(element));
  } else if ((array.fFeatures & kBstr) != 0) {
    SysFreeString(Load<BSTR>(element));
  } else if ((array.fFeatures & (kUnknown | kDispatch)) != 0) {
    if (IUnknown* object = Load<IUnknown*>(element)) object->Release();
  }
}

// Dimensions count from 1, and there is one.
HRESULT CheckBoundCall(const SAFEARRAY* array, UINT dimension, const LONG* bound) {
  if (array == nullptr || bound == nullptr) return E_INVALIDARG;
  return dimension == 1 ? S_OK : DISP_E_BADINDEX;
}

}  // namespace

extern "C" {

SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) {
  const UINT elementBytes = ElementBytes(type);
  const std::size_t dataBytes = std::size_t{elementBytes} * count;
  if (elementBytes == 0 || dataBytes > kMaxDataBytes) return nullptr;
  // Zeroed elements are NULL pointers and VT_EMPTY variants.
  void* memory = std::calloc(1, sizeof(Block) + dataBytes);
  if (memory == nullptr) return nullptr;
  Block* block = static_cast<Block*>(memory);
  block->type = type;
  SAFEARRAY* array = &block->array;
  array->cDims = 1;
  array->fFeatures = static_cast<USHORT>(FeaturesOf(type) | kCreateVector);
  array->cbElements = elementBytes;
  array->pvData = block + 1;
  array->rgsabound[0] = {count, lowerBound};
  return array;
}

HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* array) {
  if (array == nullptr) return S_OK;
  if (array->cLocks != 0) return DISP_E_ARRAYISLOCKED;
  for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i)
    FreeElement(*array, ElementAt(*array, i));
  std::free(reinterpret_cast<char*>(array) - offsetof(Block, array));
  return S_OK;
}

HRESULT WINAPI SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
  if (copy == nullptr) return E_INVALIDARG;
  *copy = nullptr;
  if (array == nullptr) return S_OK;
  const SAFEARRAYBOUND bound = array->rgsabound[0];
  SAFEARRAY* result = SafeArrayCreateVector(TypeOf(*array), bound.lLbound, bound.cElements);
  if (result == nullptr) return E_OUTOFMEMORY;
  for (ULONG i = 0; i < bound.cElements; ++i) {
    const HRESULT status = CopyElement(*array, ElementAt(*array, i), ElementAt(*result, i));
    if (FAILED(status)) {
      SafeArrayDestroy(result);
      return status;
    }
  }
  *copy = result;
  return S_OK;
}

UINT WINAPI SafeArrayGetDim(SAFEARRAY* array) { return array == nullptr ? 0 : array->cDims; }

HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
  const HRESULT status = CheckBoundCall(array, dimension, bound);
  if (SUCCEEDED(status)) *bound = array->rgsabound[0].lLbound;
  return status;
}

HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
  const HRESULT status = CheckBoundCall(array, dimension, bound);
  if (FAILED(status)) return status;
  const SAFEARRAYBOUND& range = array->rgsabound[0];
  *bound = static_cast<LONG>(std::int64_t{range.lLbound} + range.cElements - 1);
  return S_OK;
}

HRESULT WINAPI SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
  if (array == nullptr || type == nullptr) return E_INVALIDARG;
  *type = TypeOf(*array);
  return S_OK;
}

HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element) {
  if (array == nullptr || index == nullptr || element == nullptr) return E_INVALIDARG;
  const char* source = FindElement(*array, *index);
  return source == nullptr ? DISP_E_BADINDEX : CopyElement(*array, source, element);
}

HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element) {
  if (array == nullptr || index == nullptr) return E_INVALIDARG;
  char* destination = FindElement(*array, *index);
  if (destination == nullptr) return DISP_E_BADINDEX;
  if ((array->fFeatures & kBstr) != 0) {
    const BSTR old = Load<BSTR>(destination);
    const HRESULT status = CopyBstr(static_cast<BSTR>(element), destination);
    if (SUCCEEDED(status)) SysFreeString(old);
    return status;
  }
  if ((array->fFeatures & (kUnknown | kDispatch)) != 0) {
    IUnknown* object = static_cast<IUnknown*>(element);
    if (object != nullptr) object->AddRef();
    FreeElement(*array, destination);
    Store(destination, object);
    return S_OK;
  }
  if (element == nullptr) return E_INVALIDARG;
  if ((array->fFeatures & kVariant) != 0) {
    return VariantCopy(reinterpret_cast<VARIANT*>(destination), static_cast<VARIANT*>(element));
  }
  std::memcpy(destination, element, array->cbElements);
  return S_OK;
}

HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* array, void** data) {
  if (array == nullptr || data == nullptr) return E_INVALIDARG;
  ++array->cLocks;
  *data = array->pvData;
  return S_OK;
}

HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* array) {
  if (array == nullptr) return E_INVALIDARG;
  if (array->cLocks == 0) return E_UNEXPECTED;
  --array->cLocks;
  return S_OK;
}

}  // extern "C"
