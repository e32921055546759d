// What XML calls a name: characters (XML 1.0, fifth edition, production 4 and 4a, without the
// colon) and the two halves of a qualified name.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_XML_NAMES_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_XML_NAMES_H_

#include <string_view>

namespace Corvane::Dom {

constexpr std::string_view kXmlNamespace = "http://www.w3.org/XML/1998/namespace";
constexpr std::string_view kXmlnsNamespace = "http://www.w3.org/2000/xmlns/";

constexpr bool IsXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
constexpr std::string_view TrimXmlSpace(std::string_view text) {
  while (!text.empty() && IsXmlSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsXmlSpace(text.back())) text.remove_suffix(1);
  return text;
}
constexpr bool IsDigit(char32_t c) { return c >= '0' && c <= '9'; }

constexpr bool IsNameStart(char32_t c) {
  if (c < 0x80) return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  return (c >= 0xC0 && c <= 0x2FF && c != 0xD7 && c != 0xF7) ||
         (c >= 0x370 && c <= 0x1FFF && c != 0x37E) || c == 0x200C || c == 0x200D ||
         (c >= 0x2070 && c <= 0x218F) || (c >= 0x2C00 && c <= 0x2FEF) ||
         (c >= 0x3001 && c <= 0xD7FF) || (c >= 0xF900 && c <= 0xFDCF) ||
         (c >= 0xFDF0 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0xEFFFF);
}

constexpr bool IsNameChar(char32_t c) {
  return IsNameStart(c) || IsDigit(c) || c == '-' || c == '.' || c == 0xB7 ||
         (c >= 0x300 && c <= 0x36F) || c == 0x203F || c == 0x2040;
}

// "" when the name has no prefix.
constexpr std::string_view PrefixOf(std::string_view name) {
  const std::size_t colon = name.find(':');
  return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

constexpr std::string_view LocalPartOf(std::string_view name) {
  return name.substr(name.find(':') + 1);
}

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_XML_NAMES_H_
