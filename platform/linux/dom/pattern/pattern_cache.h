// Patterns compiled for one tree, kept for the next time. One thread at a time.
#ifndef CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_CACHE_H_
#define CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_CACHE_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/dom/pattern/pattern.h"
#include "platform/linux/dom/tree/name_table.h"

namespace Corvane::Dom {

class PatternCache {
 public:
  // Null when the pattern is refused. Always called with the same names.
  std::shared_ptr<const Expression> Compile(std::wstring_view pattern, const NameTable& names);

 private:
  struct Entry {
    std::wstring pattern;
    std::shared_ptr<const Expression> expression;
  };

  std::vector<Entry> m_entries;
  std::size_t m_oldest = 0;  // the entry that the next one replaces once all are taken
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_CACHE_H_
