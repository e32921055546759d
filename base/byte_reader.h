// Checked reading of bytes in network order.
#ifndef CORVANE_BASE_BYTE_READER_H_
#define CORVANE_BASE_BYTE_READER_H_

#include <cstddef>
#include <cstdint>
#include <span>

namespace Corvane {

// Takes numbers and runs of bytes off the front of bytes that must outlive it, and never reads
// behind their end: a read of more than is left takes nothing and gives 0 or no bytes, and from
// then on so does every read, and Failed() is true. So a caller may read a whole structure and ask
// once.
class ByteReader {
 public:
  explicit ByteReader(std::span<const std::uint8_t> bytes) : m_rest(bytes) {}

  std::uint8_t U8() { return static_cast<std::uint8_t>(Number(1)); }
  std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
  std::uint32_t U32() { return Number(4); }
  std::span<const std::uint8_t> Bytes(std::size_t size) {
    if (size > m_rest.size()) {
      m_rest = {};
      m_failed = true;
      return {};
    }
    const std::span<const std::uint8_t> taken = m_rest.first(size);
    m_rest = m_rest.subspan(size);
    return taken;
  }

  std::size_t Left() const { return m_rest.size(); }
  bool Failed() const { return m_failed; }

 private:
  std::uint32_t Number(std::size_t size) {
    std::uint32_t number = 0;
    for (const std::uint8_t byte : Bytes(size)) number = number << 8 | byte;
    return number;
  }

  std::span<const std::uint8_t> m_rest;
  bool m_failed = false;
};

}  // namespace Corvane

#endif  // CORVANE_BASE_BYTE_READER_H_
