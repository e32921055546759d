// IPP messages (RFC 8010, 3), as far as the tool asks and reads them.
#ifndef CORVANE_TOOLS_IPP_IPP_MESSAGE_H_
#define CORVANE_TOOLS_IPP_IPP_MESSAGE_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Tool {

struct IPPValue {
  int tag = 0;
  std::string bytes;  // as on the wire
};

// Of a collection the pieces follow each other, as they lie on the wire (RFC 8010, 3.1.6): its
// members never pass for attributes.
struct IPPAttribute {
  std::string name;
  std::vector<IPPValue> values;
};

struct IPPGroup {
  int tag = 0;
  std::vector<IPPAttribute> attributes;

  const IPPAttribute* Find(std::string_view name) const;
};

struct IPPAnswer {
  int status = 0;  // RFC 8011, appendix B
  std::vector<IPPGroup> groups;

  bool IsSuccessful() const { return status < 0x0100; }
  // Of the first group of that kind; null when there is none.
  const IPPAttribute* Find(int groupTag, std::string_view name) const;
};

namespace IPPTag {
constexpr int kOperationGroup = 0x01;
constexpr int kJobGroup = 0x02;
constexpr int kEndOfAttributes = 0x03;
constexpr int kPrinterGroup = 0x04;
constexpr int kUnsupportedGroup = 0x05;
constexpr int kFirstValue = 0x10;  // lower ones delimit
constexpr int kInteger = 0x21;
constexpr int kBoolean = 0x22;
constexpr int kEnum = 0x23;
constexpr int kTextWithLanguage = 0x35;
constexpr int kNameWithLanguage = 0x36;
constexpr int kText = 0x41;
constexpr int kName = 0x42;
constexpr int kKeyword = 0x44;
constexpr int kUri = 0x45;
constexpr int kCharset = 0x47;
constexpr int kNaturalLanguage = 0x48;
constexpr int kMimeMediaType = 0x49;
}  // namespace IPPTag

// A longer answer is none. An answer takes some forty times its size in memory when it is all small
// values; a thousand jobs of a talkative printer are 4 MB.
constexpr std::size_t kMaxIPPAnswerBytes = std::size_t{4} << 20;

// An attribute with values of one type.
IPPAttribute MakeAttribute(std::string name, int tag, const std::vector<std::string>& values);

// A request of version 1.1 to the printer at `printerUri`, with UTF-8 text in English. Names and
// values are at most 65,535 bytes long.
std::string BuildIPPRequest(int operation, const std::string& printerUri,
                            const std::vector<IPPAttribute>& attributes);

// Nothing for what is no whole answer to such a request, or is beyond the limits.
std::optional<IPPAnswer> ReadIPPAnswer(std::string_view body);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_IPP_MESSAGE_H_
