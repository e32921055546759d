#include "platform/linux/dom/dom_node_list.h"

namespace Corvane::Dom {

HRESULT DomNodeList::QueryInterface(REFIID iid, void** object) {
  return Query(iid, {&IID_IXMLDOMNodeList}, object);
}

}  // namespace Corvane::Dom
