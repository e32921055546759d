#include "platform/linux/dom/tree/name_table.h"

#include <sys/random.h>

#include <cstring>

namespace Corvane::Dom {
namespace {

constexpr std::size_t kFirstSlots = 64;

std::uint64_t MixNameHash(std::uint64_t a, std::uint64_t b) {
  __extension__ typedef unsigned __int128 Wide;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

}  // namespace

NameTable::NameTable()
    : m_slots(kFirstSlots, kNoName), m_seed(reinterpret_cast<std::uintptr_t>(this)) {
  // Early in the system's start there may be no randomness yet; the object's address then has to
  // do.
  std::uint64_t random = 0;
  if (getrandom(&random, sizeof random, GRND_NONBLOCK) == sizeof random) m_seed ^= random;
}

std::uint64_t NameTable::Hash(std::string_view text) const {
  constexpr std::uint64_t kFirst = 0xA0761D6478BD642F;
  constexpr std::uint64_t kSecond = 0xE7037ED1A0B428DB;
  std::uint64_t hash = m_seed ^ MixNameHash(text.size() ^ kFirst, m_seed | 1);
  const char* bytes = text.data();
  std::size_t left = text.size();
  for (; left >= 8; bytes += 8, left -= 8) {
    std::uint64_t word;
    std::memcpy(&word, bytes, 8);
    hash = MixNameHash(hash ^ word, m_seed ^ kSecond);
  }
  std::uint64_t tail = 0;
  for (std::size_t i = 0; i < left; ++i) {
    tail = tail << 8 | static_cast<unsigned char>(bytes[i]);
  }
  return MixNameHash(hash ^ tail, m_seed ^ kFirst);
}

std::size_t NameTable::FindSlot(std::string_view text, std::uint64_t hash) const {
  const std::size_t mask = m_slots.size() - 1;
  std::size_t slot = hash & mask;
  while (m_slots[slot] != kNoName) {
    if (m_entries[m_slots[slot]].hash == hash && Get(m_slots[slot]) == text) break;
    slot = (slot + 1) & mask;
  }
  return slot;
}

std::uint32_t NameTable::Intern(std::string_view text) {
  const std::uint64_t hash = Hash(text);
  std::size_t slot = FindSlot(text, hash);
  if (m_slots[slot] != kNoName) return m_slots[slot];
  if ((m_entries.size() + 1) * 2 > m_slots.size()) {
    Grow();
    slot = FindSlot(text, hash);
  }
  const auto id = static_cast<std::uint32_t>(m_entries.size());
  m_entries.push_back(
      {static_cast<std::uint32_t>(m_pool.size()), static_cast<std::uint32_t>(text.size()), hash});
  m_pool.append(text);
  m_slots[slot] = id;
  return id;
}

std::uint32_t NameTable::Find(std::string_view text) const {
  return m_slots[FindSlot(text, Hash(text))];
}

void NameTable::Grow() {
  std::vector<std::uint32_t> slots(m_slots.size() * 2, kNoName);
  const std::size_t mask = slots.size() - 1;
  for (std::uint32_t id = 0; id < m_entries.size(); ++id) {
    std::size_t slot = m_entries[id].hash & mask;
    while (slots[slot] != kNoName) slot = (slot + 1) & mask;
    slots[slot] = id;
  }
  m_slots = std::move(slots);
}

}  // namespace Corvane::Dom
