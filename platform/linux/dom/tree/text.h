// The `text` of a node: what a person would call its content.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_TEXT_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_TEXT_H_

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "platform/linux/dom/tree/tree.h"

namespace Corvane::Dom {

constexpr std::size_t kWholeText = std::numeric_limits<std::size_t>::max();

// Documents and elements: their text and CDATA in document order, one blank between two non-empty
// pieces where white space was dropped, white space trimmed at both ends unless
// xml:space="preserve" holds, but never into or past a CDATA section. Text nodes: trimmed.
// Everything else: its value.
//
// The result lies in the tree or in *scratch. A caller that only compares may stop early: once more
// than `enough` bytes are certain, the rest may be missing, but the result is then longer than
// `enough`. *work grows by the effort, in about the time of visiting one node.
std::string_view TextOf(const Tree& tree, NodeId node, std::size_t enough, std::string* scratch,
                        std::uint64_t* work);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_TEXT_H_
