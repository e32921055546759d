// Cuts an XSL pattern into tokens.
#ifndef CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_LEXER_H_
#define CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_LEXER_H_

#include <string_view>

#include "platform/linux/dom/pattern/pattern.h"

namespace Corvane::Dom {

struct Token {
  enum class Kind {
    kEnd,
    kInvalid,
    kSlash,
    kDoubleSlash,
    kDot,
    kDoubleDot,
    kStar,
    kAt,
    kBang,
    kPipe,
    kOpenParenthesis,
    kCloseParenthesis,
    kOpenBracket,
    kCloseBracket,
    kName,    // with its prefix; `and`, `or` and `not` are names too, which only their place tells
              // apart
    kString,  // `text` lies between the quotes
    kNumber,
    kRelation,
    kAnd,
    kOr,
    kNot,
    kAny,
    kAll,
  };
  Kind kind = Kind::kEnd;
  std::string_view text;
  Relation relation = Relation::kEqual;
  bool ignoreCase = false;
};

class PatternLexer {
 public:
  explicit PatternLexer(std::string_view pattern)
      : m_rest(pattern) {}  // UTF-8, which must outlive the tokens
  Token Next();             // kEnd at the end, however often; nothing may be asked after kInvalid

 private:
  Token Take(Token::Kind kind, std::size_t bytes);
  Token TakeRelation(Relation relation, std::size_t bytes);
  Token TakeName();
  Token TakeNumber();
  Token TakeString();
  Token TakeWordOperator();

  std::string_view m_rest;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_LEXER_H_
