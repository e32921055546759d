#include "platform/linux/dom/pattern/pattern_lexer.h"

#include "base/utf8.h"
#include "platform/linux/dom/tree/xml_names.h"

namespace Corvane::Dom {
namespace {

constexpr struct {
  std::string_view word;
  Token::Kind kind;
  Relation relation;
  bool ignoreCase;
} kWordOperators[] = {
    {"$and$", Token::Kind::kAnd, {}, false},
    {"$or$", Token::Kind::kOr, {}, false},
    {"$not$", Token::Kind::kNot, {}, false},
    {"$any$", Token::Kind::kAny, {}, false},
    {"$all$", Token::Kind::kAll, {}, false},
    {"$eq$", Token::Kind::kRelation, Relation::kEqual, false},
    {"$ne$", Token::Kind::kRelation, Relation::kNotEqual, false},
    {"$lt$", Token::Kind::kRelation, Relation::kLess, false},
    {"$le$", Token::Kind::kRelation, Relation::kLessOrEqual, false},
    {"$gt$", Token::Kind::kRelation, Relation::kGreater, false},
    {"$ge$", Token::Kind::kRelation, Relation::kGreaterOrEqual, false},
    {"$ieq$", Token::Kind::kRelation, Relation::kEqual, true},
    {"$ine$", Token::Kind::kRelation, Relation::kNotEqual, true},
    {"$ilt$", Token::Kind::kRelation, Relation::kLess, true},
    {"$ile$", Token::Kind::kRelation, Relation::kLessOrEqual, true},
    {"$igt$", Token::Kind::kRelation, Relation::kGreater, true},
    {"$ige$", Token::Kind::kRelation, Relation::kGreaterOrEqual, true},
};

// The number of bytes of the name without a colon at the start of `text`, 0 when none starts there.
std::size_t NameLength(std::string_view text) {
  std::size_t total = 0;
  while (total < text.size()) {
    std::size_t behind = total;
    const char32_t c = NextCodePoint(text, &behind);
    if (!(total == 0 ? IsNameStart(c) : IsNameChar(c))) break;
    total = behind;
  }
  return total;
}

std::size_t DigitCount(std::string_view text) {
  std::size_t count = 0;
  while (count < text.size() && IsDigit(static_cast<unsigned char>(text[count]))) ++count;
  return count;
}

}  // namespace

Token PatternLexer::Next() {
  while (!m_rest.empty() && IsXmlSpace(m_rest[0])) m_rest.remove_prefix(1);
  if (m_rest.empty()) return {};
  const char second = m_rest.size() > 1 ? m_rest[1] : '\0';
  switch (m_rest[0]) {
    case '/':
      return second == '/' ? Take(Token::Kind::kDoubleSlash, 2) : Take(Token::Kind::kSlash, 1);
    case '.':
      return second == '.' ? Take(Token::Kind::kDoubleDot, 2) : Take(Token::Kind::kDot, 1);
    case '*':
      return Take(Token::Kind::kStar, 1);
    case '@':
      return Take(Token::Kind::kAt, 1);
    case '(':
      return Take(Token::Kind::kOpenParenthesis, 1);
    case ')':
      return Take(Token::Kind::kCloseParenthesis, 1);
    case '[':
      return Take(Token::Kind::kOpenBracket, 1);
    case ']':
      return Take(Token::Kind::kCloseBracket, 1);
    case '|':
      return second == '|' ? Take(Token::Kind::kOr, 2) : Take(Token::Kind::kPipe, 1);
    case '&':
      return second == '&' ? Take(Token::Kind::kAnd, 2) : Take(Token::Kind::kInvalid, 1);
    case '=':
      return TakeRelation(Relation::kEqual, 1);
    case '!':
      return second == '=' ? TakeRelation(Relation::kNotEqual, 2) : Take(Token::Kind::kBang, 1);
    case '<':
      return second == '=' ? TakeRelation(Relation::kLessOrEqual, 2)
                           : TakeRelation(Relation::kLess, 1);
    case '>':
      return second == '=' ? TakeRelation(Relation::kGreaterOrEqual, 2)
                           : TakeRelation(Relation::kGreater, 1);
    case '$':
      return TakeWordOperator();
    case '\'':
    case '"':
      return TakeString();
    default:
      return IsDigit(static_cast<unsigned char>(m_rest[0])) ? TakeNumber() : TakeName();
  }
}

Token PatternLexer::Take(Token::Kind kind, std::size_t bytes) {
  const Token token{kind, m_rest.substr(0, bytes)};
  m_rest.remove_prefix(bytes);
  return token;
}

Token PatternLexer::TakeRelation(Relation relation, std::size_t bytes) {
  Token token = Take(Token::Kind::kRelation, bytes);
  token.relation = relation;
  return token;
}

Token PatternLexer::TakeName() {
  std::size_t length = NameLength(m_rest);
  if (length == 0) return Take(Token::Kind::kInvalid, m_rest.size());
  if (length < m_rest.size() && m_rest[length] == ':') {
    const std::size_t local = NameLength(m_rest.substr(length + 1));
    if (local == 0) return Take(Token::Kind::kInvalid, length + 1);
    length += 1 + local;
  }
  return Take(Token::Kind::kName, length);
}

Token PatternLexer::TakeNumber() {
  std::size_t length = DigitCount(m_rest);
  if (length + 1 < m_rest.size() && m_rest[length] == '.') {
    const std::size_t fraction = DigitCount(m_rest.substr(length + 1));
    if (fraction > 0) length += 1 + fraction;
  }
  return Take(Token::Kind::kNumber, length);
}

Token PatternLexer::TakeString() {
  const std::size_t end = m_rest.find(m_rest[0], 1);
  if (end == std::string_view::npos) return Take(Token::Kind::kInvalid, 1);
  Token token = Take(Token::Kind::kString, end + 1);
  token.text = token.text.substr(1, end - 1);
  return token;
}

Token PatternLexer::TakeWordOperator() {
  for (const auto& entry : kWordOperators) {
    if (!m_rest.starts_with(entry.word)) continue;
    Token token = Take(entry.kind, entry.word.size());
    token.relation = entry.relation;
    token.ignoreCase = entry.ignoreCase;
    return token;
  }
  return Take(Token::Kind::kInvalid, 1);
}

}  // namespace Corvane::Dom
