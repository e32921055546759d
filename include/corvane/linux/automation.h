// Automation values: BSTR, SAFEARRAY, VARIANT and their operations, with the result codes of
// oleaut32.
//
// A BSTR is a NUL-terminated wide string with a 32-bit count of its bytes before the first
// character. It may hold NULs, and its byte length need not be a multiple of sizeof(wchar_t). NULL
// stands for the empty string. Nothing here is locked: one value, one thread at a time.
#ifndef CORVANE_LINUX_AUTOMATION_H_
#define CORVANE_LINUX_AUTOMATION_H_

#include "corvane/linux/base.h"

struct IUnknown;
struct IDispatch;

typedef wchar_t* BSTR;
typedef std::int16_t VARIANT_BOOL;
#define VARIANT_TRUE (static_cast<VARIANT_BOOL>(-1))
#define VARIANT_FALSE (static_cast<VARIANT_BOOL>(0))

typedef std::uint16_t VARTYPE;
enum VARENUM : int {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000,
  VT_TYPEMASK = 0xFFF,
};

typedef struct tagSAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
} SAFEARRAYBOUND;

// One-dimensional; `cLocks` counts SafeArrayAccessData calls not yet undone. `fFeatures` stays 0:
// SafeArrayGetVartype tells the type of the elements.
typedef struct tagSAFEARRAY {
  USHORT cDims;
  USHORT fFeatures;
  ULONG cbElements;
  ULONG cLocks;
  void* pvData;
  SAFEARRAYBOUND rgsabound[1];
} SAFEARRAY;

struct tagVARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    LONG lVal;
    BYTE bVal;
    SHORT iVal;
    FLOAT fltVal;
    DOUBLE dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    CY cyVal;
    DATE date;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    SAFEARRAY* parray;
    BYTE* pbVal;
    SHORT* piVal;
    LONG* plVal;
    LONGLONG* pllVal;
    FLOAT* pfltVal;
    DOUBLE* pdblVal;
    VARIANT_BOOL* pboolVal;
    SCODE* pscode;
    BSTR* pbstrVal;
    IUnknown** ppunkVal;
    IDispatch** ppdispVal;
    SAFEARRAY** pparray;
    tagVARIANT* pvarVal;
    void* byref;
    CHAR cVal;
    USHORT uiVal;
    ULONG ulVal;
    ULONGLONG ullVal;
    INT intVal;
    UINT uintVal;
    CHAR* pcVal;
    USHORT* puiVal;
    ULONG* pulVal;
    ULONGLONG* pullVal;
    INT* pintVal;
    UINT* puintVal;
    void* reserved[2];  // the width of Windows' record member: a VARIANT has 24 bytes
  };
};
typedef tagVARIANT VARIANT;
typedef VARIANT VARIANTARG;

#define V_VT(x) ((x)->vt)
#define V_BSTR(x) ((x)->bstrVal)
#define V_I4(x) ((x)->lVal)
#define V_INT(x) ((x)->intVal)
#define V_BOOL(x) ((x)->boolVal)
#define V_ARRAY(x) ((x)->parray)
#define V_UNKNOWN(x) ((x)->punkVal)
#define V_ISBYREF(x) (V_VT(x) & VT_BYREF)
#define V_ISARRAY(x) (V_VT(x) & VT_ARRAY)

// VariantChangeType flag: booleans become "True" and "False". Other flags have no effect.
#define VARIANT_ALPHABOOL 0x02

extern "C" {

// BSTR. Allocation failure, and a length whose bytes do not fit 32 bits, give NULL. The caller
// frees every result with SysFreeString. Lengths: `chars` counts wide characters, `bytes` bytes,
// neither the terminator.
CORVANE_API BSTR WINAPI SysAllocString(const OLECHAR* text);  // NULL gives NULL
CORVANE_API BSTR WINAPI SysAllocStringLen(const OLECHAR* text,
                                          UINT chars);  // NULL text: zeroed characters
CORVANE_API BSTR WINAPI SysAllocStringByteLen(const char* text,
                                              UINT bytes);  // NULL text: zeroed bytes
CORVANE_API void WINAPI SysFreeString(BSTR text);           // NULL is allowed
CORVANE_API UINT WINAPI SysStringLen(BSTR text);            // whole wide characters; NULL is 0
CORVANE_API UINT WINAPI SysStringByteLen(BSTR text);        // NULL is 0

// VARIANT. VariantInit makes VT_EMPTY without looking at the old content. VariantClear frees what
// the variant owns (a by-reference variant owns nothing) and leaves VT_EMPTY; a type it does not
// know gives DISP_E_BADVARTYPE. VariantCopy first clears the destination, which must be
// initialised; a NULL BSTR becomes a non-NULL empty one. VariantCopyInd also follows VT_BYREF. A
// copy onto itself is S_OK and changes nothing.
CORVANE_API void WINAPI VariantInit(VARIANTARG* variant);
CORVANE_API HRESULT WINAPI VariantClear(VARIANTARG* variant);
CORVANE_API HRESULT WINAPI VariantCopy(VARIANTARG* destination, const VARIANTARG* source);
CORVANE_API HRESULT WINAPI VariantCopyInd(VARIANT* destination, const VARIANTARG* source);

// Converts `source` to `type` (source and destination may be the same variant): between the integer
// types, VT_R4, VT_R8, VT_BOOL and VT_BSTR, from VT_EMPTY (zero, or no text), from an array of
// bytes to the text with these bytes, and to VT_EMPTY and VT_NULL. On failure the destination is as
// it was. DISP_E_TYPEMISMATCH: any other conversion, so VT_CY and VT_DATE to or from anything but
// themselves, or text that is no number. DISP_E_OVERFLOW: the number does not fit.
// DISP_E_BADVARTYPE: a type the layer does not know, or a NULL VT_DISPATCH. E_INVALIDARG: a NULL
// array of bytes to text, a reference to a reference. E_OUTOFMEMORY.
//
// Text is the same whatever the process's locale: a sign, digits with a ".", an exponent
// ("-1234.5", "1E+15"), and for VT_BOOL "True" and "False" in any case. Reading takes blanks around
// a number, and no more than 1024 characters. Writing gives 15 significant digits at most, of a
// VT_R4 seven. Halves round to even. Integers of one width but different sign keep their bits (-1
// as VT_I4 becomes 4294967295 as VT_UI4).
CORVANE_API HRESULT WINAPI VariantChangeType(VARIANTARG* destination, const VARIANTARG* source,
                                             USHORT flags, VARTYPE type);

// SAFEARRAY, one dimension, made by SafeArrayCreateVector or SafeArrayCopy only. Elements are texts
// (VT_BSTR) or numbers of any type above; SafeArrayCreateVector gives NULL for VT_VARIANT,
// VT_UNKNOWN and VT_DISPATCH. Destroying or copying an array destroys or copies its texts.
// SafeArrayGetElement copies out (the caller frees), SafeArrayPutElement copies in; an index
// outside the bounds gives DISP_E_BADINDEX. For VT_BSTR PutElement takes the pointer itself, as on
// Windows.
CORVANE_API SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count);
CORVANE_API HRESULT WINAPI
SafeArrayDestroy(SAFEARRAY* array);  // NULL is S_OK; locked: DISP_E_ARRAYISLOCKED
CORVANE_API HRESULT WINAPI SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
CORVANE_API UINT WINAPI SafeArrayGetDim(SAFEARRAY* array);
CORVANE_API HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* array, UINT dimension,
                                              LONG* bound);  // dimension from 1
CORVANE_API HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
CORVANE_API HRESULT WINAPI SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
CORVANE_API HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element);
CORVANE_API HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element);
CORVANE_API HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* array, void** data);
CORVANE_API HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* array);

}  // extern "C"

#endif  // CORVANE_LINUX_AUTOMATION_H_
