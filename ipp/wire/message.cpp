#include "ipp/wire/message.h"

#include <algorithm>
#include <array>

#include "base/byte_reader.h"
#include "ipp/wire/codes.h"

namespace Corvane {
namespace {

constexpr std::size_t kHeaderSize = 8;
// No attribute has such a name (RFC 8011, 5.1.4: keywords end at 255); a longer one is a stream out
// of step.
constexpr std::size_t kMaxNameSize = 1023;
constexpr std::size_t kMaxGroups = 65'535;

// The size of a tag's values, or one of these.
constexpr int kNotKept = -1;
constexpr int kAnySize = -2;

constexpr auto kSizes = [] {
  std::array<std::int8_t, 256> sizes{};
  sizes.fill(kNotKept);
  for (int tag = IPPTag::kText; tag <= IPPTag::kMemberAttrName; ++tag) {
    sizes[static_cast<std::size_t>(tag)] = kAnySize;
  }
  for (const int tag : {IPPTag::kOctetString, IPPTag::kTextWithLanguage, IPPTag::kNameWithLanguage,
                        IPPTag::kBegCollection, IPPTag::kEndCollection}) {
    sizes[static_cast<std::size_t>(tag)] = kAnySize;
  }
  sizes[IPPTag::kBoolean] = 1;
  sizes[IPPTag::kInteger] = sizes[IPPTag::kEnum] = 4;
  sizes[IPPTag::kRangeOfInteger] = 8;
  sizes[IPPTag::kResolution] = 9;
  sizes[IPPTag::kDateTime] = 11;
  return sizes;
}();

template <typename Each>
std::span<const Each> MessageRun(const std::vector<Each>& all, std::size_t first, std::size_t end) {
  return std::span(all).subspan(first, end - first);
}

}  // namespace

std::optional<IPPHeader> ReadIPPHeader(std::string_view bytes) {
  ByteReader in(OctetsOf(bytes));
  IPPHeader header;
  header.major = in.U8();
  header.minor = in.U8();
  header.code = in.U16();
  header.requestId = in.U32();
  return in.Failed() ? std::nullopt : std::optional(header);
}

IPPReading ReadIPPMessage(std::string_view bytes, IPPMessage* message) {
  const std::optional<IPPHeader> header = ReadIPPHeader(bytes);
  message->m_header = header.value_or(IPPHeader());
  message->m_bytes = bytes;
  message->m_isLatin1 = false;
  message->m_groups.clear();
  message->m_attributes.assign(1, {});
  message->m_values.clear();

  ByteReader in(OctetsOf(bytes));
  in.Bytes(kHeaderSize);
  const auto position = [&] { return static_cast<std::uint32_t>(bytes.size() - in.Left()); };
  IPPReading result = header ? IPPReading::kNoEnd : IPPReading::kMalformed;
  while (in.Left() > 0) {
    const std::uint8_t tag = in.U8();
    if (tag == IPPTag::kEndOfAttributes) {
      result = IPPReading::kWhole;
      break;
    }
    if (tag < IPPTag::kFirstValue) {
      const auto first = static_cast<std::uint32_t>(message->m_attributes.size());
      if (message->m_groups.size() < kMaxGroups) message->m_groups.push_back({first, tag});
      continue;
    }
    const std::uint16_t nameSize = in.U16();
    const std::uint32_t name = position();
    in.Bytes(nameSize);
    const std::uint16_t size = in.U16();
    const IPPValue value{position(), size, tag};
    in.Bytes(size);
    if (in.Failed() || nameSize > kMaxNameSize) {
      result = IPPReading::kMalformed;
      break;
    }
    // The name of an additional value is empty, and a collection's member has it as its value.
    if (nameSize > 0 && tag != IPPTag::kMemberAttrName) {
      message->m_attributes.push_back(
          {name, nameSize, static_cast<std::uint32_t>(message->m_values.size())});
    }
    const int expected = kSizes[tag];
    if (expected != kAnySize && expected != size) continue;
    message->m_values.push_back(value);
    if (tag == IPPTag::kCharset) message->TakeCharset();
  }
  message->m_end = position();
  return result;
}

void IPPMessage::TakeCharset() {
  if (NameOf(m_attributes.back()) != "attributes-charset") return;
  m_isLatin1 = BytesOf(m_values.back()) == "iso-8859-1";
}

std::span<const IPPAttribute> IPPMessage::AttributesOf(const IPPGroup& group) const {
  const bool isLast = &group == &m_groups.back();
  return MessageRun(m_attributes, group.firstAttribute,
                    isLast ? m_attributes.size() : (&group)[1].firstAttribute);
}

std::span<const IPPValue> IPPMessage::ValuesOf(const IPPAttribute& attribute) const {
  const bool isLast = &attribute == &m_attributes.back();
  return MessageRun(m_values, attribute.firstValue,
                    isLast ? m_values.size() : (&attribute)[1].firstValue);
}

const IPPAttribute* IPPMessage::Find(const IPPGroup& group, std::string_view name) const {
  const auto attributes = AttributesOf(group);
  const auto found = std::ranges::find(attributes, name,
                                       [this](const IPPAttribute& each) { return NameOf(each); });
  return found == attributes.end() ? nullptr : &*found;
}

const IPPAttribute* IPPMessage::Find(int groupTag, std::string_view name) const {
  const auto group = std::ranges::find(m_groups, groupTag, &IPPGroup::tag);
  return group == m_groups.end() ? nullptr : Find(*group, name);
}

}  // namespace Corvane
