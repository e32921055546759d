#include "ipp/request_buffer.h"

#include <algorithm>
#include <cstring>

#include "ipp/ipp_codes.h"

namespace Corvane {
namespace {

// Of an attribute without its name and value: the tag and two lengths.
constexpr std::size_t kFraming = 5;

}  // namespace

int RequestBuffer::String(int tag, std::string_view name, std::string_view value) {
  if (name.empty()) return kIPPNoName;
  if (!Fits(name.size() + value.size() + kFraming)) return kIPPTooLarge;
  Byte(tag);
  Field(name);
  Field(value);
  return kIPPWritten;
}

int RequestBuffer::Strings(int tag, std::string_view name, std::string_view list) {
  if (name.empty()) return kIPPNoName;
  const auto commas = static_cast<std::size_t>(std::count(list.begin(), list.end(), ','));
  if (!Fits(name.size() + list.size() - commas + kFraming * (commas + 1))) return kIPPTooLarge;
  for (std::size_t comma = 0; comma != std::string_view::npos;) {
    comma = list.find(',');
    Byte(tag);
    Field(name);
    Field(list.substr(0, comma));
    name = {};  // additional values have none (RFC 8010, 3.1.5)
    if (comma != std::string_view::npos) list.remove_prefix(comma + 1);
  }
  return kIPPWritten;
}

int RequestBuffer::Integer(int tag, std::string_view name, std::int32_t value) {
  return Numbers(tag, name, {value}, {});
}

int RequestBuffer::Boolean(std::string_view name, unsigned char value) {
  const char byte = static_cast<char>(value);
  return String(IPPTag::kBoolean, name, {&byte, 1});
}

int RequestBuffer::Range(std::string_view name, std::int32_t lower, std::int32_t upper) {
  return Numbers(IPPTag::kRangeOfInteger, name, {lower, upper}, {});
}

int RequestBuffer::Resolution(std::string_view name, unsigned char units, std::int32_t crossFeed,
                              std::int32_t feed) {
  const char byte = static_cast<char>(units);
  return Numbers(IPPTag::kResolution, name, {crossFeed, feed}, {&byte, 1});
}

int RequestBuffer::Delimiter(int tag) {
  if (!Fits(1)) return kIPPTooLarge;
  Byte(tag);
  return kIPPWritten;
}

int RequestBuffer::Encoded(std::span<const unsigned char> bytes) {
  if (!Fits(bytes.size())) return kIPPTooLarge;
  std::memcpy(m_bytes + *m_position, bytes.data(), bytes.size());
  *m_position += static_cast<int>(bytes.size());
  return kIPPWritten;
}

bool RequestBuffer::Fits(std::size_t size) const {
  return *m_position >= 0 && *m_position <= kIPPRequestSize &&
         size <= static_cast<std::size_t>(kIPPRequestSize - *m_position);
}

int RequestBuffer::Numbers(int tag, std::string_view name,
                           std::initializer_list<std::int32_t> numbers, std::string_view tail) {
  if (name.empty()) return kIPPNoName;
  const std::size_t size = 4 * numbers.size() + tail.size();
  if (!Fits(name.size() + size + kFraming)) return kIPPTooLarge;
  Byte(tag);
  Field(name);
  Short(size);
  for (const std::int32_t number : numbers) Long(number);
  for (const char c : tail) Byte(c);
  return kIPPWritten;
}

void RequestBuffer::Byte(int value) { m_bytes[(*m_position)++] = static_cast<char>(value); }

void RequestBuffer::Short(std::size_t value) {
  Byte(static_cast<int>(value >> 8));
  Byte(static_cast<int>(value));
}

void RequestBuffer::Long(std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  Short(bits >> 16);
  Short(bits & 0xFFFF);
}

void RequestBuffer::Field(std::string_view bytes) {
  Short(bytes.size());
  bytes.copy(m_bytes + *m_position, bytes.size());
  *m_position += static_cast<int>(bytes.size());
}

}  // namespace Corvane
