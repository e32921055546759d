// Answers that libcups wrote, and that a printer sent, read as libcups reads them (Linux).
#include <cups/cups.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "ipp/wire/codes.h"
#include "tests/ipp/decoded.h"
#include "tests/support/peers/ippeveprinter.h"

namespace Corvane::Test {
namespace {

using Message = std::unique_ptr<ipp_t, decltype(&ippDelete)>;

std::string Written(ipp_t* message) {
  std::string bytes;
  const ipp_iocb_t write = [](void* to, ipp_uchar_t* data, std::size_t size) {
    static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(data), size);
    return static_cast<ssize_t>(size);
  };
  EXPECT_EQ(IPP_STATE_DATA, ippWriteIO(&bytes, write, 1, nullptr, message));
  return bytes;
}

Message ReadByCups(std::string_view bytes) {
  Message message(ippNew(), &ippDelete);
  const ipp_iocb_t read = [](void* from, ipp_uchar_t* data, std::size_t size) {
    auto& left = *static_cast<std::string_view*>(from);
    size = left.copy(reinterpret_cast<char*>(data), size);
    left.remove_prefix(size);
    return static_cast<ssize_t>(size);
  };
  EXPECT_EQ(IPP_STATE_DATA, ippReadIO(&bytes, read, 1, nullptr, message.get()));
  return message;
}

std::string Date(const ipp_uchar_t* date) {
  char text[64];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d.%d%c%02d:%02d",
                date[0] * 256 + date[1], date[2], date[3], date[4], date[5], date[6], date[7],
                date[8], date[9], date[10]);
  return text;
}

std::string Framed(const std::string& content) {
  return "IPP_Set_Start," + content + "IPP_Set_End";
}

std::vector<std::string> ValuesOf(ipp_attribute_t* attribute);

std::string Members(ipp_t* collection) {
  std::string members;
  for (auto* member = ippFirstAttribute(collection); member;
       member = ippNextAttribute(collection)) {
    members.append(ippGetName(member)).append(",");
    for (const std::string& value : ValuesOf(member)) members.append(value).append(",");
  }
  return members;
}

std::string ValueOf(ipp_attribute_t* attribute, int index) {
  int first = 0, second = 0;
  switch (ippGetValueTag(attribute)) {
    case IPP_TAG_INTEGER:
    case IPP_TAG_ENUM:
      return std::to_string(ippGetInteger(attribute, index));
    case IPP_TAG_BOOLEAN:
      return std::to_string(ippGetBoolean(attribute, index));
    case IPP_TAG_DATE:
      return Date(ippGetDate(attribute, index));
    case IPP_TAG_RANGE:
      first = ippGetRange(attribute, index, &second);
      return std::to_string(first) + ',' + std::to_string(second);
    case IPP_TAG_RESOLUTION: {
      ipp_res_t units{};
      first = ippGetResolution(attribute, index, &second, &units);
      return std::to_string(first) + ',' + std::to_string(second) + ',' + std::to_string(units);
    }
    case IPP_TAG_STRING: {
      const auto* const octets =
          static_cast<const char*>(ippGetOctetString(attribute, index, &first));
      std::string text(octets, static_cast<std::size_t>(first));
      std::replace(text.begin(), text.end(), '=', ',');
      std::replace(text.begin(), text.end(), ';', ',');
      return Framed(text + ',');
    }
    case IPP_TAG_BEGIN_COLLECTION:
      return Framed(Members(ippGetCollection(attribute, index)));
    default:
      return ippGetString(attribute, index, nullptr);
  }
}

std::vector<std::string> ValuesOf(ipp_attribute_t* attribute) {
  std::vector<std::string> values;
  const ipp_tag_t tag = ippGetValueTag(attribute);
  const bool hasValues = tag >= IPP_TAG_INTEGER;
  for (int i = 0; hasValues && i < ippGetCount(attribute); ++i)
    values.push_back(ValueOf(attribute, i));
  return values;
}

// Everything that libcups holds, by name; that of collections' members by path, too.
using Values = std::map<std::string, std::vector<std::string>>;

void Gather(ipp_t* message, const std::string& prefix, Values* all) {
  for (auto* attribute = ippFirstAttribute(message); attribute;
       attribute = ippNextAttribute(message)) {
    if (!ippGetName(attribute)) continue;  // a delimiter
    const std::string path = prefix + ippGetName(attribute);
    for (std::string& value : ValuesOf(attribute)) (*all)[path].push_back(std::move(value));
    (*all)[path];
    if (ippGetValueTag(attribute) != IPP_TAG_BEGIN_COLLECTION) continue;
    for (int i = 0; i < ippGetCount(attribute); ++i) {
      Gather(ippGetCollection(attribute, i), path + '.', all);
    }
  }
}

// The number of attributes and members that were compared.
std::size_t ExpectSameAsCups(std::string_view bytes) {
  const Message message = ReadByCups(bytes);
  IPPOperations operations(nullptr);
  EXPECT_EQ(S_OK, Parse(&operations, bytes, nullptr));
  Values all;
  Gather(message.get(), "", &all);
  all["status-code"] = {std::to_string(ippGetStatusCode(message.get()))};
  for (const auto& [path, values] : all) {
    EXPECT_EQ(values.empty() ? "nothing" : JoinValues(values), Held(operations, path.c_str()))
        << path;
  }
  return all.size();
}

// Attributes of every tag, the same ones for the same seed.
class Generator {
 public:
  explicit Generator(unsigned seed) : m_random(seed) {}

  std::string Answer(int status, int attributes) {
    const Message message(ippNew(), &ippDelete);
    ippSetVersion(message.get(), 2, Below(3));
    ippSetStatusCode(message.get(), static_cast<ipp_status_t>(status));
    for (int i = 0; i < attributes; ++i) {
      const ipp_tag_t group = i < attributes / 2 ? IPP_TAG_PRINTER : IPP_TAG_JOB;
      Add(message.get(), group, "a" + std::to_string(i), i, 3);
      if (Below(8) == 0) ippAddSeparator(message.get());
    }
    return Written(message.get());
  }

 private:
  int Below(int end) { return static_cast<int>(m_random() % static_cast<unsigned>(end)); }

  std::string Text(int letters) {
    static constexpr const char* kLetters[] = {"a", "Z", " ",        ".",           ",",
                                               "=", ";", "\xC3\xA9", "\xE2\x82\xAC"};
    std::string text;
    while (Below(15) != 0 && text.size() < 200) text += kLetters[Below(letters)];
    return text;
  }

  Message Collection(int depth) {
    Message collection(ippNew(), &ippDelete);
    for (int i = Below(4); i > 0; --i) {
      Add(collection.get(), IPP_TAG_ZERO, "m" + std::to_string(i), Below(30), depth);
    }
    return collection;
  }

  void Add(ipp_t* to, ipp_tag_t group, const std::string& attribute, int kind, int depth) {
    static constexpr ipp_tag_t kTexts[] = {
        IPP_TAG_TEXT,    IPP_TAG_NAME,     IPP_TAG_KEYWORD,  IPP_TAG_URI,      IPP_TAG_URISCHEME,
        IPP_TAG_CHARSET, IPP_TAG_LANGUAGE, IPP_TAG_MIMETYPE, IPP_TAG_TEXTLANG, IPP_TAG_NAMELANG};
    static constexpr ipp_tag_t kOutOfBand[] = {IPP_TAG_UNSUPPORTED_VALUE, IPP_TAG_UNKNOWN,
                                               IPP_TAG_NOVALUE, IPP_TAG_NOTSETTABLE};
    constexpr int kMost = 4;
    const char* const name = attribute.c_str();
    const int count = 1 + Below(kMost);
    int first[kMost], second[kMost];
    char booleans[kMost];
    std::string texts[kMost];
    const char* values[kMost];
    std::vector<Message> owned;
    const ipp_t* collections[kMost];
    for (int i = 0; i < kMost; ++i) {
      first[i] = static_cast<int>(m_random());
      second[i] = static_cast<int>(m_random());
      booleans[i] = static_cast<char>(Below(2));
      texts[i] = Text(kind >= 10 ? 7 : 9);  // libcups cuts keywords and the like between bytes
      values[i] = texts[i].c_str();
    }
    switch (kind) {
      case 0:
        ippAddIntegers(to, group, IPP_TAG_INTEGER, name, count, first);
        break;
      case 1:
        ippAddIntegers(to, group, IPP_TAG_ENUM, name, count, first);
        break;
      case 2:
        ippAddBooleans(to, group, name, count, booleans);
        break;
      case 3:
        ippAddRanges(to, group, name, count, first, second);
        break;
      case 4:
        ippAddResolutions(to, group, name, count, IPP_RES_PER_CM, first, second);
        break;
      case 5:
        ippAddDate(to, group, name, ippTimeToDate(first[0]));
        break;
      case 6:
        ippAddOctetString(to, group, name, values[0], static_cast<int>(texts[0].size()));
        break;
      case 7:
        ippAddOutOfBand(to, group, kOutOfBand[Below(4)], name);
        break;
      default:
        if (kind < 18) {
          ippAddStrings(to, group, kTexts[kind - 8], name, count, "de", values);
        } else if (depth > 0) {
          for (int i = 0; i < count; ++i) {
            owned.push_back(Collection(depth - 1));
            collections[i] = owned.back().get();
          }
          ippAddCollections(to, group, name, count, collections);
        }
    }
  }

  std::mt19937 m_random;
};

constexpr int kKinds = 20;  // one of each, and two collections

TEST(IppAnswerOfCupsTest, ReadsWhatCupsWrites) {
  constexpr int kStatuses[] = {0x0000, 0x0001, 0x0400, 0x0404, 0x0406, 0x04FF, 0x0500, 0x0B0C};
  std::size_t compared = 0;
  for (unsigned seed = 0; seed < 200; ++seed) {
    const std::string answer = Generator(seed).Answer(kStatuses[seed % 8], kKinds);
    compared += ExpectSameAsCups(answer);
    if (HasFailure()) FAIL() << "seed " << seed;
  }
  EXPECT_GT(compared, 200u * kKinds * 3 / 2);  // members, too
}

// Behind its header, its delimiters and its values an answer may be over.
TEST(IppAnswerOfCupsTest, TakesAnAnswerThatEndsBetweenAttributes) {
  const std::string answer = Generator(1).Answer(0, kKinds);
  std::set<std::size_t> ends;
  for (std::size_t at = 8; at < answer.size();) {
    ends.insert(at);
    const auto lengthAt = [&](std::size_t i) {
      return static_cast<unsigned char>(answer[i]) * 256u +
             static_cast<unsigned char>(answer[i + 1]);
    };
    if (answer[at++] < IPPTag::kFirstValue) continue;
    at += 2 + lengthAt(at);
    at += 2 + lengthAt(at);
  }
  EXPECT_GT(ends.size(), 2u * kKinds);
  for (std::size_t size = 0; size < answer.size(); ++size) {
    const std::vector<char> exact(answer.begin(),
                                  answer.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(ends.contains(size) ? "nothing" : "E_FAIL",
              Decoded({exact.data(), size}, "status-code"))
        << size;
  }
  EXPECT_EQ("0", Decoded(answer, "status-code"));
}

// Each byte of the shortest answer that has a collection with members, and a collection inside it.
TEST(IppAnswerOfCupsTest, SurvivesAnyWrongByte) {
  std::string answer;
  for (unsigned seed = 0; seed < 200; ++seed) {
    const std::string other = Generator(seed).Answer(0, kKinds);
    IPPOperations operations(nullptr);
    if (Decoded(&operations, other, "a19").find(",m1,IPP_Set_Start,m") == other.npos) continue;
    if (answer.empty() || other.size() < answer.size()) answer = other;
  }
  ASSERT_FALSE(answer.empty());
  IPPOperations operations(nullptr);
  for (std::size_t i = 0; i < answer.size(); ++i) {
    std::vector<char> exact(answer.begin(), answer.end());
    for (int wrong = 1; wrong < 256; ++wrong) {
      exact[i] = static_cast<char>(answer[i] ^ wrong);
      Decoded(&operations, {exact.data(), exact.size()}, wrong % 2 ? "a19" : "a19.m1.m1");
    }
  }
}

// The printer's answer as it came, HTTP aside.
std::string Ask(const Ippeveprinter& printer, std::string_view request) {
  const std::unique_ptr<http_t, decltype(&httpClose)> http(
      httpConnect2("127.0.0.1", printer.Port(), nullptr, AF_INET, HTTP_ENCRYPTION_IF_REQUESTED, 1,
                   30'000, nullptr),
      &httpClose);
  if (!http) return {};
  httpSetField(http.get(), HTTP_FIELD_HOST, "localhost");
  httpSetField(http.get(), HTTP_FIELD_CONTENT_TYPE, "application/ipp");
  httpSetLength(http.get(), request.size());
  EXPECT_EQ(0, httpPost(http.get(), "/ipp/print"));
  EXPECT_EQ(static_cast<ssize_t>(request.size()),
            httpWrite2(http.get(), request.data(), request.size()));
  http_status_t status = HTTP_STATUS_CONTINUE;
  while (status == HTTP_STATUS_CONTINUE) status = httpUpdate(http.get());
  EXPECT_EQ(HTTP_STATUS_OK, status);
  std::string answer;
  char part[4096];
  for (ssize_t size; (size = httpRead2(http.get(), part, sizeof(part))) > 0;) {
    answer.append(part, static_cast<std::size_t>(size));
  }
  return answer;
}

TEST(IppAnswerOfPrinterTest, ReadsWhatAPrinterSends) {
  Ippeveprinter printer;
  ASSERT_TRUE(printer.Start("-2 -s 20,10 -f application/pdf,image/jpeg,image/urf"))
      << printer.Failure();
  const std::string uri = "ipp://localhost:" + std::to_string(printer.Port()) + "/ipp/print";
  IPPOperations operations(nullptr);
  operations.SetResourceURI(uri.c_str());
  operations.SetJobURI((uri + "/999").c_str());
  operations.SetAttributeName("all");
  const auto ask = [&](int operation) {
    char request[kIPPRequestSize];
    int length = 0;
    EXPECT_EQ(S_OK,
              operations.FormIPPRequestBasedOnOperation(request, operation, &length, nullptr));
    return Ask(printer, {request, static_cast<std::size_t>(length)});
  };
  const std::string attributes = ask(IPPOperation::kGetPrinterAttributes);
  EXPECT_GT(ExpectSameAsCups(attributes), 100u);
  EXPECT_EQ("nothing", Decoded(&operations, attributes));
  EXPECT_EQ("Printer", Held(operations, "printer-name"));

  const std::string refusal = ask(IPPOperation::kGetJobAttributes);
  ExpectSameAsCups(refusal);
  EXPECT_EQ("E_FAIL", Decoded(&operations, refusal));
  EXPECT_EQ("1030", Held(operations, "status-code"));
}

}  // namespace
}  // namespace Corvane::Test
