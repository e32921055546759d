// The attributes of a request, as they go on the wire (RFC 8010, 3.1).
#ifndef CORVANE_IPP_REQUEST_BUFFER_H_
#define CORVANE_IPP_REQUEST_BUFFER_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

namespace Corvane {

// Bytes of a whole request, without a document. A request is small; the limit keeps what a client
// adds of its own from growing it.
constexpr int kIPPRequestSize = 2048;

// What an encoder gives.
constexpr int kIPPWritten = 0;
constexpr int kIPPTooLarge = 1;  // would not fit
constexpr int kIPPNoName = -1;   // an attribute has a name

// Writes at *position of a caller's buffer of kIPPRequestSize bytes and moves it. Everything is
// written whole or not at all. A position outside the buffer is one where nothing fits. Numbers are
// big-endian. Tags are one byte, what is above is dropped.
class RequestBuffer {
 public:
  RequestBuffer(char* bytes, int* position) : m_bytes(bytes), m_position(position) {}

  int String(int tag, std::string_view name, std::string_view value);
  // A value for each piece between ","; a piece may be empty.
  int Strings(int tag, std::string_view name, std::string_view list);
  int Integer(int tag, std::string_view name, std::int32_t value);
  int Boolean(std::string_view name, unsigned char value);
  int Range(std::string_view name, std::int32_t lower, std::int32_t upper);
  int Resolution(std::string_view name, unsigned char units, std::int32_t crossFeed,
                 std::int32_t feed);
  // A tag that stands alone.
  int Delimiter(int tag);
  // Bytes as they are.
  int Encoded(std::span<const unsigned char> bytes);

 private:
  bool Fits(std::size_t size) const;
  int Numbers(int tag, std::string_view name, std::initializer_list<std::int32_t> numbers,
              std::string_view tail);
  void Byte(int value);
  void Short(std::size_t value);
  void Long(std::int32_t value);
  void Field(std::string_view bytes);

  char* const m_bytes;
  int* const m_position;
};

}  // namespace Corvane

#endif  // CORVANE_IPP_REQUEST_BUFFER_H_
