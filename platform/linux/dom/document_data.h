// What the nodes of one load share: the tree, and the patterns compiled for it.
#ifndef CORVANE_PLATFORM_LINUX_DOM_DOCUMENT_DATA_H_
#define CORVANE_PLATFORM_LINUX_DOM_DOCUMENT_DATA_H_

#include <memory>
#include <utility>

#include "platform/linux/dom/pattern/pattern_cache.h"
#include "platform/linux/dom/tree/tree.h"

namespace Corvane::Dom {

struct DocumentData {
  explicit DocumentData(std::unique_ptr<const Tree> loaded) : tree(std::move(loaded)) {}

  const std::unique_ptr<const Tree> tree;
  PatternCache patterns;
};

// Keeps a load alive after its document took another one.
using DocumentPtr = std::shared_ptr<DocumentData>;

// The text node that every attribute has as its child is not in the tree: this bit on the
// attribute's number stands for it. Trees have far fewer nodes.
constexpr NodeId kAttributeTextBit = 0x80000000;
constexpr bool IsAttributeText(NodeId node) { return (node & kAttributeTextBit) != 0; }

// A node as the interface's objects see it.
struct NodeHandle {
  DocumentPtr document;
  NodeId node = 0;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_DOCUMENT_DATA_H_
