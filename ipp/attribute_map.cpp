#include "ipp/attribute_map.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

namespace Corvane {
namespace {

using Kind = AttributeMap::Kind;

unsigned ByteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

std::string NumberAt(std::string_view bytes, std::size_t index) {
  const std::uint32_t bits = ByteAt(bytes, index) << 24 | ByteAt(bytes, index + 1) << 16 |
                             ByteAt(bytes, index + 2) << 8 | ByteAt(bytes, index + 3);
  return std::to_string(static_cast<std::int32_t>(bits));
}

// ISO 8601 with the offset from UTC; fields as they are, also where no calendar has them.
std::string DateTime(std::string_view bytes) {
  const auto field = [bytes](std::size_t index) { return ByteAt(bytes, index); };
  char text[64];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02u.%u%c%02u:%02u",
                field(0) << 8 | field(1), field(2), field(3), field(4), field(5), field(6),
                field(7), bytes[8] == '-' ? '-' : '+', field(9), field(10));
  return text;
}

// The one charset besides UTF-8 that printers answer in, when they are asked to (RFC 8011, 5.1.8).
constexpr char kLatin1[] = "iso-8859-1";

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
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '=' || c == ';'; }, ',');
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
// follows the path as sets open and close and counts the depth of what it passes over or gathers,
// so markers may come in any order and to any depth.
class ValuePicker {
 public:
  ValuePicker(std::span<const std::string_view> path, std::vector<std::string>* values)
      : m_path(path), m_values(values) {}
  ValuePicker(const ValuePicker&) = delete;
  ValuePicker& operator=(const ValuePicker&) = delete;
  // What is still open is over.
  void Finish() {
    if (m_gathered > 0) m_values->push_back(std::move(m_set));
  }

  void SetStart() {
    if (m_passed > 0) {
      ++m_passed;
    } else if (m_gathered > 0) {
      Gather(kIPPSetStart);
      ++m_gathered;
    } else if (!m_onPath) {
      m_passed = 1;
    } else if (m_level == m_path.size()) {
      m_set = kIPPSetStart;
      m_gathered = 1;
    } else {
      ++m_level;
      m_onPath = false;
    }
  }

  void SetEnd() {
    if (m_passed > 0) {
      --m_passed;
    } else if (m_gathered > 0) {
      Gather(kIPPSetEnd);
      if (--m_gathered == 0) m_values->push_back(std::move(m_set));
    } else if (m_level > 0) {
      --m_level;
      m_onPath = true;
    } else {
      Value(kIPPSetEnd);
    }
  }

  void MemberName(std::string name) {
    if (m_passed == 0 && m_gathered == 0 && m_level > 0) {
      m_onPath = name == m_path[m_level - 1];
    } else {
      Value(std::move(name));
    }
  }

  void Octets(std::string_view octets) {
    if (m_passed == 0 && m_gathered == 0 && m_level > 0 && m_level == m_path.size()) {
      const auto member = MemberOfOctets(octets, m_path.back());
      if (member) m_values->emplace_back(*member);
    } else {
      Value(WithCommas(octets));
    }
  }

  void Value(std::string text) {
    if (m_passed > 0) return;
    if (m_gathered > 0) {
      Gather(text);
    } else if (m_onPath && m_level == m_path.size()) {
      m_values->push_back(std::move(text));
    }
  }

 private:
  void Gather(std::string_view text) { m_set.append(1, ',').append(text); }

  const std::span<const std::string_view> m_path;
  std::vector<std::string>* const m_values;
  std::size_t m_level = 0;     // names of the path whose sets are open
  bool m_onPath = true;        // values stand where the path goes on, or ends
  std::size_t m_passed = 0;    // open sets off the path
  std::size_t m_gathered = 0;  // open sets of the value in m_set
  std::string m_set;
};

std::vector<std::string_view> Split(std::string_view path) {
  std::vector<std::string_view> names;
  for (std::size_t dot = 0; dot != std::string_view::npos;) {
    dot = path.find('.');
    names.push_back(path.substr(0, dot));
    if (dot != std::string_view::npos) path.remove_prefix(dot + 1);
  }
  return names;
}

}  // namespace

void AttributeMap::Reset(std::span<const unsigned char> answer) {
  m_bytes.assign(answer.begin(), answer.end());
  m_isLatin1 = false;
  m_job = m_jobCount = 0;
  m_attributes.clear();
  m_entries.clear();
}

// The last job that can be counted has all the rest.
void AttributeMap::BeginGroup(bool ofJob) {
  constexpr auto kMaxJobs = std::numeric_limits<std::uint16_t>::max();
  if (ofJob && m_jobCount < kMaxJobs) ++m_jobCount;
  m_job = ofJob ? m_jobCount : std::uint16_t{0};
}

void AttributeMap::BeginAttribute(std::size_t position, std::size_t size) {
  m_attributes.push_back({static_cast<std::uint32_t>(position), static_cast<std::uint16_t>(size),
                          m_job, static_cast<std::uint32_t>(m_entries.size())});
}

void AttributeMap::Add(Kind kind, std::size_t position, std::size_t size) {
  m_entries.push_back(
      {static_cast<std::uint32_t>(position), static_cast<std::uint16_t>(size), kind});
}

void AttributeMap::TakeCharset() {
  const Attribute& attribute = m_attributes.back();
  if (Bytes(attribute.position, attribute.size) != "attributes-charset") return;
  m_isLatin1 = Bytes(m_entries.back().position, m_entries.back().size) == kLatin1;
}

void AttributeMap::AddText(std::string_view name, std::string_view value) {
  BeginAttribute(m_bytes.size(), name.size());
  Add(Kind::kText, m_bytes.size() + name.size(), value.size());
  m_bytes.append(name).append(value);
  BeginAttribute(0, 0);
}

std::vector<std::string> AttributeMap::Entries(std::string_view name) const {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < m_attributes.size(); ++i) {
    if (Bytes(m_attributes[i].position, m_attributes[i].size) != name) continue;
    for (const Entry& entry : EntriesOf(i)) texts.push_back(Text(entry));
  }
  return texts;
}

std::optional<std::string> AttributeMap::First(std::string_view name) const {
  std::vector<std::string> texts = Entries(name);
  if (texts.empty()) return std::nullopt;
  return std::move(texts.front());
}

std::vector<std::string> AttributeMap::Values(std::string_view path) const {
  const std::size_t dot = path.find('.');
  const std::string_view name = path.substr(0, dot);
  const auto members =
      dot == std::string_view::npos ? std::vector<std::string_view>() : Split(path.substr(dot + 1));
  std::vector<std::string> values;
  if (name.empty()) return values;  // that of values before any name
  for (std::size_t i = 0; i < m_attributes.size(); ++i) {
    const Attribute& attribute = m_attributes[i];
    if (attribute.size != name.size()) continue;
    if (Bytes(attribute.position, attribute.size) != name) continue;
    ValuePicker picker(members, &values);
    for (const Entry& entry : EntriesOf(i)) {
      switch (entry.kind) {
        case Kind::kSetStart:
          picker.SetStart();
          break;
        case Kind::kSetEnd:
          picker.SetEnd();
          break;
        case Kind::kMemberName:
          picker.MemberName(Text(entry));
          break;
        case Kind::kOctets:
          picker.Octets(Bytes(entry.position, entry.size));
          break;
        default:
          picker.Value(Text(entry));
      }
    }
    picker.Finish();
  }
  return values;
}

std::vector<AttributeMap::OfJob> AttributeMap::JobAttributes(
    std::span<const std::string_view> names) const {
  std::vector<OfJob> found;
  for (std::size_t i = 0; i < m_attributes.size(); ++i) {
    const Attribute& attribute = m_attributes[i];
    if (attribute.job == 0) continue;
    const auto name = std::ranges::find(names, Bytes(attribute.position, attribute.size));
    if (name == names.end()) continue;
    OfJob& each = found.emplace_back(
        OfJob{attribute.job, static_cast<std::size_t>(name - names.begin()), {}});
    for (const Entry& entry : EntriesOf(i)) each.texts.push_back(Text(entry));
  }
  return found;
}

std::span<const AttributeMap::Entry> AttributeMap::EntriesOf(std::size_t attribute) const {
  const std::size_t first = m_attributes[attribute].firstEntry;
  const std::size_t end = attribute + 1 < m_attributes.size()
                              ? m_attributes[attribute + 1].firstEntry
                              : m_entries.size();
  return std::span(m_entries).subspan(first, end - first);
}

std::string AttributeMap::Text(const Entry& entry) const {
  const std::string_view bytes = Bytes(entry.position, entry.size);
  switch (entry.kind) {
    case Kind::kText:
    case Kind::kMemberName:
      return TextOf(bytes);
    case Kind::kNumber:
      return NumberAt(bytes, 0);
    case Kind::kBoolean:
      return bytes[0] ? "1" : "0";
    case Kind::kDateTime:
      return DateTime(bytes);
    case Kind::kResolution:
      return NumberAt(bytes, 0) + ',' + NumberAt(bytes, 4) + ',' + std::to_string(ByteAt(bytes, 8));
    case Kind::kRange:
      return NumberAt(bytes, 0) + ',' + NumberAt(bytes, 4);
    case Kind::kOctets:
      return WithCommas(bytes);
    case Kind::kSetStart:
      return kIPPSetStart;
    case Kind::kSetEnd:
      return kIPPSetEnd;
  }
  return {};
}

std::string AttributeMap::TextOf(std::string_view bytes) const {
  return m_isLatin1 ? Utf8FromLatin1(bytes) : std::string(bytes);
}

}  // namespace Corvane
