// The platform's types that the exported interface speaks: HRESULT, VARIANT, BSTR, IXMLDOMNode,
// HKEY, HANDLE. On Windows the system's own headers; on Linux the layer under corvane/linux, with
// the same names, signatures, result codes and edge behaviour. The only public header with a
// platform switch.
#ifndef CORVANE_PLATFORM_H_
#define CORVANE_PLATFORM_H_

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
// winsock2.h must precede windows.h, and objbase.h the DOM.
// clang-format off
#include <winsock2.h>
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
#include <msxml.h>
#include <comdef.h>
#include <winspool.h>
// clang-format on

#if defined(CORVANE_BUILDING)
#define CORVANE_API __declspec(dllexport)
#elif defined(CORVANE_STATIC)
#define CORVANE_API
#else
#define CORVANE_API __declspec(dllimport)
#endif

#else

#include "corvane/linux/automation.h"
#include "corvane/linux/base.h"
#include "corvane/linux/com.h"
#include "corvane/linux/comutil.h"
#include "corvane/linux/dom.h"
#include "corvane/linux/registry.h"
#include "corvane/linux/spooler.h"

#endif

#endif  // CORVANE_PLATFORM_H_
