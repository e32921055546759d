// The fields of an attribute set.
#ifndef CORVANE_IPP_OWNED_CHARS_H_
#define CORVANE_IPP_OWNED_CHARS_H_

#include <optional>
#include <string>

#include "core/trace.h"
#include "corvane/platform.h"

namespace Corvane {

// A narrow text: a copy of its own, or none.
class OwnedChars {
 public:
  // The argument may be what Get gave.
  void Set(const char* text) { m_text = text ? std::optional<std::string>(text) : std::nullopt; }
  const char* Get() const { return m_text ? m_text->c_str() : nullptr; }

 private:
  std::optional<std::string> m_text;
};

// What an accessor does: it traces itself, and sets its field or gives it.
inline HRESULT SetTraced(const wchar_t* function, OwnedChars* field, const char* text) {
  TraceScope trace(function);
  field->Set(text);
  return S_OK;
}
inline const char* GetTraced(const wchar_t* function, OwnedChars& field) {
  TraceScope trace(function);
  return field.Get();
}
template <typename Value>
void SetTraced(const wchar_t* function, Value* field, const Value& value) {
  TraceScope trace(function);
  *field = value;
}
template <typename Value>
Value& GetTraced(const wchar_t* function, Value& field) {
  TraceScope trace(function);
  return field;
}

}  // namespace Corvane

#endif  // CORVANE_IPP_OWNED_CHARS_H_
