#include "tools/ipp/ipp_message.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Corvane::Tool {
namespace {

constexpr std::size_t kHeaderBytes = 8;
constexpr unsigned kRequestId = 1;
// Groups are a byte each at the least and hundreds in memory and output; no printer has so many
// jobs.
constexpr std::size_t kMaxGroups = 10'000;

void AppendShort(std::string& out, std::size_t number) {
  out += static_cast<char>(number >> 8 & 0xFF);
  out += static_cast<char>(number & 0xFF);
}

void AppendField(std::string& out, std::string_view bytes) {
  AppendShort(out, bytes.size());
  out += bytes;
}

void AppendAttribute(std::string& out, const IPPAttribute& attribute) {
  std::string_view name = attribute.name;
  for (const IPPValue& value : attribute.values) {
    out += static_cast<char>(value.tag);
    AppendField(out, name);
    AppendField(out, value.bytes);
    name = {};  // further values of an attribute have none
  }
}

class Reader {
 public:
  explicit Reader(std::string_view body) : m_rest(body) {}

  bool Read(IPPAnswer* answer) {
    std::string_view header;
    if (!Take(kHeaderBytes, &header)) return false;
    const int major = Byte(header[0]);
    if (major < 1 || major > 2 || Short(header.substr(4)) != 0 ||
        Short(header.substr(6)) != kRequestId) {
      return false;
    }
    answer->status = static_cast<int>(Short(header.substr(2)));
    for (int tag = 0; TakeByte(&tag);) {
      if (tag == IPPTag::kEndOfAttributes) return true;
      if (tag < IPPTag::kFirstValue) {
        if (answer->groups.size() == kMaxGroups) return false;
        answer->groups.push_back({tag, {}});
      } else if (answer->groups.empty() || !ReadAttribute(tag, &answer->groups.back().attributes)) {
        return false;
      }
    }
    return false;  // the end is missing
  }

 private:
  static int Byte(char c) { return static_cast<unsigned char>(c); }
  static unsigned Short(std::string_view bytes) {
    return static_cast<unsigned>(Byte(bytes[0]) << 8 | Byte(bytes[1]));
  }

  bool Take(std::size_t count, std::string_view* bytes) {
    if (count > m_rest.size()) return false;
    *bytes = m_rest.substr(0, count);
    m_rest.remove_prefix(count);
    return true;
  }
  bool TakeByte(int* byte) {
    std::string_view bytes;
    if (!Take(1, &bytes)) return false;
    *byte = Byte(bytes[0]);
    return true;
  }
  bool TakeField(std::string_view* bytes) {
    std::string_view length;
    return Take(2, &length) && Take(Short(length), bytes);
  }

  // A value behind its tag: the first of an attribute, or another one of the last.
  bool ReadAttribute(int tag, std::vector<IPPAttribute>* attributes) {
    std::string_view name;
    std::string_view bytes;
    if (!TakeField(&name) || !TakeField(&bytes)) return false;
    if (!name.empty()) attributes->push_back({std::string(name), {}});
    if (attributes->empty()) return false;
    attributes->back().values.push_back({tag, std::string(bytes)});
    return true;
  }

  std::string_view m_rest;
};

}  // namespace

const IPPAttribute* IPPGroup::Find(std::string_view name) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [name](const IPPAttribute& each) { return each.name == name; });
  return found == attributes.end() ? nullptr : &*found;
}

const IPPAttribute* IPPAnswer::Find(int groupTag, std::string_view name) const {
  const auto found = std::find_if(groups.begin(), groups.end(), [groupTag](const IPPGroup& each) {
    return each.tag == groupTag;
  });
  return found == groups.end() ? nullptr : found->Find(name);
}

IPPAttribute MakeAttribute(std::string name, int tag, const std::vector<std::string>& values) {
  IPPAttribute attribute{std::move(name), {}};
  for (const std::string& value : values) attribute.values.push_back({tag, value});
  return attribute;
}

std::string BuildIPPRequest(int operation, const std::string& printerUri,
                            const std::vector<IPPAttribute>& attributes) {
  std::string request = {1, 1};
  AppendShort(request, static_cast<std::size_t>(operation));
  AppendShort(request, 0);
  AppendShort(request, kRequestId);
  request += static_cast<char>(IPPTag::kOperationGroup);
  // These three come first, in this order (RFC 8011, 4.1.4 and 4.1.5).
  AppendAttribute(request, MakeAttribute("attributes-charset", IPPTag::kCharset, {"utf-8"}));
  AppendAttribute(request,
                  MakeAttribute("attributes-natural-language", IPPTag::kNaturalLanguage, {"en"}));
  AppendAttribute(request, MakeAttribute("printer-uri", IPPTag::kUri, {printerUri}));
  for (const IPPAttribute& attribute : attributes) AppendAttribute(request, attribute);
  request += static_cast<char>(IPPTag::kEndOfAttributes);
  return request;
}

std::optional<IPPAnswer> ReadIPPAnswer(std::string_view body) {
  IPPAnswer answer;
  if (body.size() > kMaxIPPAnswerBytes || !Reader(body).Read(&answer)) return std::nullopt;
  return answer;
}

}  // namespace Corvane::Tool
