#include "platform/linux/store/names.h"

#include <algorithm>
#include <cwchar>
#include <span>

#include "base/letter_case.h"
#include "base/utf8.h"

namespace Corvane::Store {
namespace {

constexpr char32_t kLastCharacter = 0x10FFFF;

}  // namespace

bool MakeName(std::wstring_view wide, Name* name) {
  // Most names are ASCII: one byte a character, in both.
  name->text.resize(wide.size());
  name->folded.resize(wide.size());
  std::size_t ascii = 0;
  for (; ascii < wide.size() && static_cast<char32_t>(wide[ascii]) < 0x80; ++ascii) {
    name->text[ascii] = static_cast<char>(wide[ascii]);
    name->folded[ascii] = LowerAscii(name->text[ascii]);
  }
  name->text.resize(ascii);
  name->folded.resize(ascii);
  for (const wchar_t unit : wide.substr(ascii)) {
    const auto c = static_cast<char32_t>(unit);
    if (c > kLastCharacter) return false;
    AppendUtf8(c, &name->text);
    AppendUtf8(FoldCase(c), &name->folded);
  }
  return true;
}

std::string FoldedText(std::string_view text) {
  std::wstring wide;
  AppendWide(text, &wide);
  Name name;
  MakeName(wide, &name);
  return name.folded;
}

void AppendWide(std::string_view text, std::wstring* wide) {
  const std::size_t begin = wide->size();
  wide->resize(begin + text.size());
  const std::span<wchar_t> room(wide->data() + begin, text.size());
  wide->resize(begin + Convert(text, Malformed::kKeep, room).written);
}

LSTATUS SplitPath(const wchar_t* path, std::vector<Name>* names) {
  names->clear();
  const std::wstring_view whole(path, wcsnlen(path, kMaxPathChars + 1));
  if (whole.size() > kMaxPathChars) return ERROR_INVALID_PARAMETER;
  if (whole.starts_with(L'\\')) return ERROR_BAD_PATHNAME;
  for (std::size_t begin = 0; begin < whole.size();) {
    const std::size_t end = std::min(whole.find(L'\\', begin), whole.size());
    const std::wstring_view name = whole.substr(begin, end - begin);
    begin = end + 1;
    if (name.empty()) continue;
    if (name.size() > kMaxKeyNameChars) return ERROR_INVALID_PARAMETER;
    if (!MakeName(name, &names->emplace_back())) return ERROR_INVALID_PARAMETER;
  }
  return ERROR_SUCCESS;
}

}  // namespace Corvane::Store
