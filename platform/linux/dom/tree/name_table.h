// Interned names: equal texts get the same number, so that comparing names is comparing integers.
// Texts live in one pool; the hash is seeded at random, so that a document cannot choose names that
// collide.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_NAME_TABLE_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_NAME_TABLE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Dom {

constexpr std::uint32_t kNoName = 0xFFFFFFFF;

class NameTable {
 public:
  NameTable();

  std::uint32_t Intern(std::string_view text);
  std::uint32_t Find(std::string_view text) const;  // kNoName when the text was never interned
  std::string_view Get(std::uint32_t id) const {
    return std::string_view(m_pool).substr(m_entries[id].offset, m_entries[id].length);
  }
  std::uint32_t Count() const { return static_cast<std::uint32_t>(m_entries.size()); }

 private:
  struct Entry {
    std::uint32_t offset;
    std::uint32_t length;
    std::uint64_t hash;
  };

  std::uint64_t Hash(std::string_view text) const;
  std::size_t FindSlot(std::string_view text, std::uint64_t hash) const;
  void Grow();

  std::vector<Entry> m_entries;
  std::vector<std::uint32_t> m_slots;  // open addressing, a power of two, at most half full
  std::string m_pool;
  std::uint64_t m_seed;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_NAME_TABLE_H_
