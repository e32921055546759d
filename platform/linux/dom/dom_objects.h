// The door to the objects of the DOM: thin, made on demand over a tree that they keep alive.
#ifndef CORVANE_PLATFORM_LINUX_DOM_DOM_OBJECTS_H_
#define CORVANE_PLATFORM_LINUX_DOM_DOM_OBJECTS_H_

#include "corvane/linux/dom.h"

// An empty document with one reference for the caller. E_NOINTERFACE when `iid` is none of
// IUnknown, IDispatch, IXMLDOMNode and IXMLDOMDocument, E_INVALIDARG for a null `object`,
// E_OUTOFMEMORY. *object is null after a failure.
HRESULT CreateDomDocument(REFIID iid, void** object);

#endif  // CORVANE_PLATFORM_LINUX_DOM_DOM_OBJECTS_H_
