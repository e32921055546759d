#include "platform/linux/store/names.h"

#include <algorithm>
#include <cwchar>

#include "base/letter_case.h"

namespace Corvane::Store {
namespace {

constexpr char32_t kLastCharacter = 0x10FFFF;

void AppendUtf8(char32_t c, std::string* text) {
  const auto rest = [&](int shift) {
    text->push_back(static_cast<char>(0x80 | ((c >> shift) & 0x3F)));
  };
  if (c < 0x80) {
    text->push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    text->push_back(static_cast<char>(0xC0 | (c >> 6)));
    rest(0);
  } else if (c < 0x10000) {
    text->push_back(static_cast<char>(0xE0 | (c >> 12)));
    rest(6);
    rest(0);
  } else {
    text->push_back(static_cast<char>(0xF0 | (c >> 18)));
    rest(12);
    rest(6);
    rest(0);
  }
}

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
  return MakeName(wide, &name) ? name.folded : std::string(text);
}

void AppendWide(std::string_view text, std::wstring* wide) {
  const std::size_t begin = wide->size();
  wide->resize(begin + text.size());
  wchar_t* out = wide->data() + begin;
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    if (lead < 0x80) {
      *out++ = lead;
      continue;
    }
    int more = lead < 0xC0 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t c = lead & (0x3Fu >> more);
    // A damaged file may end the text early.
    for (; more > 0 && i < text.size(); --more) {
      c = (c << 6) | (static_cast<unsigned char>(text[i++]) & 0x3Fu);
    }
    *out++ = static_cast<wchar_t>(c);
  }
  wide->resize(static_cast<std::size_t>(out - wide->data()));
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
