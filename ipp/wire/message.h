// An IPP message (RFC 8010, 3.1): what it holds, and where that lies in its bytes.
#ifndef CORVANE_IPP_WIRE_MESSAGE_H_
#define CORVANE_IPP_WIRE_MESSAGE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane {

// As numbers are read from them.
inline std::span<const std::uint8_t> OctetsOf(std::string_view bytes) {
  return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

struct IPPHeader {
  int major = 0;
  int minor = 0;
  int code = 0;  // of a request the operation, of an answer the status
  std::uint32_t requestId = 0;

  // Version 2.x is spoken. An answer in another version is none, whatever its status; of 1.x, which
  // old printers speak, it can be said why.
  bool IsSpoken() const { return major == 2; }
  bool IsVersion1() const { return major == 1; }
};

// Nothing for fewer than 8 bytes.
std::optional<IPPHeader> ReadIPPHeader(std::string_view bytes);

// Bytes of the message, a value's after its tag and lengths.
struct IPPValue {
  std::uint32_t position;
  std::uint16_t size;
  std::uint8_t tag;
};

struct IPPAttribute {
  std::uint32_t position;  // of its name
  std::uint16_t size;
  std::uint32_t firstValue;
};

struct IPPGroup {
  std::uint32_t firstAttribute;
  std::uint8_t tag;
};

enum class IPPReading {
  kWhole,
  kNoEnd,      // the bytes end where another attribute, or the end tag, would stand
  kMalformed,  // they end anywhere else, or are out of step
};

// The attributes of a message in the order of their arrival. It keeps the message's bytes, and a
// value becomes text (values.h) only when somebody asks for it: an answer has hundreds of values,
// of which a client reads a few.
//
// The values of a collection follow each other as they lie on the wire (RFC 8010, 3.1.6), so that
// its members never pass for attributes. Values of a wrong size, out-of-band ones, as "unknown",
// and those of types to come are left out. Values before any name have an attribute without one,
// those before any group no group. References and views into a message end when it is read anew.
class IPPMessage {
 public:
  const IPPHeader& Header() const { return m_header; }
  std::span<const IPPGroup> Groups() const { return m_groups; }
  std::span<const IPPAttribute> Attributes() const { return m_attributes; }
  std::span<const IPPAttribute> AttributesOf(const IPPGroup& group) const;
  std::span<const IPPValue> ValuesOf(const IPPAttribute& attribute) const;

  std::string_view NameOf(const IPPAttribute& each) const { return At(each.position, each.size); }
  std::string_view BytesOf(const IPPValue& value) const { return At(value.position, value.size); }

  // The first of that name; null for none.
  const IPPAttribute* Find(const IPPGroup& group, std::string_view name) const;
  // In the first group of that kind.
  const IPPAttribute* Find(int groupTag, std::string_view name) const;

  // By "attributes-charset" the bytes of texts are ISO-8859-1, the one charset besides UTF-8 that
  // printers answer in, when they are asked to (RFC 8011, 5.1.8).
  bool IsLatin1() const { return m_isLatin1; }
  // Where reading stopped: behind the end tag a document may follow.
  std::size_t End() const { return m_end; }

 private:
  friend IPPReading ReadIPPMessage(std::string_view bytes, IPPMessage* message);

  std::string_view At(std::size_t position, std::size_t size) const {
    return std::string_view(m_bytes).substr(position, size);
  }
  void TakeCharset();

  IPPHeader m_header;
  std::string m_bytes;
  std::size_t m_end = 0;
  bool m_isLatin1 = false;
  std::vector<IPPGroup> m_groups;
  std::vector<IPPAttribute> m_attributes;  // of each group in turn
  std::vector<IPPValue> m_values;          // of each attribute in turn
};

// Reads a message of any version into *message, which then has all before the fault, if there is
// one. Memory grows with the bytes that there are, not with lengths that they claim. A message has
// at most 65,535 groups: the last one has all the rest.
IPPReading ReadIPPMessage(std::string_view bytes, IPPMessage* message);

}  // namespace Corvane

#endif  // CORVANE_IPP_WIRE_MESSAGE_H_
