// A narrow text of an attribute set: a copy of its own, or none.
#ifndef CORVANE_IPP_OWNED_CHARS_H_
#define CORVANE_IPP_OWNED_CHARS_H_

#include <optional>
#include <string>

namespace Corvane {

class OwnedChars {
 public:
  // The argument may be what Get gave.
  void Set(const char* text) { m_text = text ? std::optional<std::string>(text) : std::nullopt; }
  const char* Get() const { return m_text ? m_text->c_str() : nullptr; }

 private:
  std::optional<std::string> m_text;
};

}  // namespace Corvane

#endif  // CORVANE_IPP_OWNED_CHARS_H_
