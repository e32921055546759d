// The texts of an item spec: heap copies that free() releases.
#ifndef CORVANE_SPEC_OWNED_TEXT_H_
#define CORVANE_SPEC_OWNED_TEXT_H_

#include <cstdlib>
#include <cwchar>
#include <memory>

namespace Corvane {

// Null gives null; so does a lack of memory.
inline wchar_t* DuplicateText(const wchar_t* text) { return text ? wcsdup(text) : nullptr; }

struct FreeTextDeleter {
  void operator()(wchar_t* text) const { std::free(text); }
};
// A text on its way into an item: freed when reading the rest of the element fails.
using UniqueText = std::unique_ptr<wchar_t, FreeTextDeleter>;

inline void FreeText(wchar_t*& text) {
  std::free(text);
  text = nullptr;
}

}  // namespace Corvane

#endif  // CORVANE_SPEC_OWNED_TEXT_H_
