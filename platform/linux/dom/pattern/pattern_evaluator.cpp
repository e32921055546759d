#include "platform/linux/dom/pattern/pattern_evaluator.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "corvane/linux/dom.h"

namespace Corvane::Dom {
namespace {

constexpr std::size_t kLazySteps =
    8;  // of a path, which recurse; the steps after them are worked out as sets
constexpr std::uint32_t kScanBlock =
    16;  // tags compared together, which compilers turn into vector code
constexpr std::uint32_t kScansPerStep = 4;  // scanned tags that take the time of one visited node

NodeId FindTag(const NodeTag* tags, NodeId begin, NodeId end, NodeTag wanted) {
  while (end - begin >= kScanBlock) {
    const NodeTag* block = tags + begin;
    NodeTag hits = 0;
    for (std::uint32_t i = 0; i < kScanBlock; ++i) hits |= block[i] == wanted ? 1u : 0u;
    if (hits != 0) break;
    begin += kScanBlock;
  }
  while (begin < end && tags[begin] != wanted) ++begin;
  return begin;
}

NodeId FindMatch(const Tree& tree, NodeId begin, NodeId end, const NodeTest& test) {
  const NodeTag* tags = tree.Tags().data();
  if (test.exact) return FindTag(tags, begin, end, test.tag);
  while (begin < end && !test.Matches(tags[begin])) ++begin;
  return begin;
}

bool IsAttribute(const Tree& tree, NodeId node) { return tree.Kind(node) == NodeKind::kAttribute; }

// What a step takes from the subtree of `context` when it is written after `//`.
NodeTest TestBelow(const Tree& tree, const Step& step, NodeId context) {
  if (step.axis != Axis::kSelf) return step.test;
  NodeTest test;
  test.kinds = kChildKinds | KindBit(tree.Kind(context));
  return test;
}

NodeId BeginBelow(const Step& step, NodeId context) {
  return step.axis == Axis::kSelf ? context : context + 1;
}

bool CanScanBelow(const Step& step) {
  return step.axis == Axis::kChild || step.axis == Axis::kAttribute || step.axis == Axis::kSelf;
}

void SortUnique(std::vector<NodeId>* nodes) {
  const auto disorder = std::adjacent_find(nodes->begin(), nodes->end(), std::greater_equal<>());
  if (disorder == nodes->end()) return;
  std::sort(nodes->begin(), nodes->end());
  nodes->erase(std::unique(nodes->begin(), nodes->end()), nodes->end());
}

// What most filters begin with: a child of some name.
bool IsPlainChild(const Step& step) {
  return step.axis == Axis::kChild && !step.anyDepth && step.filters.empty();
}

}  // namespace

// The nodes that one step takes from one context, in document order, found one at a time where that
// is possible.
class PatternEvaluator::Cursor {
 public:
  Cursor(PatternEvaluator* evaluator, const Step& step, NodeId context)
      : m_evaluator(*evaluator),
        m_tree(evaluator->m_tree),
        m_step(step),
        m_end(m_tree.End(context)) {
    if (step.positional || !CanScanBelow(step)) {
      m_mode = Mode::kList;
      m_list = evaluator->Apply(step, {context});
    } else if (step.anyDepth) {
      m_mode = Mode::kScan;
      m_test = TestBelow(m_tree, step, context);
      m_at = m_test.MatchesNothing() ? m_end : BeginBelow(step, context);
    } else if (step.axis == Axis::kChild) {
      m_mode = Mode::kChildren;
      m_at = context + 1 + m_tree.AttributeCount(context);
    } else {
      m_mode = Mode::kScan;
      m_test = step.test;
      m_at = BeginBelow(step, context);
      m_end = step.axis == Axis::kSelf ? context + 1 : context + 1 + m_tree.AttributeCount(context);
    }
  }

  // The next node, or kNoNode when it does not lie before `limit`; a later call with a higher limit
  // goes on there.
  NodeId NextBefore(NodeId limit) {
    if (m_mode == Mode::kList) {
      return m_next < m_list.size() && m_list[m_next] < limit ? m_list[m_next++] : kNoNode;
    }
    return m_mode == Mode::kScan ? ScanTo(std::min(m_end, limit)) : WalkTo(std::min(m_end, limit));
  }

 private:
  enum class Mode { kList, kScan, kChildren };

  NodeId ScanTo(NodeId end) {
    while (m_at < end) {
      const NodeId found = FindMatch(m_tree, m_at, end, m_test);
      m_evaluator.Charge(1 + (found - m_at) / kScansPerStep);
      m_at = found == end ? end : found + 1;
      if (found != end && m_evaluator.Passes(m_step, found)) return found;
    }
    return kNoNode;
  }

  NodeId WalkTo(NodeId end) {
    while (m_at < end) {
      const NodeId child = m_at;
      m_evaluator.Charge(1);
      m_at = m_tree.End(child);
      if (m_step.test.Matches(m_tree.Tag(child)) && m_evaluator.Passes(m_step, child)) return child;
    }
    return kNoNode;
  }

  PatternEvaluator& m_evaluator;
  const Tree& m_tree;
  const Step& m_step;
  Mode m_mode;
  NodeTest m_test;
  NodeId m_at = 0;
  NodeId m_end;
  NodeSet m_list;
  std::size_t m_next = 0;
};

PatternEvaluator::PatternEvaluator(const Tree& tree)
    : m_tree(tree), m_stepsLeft(Corvane::DomLimits::kMaxSelectionSteps) {}

void PatternEvaluator::Charge(std::uint64_t steps) {
  if (steps > m_stepsLeft) throw SelectionTooCostly();
  m_stepsLeft -= steps;
}

NodeId PatternEvaluator::First(const Expression& expression, NodeId context) {
  if (expression.kind == Expression::Kind::kUnion) {
    NodeId first = kNoNode;
    for (const auto& operand : expression.operands)
      first = std::min(first, First(*operand, context));
    return first;
  }
  const NodeId start = expression.path.absolute ? 0 : context;
  return FirstOfSteps(expression.path, 0, start);
}

std::vector<NodeId> PatternEvaluator::All(const Expression& expression, NodeId context) {
  return AllFrom(expression, {context});
}

NodeId PatternEvaluator::FirstOfSteps(const Path& path, std::size_t step, NodeId context) {
  if (step == path.steps.size()) return context;
  if (step >= kLazySteps || path.downwardFrom > step + 1 || context == kNoNode) {
    const NodeSet nodes = AllOfSteps(path, step, {context});
    return nodes.empty() ? kNoNode : nodes.front();
  }
  const bool isLastStep = step + 1 == path.steps.size();
  if (isLastStep && IsPlainChild(path.steps[step]))
    return FirstChild(path.steps[step].test, context);
  Cursor cursor(this, path.steps[step], context);
  for (;;) {
    const NodeId node = cursor.NextBefore(kNoNode);
    if (node == kNoNode || isLastStep) return node;
    // What follows `node` outside its subtree cannot lead to anything earlier; what is inside it
    // can.
    const NodeId end = m_tree.End(node);
    NodeId inner = cursor.NextBefore(end);
    NodeId first;
    if (inner == kNoNode) {
      first = FirstOfSteps(path, step + 1, node);
    } else {
      NodeSet nested{node};
      for (; inner != kNoNode; inner = cursor.NextBefore(end)) nested.push_back(inner);
      const NodeSet nodes = AllOfSteps(path, step + 1, std::move(nested));
      first = nodes.empty() ? kNoNode : nodes.front();
    }
    if (first != kNoNode) return first;
  }
}

NodeId PatternEvaluator::FirstChild(const NodeTest& test, NodeId context) {
  const NodeId end = m_tree.End(context);
  NodeId child = context + 1 + m_tree.AttributeCount(context);
  std::uint64_t visited = 1;
  for (; child < end && !test.Matches(m_tree.Tag(child)); child = m_tree.End(child)) ++visited;
  Charge(visited);
  return child < end ? child : kNoNode;
}

PatternEvaluator::NodeSet PatternEvaluator::AllFrom(const Expression& expression,
                                                    const NodeSet& contexts) {
  if (expression.kind == Expression::Kind::kUnion) {
    NodeSet all;
    for (const auto& operand : expression.operands) {
      const NodeSet nodes = AllFrom(*operand, contexts);
      all.insert(all.end(), nodes.begin(), nodes.end());
    }
    SortUnique(&all);
    return all;
  }
  return AllOfSteps(expression.path, 0,
                    expression.path.absolute && !contexts.empty() ? NodeSet{0} : contexts);
}

PatternEvaluator::NodeSet PatternEvaluator::AllOfSteps(const Path& path, std::size_t step,
                                                       NodeSet contexts) {
  for (; step < path.steps.size() && !contexts.empty(); ++step)
    contexts = Apply(path.steps[step], contexts);
  return contexts;
}

PatternEvaluator::NodeSet PatternEvaluator::Apply(const Step& step, const NodeSet& contexts) {
  if (contexts[0] == kNoNode && step.axis != Axis::kGroup) return {};
  if (step.anyDepth) return ApplyBelow(step, contexts);
  if (step.axis == Axis::kGroup && step.filters.empty()) return AllFrom(*step.group, contexts);
  NodeSet found;
  for (const NodeId context : contexts) Gather(step, context, &found);
  SortUnique(&found);
  return found;
}

PatternEvaluator::NodeSet PatternEvaluator::ApplyBelow(const Step& step, const NodeSet& contexts) {
  NodeSet found;
  if (!CanScanBelow(step)) {
    const NodeSet all = WithSubtrees(contexts);
    if (step.axis == Axis::kGroup && step.filters.empty()) return AllFrom(*step.group, all);
    for (const NodeId context : all) Gather(step, context, &found);
  } else {
    NodeId covered = 0;
    for (const NodeId context : contexts) {
      if (context < covered && !IsAttribute(m_tree, context)) continue;
      covered = std::max(covered, m_tree.End(context));
      ScanBelow(step, context, &found);
    }
  }
  SortUnique(&found);
  return found;
}

void PatternEvaluator::ScanBelow(const Step& step, NodeId context, NodeSet* found) {
  if (!step.positional) {
    Cursor cursor(this, step, context);
    for (NodeId node = cursor.NextBefore(kNoNode); node != kNoNode;
         node = cursor.NextBefore(kNoNode)) {
      found->push_back(node);
    }
    return;
  }
  // Places count among the nodes of one parent, so each parent's are taken together.
  if (step.axis == Axis::kSelf) GatherGroup(step, Axis::kSelf, step.test, context, found);
  const NodeTest test = TestBelow(m_tree, step, context);
  const Axis axis = step.axis == Axis::kSelf ? Axis::kChild : step.axis;
  for (NodeId parent = context; parent < m_tree.End(context); ++parent) {
    if (!IsAttribute(m_tree, parent)) GatherGroup(step, axis, test, parent, found);
  }
}

PatternEvaluator::NodeSet PatternEvaluator::WithSubtrees(const NodeSet& contexts) {
  Step everything;
  everything.anyDepth = true;
  everything.axis = Axis::kSelf;
  if (contexts[0] == kNoNode) return contexts;
  return ApplyBelow(everything, contexts);
}

void PatternEvaluator::Gather(const Step& step, NodeId context, NodeSet* found) {
  GatherGroup(step, step.axis, step.test, context, found);
}

// Appends what the step takes from one context, filtered.
void PatternEvaluator::GatherGroup(const Step& step, Axis axis, const NodeTest& test,
                                   NodeId context, NodeSet* found) {
  Charge(1);
  const std::size_t begin = found->size();
  switch (axis) {
    case Axis::kSelf:
      found->push_back(context);
      break;
    case Axis::kParent:
      if (m_tree.Parent(context) != kNoNode) found->push_back(m_tree.Parent(context));
      break;
    case Axis::kAncestor: {
      const NodeId ancestor = NearestAncestor(step, context);
      if (ancestor != kNoNode) found->push_back(ancestor);
      break;
    }
    case Axis::kGroup: {
      const NodeSet group = All(*step.group, context);
      found->insert(found->end(), group.begin(), group.end());
      break;
    }
    case Axis::kAttribute:
    case Axis::kChild: {
      const bool isIndexed = !step.filters.empty() && step.filters[0].isIndex;
      const std::size_t wanted =
          isIndexed ? begin + step.filters[0].index + 1 : std::numeric_limits<std::size_t>::max();
      const NodeId children = context + 1 + m_tree.AttributeCount(context);
      NodeId node = axis == Axis::kChild ? children : context + 1;
      const NodeId end = axis == Axis::kChild ? m_tree.End(context) : children;
      for (; node < end && found->size() < wanted; node = m_tree.End(node)) {
        Charge(1);
        if (test.Matches(m_tree.Tag(node))) found->push_back(node);
      }
      break;
    }
  }
  ApplyFilters(step, begin, found);
}

// A pattern matches a node, whatever the context, when it selects the node from anywhere in the
// document.
NodeId PatternEvaluator::NearestAncestor(const Step& step, NodeId context) {
  auto matches = m_ancestorMatches.find(&step);
  if (matches == m_ancestorMatches.end()) {
    matches = m_ancestorMatches.emplace(&step, AllFrom(*step.group, WithSubtrees({0}))).first;
  }
  for (NodeId node = m_tree.Parent(context); node != kNoNode; node = m_tree.Parent(node)) {
    Charge(1);
    if (std::binary_search(matches->second.begin(), matches->second.end(), node)) return node;
  }
  return kNoNode;
}

// Of a step whose filters do not ask for places.
bool PatternEvaluator::Passes(const Step& step, NodeId node) {
  return std::all_of(step.filters.begin(), step.filters.end(), [&](const Filter& filter) {
    return IsTrue(*filter.expression, {node, 0, true});
  });
}

void PatternEvaluator::ApplyFilters(const Step& step, std::size_t begin, NodeSet* found) {
  for (const Filter& filter : step.filters) {
    const std::size_t count = found->size() - begin;
    std::size_t kept = begin;
    if (filter.isIndex) {
      if (filter.index < count) (*found)[kept++] = (*found)[begin + filter.index];
    } else {
      for (std::size_t i = 0; i < count; ++i) {
        const Place place{(*found)[begin + i], static_cast<std::uint32_t>(i), i + 1 == count};
        if (IsTrue(*filter.expression, place)) (*found)[kept++] = place.node;
      }
    }
    found->resize(kept);
  }
}

bool PatternEvaluator::IsTrue(const Expression& expression, const Place& place) {
  Charge(1);
  const auto isTrue = [&](const auto& operand) { return IsTrue(*operand, place); };
  switch (expression.kind) {
    case Expression::Kind::kAnd:
      return std::all_of(expression.operands.begin(), expression.operands.end(), isTrue);
    case Expression::Kind::kOr:
      return std::any_of(expression.operands.begin(), expression.operands.end(), isTrue);
    case Expression::Kind::kNot:
      return !isTrue(expression.operands[0]);
    case Expression::Kind::kCompare:
      return Compare(expression, place);
    case Expression::Kind::kExists:
      return First(*expression.operands[0], place.node) != kNoNode;
    case Expression::Kind::kPath:
    case Expression::Kind::kUnion:
      break;
  }
  if (expression.type == ValueType::kNodes) return First(expression, place.node) != kNoNode;
  Place first;  // end()
  return FirstPlace(expression, place, &first) && first.last;
}

}  // namespace Corvane::Dom
