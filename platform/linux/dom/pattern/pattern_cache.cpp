#include "platform/linux/dom/pattern/pattern_cache.h"

#include <algorithm>

#include "base/utf8.h"
#include "corvane/linux/dom.h"

namespace Corvane::Dom {
namespace {

constexpr std::size_t kMaxEntries = 64;          // memory, and the time of a look-up
constexpr std::size_t kMaxKeptCharacters = 512;  // of one pattern: memory

}  // namespace

std::shared_ptr<const Expression> PatternCache::Compile(std::wstring_view pattern,
                                                        const NameTable& names) {
  const auto known = std::find_if(m_entries.begin(), m_entries.end(),
                                  [&](const Entry& entry) { return entry.pattern == pattern; });
  if (known != m_entries.end()) return known->expression;

  if (pattern.size() > Corvane::DomLimits::kMaxPatternChars) return nullptr;
  const std::optional<std::string> utf8 = ToUtf8Strictly(pattern);
  if (!utf8) return nullptr;
  std::shared_ptr<const Expression> expression = CompilePattern(*utf8, names);
  if (!expression || pattern.size() > kMaxKeptCharacters) return expression;
  if (m_entries.size() < kMaxEntries) {
    m_entries.push_back({std::wstring(pattern), expression});
  } else {
    m_entries[m_oldest] = {std::wstring(pattern), expression};
    m_oldest = (m_oldest + 1) % kMaxEntries;
  }
  return expression;
}

}  // namespace Corvane::Dom
