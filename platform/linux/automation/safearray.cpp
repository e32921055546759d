// One-dimensional SAFEARRAYs: descriptor, bounds and elements in one block of memory.
#include <cstddef>
#include <cstdlib>

#include "platform/linux/automation/variant_types.h"

namespace {

// Sizes of elements are computed with 32 bits by callers.
constexpr std::size_t kMaxDataBytes = UINT32_MAX;

// The descriptor that callers see does not name the element type: it stands before it.
struct Block {
  alignas(std::max_align_t) VARTYPE type;
  alignas(std::max_align_t) SAFEARRAY array;
};

VARTYPE ArrayTypeOf(const SAFEARRAY& array) {
  const char* block = reinterpret_cast<const char*>(&array) - offsetof(Block, array);
  VARTYPE type;
  std::memcpy(&type, block + offsetof(Block, type), sizeof(type));
  return type;
}

// Elements are texts, which the array owns, or numbers.
bool HoldsTexts(const SAFEARRAY& array) { return ArrayTypeOf(array) == VT_BSTR; }

char* ElementAt(const SAFEARRAY& array, ULONG position) {
  return static_cast<char*>(array.pvData) + std::size_t{position} * array.cbElements;
}

// NULL when `index` lies outside the bounds.
char* FindArrayElement(const SAFEARRAY& array, LONG index) {
  const std::int64_t position = std::int64_t{index} - array.rgsabound[0].lLbound;
  if (position < 0 || position >= array.rgsabound[0].cElements) return nullptr;
  return ElementAt(array, static_cast<ULONG>(position));
}

// `destination` owns nothing before, and is left alone on failure. A NULL BSTR stays NULL.
HRESULT CopyElement(const SAFEARRAY& array, const void* source, void* destination) {
  if (HoldsTexts(array)) {
    BSTR text;
    std::memcpy(&text, source, sizeof(text));
    BSTR copy = nullptr;
    if (text != nullptr) {
      copy = SysAllocStringByteLen(reinterpret_cast<const char*>(text), SysStringByteLen(text));
      if (copy == nullptr) return E_OUTOFMEMORY;
    }
    std::memcpy(destination, &copy, sizeof(copy));
  } else {
    std::memcpy(destination, source, array.cbElements);
  }
  return S_OK;
}

void FreeElement(const SAFEARRAY& array, const void* element) {
  if (!HoldsTexts(array)) return;
  BSTR text;
  std::memcpy(&text, element, sizeof(text));
  SysFreeString(text);
}

// Dimensions count from 1, and there is one.
HRESULT CheckBoundCall(const SAFEARRAY* array, UINT dimension, const LONG* bound) {
  if (array == nullptr || bound == nullptr) return E_INVALIDARG;
  return dimension == 1 ? S_OK : DISP_E_BADINDEX;
}

}  // namespace

extern "C" {

SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) {
  const bool isOwner = type == VT_VARIANT || type == VT_UNKNOWN || type == VT_DISPATCH;
  const UINT elementBytes = isOwner ? 0 : ElementBytes(type);
  const std::size_t dataBytes = std::size_t{elementBytes} * count;
  if (elementBytes == 0 || dataBytes > kMaxDataBytes) return nullptr;
  void* memory = std::calloc(1, sizeof(Block) + dataBytes);
  if (memory == nullptr) return nullptr;
  Block* block = static_cast<Block*>(memory);
  block->type = type;
  SAFEARRAY* array = &block->array;
  array->cDims = 1;
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
  SAFEARRAY* result = SafeArrayCreateVector(ArrayTypeOf(*array), bound.lLbound, bound.cElements);
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
  *type = ArrayTypeOf(*array);
  return S_OK;
}

HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element) {
  if (array == nullptr || index == nullptr || element == nullptr) return E_INVALIDARG;
  const char* source = FindArrayElement(*array, *index);
  return source == nullptr ? DISP_E_BADINDEX : CopyElement(*array, source, element);
}

HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element) {
  if (array == nullptr || index == nullptr) return E_INVALIDARG;
  char* destination = FindArrayElement(*array, *index);
  if (destination == nullptr) return DISP_E_BADINDEX;
  const void* source = HoldsTexts(*array) ? &element : element;
  if (source == nullptr) return E_INVALIDARG;
  char copy[sizeof(LONGLONG)];
  const HRESULT status = CopyElement(*array, source, copy);
  if (FAILED(status)) return status;
  FreeElement(*array, destination);
  std::memcpy(destination, copy, array->cbElements);
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
