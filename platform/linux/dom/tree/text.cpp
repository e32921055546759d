// The `text` of nodes.
#include <algorithm>

#include "platform/linux/dom/tree/tree.h"
#include "platform/linux/dom/tree/xml_names.h"

namespace Corvane::Dom {
namespace {

constexpr std::uint64_t kBytesPerStep = 16;

// Trims `text`, but not past the first `lead` bytes at the left, nor into the first `keep` bytes
// from the right.
std::string_view Trim(std::string_view text, std::size_t lead, std::size_t keep,
                      std::uint64_t* work) {
  std::size_t begin = 0;
  while (begin < std::min(lead, text.size()) && IsXmlSpace(text[begin])) ++begin;
  std::size_t end = text.size();
  while (end > std::max(begin, keep) && IsXmlSpace(text[end - 1])) --end;
  *work += (begin + text.size() - end) / kBytesPerStep;
  return text.substr(begin, end - begin);
}

std::string_view TrimAll(std::string_view text, std::uint64_t* work) {
  return Trim(text, text.size(), 0, work);
}

// Joins the pieces of a subtree that has several.
class Joiner {
 public:
  Joiner(const Tree& tree, bool preserve, std::size_t enough, std::string* out)
      : m_tree(tree), m_preserve(preserve), m_enough(enough), m_out(*out) {
    m_out.clear();
  }

  void Add(NodeId piece) {
    const std::string_view value = m_tree.Value(piece);
    const bool cdata = m_tree.Kind(piece) == NodeKind::kCdata;
    if (!value.empty() && !m_out.empty() && m_tree.FollowsDroppedSpace(piece)) m_out.push_back(' ');
    if (cdata) m_lead = std::min(m_lead, m_out.size());
    m_out.append(value);
    if (cdata) m_keep = m_out.size();
    if (m_start == kWholeText) FindStart();
  }

  // Nothing that follows can change the first `enough` bytes of the result, nor make it shorter
  // than them.
  bool HasEnough() const {
    return m_start != kWholeText && m_out.size() - m_start > m_enough && !IsXmlSpace(m_out.back());
  }

  std::string_view Finish(std::uint64_t* work) const {
    return m_preserve ? std::string_view(m_out) : Trim(m_out, m_lead, m_keep, work);
  }

 private:
  void FindStart() {
    while (m_scanned < m_out.size() && m_scanned < m_lead && !m_preserve &&
           IsXmlSpace(m_out[m_scanned]))
      ++m_scanned;
    if (m_scanned < m_out.size()) m_start = m_scanned;
  }

  const Tree& m_tree;
  const bool m_preserve;
  const std::size_t m_enough;
  std::string& m_out;
  std::size_t m_lead = kWholeText;   // where the first CDATA section begins
  std::size_t m_keep = 0;            // where the last one ends
  std::size_t m_scanned = 0;         // leading white space seen so far
  std::size_t m_start = kWholeText;  // where the trimmed text begins, once known
};

std::string_view SubtreeText(const Tree& tree, NodeId node, std::size_t enough,
                             std::string* scratch, std::uint64_t* work) {
  const NodeId end = tree.End(node);
  const bool preserve = tree.PreservesSpace(node);
  const auto single = [&](NodeId piece) {
    const std::string_view value = tree.Value(piece);
    return preserve || tree.Kind(piece) == NodeKind::kCdata ? value : TrimAll(value, work);
  };
  // Most elements that are asked hold one text and nothing else.
  const NodeId child = tree.FirstChild(node);
  if (child == kNoNode) return {};
  if (child + 1 == end && tree.Kind(child) == NodeKind::kText) return single(child);

  const std::span<const NodeId> pieces = tree.TextNodesFrom(child);
  if (pieces.empty() || pieces[0] >= end) return {};
  if (pieces.size() == 1 || pieces[1] >= end) return single(pieces[0]);
  Joiner joiner(tree, preserve, enough, scratch);
  for (const NodeId piece : pieces) {
    if (piece >= end) break;
    joiner.Add(piece);
    *work += 1 + tree.Value(piece).size() / kBytesPerStep;
    if (joiner.HasEnough()) break;
  }
  return joiner.Finish(work);
}

}  // namespace

std::string_view TextOf(const Tree& tree, NodeId node, std::size_t enough, std::string* scratch,
                        std::uint64_t* work) {
  *work += 1;
  switch (tree.Kind(node)) {
    case NodeKind::kDocument:
    case NodeKind::kElement:
      return SubtreeText(tree, node, enough, scratch, work);
    case NodeKind::kText:
      return TrimAll(tree.Value(node), work);
    default:
      return tree.Value(node);
  }
}

}  // namespace Corvane::Dom
