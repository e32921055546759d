// Requests byte by byte, and at the end of their buffer. tests/ipp/cups_test.cpp has libcups read
// them.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>

#include "corvane/handles.h"
#include "ipp/attribute_table.h"
#include "ipp/ipp_request_attributes.h"
#include "tests/ipp/callers_attribute.h"
#include "tests/ipp/decoded.h"
#include "tests/support/cases.h"
#include "tests/support/hr.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/request_settings.h"

namespace Corvane::Test {
namespace {

constexpr std::size_t kSize = kIPPRequestSize;
const std::string kGuard(64, '\x5A');

std::string Xs(std::size_t count) { return std::string(count, 'x'); }

// A request's buffer with bytes behind it that nothing may touch, written from `start` on.
class Page {
 public:
  explicit Page(std::size_t start = 0) : position(static_cast<int>(start)), m_start(start) {}
  ~Page() { EXPECT_EQ(kGuard, m_bytes.substr(kSize)); }

  char* Data() { return m_bytes.data(); }
  std::string Written() const {
    return m_bytes.substr(m_start, static_cast<std::size_t>(position) - m_start);
  }
  bool IsUntouched() const {
    return position == static_cast<int>(m_start) &&
           m_bytes.find_first_not_of('\x5A') == std::string::npos;
  }
  bool IsClearedBehind() const {
    return m_bytes.find_first_not_of('\0', static_cast<std::size_t>(position)) == kSize;
  }

  HRESULT Form(IPPOperations* exchange, int operation, IPPRequestBase* request) {
    return exchange->FormIPPRequestBasedOnOperation(Data(), operation, &position, request);
  }

  int position;

 private:
  const std::size_t m_start;
  std::string m_bytes = std::string(kSize, '\x5A') + kGuard;
};

// "group tag name value", a line each.
void AddRecords(const std::string& records, IPPRequestBase* request) {
  std::istringstream lines(records);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::uint32_t group = 0;
    std::string tagText, name, value;
    fields >> group >> tagText >> name >> std::ws;
    std::getline(fields, value);
    const int tag = std::stoi(tagText, nullptr, 16);
    const bool isNumber = tag < 0x30 || (tag | 1) == 0x33;
    IPPAttributeStruct record = CallersText(group, tag, name, isNumber ? "" : value);
    std::istringstream numbers(value);
    for (int i = 0; isNumber && numbers >> record.value.numbers[i]; ++i) continue;
    if (tag == 0x22) record.value.boolean = static_cast<unsigned char>(record.value.numbers[0]);
    request->AddIPPRequest(record);
  }
}

void Apply(const Case& c, IPPOperations* exchange, IPPRequestBase* request) {
  for (const auto& [name, set] : kExchangeSettings) {
    if (c.Find(name)) (exchange->*set)(c.Text(name).c_str());
  }
  for (const auto& setting : kTextSettings) {
    if (c.Find(setting.name)) (request->*setting.set)(c.Text(setting.name).c_str());
  }
  for (const auto& setting : kNumberSettings) {
    if (c.Find(setting.name)) {
      (request->*setting.set)(static_cast<std::int32_t>(c.Number(setting.name)));
    }
  }
  request->SetIPPAttributeFidelity(c.Number("IPPAttributeFidelity") != 0);
  request->SetLastDocument(c.Number("LastDocument") != 0);
  request->SetPrinterResolution(600, 600);  // no operation sends it
  AddRecords(c.Text("records"), request);
  const std::string blob = c.Text("blob1");
  request->AddIPPRequest(1, blob.data(), static_cast<std::int32_t>(blob.size()));
}

TEST(IppRequestEncodingTest, FormsBodies) {
  for (const Case& c : ReadCases("ipp/requests.txt")) {
    SCOPED_TRACE(c.Where());
    const int operation = static_cast<int>(c.Number("operation"));
    IPPOperations exchange(nullptr);
    const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
    Apply(c, &exchange, request.Get());
    Page page;
    SetLastError(7);
    EXPECT_HR(page.Form(&exchange, operation, request.Get()),
              static_cast<HRESULT>(c.Number("result")));
    EXPECT_EQ(operation == 11 && c.Find("result") ? 87u : 7u, GetLastError());
    EXPECT_EQ(c.Text("bytes"), page.Written());
    EXPECT_TRUE(page.IsClearedBehind());
    EXPECT_EQ(c.Text("told"), Told(page.Written()));
    // client-error-bad-request, which makes decoding fail for these alone.
    EXPECT_HR(Parse(&exchange, std::string_view("\2\0\4\0\0\0\0\x64", 8)),
              operation == 8 || operation == 9 ? E_FAIL : S_OK);
  }
}

// Without its end tag only a body that leaves no room for it.
TEST(IppRequestEncodingTest, EndsWhereItsBufferDoes) {
  const std::size_t head = 9 + 28 + 34;
  const std::size_t lastUri = kSize - head - 12 - 1;   // of Cancel-Job, behind its name
  const std::size_t lastBlob = kSize - head - 16 - 1;  // of Print-Job without a resource
  IPPOperations exchange(nullptr);
  const auto form = [&](int operation, std::size_t uri, std::size_t blob, HRESULT expected) {
    const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
    request->SetJobURI(Xs(uri).c_str());
    request->AddIPPRequest(0, Xs(blob).data(), static_cast<std::int32_t>(blob));
    Page page;
    EXPECT_HR(page.Form(&exchange, operation, request.Get()), expected);
    return page.Written().substr(head);
  };
  const auto uri = [](std::size_t size) { return IppValue(0x45, "job-uri", Xs(size)); };
  const std::string printer = IppValue(0x45, "printer-uri", "");
  EXPECT_EQ(uri(lastUri) + '\3', form(8, lastUri, 0, S_OK));
  EXPECT_EQ(uri(lastUri + 1), form(8, lastUri + 1, 0, E_FAIL));
  EXPECT_EQ("\3", form(8, lastUri + 2, 0, E_FAIL));
  EXPECT_EQ(printer + Xs(lastBlob) + '\2', form(2, 0, lastBlob, E_FAIL));
  EXPECT_EQ(printer + Xs(lastBlob + 1), form(2, 0, lastBlob + 1, E_FAIL));

  exchange.SetResourceURI(Xs(kSize).c_str());
  Page page;
  int length = 77;
  EXPECT_HR(exchange.FormIPPRequestBasedOnOperation(page.Data(), 2, &length, nullptr), E_FAIL);
  EXPECT_EQ(77, length) << "there is none without a header";
  EXPECT_HR(exchange.SetAttributeName(""), E_FAIL);
}

TEST(IppRequestEncodingTest, AsksForJobsAsFarAsThereIsRoom) {
  const std::string user = IppValue(0x42, "requesting-user-name", "u");
  const std::string rest =
      IppValue(0x22, "my-jobs", "\1") + IppValue(0x44, "which-jobs", "not-completed");
  const std::string all = IppValue(0x44, "requested-attributes", "all");
  const auto ask = [](const std::string& name, std::size_t room, HRESULT expected) {
    IPPOperations exchange(nullptr);
    exchange.SetRequestedUserName(name.c_str());
    exchange.SetAttributeName("a");
    Page page(kSize - room);
    EXPECT_HR(exchange.AddGetJobs(page.Data(), &page.position), expected);
    return page.Written();
  };
  EXPECT_EQ(rest + all, ask(Xs(kSize), kSize, S_OK));
  EXPECT_EQ(rest, ask(Xs(kSize), rest.size(), S_OK));
  EXPECT_EQ(user, ask("u", user.size(), S_OK));
  EXPECT_EQ("", ask("u", 12, E_FAIL));
}

TEST(IppRequestPrimitivesTest, WriteAllOfAnAttributeOrNothing) {
  using Op = IPPOperations;
  using namespace std::placeholders;
  using Write = std::function<int(char* buffer, const char* name, int* position)>;
  const std::pair<Write, std::string> encoders[] = {
      {std::bind(Op::AddStringToIPPRequest, _1, 0x41, _2, "a,b", _3), IppValue(0x41, "n", "a,b")},
      {std::bind(Op::AddStringToIPPRequest, _1, 0x41, _2, nullptr, _3), IppValue(0x41, "n", "")},
      {std::bind(Op::AddStringsToIPPRequest, _1, 0x44, _2, "ab,, c", _3),
       IppValue(0x44, "n", "ab") + IppValue(0x44, "", "") + IppValue(0x44, "", " c")},
      {std::bind(Op::AddStringsToIPPRequest, _1, 0x44, _2, nullptr, _3), IppValue(0x44, "n", "")},
      {std::bind(Op::AddIntegerToIPPRequest, _1, 0x23, _2, 0x01020304, _3),
       IppValue(0x23, "n", "\1\2\3\4")},
      {std::bind(Op::AddBooleanToIPPRequest, _1, _2, 1, _3), IppValue(0x22, "n", "\1")},
      {std::bind(Op::AddRangeToIPPRequest, _1, _2, -1, 258, _3),
       IppValue(0x33, "n", {"\xFF\xFF\xFF\xFF\0\0\1\2", 8})},
      {std::bind(Op::AddResolutionToIPPRequest, _1, _2, 3, 600, 1200, _3),
       IppValue(0x32, "n", {"\0\0\2\x58\0\0\4\xB0\3", 9})},
  };
  for (const auto& [write, wire] : encoders) {
    const std::size_t fit = kSize - wire.size();
    for (const std::size_t start : {std::size_t{7}, fit}) {
      Page page(start);
      EXPECT_EQ(0, write(page.Data(), "n", &page.position));
      EXPECT_EQ(wire, page.Written());
    }
    for (const std::size_t start : {fit + 1, kSize, kSize + 1, /*position -1*/ ~std::size_t{}}) {
      Page page(start);
      EXPECT_EQ(1, write(page.Data(), "n", &page.position)) << start;
      EXPECT_TRUE(page.IsUntouched()) << start;
    }
    for (const char* const name : {static_cast<const char*>(nullptr), ""}) {
      Page page;
      EXPECT_EQ(-1, write(page.Data(), name, &page.position));
      EXPECT_TRUE(page.IsUntouched());
    }
  }
}

TEST(IppCallersAttributesTest, GoWithTheirGroupAndBlobsLast) {
  const auto request = RefPtr<IPPRequestAttributes>::Adopt(IPPRequestAttributes::Create());
  request->AddIPPRequest(1, "\0one", 4);
  request->AddIPPRequest(1, Xs(kSize).data(), kIPPRequestSize - 17);
  request->AddIPPRequest(1, "two", 3);
  request->AddIPPRequest(0, "zero", 4);
  AddRecords("1 44 n a\n0 31 m b,b\n1 44 n c", request.Get());  // 31: a tag without lists
  request->AddIPPRequest(CallersText(3, 0x44, "", "no name"));
  const std::string a = IppValue(0x44, "n", "a");
  const std::string c = IppValue(0x44, "n", "c");
  using Op = IPPOperations;
  const auto add = [&](std::uint32_t group, std::size_t room, HRESULT expected) {
    Page page(kSize - room);
    EXPECT_HR(Op::AddIPPAttributesToIPPHeader(page.Data(), request.Get(), &page.position, group),
              expected);
    return page.Written();
  };
  EXPECT_EQ(IppValue(0x31, "m", "b,b") + "zero", add(0, 13, S_OK)) << "exactly";
  EXPECT_EQ(a + c + std::string("\0one", 4), add(1, kSize, S_FALSE)) << "the second is too long";
  EXPECT_EQ(a + c, add(1, 17, S_FALSE));
  EXPECT_EQ(a, add(1, 13, E_FAIL));
  EXPECT_EQ("", add(2, kSize, S_OK));
  EXPECT_EQ("", add(3, kSize, E_FAIL));
  Page page;
  EXPECT_HR(Op::AddIPPAttributesToIPPHeader(page.Data(), nullptr, &page.position, 0), S_FALSE);
  EXPECT_HR(Op::AddIPPAttributesToIPPHeader(nullptr, request.Get(), &page.position, 0), S_FALSE);
  EXPECT_TRUE(page.IsUntouched());
  EXPECT_EQ(1, Op::IsSetViaIPPAttributeStruct(request.Get(), "m"));
  EXPECT_EQ(0, Op::IsSetViaIPPAttributeStruct(request.Get(), "M"));
  EXPECT_EQ(0, Op::IsSetViaIPPAttributeStruct(nullptr, "m"));
}

// Ends of its sections, and what departs from the IANA registry.
TEST(IppAttributeTableTest, HasItsRowsInTheirPlaces) {
  EXPECT_EQ(110u, kIPPAttributeTable.size());
  for (const Case& c : ReadCases("ipp/attribute_table.txt")) {
    const IPPAttributeRow& row = kIPPAttributeTable[static_cast<std::size_t>(c.Number("row"))];
    EXPECT_EQ(c.Text("name"), row.name);
    EXPECT_EQ(c.Number("tag"), row.valueTag) << row.name;
    EXPECT_EQ(c.Number("kind"), row.valueKind) << row.name;
  }
}

}  // namespace
}  // namespace Corvane::Test
