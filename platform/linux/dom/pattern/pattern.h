// A compiled XSL pattern: a small tree of expressions. Names are already those of one document's
// name table.
#ifndef CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_H_
#define CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/dom/tree/tree.h"

namespace Corvane::Dom {

struct Expression;

// Which nodes a step takes: those with exactly one tag, or those of some kinds.
struct NodeTest {
  bool exact = false;
  NodeTag tag = 0;
  std::uint32_t kinds = 0;  // bit n: NodeKind n

  bool MatchesNothing() const { return !exact && kinds == 0; }
  bool Matches(NodeTag candidate) const {
    return exact ? candidate == tag
                 : (kinds >> static_cast<unsigned>(KindOfTag(candidate)) & 1) != 0;
  }
};

constexpr std::uint32_t KindBit(NodeKind kind) { return 1u << static_cast<unsigned>(kind); }
constexpr std::uint32_t kChildKinds = KindBit(NodeKind::kElement) | KindBit(NodeKind::kText) |
                                      KindBit(NodeKind::kCdata) | KindBit(NodeKind::kInstruction) |
                                      KindBit(NodeKind::kComment);

enum class Axis { kSelf, kParent, kChild, kAttribute, kAncestor, kGroup };

struct Filter {
  bool isIndex = false;
  std::uint32_t index = 0;                 // from 0
  std::unique_ptr<Expression> expression;  // when it is no index
};

struct Step {
  bool anyDepth = false;  // written after `//`: from every node of the context's subtree
  Axis axis = Axis::kChild;
  NodeTest test;                      // kSelf, kParent and kGroup take every node
  std::unique_ptr<Expression> group;  // kGroup: (expr); kAncestor: what the ancestor must match
  std::vector<Filter> filters;
  bool positional = false;  // a filter asks for the place among the others
};

// What a path ends in: nodes, or a value of each of them.
enum class Method { kNodes, kIndex, kEnd, kNodeType, kNodeName, kValue };

struct Path {
  bool absolute = false;
  std::vector<Step> steps;
  Method method = Method::kNodes;
  // From this step on, every step leads to the context or below it, so that results come in the
  // contexts' order.
  std::size_t downwardFrom = 0;
};

enum class ValueType { kNodes, kBoolean, kNumber, kText };
enum class Relation { kEqual, kNotEqual, kLess, kLessOrEqual, kGreater, kGreaterOrEqual };
enum class Quantifier { kFirst, kAny, kAll };

struct Expression {
  enum class Kind { kPath, kUnion, kAnd, kOr, kNot, kCompare, kExists };
  Kind kind = Kind::kPath;
  ValueType type = ValueType::kNodes;
  bool positional =
      false;             // depends on the place of its context among the nodes that its filter sees
  bool downward = true;  // kNodes: selects nothing but the context and what is below it

  Path path;  // kPath
  std::vector<std::unique_ptr<Expression>>
      operands;  // the others; kCompare: left and, if it is a path, right

  Relation relation = Relation::kEqual;
  Quantifier quantifier = Quantifier::kFirst;
  bool ignoreCase = false;
  bool numeric = false;  // compares with `number`
  std::string literal;   // UTF-8; lower case when case is ignored
  double number = 0;
};

// Compiles `pattern`, which is UTF-8. Null when it does not parse, uses what the language does not
// have (XPath's axes, functions and arithmetic), is nested deeper than kMaxPatternDepth, or is no
// set of nodes.
std::unique_ptr<Expression> CompilePattern(std::string_view pattern, const NameTable& names);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_H_
