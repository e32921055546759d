// What the fuzz targets of IPP share: an input that is taken in pieces, and a check.
#ifndef CORVANE_FUZZ_INPUT_H_
#define CORVANE_FUZZ_INPUT_H_

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>

namespace Corvane::Fuzz {

inline void Expect(bool holds) {
  if (!holds) std::abort();
}

// Behind its end there is nothing but zeros.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_rest(data, size) {}

  bool IsOver() const { return m_rest.empty(); }
  std::span<const std::uint8_t> Rest() const { return m_rest; }

  // Leaves what the input does not reach as it is.
  void Read(void* destination, std::size_t size) {
    const std::size_t count = std::min(size, m_rest.size());
    if (count > 0) std::memcpy(destination, m_rest.data(), count);
    m_rest = m_rest.subspan(count);
  }
  template <typename Number>
  Number Next() {
    Number number = 0;
    Read(&number, sizeof(number));
    return number;
  }
  // Up to 255 bytes of the input, up to 256 times over.
  std::string Text() {
    std::string piece(Next<std::uint8_t>(), '\0');
    const int repeats = Next<std::uint8_t>();
    Read(piece.data(), piece.size());
    std::string text = piece;
    for (int i = 0; i < repeats; ++i) text += piece;
    return text;
  }

 private:
  std::span<const std::uint8_t> m_rest;
};

}  // namespace Corvane::Fuzz

#endif  // CORVANE_FUZZ_INPUT_H_
