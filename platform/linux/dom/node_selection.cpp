// selectNodes and selectSingleNode.
#include <cwchar>

#include "platform/linux/dom/com_object.h"
#include "platform/linux/dom/dom_node.h"
#include "platform/linux/dom/dom_node_list.h"
#include "platform/linux/dom/node_operations.h"
#include "platform/linux/dom/pattern/pattern_evaluator.h"

namespace Corvane::Dom {
namespace {

// Runs `select` with the compiled expression, an evaluator and the context.
template <class Select>
HRESULT Evaluate(const NodeHandle& handle, BSTR expression, Select select) {
  return Guard([&]() -> HRESULT {
    const Tree& tree = *handle.document->tree;
    const auto compiled =
        handle.document->patterns.Compile(std::wstring_view(expression), tree.Names());
    if (!compiled) return E_FAIL;
    // The text below an attribute is not in the tree; from there only what starts at the document
    // is found.
    const NodeId context = IsAttributeText(handle.node) ? kNoNode : handle.node;
    PatternEvaluator evaluator(tree);
    return select(evaluator, *compiled, context);
  });
}

}  // namespace

HRESULT SelectNodes(const NodeHandle& handle, BSTR expression, IXMLDOMNodeList** nodes) {
  if (nodes == nullptr || expression == nullptr) return E_INVALIDARG;
  *nodes = nullptr;
  return Evaluate(handle, expression,
                  [&](PatternEvaluator& evaluator, const Expression& pattern, NodeId context) {
                    *nodes = new DomNodeList(handle.document, evaluator.All(pattern, context));
                    return S_OK;
                  });
}

HRESULT SelectSingleNode(const NodeHandle& handle, BSTR expression, IXMLDOMNode** node) {
  if (node == nullptr || expression == nullptr) return E_INVALIDARG;
  *node = nullptr;
  return Evaluate(handle, expression,
                  [&](PatternEvaluator& evaluator, const Expression& pattern, NodeId context) {
                    return MakeNode(handle.document, evaluator.First(pattern, context), node);
                  });
}

}  // namespace Corvane::Dom
