#include "ipp/wire/values.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <utility>

#include "base/byte_reader.h"
#include "ipp/wire/codes.h"

namespace Corvane {
namespace {

// ISO 8601 with the offset from UTC (RFC 2579, DateAndTime); fields as they are, also where no
// calendar has them.
std::string DateTimeText(std::string_view bytes) {
  const auto field = [bytes](std::size_t index) {
    return unsigned{static_cast<unsigned char>(bytes[index])};
  };
  char text[64];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02u.%u%c%02u:%02u",
                field(0) << 8 | field(1), field(2), field(3), field(4), field(5), field(6),
                field(7), bytes[8] == '-' ? '-' : '+', field(9), field(10));
  return text;
}

// "600,600,3" of a resolution's two numbers and units, "1,99" of a range's two, "5" of one.
std::string NumbersText(std::string_view bytes) {
  std::string text;
  for (ByteReader in(OctetsOf(bytes)); in.Left() > 0;) {
    if (!text.empty()) text += ',';
    text += std::to_string(in.Left() < 4 ? in.U8() : static_cast<std::int32_t>(in.U32()));
  }
  return text;
}

// A value with language is its language and its text, each behind its length (RFC 8010, 3.9). One
// that has no such parts is taken as it stands.
std::string_view WithoutLanguage(std::string_view bytes) {
  ByteReader in(OctetsOf(bytes));
  in.Bytes(in.U16());
  const std::size_t size = in.U16();
  return !in.Failed() && size == in.Left() ? bytes.substr(bytes.size() - size) : bytes;
}

std::string Utf8FromLatin1(std::string_view latin1) {
  std::string utf8;
  for (const char c : latin1) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))};
    }
  }
  return utf8;
}

std::string WithCommas(std::string_view octets) {
  std::string text(octets);
  std::ranges::replace_if(
      text, [](char c) { return c == '=' || c == ';'; }, ',');
  return text;
}

// The value of "name=value;name=value".
std::optional<std::string_view> MemberOfOctets(std::string_view octets, std::string_view name) {
  while (!octets.empty()) {
    const std::string_view field = octets.substr(0, octets.find(';'));
    octets.remove_prefix(std::min(octets.size(), field.size() + 1));
    if (field.size() > name.size() && field.starts_with(name) && field[name.size()] == '=') {
      return field.substr(name.size() + 1);
    }
  }
  return std::nullopt;
}

// Picks from the values of one attribute, given in their order, those at a path of member names. It
// counts the sets that are open and, among them, those that the path names, so markers may come in
// any order and to any depth.
class ValuePicker {
 public:
  ValuePicker(std::span<const std::string_view> path, std::vector<std::string>* values)
      : m_path(path), m_values(values) {}
  ValuePicker(const ValuePicker&) = delete;
  ValuePicker& operator=(const ValuePicker&) = delete;

  void SetStart() {
    if (IsAtLevel() && m_onPath && m_level < m_path.size()) {
      ++m_level;
      m_onPath = false;
    } else if (IsPicking()) {
      if (!IsAtLevel()) m_set += ',';
      m_set += kIPPSetStart;
    }
    ++m_depth;
  }

  void SetEnd() {
    if (m_depth == 0) {
      Value(kIPPSetEnd);
    } else if (IsAtLevel()) {
      --m_depth;
      --m_level;
      m_onPath = true;
    } else {
      Value(kIPPSetEnd);
      --m_depth;
      if (IsAtLevel()) Finish();
    }
  }

  void MemberName(std::string name) {
    if (IsAtLevel() && m_level > 0) {
      m_onPath = name == m_path[m_level - 1];
    } else {
      Value(std::move(name));
    }
  }

  void Octets(std::string_view octets) {
    SetStart();
    if (IsAtLevel() && m_level > 0 && m_level == m_path.size()) {
      const auto member = MemberOfOctets(octets, m_path.back());
      if (member) m_values->emplace_back(*member);
    } else {
      Value(WithCommas(octets));
    }
    SetEnd();
  }

  void Value(std::string text) {
    if (!IsPicking()) return;
    if (IsAtLevel()) {
      m_values->push_back(std::move(text));
    } else {
      m_set.append(1, ',').append(text);
    }
  }

  // The set that is being picked is over.
  void Finish() {
    if (IsPicking() && !m_set.empty()) m_values->push_back(std::exchange(m_set, {}));
  }

 private:
  bool IsAtLevel() const { return m_depth == m_level; }
  bool IsPicking() const { return m_onPath && m_level == m_path.size(); }

  const std::span<const std::string_view> m_path;
  std::vector<std::string>* const m_values;
  std::size_t m_depth = 0;  // open sets
  std::size_t m_level = 0;  // of them, from the outermost, those of the path's names
  bool m_onPath = true;     // within those, values stand where the path goes on, or ends
  std::string m_set;        // of an open set below them, as far as it is picked
};

std::vector<std::string_view> SplitValues(std::string_view path) {
  std::vector<std::string_view> names;
  for (std::size_t dot = 0; dot != std::string_view::npos;) {
    dot = path.find('.');
    names.push_back(path.substr(0, dot));
    if (dot != std::string_view::npos) path.remove_prefix(dot + 1);
  }
  return names;
}

}  // namespace

std::string IPPTextOf(const IPPMessage& message, const IPPValue& value) {
  std::string_view bytes = message.BytesOf(value);
  switch (value.tag) {
    case IPPTag::kInteger:
    case IPPTag::kEnum:
    case IPPTag::kResolution:
    case IPPTag::kRangeOfInteger:
      return NumbersText(bytes);
    case IPPTag::kBoolean:
      return bytes[0] ? "1" : "0";
    case IPPTag::kDateTime:
      return DateTimeText(bytes);
    case IPPTag::kOctetString:
      return WithCommas(bytes);
    case IPPTag::kBegCollection:
      return kIPPSetStart;
    case IPPTag::kEndCollection:
      return kIPPSetEnd;
    case IPPTag::kTextWithLanguage:
    case IPPTag::kNameWithLanguage:
      bytes = WithoutLanguage(bytes);
      [[fallthrough]];
    default:
      return message.IsLatin1() ? Utf8FromLatin1(bytes) : std::string(bytes);
  }
}

bool IsIPPText(const IPPValue& value) {
  return value.tag == IPPTag::kTextWithLanguage || value.tag == IPPTag::kNameWithLanguage ||
         (value.tag >= IPPTag::kText && value.tag <= IPPTag::kMimeMediaType);
}

std::optional<std::int32_t> IPPNumberOf(const IPPMessage& message, const IPPValue& value) {
  if (value.tag != IPPTag::kInteger && value.tag != IPPTag::kEnum) return std::nullopt;
  return static_cast<std::int32_t>(ByteReader(OctetsOf(message.BytesOf(value))).U32());
}

std::optional<std::string> IPPTextOf(const IPPMessage& message, const IPPAttribute* attribute) {
  if (!attribute || message.ValuesOf(*attribute).empty()) return std::nullopt;
  return IPPTextOf(message, message.ValuesOf(*attribute).front());
}

std::optional<std::int32_t> IPPNumberOf(const IPPMessage& message, const IPPAttribute* attribute) {
  if (!attribute || message.ValuesOf(*attribute).empty()) return std::nullopt;
  return IPPNumberOf(message, message.ValuesOf(*attribute).front());
}

std::vector<std::string> IPPValuesAt(const IPPMessage& message, std::string_view path) {
  const std::vector<std::string_view> names = SplitValues(path);
  std::vector<std::string> values;
  if (names.front().empty()) return values;  // that of values before any name
  for (const IPPAttribute& attribute : message.Attributes()) {
    if (attribute.size != names.front().size()) continue;
    if (message.NameOf(attribute) != names.front()) continue;
    ValuePicker picker(std::span<const std::string_view>(names).subspan(1), &values);
    for (const IPPValue& value : message.ValuesOf(attribute)) {
      switch (value.tag) {
        case IPPTag::kBegCollection:
          picker.SetStart();
          break;
        case IPPTag::kEndCollection:
          picker.SetEnd();
          break;
        case IPPTag::kMemberAttrName:
          picker.MemberName(IPPTextOf(message, value));
          break;
        case IPPTag::kOctetString:
          picker.Octets(message.BytesOf(value));
          break;
        default:
          picker.Value(IPPTextOf(message, value));
      }
    }
    picker.Finish();
  }
  return values;
}

}  // namespace Corvane
