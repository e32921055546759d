// Evaluates compiled patterns over one tree.
//
// Sets are worked out step by step as sorted lists, so that every step costs its contexts' subtrees
// once, however they are nested. The first node of a set, which is all that most filters and
// selectSingleNode want, is looked for in document order without working out the rest, where no
// later step leads upwards.
#ifndef CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_EVALUATOR_H_
#define CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_EVALUATOR_H_

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/dom/pattern/pattern.h"
#include "platform/linux/dom/tree/tree.h"

namespace Corvane::Dom {

// Thrown when a selection would take more than kMaxSelectionSteps.
struct SelectionTooCostly {};

class PatternEvaluator {
 public:
  explicit PatternEvaluator(const Tree& tree);

  // `context` may be kNoNode: then only what starts at the document selects anything.
  NodeId First(const Expression& expression, NodeId context);  // kNoNode when the set is empty
  std::vector<NodeId> All(const Expression& expression, NodeId context);

 private:
  using NodeSet = std::vector<NodeId>;  // in document order, without duplicates

  // A node, and its place among the nodes that a filter or a path sees together.
  struct Place {
    NodeId node;
    std::uint32_t index;
    bool last;
  };

  class Cursor;

  void Charge(std::uint64_t steps);

  NodeId FirstOfSteps(const Path& path, std::size_t step, NodeId context);
  NodeId FirstChild(const NodeTest& test, NodeId context);
  NodeSet AllFrom(const Expression& expression, const NodeSet& contexts);
  NodeSet AllOfSteps(const Path& path, std::size_t step, NodeSet contexts);
  NodeSet Apply(const Step& step, const NodeSet& contexts);
  NodeSet ApplyBelow(const Step& step, const NodeSet& contexts);
  void ScanBelow(const Step& step, NodeId context, NodeSet* found);
  NodeSet WithSubtrees(const NodeSet& contexts);
  void Gather(const Step& step, NodeId context, NodeSet* found);
  void GatherGroup(const Step& step, Axis axis, const NodeTest& test, NodeId context,
                   NodeSet* found);
  NodeId NearestAncestor(const Step& step, NodeId context);

  bool Passes(const Step& step, NodeId node);
  void ApplyFilters(const Step& step, std::size_t begin, NodeSet* found);
  bool IsTrue(const Expression& expression, const Place& place);

  // Comparisons, in pattern_comparison.cpp.
  bool Compare(const Expression& comparison, const Place& place);
  bool FirstPlace(const Expression& expression, const Place& place, Place* first);
  std::vector<Place> AllPlaces(const Expression& expression, const Place& place);
  bool Holds(const Expression& comparison, const Place& left, const Place* right);
  double NumberOf(Method method, const Place& place);
  std::string_view TextOf(Method method, const Place& place, std::size_t enough,
                          std::string* scratch);

  const Tree& m_tree;
  std::uint64_t m_stepsLeft;
  std::unordered_map<const Step*, NodeSet>
      m_ancestorMatches;  // what ancestor(...) may find anywhere in the document
  std::string m_leftText;
  std::string m_rightText;
  std::string m_lowerText;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_EVALUATOR_H_
