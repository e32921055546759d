#include "ipp/wire/writer.h"

#include <algorithm>

#include "ipp/wire/codes.h"

namespace Corvane {
namespace {

// Of a value without its name and its bytes: the tag and two lengths.
constexpr std::size_t kFraming = 5;

char* PutField(char* to, std::string_view bytes) {
  *to++ = static_cast<char>(bytes.size() >> 8);
  *to++ = static_cast<char>(bytes.size());
  return to + bytes.copy(to, bytes.size());
}

char* PutValue(char* to, int tag, std::string_view name, std::string_view value) {
  *to++ = static_cast<char>(tag);
  return PutField(PutField(to, name), value);
}

}  // namespace

std::array<char, 8> MakeIPPHeader(int operation) {
  return {2,
          0,
          static_cast<char>(operation >> 8),
          static_cast<char>(operation),
          0,
          0,
          0,
          kIPPRequestId};
}

std::string BigEndian(std::initializer_list<std::int32_t> numbers) {
  std::string bytes;
  for (const std::int32_t number : numbers) {
    for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(number >> shift);
  }
  return bytes;
}

void AppendIPPValue(std::string* message, int tag, std::string_view name, std::string_view value) {
  const std::size_t position = message->size();
  message->resize(position + kFraming + name.size() + value.size());
  PutValue(message->data() + position, tag, name, value);
}

void AppendIPPValues(std::string* message, int tag, std::string_view name,
                     std::span<const std::string_view> values) {
  for (const std::string_view value : values) {
    AppendIPPValue(message, tag, name, value);
    name = {};
  }
}

int IPPWriter::Attribute(int tag, std::string_view name, std::string_view value) {
  if (name.empty()) return kIPPNoName;
  char* const to = Take(kFraming + name.size() + value.size());
  if (!to) return kIPPTooLarge;
  PutValue(to, tag, name, value);
  return kIPPWritten;
}

int IPPWriter::Attributes(int tag, std::string_view name, std::string_view list) {
  if (name.empty()) return kIPPNoName;
  const auto commas = static_cast<std::size_t>(std::ranges::count(list, ','));
  char* to = Take(name.size() + list.size() - commas + kFraming * (commas + 1));
  if (!to) return kIPPTooLarge;
  for (std::size_t comma = 0; comma != std::string_view::npos;) {
    comma = list.find(',');
    to = PutValue(to, tag, name, list.substr(0, comma));
    name = {};
    if (comma != std::string_view::npos) list.remove_prefix(comma + 1);
  }
  return kIPPWritten;
}

int IPPWriter::Integer(int tag, std::string_view name, std::int32_t value) {
  return Attribute(tag, name, BigEndian({value}));
}

int IPPWriter::Boolean(std::string_view name, unsigned char value) {
  return Attribute(IPPTag::kBoolean, name, {reinterpret_cast<const char*>(&value), 1});
}

int IPPWriter::Range(std::string_view name, std::int32_t lower, std::int32_t upper) {
  return Attribute(IPPTag::kRangeOfInteger, name, BigEndian({lower, upper}));
}

int IPPWriter::Resolution(std::string_view name, unsigned char units, std::int32_t crossFeed,
                          std::int32_t feed) {
  return Attribute(IPPTag::kResolution, name,
                   BigEndian({crossFeed, feed}) + static_cast<char>(units));
}

int IPPWriter::Delimiter(int tag) {
  const char byte = static_cast<char>(tag);
  return Encoded({&byte, 1});
}

int IPPWriter::Encoded(std::string_view bytes) {
  char* const to = Take(bytes.size());
  if (!to) return kIPPTooLarge;
  bytes.copy(to, bytes.size());
  return kIPPWritten;
}

char* IPPWriter::Take(std::size_t size) {
  const auto position = static_cast<std::size_t>(*m_position);
  if (*m_position < 0 || position > m_buffer.size() || size > m_buffer.size() - position) {
    return nullptr;
  }
  *m_position += static_cast<int>(size);
  return m_buffer.data() + position;
}

}  // namespace Corvane
