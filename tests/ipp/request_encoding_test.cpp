// Requests byte by byte, and at the end of their buffer.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/handles.h"
#include "ipp/attribute_table.h"
#include "ipp/ipp_operations.h"
#include "ipp/ipp_request_attributes.h"
#include "platform/system.h"
#include "tests/ipp/callers_attribute.h"
#include "tests/support/hr.h"
#include "tests/support/ipp_bytes.h"

namespace Corvane::Test {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kSize = kIPPRequestSize;
const std::string kGuard(64, '\x5A');

std::string Wire(std::initializer_list<std::string_view> fields) {
  std::string wire;
  for (const std::string_view field : fields) wire += field;
  return wire;
}

std::string Head(std::string_view operation) {
  return Wire({"\2\0"sv,  // version 2.0
               operation,
               "\0\0\0\x64"sv,                                           // request id 100
               "\1"sv,                                                   // operation-attributes-tag
               "\x47\0\x12"sv, "attributes-charset", "\0\5"sv, "utf-8",  //
               "\x48\0\x1B"sv, "attributes-natural-language", "\0\2"sv, "en"});
}

const std::string kPrinter = Wire({"\x45\0\x0B"sv, "printer-uri", "\0\7"sv, "ipp://p"});
const std::string kUser = IppValue(0x42, "requesting-user-name", "u");
const std::string kCopies = IppValue(0x21, "copies", "\0\0\0\1"sv);

// A request's buffer with bytes behind it that nothing may touch.
class Page {
 public:
  explicit Page(std::size_t start = 0) : position(static_cast<int>(start)), m_start(position) {}
  ~Page() { EXPECT_EQ(kGuard, m_bytes.substr(kSize)); }

  char* Data() { return m_bytes.data(); }
  std::string Written() const {
    return m_bytes.substr(static_cast<std::size_t>(m_start),
                          static_cast<std::size_t>(position - m_start));
  }
  bool IsUntouched() const {
    return position == m_start && m_bytes.find_first_not_of('\x5A') == std::string::npos;
  }
  bool IsClearedBehind() const {
    return m_bytes.find_first_not_of('\0', static_cast<std::size_t>(position)) == kSize;
  }

  int position;

 private:
  const int m_start;
  std::string m_bytes = std::string(kSize, '\x5A') + kGuard;
};

struct Client {
  HRESULT Form(int operation, Page* page) {
    return operations.FormIPPRequestBasedOnOperation(page->Data(), operation, &page->position,
                                                     request.Get());
  }

  IPPOperations operations{nullptr};
  RefPtr<IPPRequestAttributes> request =
      RefPtr<IPPRequestAttributes>::Adopt(IPPRequestAttributes::Create());
};

TEST(IppRequestPrimitivesTest, WriteAllOfAnAttributeOrNothing) {
  using Op = IPPOperations;
  using Write = std::function<int(char* buffer, const char* name, int* position)>;
  const auto text = [](const char* value) -> Write {
    return [=](char* b, const char* n, int* p) {
      return Op::AddStringToIPPRequest(b, 0x41, n, value, p);
    };
  };
  const auto texts = [](const char* list) -> Write {
    return [=](char* b, const char* n, int* p) {
      return Op::AddStringsToIPPRequest(b, 0x44, n, list, p);
    };
  };
  const auto integer = [](int tag, std::int32_t value) -> Write {
    return [=](char* b, const char* n, int* p) {
      return Op::AddIntegerToIPPRequest(b, tag, n, value, p);
    };
  };
  const Write boolean = [](char* b, const char* n, int* p) {
    return Op::AddBooleanToIPPRequest(b, n, 1, p);
  };
  const Write range = [](char* b, const char* n, int* p) {
    return Op::AddRangeToIPPRequest(b, n, -1, 258, p);
  };
  const Write resolution = [](char* b, const char* n, int* p) {
    return Op::AddResolutionToIPPRequest(b, n, 3, 600, 1200, p);
  };
  const struct {
    const char* name;
    Write write;
    std::string wire;  // of an attribute "n": tag, name, value
  } encoders[] = {
      {"text", text("a,b"), Wire({"\x41"sv, "\0\1n"sv, "\0\3"sv, "a,b"})},
      {"no text", text(nullptr), Wire({"\x41"sv, "\0\1n"sv, "\0\0"sv})},
      {"an empty piece", texts("ab,, c"),
       Wire({"\x44\0\1n\0\2"sv, "ab", "\x44\0\0\0\0"sv, "\x44\0\0\0\2"sv, " c"})},
      {"one piece", texts("ab"), Wire({"\x44\0\1n\0\2"sv, "ab"})},
      {"no list", texts(nullptr), Wire({"\x44\0\1n\0\0"sv})},
      {"integer", integer(0x21, -2), Wire({"\x21\0\1n\0\4"sv, "\xFF\xFF\xFF\xFE"sv})},
      {"enum", integer(0x23, 0x01020304), Wire({"\x23\0\1n\0\4"sv, "\1\2\3\4"sv})},
      {"boolean", boolean, Wire({"\x22\0\1n\0\1"sv, "\1"sv})},
      {"range", range, Wire({"\x33\0\1n\0\x08"sv, "\xFF\xFF\xFF\xFF"sv, "\0\0\1\2"sv})},
      {"resolution", resolution,
       Wire({"\x32\0\1n\0\x09"sv, "\0\0\2\x58"sv, "\0\0\4\xB0"sv, "\3"sv})},
  };
  for (const auto& encoder : encoders) {
    SCOPED_TRACE(encoder.name);
    const std::size_t fit = kSize - encoder.wire.size();
    for (const std::size_t start : {std::size_t{7}, fit}) {
      Page page(start);
      EXPECT_EQ(0, encoder.write(page.Data(), "n", &page.position));
      EXPECT_EQ(encoder.wire, page.Written());
    }
    for (const std::size_t start : {fit + 1, kSize, kSize + 1, /*position -1*/ ~std::size_t{}}) {
      Page page(start);
      EXPECT_EQ(1, encoder.write(page.Data(), "n", &page.position)) << start;
      EXPECT_TRUE(page.IsUntouched()) << start;
    }
    for (const char* const name : {static_cast<const char*>(nullptr), ""}) {
      Page page;
      EXPECT_EQ(-1, encoder.write(page.Data(), name, &page.position));
      EXPECT_TRUE(page.IsUntouched());
    }
  }
}

// Lengths of texts with which a body ends where its buffer does.
constexpr std::size_t kLastUri = kSize - (9 + 28 + 34) - 12 - 1;   // Cancel-Job, with its end tag
constexpr std::size_t kLastBlob = kSize - (9 + 28 + 34) - 23 - 1;  // Print-Job, with its job group

std::string Xs(std::size_t count) { return std::string(count, 'x'); }

// Without its end tag only a body that leaves no room for it.
TEST(IppRequestEncodingTest, FormsBodies) {
  static const struct {
    const char* name;
    int operation;
    void (*fill)(IPPOperations& o, IPPRequestAttributes& r);
    HRESULT result;
    std::string wire;
  } kBodies[] = {
      {"Get-Printer-Attributes", 11,
       [](auto& o, auto&) { o.SetAttributeName("printer-state,printer-state-reasons"); }, S_OK,
       Wire({Head("\0\x0B"sv), kPrinter,                                          //
             "\x44\0\x14"sv, "requested-attributes", "\0\x0C"sv, "printer-name",  //
             "\x44\0\0"sv, "\0\x0D"sv, "printer-state",                           //
             "\x44\0\0"sv, "\0\x15"sv, "printer-state-reasons", "\3"})},
      {"an empty text", 2, [](auto&, auto& r) { r.SetJobName(""); }, S_OK,
       Head("\0\2"sv) + kPrinter + IppValue(0x42, "job-name", "") + '\2' + kCopies + '\3'},
      {"the system's own operation", 50, [](auto&, auto&) {}, S_OK,
       Head("\0\2"sv) + kPrinter + '\2' + kCopies + '\3'},
      {"nothing of its own", 0x1234, [](auto&, auto&) {}, S_OK,
       Head("\x12\x34"sv) + kPrinter + '\3'},
      {"a caller's blob without room", 2,
       [](auto&, auto& r) { r.AddIPPRequest(1, Xs(kSize).data(), kIPPRequestSize); }, S_OK,
       Head("\0\2"sv) + kPrinter + '\2' + kCopies + '\3'},
      {"a caller's copies and colour", 2,
       [](auto&, auto& r) {
         r.SetOutputMode(1);
         r.AddIPPRequest(CallersText(1, 0x44, "print-color-mode", "auto"));
         r.AddIPPRequest(CallersNumbers(0, 0x21, "copies", {1}));
       },
       S_OK,
       Head("\0\2"sv) + kPrinter + kCopies + '\2' + IppValue(0x44, "print-color-mode", "auto") +
           '\3'},
      {"Print-URI, which knows no records", 3,
       [](auto&, auto& r) { r.AddIPPRequest(CallersNumbers(0, 0x21, "copies", {5})); }, S_OK,
       Head("\0\3"sv) + kPrinter + '\2' + kCopies + '\3'},
      {"a text too long", 2,
       [](auto&, auto& r) {
         r.SetRequestingUserName("u");
         r.SetJobName(Xs(kSize).c_str());
         r.SetDocumentName("left out");
       },
       E_FAIL, Head("\0\2"sv) + kPrinter + kUser + '\3'},
      {"Get-Jobs without a user", 10, [](auto&, auto&) {}, E_FAIL,
       Head("\0\x0A"sv) + kPrinter + '\3'},
      {"the end tag in the last byte", 8, [](auto&, auto& r) { r.SetJobURI(Xs(kLastUri).c_str()); },
       S_OK, Head("\0\x08"sv) + IppValue(0x45, "job-uri", Xs(kLastUri)) + '\3'},
      {"no room for the end tag", 8, [](auto&, auto& r) { r.SetJobURI(Xs(kLastUri + 1).c_str()); },
       E_FAIL, Head("\0\x08"sv) + IppValue(0x45, "job-uri", Xs(kLastUri + 1))},
      {"no room for the text", 8, [](auto&, auto& r) { r.SetJobURI(Xs(kLastUri + 2).c_str()); },
       E_FAIL, Head("\0\x08"sv) + '\3'},
      {"the job group in the last byte", 2,
       [](auto&, auto& r) { r.AddIPPRequest(0, Xs(kLastBlob).data(), kLastBlob); }, E_FAIL,
       Head("\0\2"sv) + kPrinter + Xs(kLastBlob) + '\2'},
      {"no room for the job group", 2,
       [](auto&, auto& r) { r.AddIPPRequest(0, Xs(kLastBlob + 1).data(), kLastBlob + 1); }, E_FAIL,
       Head("\0\2"sv) + kPrinter + Xs(kLastBlob + 1)},
  };
  for (const auto& body : kBodies) {
    SCOPED_TRACE(body.name);
    Client client;
    client.operations.SetResourceURI("ipp://p");
    body.fill(client.operations, *client.request.Get());
    Page page;
    EXPECT_HR(client.Form(body.operation, &page), body.result);
    EXPECT_EQ(body.wire, page.Written());
    EXPECT_TRUE(page.IsClearedBehind());
  }
}

TEST(IppRequestEncodingTest, GivesNoLengthWithoutAHeader) {
  Client client;
  client.operations.SetResourceURI(Xs(kSize).c_str());
  Page page;
  int length = 77;
  EXPECT_HR(client.operations.FormIPPRequestBasedOnOperation(page.Data(), 2, &length, nullptr),
            E_FAIL);
  EXPECT_EQ(77, length);
  page.position = static_cast<int>(Head("\0\2"sv).size());
  EXPECT_EQ(Head("\0\2"sv), page.Written());
  EXPECT_TRUE(page.IsClearedBehind());
}

TEST(IppRequestEncodingTest, TellsThatNoAttributeNameWasGiven) {
  Client client;
  EXPECT_HR(client.operations.SetAttributeName(""), E_FAIL);
  Page page;
  SetLastError(0);
  EXPECT_HR(client.Form(11, &page), E_FAIL);
  EXPECT_EQ(87u, GetLastError());
}

// Keywords with underscores, enumerations under the tag of integers; the "printer-uri" of no
// resource is empty.
TEST(IppRequestEncodingTest, SendsSelectors) {
  using R = IPPRequestBase;
  const auto handling = [](std::string_view keyword) {
    return IppValue(0x44, "multiple-document-handling", keyword);
  };
  const std::vector<int> all = {2, 3, 5, 7};
  const struct {
    void (R::*set)(std::int32_t);
    std::int32_t selector;
    std::vector<int> operations;
    std::string wire;
  } selectors[] = {
      {&R::SetPrintingSides, -1, all, ""},
      {&R::SetPrintingSides, 0, all, IppValue(0x44, "sides", "one-sided")},
      {&R::SetPrintingSides, 1, all, IppValue(0x44, "sides", "two-sided-long-edge")},
      {&R::SetPrintingSides, 2, all, IppValue(0x44, "sides", "two-sided-short-edge")},
      {&R::SetPrintingSides, 3, all, ""},
      {&R::SetMultipleDocHandling, 0, all, ""},
      {&R::SetMultipleDocHandling, 1, {5, 7}, handling("separate_documents_uncollated_copies")},
      {&R::SetMultipleDocHandling, 2, {5, 7}, handling("separate_documents_collated_copies")},
      {&R::SetMultipleDocHandling, 3, {5, 7}, handling("single_document_new_sheet")},
      {&R::SetMultipleDocHandling, 4, all, ""},
      {&R::SetOrientationRequested, 2, all, ""},
      {&R::SetOrientationRequested, 6, all, IppValue(0x21, "orientation-requested", "\0\0\0\6"sv)},
      {&R::SetPrintQuality, 2, all, ""},
      {&R::SetPrintQuality, 3, all, IppValue(0x21, "print-quality", "\0\0\0\3"sv)},
      {&R::SetOutputMode, -1, {2, 3}, IppValue(0x44, "print-color-mode", "monochrome")},
      {&R::SetCopy, -1, {5}, ""},
      {&R::SetCopy, -1, {2, 3, 7}, IppValue(0x21, "copies", "\xFF\xFF\xFF\xFF"sv)},
  };
  for (const auto& [set, selector, operations, wire] : selectors) {
    for (const int operation : operations) {
      Client client;
      client.request->SetCopy(0);
      (client.request.Get()->*set)(selector);
      Page page;
      EXPECT_HR(client.Form(operation, &page), S_OK);
      const char code[] = {0, static_cast<char>(operation)};
      EXPECT_EQ(Head({code, 2}) + IppValue(0x45, "printer-uri", "") + '\2' + wire + '\3',
                page.Written())
          << operation << ' ' << selector;
    }
  }
}

TEST(IppRequestEncodingTest, AsksForJobsAsFarAsThereIsRoom) {
  const std::string mine = IppValue(0x22, "my-jobs", "\1");
  const std::string done = IppValue(0x44, "which-jobs", "completed");
  const std::string open = IppValue(0x44, "which-jobs", "not-completed");
  const std::string all = IppValue(0x44, "requested-attributes", "all");
  const struct {
    const char* name;
    std::string user;
    const char* attribute;
    std::size_t room;
    HRESULT result;
    std::string wire;
  } cases[] = {
      {"no attribute", "u", nullptr, kSize, S_OK, kUser + mine + all},
      {"job-state", "u", "job-state", kSize, S_OK, kUser + mine + done + all},
      {"another attribute", "u", "job-state-reasons", kSize, S_OK, kUser + mine + open + all},
      {"two users", "u,v", nullptr, kSize, S_OK, kUser + IppValue(0x42, "", "v") + mine + all},
      {"a user too long", Xs(kSize), "a", kSize, S_OK, mine + open + all},
      {"room for the user", "u", "a", kUser.size(), S_OK, kUser},
      {"room for whose jobs", "u", "a", mine.size(), S_OK, mine},
      {"room for neither", "u", "a", mine.size() - 1, E_FAIL, ""},
      {"room for the list alone", Xs(kSize), "a", (mine + open).size(), S_OK, mine + open},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    Client client;
    client.operations.SetRequestedUserName(one.user.c_str());
    client.operations.SetAttributeName(one.attribute);
    Page page(kSize - one.room);
    EXPECT_HR(client.operations.AddGetJobs(page.Data(), &page.position), one.result);
    EXPECT_EQ(one.wire, page.Written());
  }
}

// Seen from the refusal (client-error-bad-request) that it makes decoding fail.
TEST(IppRequestEncodingTest, MarksJobOperationsEvenWhenTheirBodyFailed) {
  const unsigned char refusal[] = {2, 0, 4, 0, 0, 0, 0, 100};
  for (const int operation : {2, 8, 9, 11}) {
    for (const std::size_t length : {std::size_t{1}, kSize}) {
      Client client;
      client.operations.SetAttributeName(Xs(length).c_str());
      client.request->SetJobURI(Xs(length).c_str());
      client.request->SetJobName(Xs(length).c_str());
      Page page;
      EXPECT_HR(client.Form(operation, &page), length == 1 ? S_OK : E_FAIL);
      EXPECT_HR(client.operations.ParseIPPContent(refusal, 8, nullptr),
                operation == 8 || operation == 9 ? E_FAIL : S_OK)
          << operation;
    }
  }
}

TEST(IppCallersAttributesTest, GoByTheirTag) {
  IPPAttributeStruct full = CallersText(0, 0x41, "", "");
  std::memset(full.name, 'n', sizeof(full.name));
  std::memset(full.value.text, 't', sizeof(full.value.text));
  IPPAttributeStruct truth = CallersText(0, 0x22, "n", "");
  truth.value.boolean = 1;
  std::vector<std::pair<IPPAttributeStruct, std::string>> rows = {
      {CallersNumbers(0, 0x21, "n", {-1, 9}), IppValue(0x21, "n", "\xFF\xFF\xFF\xFF"sv)},
      {CallersNumbers(0, 0x23, "n", {4, 9}), IppValue(0x23, "n", "\0\0\0\4"sv)},
      {truth, IppValue(0x22, "n", "\1")},
      {CallersNumbers(0, 0x33, "n", {2, 5}), IppValue(0x33, "n", "\0\0\0\2\0\0\0\5"sv)},
      {CallersNumbers(0, 0x32, "n", {600, 300, 3}),  // cross-feed, feed, units
       IppValue(0x32, "n", "\0\0\2\x58\0\0\1\x2C\3"sv)},
      // Other tags have no list of values.
      {CallersText(0, 0x31, "n", "a,b"), IppValue(0x31, "n", "a,b")},
      {CallersText(0, 0x34, "n", ""), IppValue(0x34, "n", "")},
      {CallersText(0, 0x44, "", "a"), ""},
      {full, IppValue(0x41, std::string(128, 'n'), std::string(512, 't'))},
  };
  for (const char tag : "\x30\x41\x42\x44\x45\x46\x47\x48\x49"sv) {
    rows.emplace_back(CallersText(0, tag, "n", "a,,b"),
                      IppValue(tag, "n", "a") + IppValue(tag, "", "") + IppValue(tag, "", "b"));
  }
  for (const auto& [record, wire] : rows) {
    Client client;
    client.request->AddIPPRequest(record);
    Page page;
    EXPECT_HR(IPPOperations::AddIPPAttributesToIPPHeader(page.Data(), client.request.Get(),
                                                         &page.position, 0),
              wire.empty() ? E_FAIL : S_OK);
    EXPECT_EQ(wire, page.Written()) << record.valueTag;
  }
}

TEST(IppCallersAttributesTest, GoWithTheirGroupAndBlobsLast) {
  Client client;
  IPPRequestAttributes* const request = client.request.Get();
  request->AddIPPRequest(1, "\0one", 4);
  request->AddIPPRequest(1, Xs(kSize).data(), kIPPRequestSize - 17);
  request->AddIPPRequest(1, "two", 3);
  request->AddIPPRequest(0, "zero", 4);
  request->AddIPPRequest(CallersText(1, 0x44, "n", "a"));
  request->AddIPPRequest(CallersText(0, 0x44, "m", "b"));
  request->AddIPPRequest(CallersText(1, 0x44, "n", "c"));
  const std::string a = IppValue(0x44, "n", "a"), b = IppValue(0x44, "m", "b");
  const std::string c = IppValue(0x44, "n", "c");
  const struct {
    const char* name;
    std::uint32_t group;
    std::size_t room;
    HRESULT result;
    std::string wire;
  } cases[] = {
      {"all fit exactly", 0, 11, S_OK, b + "zero"},
      {"the second blob is too long by one", 1, kSize, S_FALSE, a + c + Wire({"\0one"sv})},
      {"no room for the first blob", 1, 17, S_FALSE, a + c},
      {"no room for a record", 1, 13, E_FAIL, a},
      {"nothing of that group", 2, kSize, S_OK, ""},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    Page page(kSize - one.room);
    EXPECT_HR(
        IPPOperations::AddIPPAttributesToIPPHeader(page.Data(), request, &page.position, one.group),
        one.result);
    EXPECT_EQ(one.wire, page.Written());
  }
  Page page;
  EXPECT_HR(IPPOperations::AddIPPAttributesToIPPHeader(page.Data(), nullptr, &page.position, 0),
            S_FALSE);
  EXPECT_HR(IPPOperations::AddIPPAttributesToIPPHeader(nullptr, request, &page.position, 0),
            S_FALSE);
  EXPECT_TRUE(page.IsUntouched());
  EXPECT_EQ(1, IPPOperations::IsSetViaIPPAttributeStruct(request, "m"));
  EXPECT_EQ(0, IPPOperations::IsSetViaIPPAttributeStruct(request, "M"));
  EXPECT_EQ(0, IPPOperations::IsSetViaIPPAttributeStruct(nullptr, "m"));
}

// Ends of its sections, and what departs from the IANA registry.
TEST(IppAttributeTableTest, HasItsRowsInTheirPlaces) {
  static const struct {
    std::size_t row;
    IPPAttributeRow expected;
  } kRows[] = {
      {0, {"reserved", 0x00, 0}},
      {12, {"job-sheets", 0x21, 1}},
      {17, {"sides", 0x21, 1}},
      {21, {"printer-resolution", 0x32, 4}},
      {25, {"job-sheets-default", 0x21, 1}},
      {29, {"sides-default", 0x21, 1}},
      {37, {"job-sheets-supported", 0x21, 1}},
      {41, {"page-ranges-supported", 0x22, 2}},
      {42, {"sides-supported", 0x21, 1}},
      {48, {"job-uri", 0x45, 0}},
      {66, {"job-media-sheet", 0x21, 1}},
      {70, {"attributes-charset", 0x47, 0}},
      {95, {"reference-uri-schemes-supported", 0x46, 0}},
      {98, {"printer-current-time", 0x31, 5}},
      {103, {"job-media-sheets-supported", 0x33, 3}},
      {109, {"last-document", 0x22, 2}},
  };
  EXPECT_EQ(110u, kIPPAttributeTable.size());
  for (const auto& [row, expected] : kRows) {
    EXPECT_STREQ(expected.name, kIPPAttributeTable[row].name);
    EXPECT_EQ(expected.valueTag, kIPPAttributeTable[row].valueTag) << row;
    EXPECT_EQ(expected.valueKind, kIPPAttributeTable[row].valueKind) << row;
  }
}

}  // namespace
}  // namespace Corvane::Test
