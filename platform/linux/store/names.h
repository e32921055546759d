// Names of keys, values and printers as the store holds them, and paths of them.
#ifndef CORVANE_PLATFORM_LINUX_STORE_NAMES_H_
#define CORVANE_PLATFORM_LINUX_STORE_NAMES_H_

#include <string>
#include <string_view>
#include <vector>

#include "corvane/linux/base.h"

namespace Corvane::Store {

// Windows' own limits, in characters: no name that Windows would refuse gets in.
constexpr std::size_t kMaxKeyNameChars = 255;
constexpr std::size_t kMaxValueNameChars = 16383;
constexpr std::size_t kMaxPathChars = 32767;

// UTF-8 in which a lone surrogate has three bytes as any other character, so that every name comes
// back as it was.
struct Name {
  std::string text;
  std::string folded;  // what two names that differ in case alone have in common

  friend bool operator==(const Name&, const Name&) = default;
};

// False for a character beyond U+10FFFF.
bool MakeName(std::wstring_view wide, Name* name);

// Appends what MakeName made `text` from; U+FFFD for what a damaged file has instead.
void AppendWide(std::string_view text, std::wstring* wide);

// `folded` to what is, or should be, a `text`.
std::string FoldedText(std::string_view text);

// The names between the "\"s of `path`, of which several in a row or at the end count as one.
// ERROR_BAD_PATHNAME when one is at the beginning; ERROR_INVALID_PARAMETER when the path or a name
// is too long or has a malformed character.
LSTATUS SplitPath(const wchar_t* path, std::vector<Name>* names);

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_NAMES_H_
