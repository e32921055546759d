// Compiles XSL patterns: a parser by recursive descent.
#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "corvane/linux/dom.h"
#include "platform/linux/dom/pattern/pattern.h"
#include "platform/linux/dom/pattern/pattern_lexer.h"
#include "platform/linux/dom/tree/encoding.h"

namespace Corvane::Dom {
namespace {

using Kind = Token::Kind;
using ExpressionPtr = std::unique_ptr<Expression>;

// Methods that select nodes.
constexpr struct {
  std::string_view name;
  Axis axis;
  std::uint32_t kinds;
  bool takesName;
} kNodeMethods[] = {
    {"text", Axis::kChild, KindBit(NodeKind::kText) | KindBit(NodeKind::kCdata), false},
    {"textnode", Axis::kChild, KindBit(NodeKind::kText), false},
    {"cdata", Axis::kChild, KindBit(NodeKind::kCdata), false},
    {"comment", Axis::kChild, KindBit(NodeKind::kComment), false},
    {"pi", Axis::kChild, KindBit(NodeKind::kInstruction), false},
    {"node", Axis::kChild, kChildKinds, false},
    {"element", Axis::kChild, KindBit(NodeKind::kElement), true},
    {"attribute", Axis::kAttribute, KindBit(NodeKind::kAttribute), true},
};

// Methods that give a value of a node.
constexpr struct {
  std::string_view name;
  Method method;
  ValueType type;
} kValueMethods[] = {
    {"index", Method::kIndex, ValueType::kNumber},
    {"end", Method::kEnd, ValueType::kBoolean},
    {"nodeType", Method::kNodeType, ValueType::kNumber},
    {"nodeName", Method::kNodeName, ValueType::kText},
    {"value", Method::kValue, ValueType::kText},
};

// Recursive descent, one operation a rule of the grammar; null means that the pattern is refused.
class PatternParser {
 public:
  PatternParser(std::string_view pattern, const NameTable& names)
      : m_lexer(pattern), m_names(names) {
    Advance();
  }

  ExpressionPtr ParseAll() {
    ExpressionPtr expression = ParseOr();
    return expression && m_token.kind == Kind::kEnd && expression->type == ValueType::kNodes
               ? std::move(expression)
               : nullptr;
  }

 private:
  // Bounds the recursion of the parser, and with it that of everything that walks the expression.
  class Level {
   public:
    explicit Level(std::uint32_t* depth) : m_depth(*depth) { ++m_depth; }
    ~Level() { --m_depth; }
    bool TooDeep() const { return m_depth > Corvane::DomLimits::kMaxPatternDepth; }

   private:
    std::uint32_t& m_depth;
  };

  void Advance() {
    m_token = m_ahead;
    if (!m_primed) m_token = m_lexer.Next();
    m_primed = true;
    m_ahead = m_lexer.Next();
  }
  bool Accept(Kind kind) {
    if (m_token.kind != kind) return false;
    Advance();
    return true;
  }
  bool AcceptWord(Kind kind, std::string_view word) {
    return (m_token.kind == Kind::kName && m_token.text == word && Accept(Kind::kName)) ||
           Accept(kind);
  }
  bool IsCall() const {
    return m_token.kind == Kind::kName && m_ahead.kind == Kind::kOpenParenthesis;
  }

  ExpressionPtr ParseOr() { return ParseJunction(Expression::Kind::kOr); }
  ExpressionPtr ParseJunction(Expression::Kind kind);
  ExpressionPtr ParseNot();
  ExpressionPtr ParseUnion();
  ExpressionPtr ParseComparison();
  bool ParseRightSide(Expression* comparison);
  ExpressionPtr ParsePath();
  bool ParseSteps(Expression* expression);
  bool ParseStep(Path* path, bool anyDepth);
  bool ParseNodeMethod(Step* step);
  bool ParseAncestor(const Path& path, Step* step);
  bool ParseValueMethod(Expression* expression);
  bool ParseFilters(Step* step);
  bool ParseFilter(Filter* filter, bool* positional);
  ExpressionPtr ParseParenthesised();

  NodeTest NameTest(NodeKind kind, std::string_view name) const;
  static void Finish(Expression* expression);

  PatternLexer m_lexer;
  const NameTable& m_names;
  Token m_token;
  Token m_ahead;
  bool m_primed = false;
  std::uint32_t m_depth = 0;
};

// Beyond what a double holds a number is infinite, or 0, which compare as they should.
double ParseNumber(std::string_view digits) {
  double number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec == std::errc()) return number;
  const bool large =
      digits.substr(0, digits.find('.')).find_first_not_of('0') != std::string_view::npos;
  return large ? std::numeric_limits<double>::infinity() : 0;
}

bool IsTruthExpression(const Expression& expression) {
  return expression.type == ValueType::kNodes || expression.type == ValueType::kBoolean;
}

ExpressionPtr PatternParser::ParseJunction(Expression::Kind kind) {
  const bool isOr = kind == Expression::Kind::kOr;
  const auto parseOperand = [&] {
    return isOr ? ParseJunction(Expression::Kind::kAnd) : ParseNot();
  };
  ExpressionPtr first = parseOperand();
  if (!first) return nullptr;
  ExpressionPtr junction;
  while (isOr ? AcceptWord(Kind::kOr, "or") : AcceptWord(Kind::kAnd, "and")) {
    if (!junction) {
      junction = std::make_unique<Expression>();
      junction->kind = kind;
      junction->type = ValueType::kBoolean;
      junction->operands.push_back(std::move(first));
    }
    ExpressionPtr next = parseOperand();
    if (!next || !IsTruthExpression(*next) || !IsTruthExpression(*junction->operands[0]))
      return nullptr;
    junction->operands.push_back(std::move(next));
  }
  if (!junction) return first;
  junction->positional =
      std::any_of(junction->operands.begin(), junction->operands.end(),
                  [](const ExpressionPtr& operand) { return operand->positional; });
  return junction;
}

ExpressionPtr PatternParser::ParseNot() {
  ExpressionPtr operand;
  if (Accept(Kind::kNot)) {
    const Level level(&m_depth);
    if (level.TooDeep()) return nullptr;
    operand = ParseNot();
  } else if (IsCall() && m_token.text == "not") {
    Advance();
    operand = ParseParenthesised();
  } else {
    return ParseUnion();
  }
  if (!operand || !IsTruthExpression(*operand)) return nullptr;
  auto negation = std::make_unique<Expression>();
  negation->kind = Expression::Kind::kNot;
  negation->type = ValueType::kBoolean;
  negation->positional = operand->positional;
  negation->operands.push_back(std::move(operand));
  return negation;
}

ExpressionPtr PatternParser::ParseUnion() {
  ExpressionPtr first = ParseComparison();
  if (!first || m_token.kind != Kind::kPipe) return first;
  auto result = std::make_unique<Expression>();
  result->kind = Expression::Kind::kUnion;
  result->operands.push_back(std::move(first));
  while (Accept(Kind::kPipe)) {
    ExpressionPtr next = ParseComparison();
    if (!next) return nullptr;
    result->operands.push_back(std::move(next));
  }
  for (const ExpressionPtr& operand : result->operands) {
    if (operand->type != ValueType::kNodes) return nullptr;
    result->downward = result->downward && operand->downward;
  }
  return result;
}

ExpressionPtr PatternParser::ParseComparison() {
  Quantifier quantifier = Quantifier::kFirst;
  if (Accept(Kind::kAny)) {
    quantifier = Quantifier::kAny;
  } else if (Accept(Kind::kAll)) {
    quantifier = Quantifier::kAll;
  }
  ExpressionPtr left = ParsePath();
  if (!left) return nullptr;
  if (m_token.kind != Kind::kRelation && quantifier == Quantifier::kFirst) return left;
  if (left->type == ValueType::kBoolean) return nullptr;

  auto comparison = std::make_unique<Expression>();
  comparison->type = ValueType::kBoolean;
  comparison->positional = left->positional;
  comparison->quantifier = quantifier;
  comparison->operands.push_back(std::move(left));
  if (m_token.kind == Kind::kRelation) {
    comparison->kind = Expression::Kind::kCompare;
    if (!ParseRightSide(comparison.get())) return nullptr;
  } else {
    comparison->kind = Expression::Kind::kExists;
    if (comparison->operands[0]->type != ValueType::kNodes) return nullptr;
  }
  return comparison;
}

bool PatternParser::ParseRightSide(Expression* comparison) {
  comparison->relation = m_token.relation;
  comparison->ignoreCase = m_token.ignoreCase;
  Advance();
  if (m_token.kind == Kind::kString || m_token.kind == Kind::kNumber) {
    comparison->numeric = m_token.kind == Kind::kNumber && !comparison->ignoreCase;
    if (comparison->numeric) {
      comparison->number = ParseNumber(m_token.text);
    } else if (comparison->ignoreCase) {
      AppendFolded(m_token.text, &comparison->literal);
    } else {
      comparison->literal = m_token.text;
    }
    Advance();
    return true;
  }
  ExpressionPtr right = ParsePath();
  if (!right || right->type == ValueType::kBoolean) return false;
  comparison->positional = comparison->positional || right->positional;
  comparison->operands.push_back(std::move(right));
  return true;
}

ExpressionPtr PatternParser::ParsePath() {
  if (m_token.kind == Kind::kOpenParenthesis) {
    ExpressionPtr inner = ParseParenthesised();
    if (!inner) return nullptr;
    const Kind next = m_token.kind;
    if (next != Kind::kSlash && next != Kind::kDoubleSlash && next != Kind::kOpenBracket &&
        next != Kind::kBang) {
      return inner;
    }
    if (inner->type != ValueType::kNodes) return nullptr;
    auto expression = std::make_unique<Expression>();
    Step step;
    step.axis = Axis::kGroup;
    step.group = std::move(inner);
    if (!ParseFilters(&step)) return nullptr;
    expression->path.steps.push_back(std::move(step));
    return ParseSteps(expression.get()) ? std::move(expression) : nullptr;
  }

  auto expression = std::make_unique<Expression>();
  Path& path = expression->path;
  if (m_token.kind == Kind::kSlash || m_token.kind == Kind::kDoubleSlash) {
    path.absolute = true;
    const bool anyDepth = m_token.kind == Kind::kDoubleSlash;
    Advance();
    const bool stepFollows = m_token.kind == Kind::kDot || m_token.kind == Kind::kDoubleDot ||
                             m_token.kind == Kind::kStar || m_token.kind == Kind::kAt ||
                             m_token.kind == Kind::kName || m_token.kind == Kind::kOpenParenthesis;
    if (!anyDepth && !stepFollows) {
      Finish(expression.get());
      return expression;
    }
    if (!ParseStep(&path, anyDepth)) return nullptr;
  } else if (IsCall() && ParseValueMethod(expression.get())) {
    Finish(expression.get());
    return expression;
  } else if (!ParseStep(&path, false)) {
    return nullptr;
  }
  return ParseSteps(expression.get()) ? std::move(expression) : nullptr;
}

// The steps after the first one.
bool PatternParser::ParseSteps(Expression* expression) {
  Path& path = expression->path;
  while (m_token.kind == Kind::kSlash || m_token.kind == Kind::kDoubleSlash) {
    const bool anyDepth = m_token.kind == Kind::kDoubleSlash;
    Advance();
    if (!anyDepth && IsCall() && ParseValueMethod(expression)) {
      Finish(expression);
      return true;
    }
    if (!ParseStep(&path, anyDepth)) return false;
  }
  if (Accept(Kind::kBang)) {
    if (!IsCall()) return false;
    if (!ParseValueMethod(expression)) {
      Step step;
      if (!ParseNodeMethod(&step)) return false;
      path.steps.push_back(std::move(step));
    }
  }
  Finish(expression);
  return true;
}

bool PatternParser::ParseStep(Path* path, bool anyDepth) {
  Step step;
  step.anyDepth = anyDepth;
  const bool isCall = IsCall();
  const Token token = m_token;
  switch (token.kind) {
    case Kind::kDot:
      step.axis = Axis::kSelf;
      step.test.kinds = ~0u;
      Advance();
      break;
    case Kind::kDoubleDot:
      step.axis = Axis::kParent;
      Advance();
      break;
    case Kind::kStar:
      step.test.kinds = KindBit(NodeKind::kElement);
      Advance();
      break;
    case Kind::kAt:
      Advance();
      step.axis = Axis::kAttribute;
      step.test.kinds = KindBit(NodeKind::kAttribute);
      if (m_token.kind == Kind::kName && !IsCall()) {
        step.test = NameTest(NodeKind::kAttribute, m_token.text);
      } else if (m_token.kind != Kind::kStar) {
        return false;
      }
      Advance();
      break;
    case Kind::kName:
      if (isCall && token.text == "ancestor") {
        if (!ParseAncestor(*path, &step)) return false;
      } else if (isCall) {
        if (!ParseNodeMethod(&step)) return false;
      } else {
        step.test = NameTest(NodeKind::kElement, token.text);
        Advance();
      }
      break;
    case Kind::kOpenParenthesis:
      step.axis = Axis::kGroup;
      step.group = ParseParenthesised();
      if (!step.group || step.group->type != ValueType::kNodes) return false;
      break;
    default:
      return false;
  }
  if (!ParseFilters(&step)) return false;
  path->steps.push_back(std::move(step));
  return true;
}

bool PatternParser::ParseNodeMethod(Step* step) {
  for (const auto& method : kNodeMethods) {
    if (m_token.text != method.name) continue;
    Advance();
    Advance();
    step->axis = method.axis;
    step->test.kinds = method.kinds;
    if (method.takesName && m_token.kind == Kind::kString) {
      const bool isElement = method.axis == Axis::kChild;
      step->test = NameTest(isElement ? NodeKind::kElement : NodeKind::kAttribute, m_token.text);
      Advance();
    }
    return Accept(Kind::kCloseParenthesis);
  }
  return false;
}

bool PatternParser::ParseAncestor(const Path& path, Step* step) {
  if (path.absolute || !path.steps.empty()) return false;
  Advance();
  step->axis = Axis::kAncestor;
  step->group = ParseParenthesised();
  return step->group && step->group->type == ValueType::kNodes;
}

// Leaves the tokens alone when no value method stands there.
bool PatternParser::ParseValueMethod(Expression* expression) {
  for (const auto& method : kValueMethods) {
    if (m_token.text != method.name) continue;
    Advance();
    Advance();
    // What follows a method that is not closed here is refused by whoever looks at the next token.
    if (!Accept(Kind::kCloseParenthesis)) m_token.kind = Kind::kInvalid;
    expression->path.method = method.method;
    expression->type = method.type;
    return true;
  }
  return false;
}

bool PatternParser::ParseFilters(Step* step) {
  while (Accept(Kind::kOpenBracket)) {
    Filter filter;
    if (!ParseFilter(&filter, &step->positional)) return false;
    step->filters.push_back(std::move(filter));
  }
  return true;
}

bool PatternParser::ParseFilter(Filter* filter, bool* positional) {
  if (m_token.kind == Kind::kNumber) {
    const std::string_view digits = m_token.text;
    const auto result =
        std::from_chars(digits.data(), digits.data() + digits.size(), filter->index);
    if (result.ptr != digits.data() + digits.size()) return false;
    if (result.ec != std::errc()) filter->index = kNoNode;  // beyond any list
    filter->isIndex = true;
    *positional = true;
    Advance();
  } else {
    const Level level(&m_depth);
    if (level.TooDeep()) return false;
    filter->expression = ParseOr();
    if (!filter->expression || !IsTruthExpression(*filter->expression)) return false;
    *positional = *positional || filter->expression->positional;
  }
  return Accept(Kind::kCloseBracket);
}

ExpressionPtr PatternParser::ParseParenthesised() {
  const Level level(&m_depth);
  if (level.TooDeep() || !Accept(Kind::kOpenParenthesis)) return nullptr;
  ExpressionPtr expression = ParseOr();
  return expression && Accept(Kind::kCloseParenthesis) ? std::move(expression) : nullptr;
}

NodeTest PatternParser::NameTest(NodeKind kind, std::string_view name) const {
  NodeTest test;
  const std::uint32_t id = m_names.Find(name);
  if (id == kNoName) return test;  // the document does not use the name: nothing matches
  test.exact = true;
  test.tag = MakeTag(kind, id);
  return test;
}

// Works out what the evaluator wants to know of a path.
void PatternParser::Finish(Expression* expression) {
  Path& path = expression->path;
  expression->positional = path.steps.empty() && !path.absolute &&
                           (path.method == Method::kIndex || path.method == Method::kEnd);
  for (std::size_t i = 0; i < path.steps.size(); ++i) {
    const Step& step = path.steps[i];
    const bool upward = step.axis == Axis::kParent || step.axis == Axis::kAncestor ||
                        (step.axis == Axis::kGroup && !step.group->downward);
    if (upward) path.downwardFrom = i + 1;
  }
  expression->downward = !path.absolute && path.downwardFrom == 0;
}

}  // namespace

std::unique_ptr<Expression> CompilePattern(std::string_view pattern, const NameTable& names) {
  return PatternParser(pattern, names).ParseAll();
}

}  // namespace Corvane::Dom
