// Writes IPP messages (RFC 8010, 3.1). Numbers are big-endian; tags are one byte, what is above is
// dropped.
#ifndef CORVANE_IPP_WIRE_WRITER_H_
#define CORVANE_IPP_WIRE_WRITER_H_

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace Corvane {

// One request is under way on a connection, so that all may have one id.
constexpr std::uint32_t kIPPRequestId = 100;

// The header, in version 2.0, of a request for an operation, or of its answer with a status.
std::array<char, 8> MakeIPPHeader(int code);

// Numbers as a value has them, four bytes each.
std::string BigEndian(std::initializer_list<std::int32_t> numbers);

// Appends a value, of up to 65,535 bytes as its name. Without a name it is an additional one of the
// attribute before (RFC 8010, 3.1.5).
void AppendIPPValue(std::string* message, int tag, std::string_view name, std::string_view value);

// The values of one attribute.
void AppendIPPValues(std::string* message, int tag, std::string_view name,
                     std::span<const std::string_view> values);

// What the writer gives.
constexpr int kIPPWritten = 0;
constexpr int kIPPTooLarge = 1;  // would not fit
constexpr int kIPPNoName = -1;   // an attribute has a name

// Writes at *position of a caller's buffer and moves it. Everything is written whole or not at all.
// A position outside the buffer is one where nothing fits.
class IPPWriter {
 public:
  IPPWriter(std::span<char> buffer, int* position) : m_buffer(buffer), m_position(position) {}

  int Attribute(int tag, std::string_view name, std::string_view value);
  // A value for each piece between ","; a piece may be empty.
  int Attributes(int tag, std::string_view name, std::string_view list);
  int Integer(int tag, std::string_view name, std::int32_t value);
  int Boolean(std::string_view name, unsigned char value);
  int Range(std::string_view name, std::int32_t lower, std::int32_t upper);
  int Resolution(std::string_view name, unsigned char units, std::int32_t crossFeed,
                 std::int32_t feed);
  // A tag that stands alone.
  int Delimiter(int tag);
  // Bytes as they are.
  int Encoded(std::string_view bytes);

 private:
  // Null when there is no room for so many bytes at the position.
  char* Take(std::size_t size);

  const std::span<char> m_buffer;
  int* const m_position;
};

}  // namespace Corvane

#endif  // CORVANE_IPP_WIRE_WRITER_H_
