// The comparisons of PatternEvaluator.
#include <algorithm>
#include <charconv>
#include <limits>
#include <unordered_map>

#include "platform/linux/dom/pattern/pattern_evaluator.h"
#include "platform/linux/dom/tree/encoding.h"
#include "platform/linux/dom/tree/xml_names.h"

namespace Corvane::Dom {
namespace {

constexpr std::size_t kMaxNumberBytes =
    1024;  // a text longer than this is no number: spares joining long texts
constexpr std::size_t kMaxUtf8Bytes = 4;  // of one character
constexpr std::uint64_t kBytesPerStep = 16;

template <class Value>
bool CompareOperands(Relation relation, const Value& left, const Value& right) {
  switch (relation) {
    case Relation::kEqual:
      return left == right;
    case Relation::kNotEqual:
      return left != right;
    case Relation::kLess:
      return left < right;
    case Relation::kLessOrEqual:
      return left <= right;
    case Relation::kGreater:
      return left > right;
    case Relation::kGreaterOrEqual:
      return left >= right;
  }
  return false;
}

// NaN when the text is not a number: of the relations, only != holds for it.
double ToNumber(std::string_view text) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  text = TrimXmlSpace(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || text.size() > kMaxNumberBytes) return kNone;
  if (!IsDigit(static_cast<unsigned char>(text[0])) && text[0] != '.')
    return kNone;  // inf, nan, a second sign
  double number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return kNone;
  return negative ? -number : number;
}

bool IsNumeric(Method method) { return method == Method::kIndex || method == Method::kNodeType; }

}  // namespace

bool PatternEvaluator::Compare(const Expression& comparison, const Place& place) {
  Place right;
  const bool hasRightPath = comparison.operands.size() > 1;
  if (hasRightPath && !FirstPlace(*comparison.operands[1], place, &right)) return false;
  const Place* rightPlace = hasRightPath ? &right : nullptr;

  const Expression& left = *comparison.operands[0];
  if (comparison.quantifier == Quantifier::kFirst) {
    Place first;
    return FirstPlace(left, place, &first) && Holds(comparison, first, rightPlace);
  }
  const std::vector<Place> places = AllPlaces(left, place);
  const auto holds = [&](const Place& each) { return Holds(comparison, each, rightPlace); };
  if (comparison.quantifier == Quantifier::kAny)
    return std::any_of(places.begin(), places.end(), holds);
  return std::all_of(places.begin(), places.end(), holds);
}

bool PatternEvaluator::FirstPlace(const Expression& expression, const Place& place, Place* first) {
  const Method method = expression.path.method;
  if (method == Method::kIndex || method == Method::kEnd) {
    if (expression.positional) {
      *first = place;
      return true;
    }
    const std::vector<Place> places = AllPlaces(expression, place);
    if (places.empty()) return false;
    *first = places.front();
    return true;
  }
  *first = {First(expression, place.node), 0, true};
  return first->node != kNoNode;
}

std::vector<PatternEvaluator::Place> PatternEvaluator::AllPlaces(const Expression& expression,
                                                                 const Place& place) {
  if (expression.positional) return {place};
  const NodeSet nodes = All(expression, place.node);
  std::vector<Place> places;
  std::unordered_map<NodeId, std::size_t> lastOfParent;  // its place in `places`
  for (const NodeId node : nodes) {
    Charge(1);
    std::uint32_t index = 0;
    const auto [entry, isFirst] = lastOfParent.try_emplace(m_tree.Parent(node), places.size());
    if (!isFirst) {
      Place& previous = places[entry->second];
      previous.last = false;
      index = previous.index + 1;
      entry->second = places.size();
    }
    places.push_back({node, index, true});
  }
  return places;
}

// `right` is null when the comparison has a literal.
bool PatternEvaluator::Holds(const Expression& comparison, const Place& left, const Place* right) {
  const Method leftMethod = comparison.operands[0]->path.method;
  const Method rightMethod =
      right != nullptr ? comparison.operands[1]->path.method : Method::kNodes;
  if (comparison.numeric)
    return CompareOperands(comparison.relation, NumberOf(leftMethod, left), comparison.number);
  if (IsNumeric(leftMethod) && IsNumeric(rightMethod)) {
    return CompareOperands(comparison.relation, NumberOf(leftMethod, left),
                           NumberOf(rightMethod, *right));
  }

  std::string_view rightText = comparison.literal;
  if (right != nullptr) {
    rightText = TextOf(rightMethod, *right, kWholeText, &m_rightText);
    if (comparison.ignoreCase) {
      m_lowerText.clear();
      AppendFolded(rightText, &m_lowerText);
      m_rightText.swap(m_lowerText);
      rightText = m_rightText;
    }
  }
  const std::size_t enough =
      comparison.ignoreCase ? rightText.size() * kMaxUtf8Bytes : rightText.size();
  std::string_view leftText = TextOf(leftMethod, left, enough, &m_leftText);
  if (comparison.ignoreCase) {
    // More characters than this cannot change the answer.
    if (leftText.size() > enough + kMaxUtf8Bytes) {
      std::size_t cut = enough + 1;
      while ((leftText[cut] & 0xC0) == 0x80) ++cut;
      leftText = leftText.substr(0, cut);
    }
    m_lowerText.clear();
    AppendFolded(leftText, &m_lowerText);
    leftText = m_lowerText;
  }
  Charge(std::min(leftText.size(), rightText.size()) / kBytesPerStep);
  return CompareOperands(comparison.relation, leftText, rightText);
}

double PatternEvaluator::NumberOf(Method method, const Place& place) {
  if (method == Method::kIndex) return place.index;
  if (method == Method::kNodeType) return static_cast<double>(m_tree.Kind(place.node));
  return ToNumber(TextOf(method, place, kMaxNumberBytes, &m_leftText));
}

std::string_view PatternEvaluator::TextOf(Method method, const Place& place, std::size_t enough,
                                          std::string* scratch) {
  if (method == Method::kNodeName) return m_tree.NodeName(place.node);
  if (IsNumeric(method)) {
    *scratch = std::to_string(static_cast<std::uint64_t>(NumberOf(method, place)));
    return *scratch;
  }
  std::uint64_t work = 0;
  const std::string_view text = Dom::TextOf(m_tree, place.node, enough, scratch, &work);
  Charge(work);
  return text;
}

}  // namespace Corvane::Dom
