// The attributes of one IPP answer.
#ifndef CORVANE_IPP_ATTRIBUTE_MAP_H_
#define CORVANE_IPP_ATTRIBUTE_MAP_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane {

// What begins and ends a collection, and an octet string, among an attribute's values.
inline constexpr char kIPPSetStart[] = "IPP_Set_Start";
inline constexpr char kIPPSetEnd[] = "IPP_Set_End";

// An ordered multimap from attribute name (exact) to values, in the order of their arrival. It
// keeps the answer's bytes and makes a value's text only when somebody asks for it: an answer has
// hundreds of values, of which a client reads a few.
class AttributeMap {
 public:
  enum class Kind : std::uint8_t {
    kText,
    kNumber,      // 4 bytes
    kBoolean,     // 1 byte
    kDateTime,    // 11 bytes (RFC 2579, DateAndTime)
    kResolution,  // 9 bytes: cross-feed, feed, units
    kRange,       // 8 bytes: lower, upper
    kOctets,
    kMemberName,
    kSetStart,
    kSetEnd,
  };

  // Forgets everything and keeps a copy of an answer, into which the positions below point.
  void Reset(std::span<const unsigned char> answer);
  // The attributes from now on are those of another job, or of none.
  void BeginGroup(bool ofJob);
  // The name of the values added from now on, which may be one that was there before.
  void BeginAttribute(std::size_t position, std::size_t size);
  // A number has the bytes that its kind says.
  void Add(Kind kind, std::size_t position, std::size_t size);
  // The value added last, if it is that of "attributes-charset", says what the bytes of texts mean.
  void TakeCharset();
  // One text that the answer does not hold. Values added next have no name until one begins.
  void AddText(std::string_view name, std::string_view value);

  // The texts of all values in UTF-8, markers and members among them as they arrived.
  std::vector<std::string> Entries(std::string_view name) const;
  // The first of them.
  std::optional<std::string> First(std::string_view name) const;
  // The values at a path: "a", or "a.b" for member b of collection a, at any depth. A collection,
  // and an octet string, is one text between its markers, joined by ",".
  std::vector<std::string> Values(std::string_view path) const;

  // Attributes of jobs: of which, counted from 1, which of the `names`, and its entries.
  struct OfJob {
    std::size_t job;
    std::size_t name;
    std::vector<std::string> texts;
  };
  std::vector<OfJob> JobAttributes(std::span<const std::string_view> names) const;
  std::size_t JobCount() const { return m_jobCount; }

 private:
  struct Entry {
    std::uint32_t position;
    std::uint16_t size;
    Kind kind;
  };
  struct Attribute {
    std::uint32_t position;
    std::uint16_t size;
    std::uint16_t job;
    std::uint32_t firstEntry;
  };

  std::string_view Bytes(std::size_t position, std::size_t size) const {
    return std::string_view(m_bytes).substr(position, size);
  }
  std::span<const Entry> EntriesOf(std::size_t attribute) const;
  std::string Text(const Entry& entry) const;
  std::string TextOf(std::string_view bytes) const;

  std::string m_bytes;
  bool m_isLatin1 = false;  // its texts; else they are UTF-8
  std::uint16_t m_job = 0;  // of the attributes added now; 0 for none
  std::uint16_t m_jobCount = 0;
  std::vector<Attribute> m_attributes;
  std::vector<Entry> m_entries;  // of each attribute in turn
};

}  // namespace Corvane

#endif  // CORVANE_IPP_ATTRIBUTE_MAP_H_
