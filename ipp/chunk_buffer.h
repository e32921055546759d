// Bytes that go out as one chunk (RFC 9112, 7.1).
#ifndef CORVANE_IPP_CHUNK_BUFFER_H_
#define CORVANE_IPP_CHUNK_BUFFER_H_

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

namespace Corvane {

// A piece of a document with room for a chunk's framing around it, so that a piece, which may be
// large, is framed where it lies. The contents are not initialised.
class ChunkBuffer {
 public:
  // Room for `size` bytes. What it held is lost, its memory used again where that fits. False, and
  // no room at all, when there is no memory.
  bool Allocate(int size) {
    const auto needed = static_cast<std::size_t>(size) + kFront + kBack;
    if (m_bytes && needed <= m_capacity && needed >= m_capacity / 2) return true;
    m_bytes.reset();
    m_bytes.reset(new (std::nothrow) char[needed]);
    m_capacity = m_bytes ? needed : 0;
    return m_bytes != nullptr;
  }

  // Null without room.
  char* Data() { return m_bytes ? m_bytes.get() + kFront : nullptr; }

  // With room: calls `write` with the chunk of the first `length` bytes, none of which it may keep.
  template <typename Write>
  auto AsChunk(int length, Write write) {
    char line[kFront];
    const int lineLength =
        std::snprintf(line, sizeof(line), "%X\r\n", static_cast<unsigned>(length));
    char* const begin = Data() - lineLength;
    char* const end = Data() + length;
    char behind[kBack];  // of the document, when the piece is not all of it
    std::memcpy(behind, end, kBack);
    std::memcpy(begin, line, static_cast<std::size_t>(lineLength));
    std::memcpy(end, "\r\n", kBack);
    const auto result =
        write(std::string_view(begin, static_cast<std::size_t>(end + kBack - begin)));
    std::memcpy(end, behind, kBack);
    return result;
  }

 private:
  static constexpr std::size_t kFront = 32;
  static constexpr std::size_t kBack = 2;

  std::unique_ptr<char[]> m_bytes;
  std::size_t m_capacity = 0;
};

}  // namespace Corvane

#endif  // CORVANE_IPP_CHUNK_BUFFER_H_
