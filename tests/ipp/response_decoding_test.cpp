// Answers byte by byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "corvane/ipp_response.h"
#include "ipp/wire/codes.h"
#include "tests/ipp/decoded.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

std::string Head(int status = 0) {
  return "\2\0"s + BigEndian({status}).substr(2) + "\0\0\0\x64"s;
}

std::string Key(const std::string& value, const std::string& name = {}) {
  return IppValue(IPPTag::kKeyword, name, value);
}
std::string Int(int value, const std::string& name = {}) {
  return IppNumber(IPPTag::kInteger, name, value);
}
std::string Member(const std::string& name) { return IppValue(IPPTag::kMemberAttrName, "", name); }
std::string Begin(const std::string& name = {}) {
  return IppValue(IPPTag::kBegCollection, name, "");
}

const std::string kEnd = "\3";
const std::string kClose = IppValue(IPPTag::kEndCollection, "", "");
const std::string kX = Key("x", "a");

struct Case {
  const char* name;
  std::string body;
  std::string expected;
  std::string asked = "a";
};

TEST(IppDecodingTest, ReadsWholeMessagesOfVersionTwoOnly) {
  const std::string longest(1023, 'n'), tooLong(1024, 'n'), longestValue(65535, 'v');
  const Case kCases[] = {
      {"empty", "", "E_FAIL", "status-code"},
      {"short header", Head().substr(0, 7), "E_FAIL", "status-code"},
      {"header alone", Head(), "nothing", "status-code"},
      {"header and end", Head() + kEnd, "0", "status-code"},
      {"version 2.255", "\2\xFF\0\0\0\0\0\1\3"s, "0", "status-code"},
      {"version 3.0", "\3\0\0\0\0\0\0\1\3"s, "E_FAIL", "status-code"},
      {"no end", Head() + kX, "nothing"},
      {"document behind the end", Head() + kX + kEnd + "\x44\xFF", "x"},
      {"end before", Head() + kEnd + kX + kEnd, "E_FAIL"},
      {"longest name", Head() + Key("x", longest) + kEnd, "x", longest},
      {"name too long", Head() + kX + Key("x", tooLong) + kEnd, "E_FAIL"},
      {"member's field too long", Head() + kX + IppValue(0x4A, tooLong, "x") + kEnd, "E_FAIL"},
      {"longest value", Head() + Key(longestValue, "a") + kEnd, longestValue},
      {"value cut off", Head() + kX + "\x44\0\1a\0\5x\3"s, "E_FAIL"},
      {"skipped value cut off", Head() + kX + "\x10\0\1a\0\5x\3"s, "E_FAIL"},
      {"member's field cut off", Head() + kX + "\x4A\0\5x\3"s, "E_FAIL"},
  };
  for (const Case& row : kCases) {
    EXPECT_EQ(row.expected, Decoded(row.body, row.asked.c_str())) << row.name;
  }
}

TEST(IppDecodingTest, SaysOfVersionOneThatItIsTheVersion) {
  const struct {
    const char* name;
    std::string body;
    DWORD error;
  } kCases[] = {
      {"1.1", "\1\1\0\0\0\0\0\x64\3"s, kIPPVersion1},
      {"1.0", "\1\0\0\0\0\0\0\x64\3"s, kIPPVersion1},
      {"1.1, that 2.0 is not supported", "\1\1\5\3\0\0\0\x64\3"s, kIPPVersion1},
      {"2.0, that 2.0 is not supported", "\2\0\5\3\0\0\0\x64\3"s, 7},
      {"1.1, cut off", "\1\1\0\0\0\0\0"s, 7},
      {"0.1", "\0\1\0\0\0\0\0\x64\3"s, 7},
      {"a page", "<html></html>", 7},
  };
  for (const auto& row : kCases) {
    IPPOperations operations(nullptr);
    SetLastError(7);
    EXPECT_EQ(row.name[0] == '2' ? S_OK : E_FAIL, Parse(&operations, row.body, nullptr))
        << row.name;
    EXPECT_EQ(row.error, GetLastError()) << row.name;
    EXPECT_EQ(row.name[0] == '2' ? "1283" : "nothing", Held(operations, "status-code"));
  }
}

void ExpectEach(std::span<const Case> cases) {
  for (const Case& row : cases) {
    EXPECT_EQ(row.expected, Decoded(Head() + row.body + kEnd, row.asked.c_str())) << row.name;
  }
}

TEST(IppDecodingTest, KeepsWhatItReadUntilTheNextAnswer) {
  IPPOperations operations(nullptr);
  EXPECT_EQ("nothing", Decoded(&operations, Head() + kX, "a"));
  EXPECT_EQ("x", Held(operations, "a"));
  EXPECT_EQ("E_FAIL", Decoded(&operations, Head(1) + Key("y", "b") + "\x44", "b"));
  EXPECT_EQ("nothing", Held(operations, "a"));
  EXPECT_EQ("y", Held(operations, "b"));
  EXPECT_EQ("1", Held(operations, "status-code"));
  EXPECT_EQ("E_FAIL", Decoded(&operations, Head().substr(1), "b"));
  EXPECT_EQ("nothing", Held(operations, "status-code"));
  EXPECT_EQ("nothing", Held(operations, ""));
  EXPECT_EQ("nothing", Held(operations, nullptr));
}

TEST(IppDecodingTest, GivesEachTypesText) {
  const auto one = [](int tag, const std::string& value) { return IppValue(tag, "a", value); };
  ExpectEach(std::vector<Case>{
      {"integer", Int(INT_MIN, "a"), "-2147483648"},
      {"enum", one(0x23, "\1\2\3\4"), "16909060"},
      {"false", one(0x22, "\0"s), "0"},
      {"true", one(0x22, "\1"), "1"},
      {"no boolean's byte", one(0x22, "\x80"), "1"},
      {"date", one(0x31, "\x07\xE8\x02\x1D\x17\x3B\x3C\x09-\x0B\x1E"),
       "2024-02-29T23:59:60.9-11:30"},
      {"no date", one(0x31, std::string(11, '\xFF')), "65535-255-255T255:255:255.255+255:255"},
      {"resolution", one(0x32, "\0\0\2\x58\xFF\xFF\xFF\xFE\3"s), "600,-2,3"},
      {"range", one(0x33, "\xFF\xFF\xFF\xFF\x7F\xFF\xFF\xFF"), "-1,2147483647"},
      {"octets", one(0x30, "a=1;b=2"), "IPP_Set_Start,a,1,b,2,IPP_Set_End"},
      {"no octets", one(0x30, ""), "IPP_Set_Start,,IPP_Set_End"},
      {"empty text", one(0x41, ""), ""},
      {"text with language", one(0x35, "\0\2de\0\3Hut"s), "Hut"},
      {"name with language", one(0x36, "\0\2de\0\3Hut"s), "Hut"},
      {"no language, no text", one(0x35, "\0\0\0\0"s), ""},
      {"language beyond the value", one(0x35, "\0\5de\0\3Hut"s), "\0\5de\0\3Hut"s},
      {"text beyond the value", one(0x35, "\0\2de\0\4Hut"s), "\0\2de\0\4Hut"s},
      {"text short of the value", one(0x35, "\0\2de\0\2Hut"s), "\0\2de\0\2Hut"s},
      {"text's length cut off", one(0x35, "\0\2de\0"s), "\0\2de\0"s},
      {"bare text", one(0x35, "Hut"), "Hut"},
  });
  for (int tag = IPPTag::kText; tag <= IPPTag::kMimeMediaType; ++tag) {
    EXPECT_EQ("x", Decoded(Head() + one(tag, "x") + kEnd, "a")) << tag;
  }
}

TEST(IppDecodingTest, PassesOverValuesThatItDoesNotKnow) {
  const auto expectKept = [](bool isKept, int tag, std::size_t size) {
    IPPOperations operations(nullptr);
    const std::string body = Head() + IppValue(tag, "n", std::string(size, '\1')) + kX + kEnd;
    EXPECT_EQ("x", Decoded(&operations, body, "a")) << tag << ' ' << size;
    EXPECT_EQ(isKept, Held(operations, "n") != "nothing") << tag << ' ' << size;
  };
  constexpr std::pair<int, std::size_t> kFixed[] = {{0x22, 1}, {0x21, 4}, {0x23, 4},
                                                    {0x33, 8}, {0x32, 9}, {0x31, 11}};
  for (const auto& [tag, size] : kFixed) {
    for (const std::size_t declared :
         {std::size_t{0}, std::size_t{1}, size - 1, size, size + 1, std::size_t{65535}}) {
      expectKept(declared == size, tag, declared);
    }
  }
  for (const int tag : {0x10, 0x12, 0x13, 0x17, 0x20, 0x24, 0x2F, 0x38, 0x40, 0x4B, 0x7F, 0xFF}) {
    expectKept(false, tag, 4);
  }
}

TEST(IppDecodingTest, GathersTheValuesOfAName) {
  const std::string two = kX + Key("y");
  std::string groups = kX;
  for (char group = 0; group < 0x10; ++group) {
    if (group != IPPTag::kEndOfAttributes) groups += group;
  }
  ExpectEach(std::vector<Case>{
      {"two", two, "[x|y]"},
      {"of two types", two + Int(3), "[x|y|3]"},
      {"with empty ones", Key("", "a") + Key("y") + Key(""), "[|y|]"},
      {"delimiters in between", groups + Key("y"), "[x|y]"},
      {"another name in between", two + Key("z", "b") + Key("w", "a"), "[x|y|w]"},
      {"in another case", two + Key("z", "A"), "z", "A"},
      {"a name that begins alike", two + Key("z", "ab"), "z", "ab"},
      {"value before any name", Key("w") + two, "[x|y]"},
      {"value before any name, behind the status", Key("w") + two, "0", "status-code"},
      {"status as an attribute", Key("w", "status-code"), "[0|w]", "status-code"},
      {"skipped, then one", IppValue(0x10, "a", "") + Key("y"), "y"},
      {"member's name outside", two + Member("m"), "[x|y|m]"},
      {"end outside", two + kClose + Key("z"), "[x|y|IPP_Set_End|z]"},
  });
}

TEST(IppDecodingTest, FollowsPathsIntoCollections) {
  // {b=1,2 c={d=3 b=4 e={}} f={d=5}}, {c={d=6} b=7 g="b=8;c="}
  const std::string sets =
      Begin("a") + Member("b") + Int(1) + Int(2) + Member("c") + Begin() + Member("d") + Int(3) +
      Member("b") + Int(4) + Member("e") + Begin() + kClose + kClose + Member("f") + Begin() +
      Member("d") + Int(5) + kClose + kClose + Begin() + Member("c") + Begin() + Member("d") +
      Int(6) + kClose + Member("b") + Int(7) + Member("g") + IppValue(0x30, "", "b=8;c=") + kClose;
  const std::string octets =
      IppValue(0x30, "a", "b=1;bb=2;;=3;c=;d;b=4") + IppValue(0x30, "", "b=5");
  const std::string open = Begin("a") + Member("b") + Int(1) + Begin() + Member("b");
  ExpectEach(std::vector<Case>{
      {"whole", sets,
       "[IPP_Set_Start,b,1,2,c,IPP_Set_Start,d,3,b,4,e,IPP_Set_Start,IPP_Set_End,IPP_Set_End,"
       "f,IPP_Set_Start,d,5,IPP_Set_End,IPP_Set_End|IPP_Set_Start,c,IPP_Set_Start,d,6,IPP_Set_End,"
       "b,7,g,IPP_Set_Start,b,8,c,,IPP_Set_End,IPP_Set_End]"},
      {"member", sets, "[1|2|7]", "a.b"},
      {"collection as a member", sets, "IPP_Set_Start,d,5,IPP_Set_End", "a.f"},
      {"member's member", sets, "[3|6]", "a.c.d"},
      {"empty collection", sets, "IPP_Set_Start,IPP_Set_End", "a.c.e"},
      {"octets as a member", sets, "8", "a.g.b"},
      {"octets' empty member", sets, "", "a.g.c"},
      {"inner name outside", sets, "E_FAIL", "a.d"},
      {"outer name inside", sets, "E_FAIL", "a.c.c"},
      {"path beyond a value", sets, "E_FAIL", "a.b.c"},
      {"path of a value", kX, "E_FAIL", "a.b"},
      {"no member's name", sets, "E_FAIL", "a."},
      {"no name", Begin() + Member("b") + Int(1) + kClose, "E_FAIL", ".b"},
      {"octets", octets, "[1|5]", "a.b"},
      {"octets' longer name", octets, "2", "a.bb"},
      {"octets without a value", octets, "E_FAIL", "a.d"},
      {"open", open, "IPP_Set_Start,b,1,IPP_Set_Start,b"},
      {"open, member", open, "[1|IPP_Set_Start,b]", "a.b"},
      {"open before another", open + Key("x", "c"), "x", "c"},
      {"closed twice", Begin("a") + kClose + kClose + Begin() + kClose,
       "[IPP_Set_Start,IPP_Set_End|IPP_Set_End|IPP_Set_Start,IPP_Set_End]"},
      {"member with a field", Begin("a") + IppValue(0x4A, "c", "b") + Int(1) + kClose, "1", "a.b"},
      {"bytes in the markers",
       IppValue(0x34, "a", "junk") + Member("b") + Int(1) + IppValue(0x37, "", "junk"),
       "IPP_Set_Start,b,1,IPP_Set_End"},
  });
}

// What costs a stack frame a level, or looks back over them, does not come to an end here.
TEST(IppDecodingTest, ReadsCollectionsOfAnyDepth) {
  constexpr int kDepth = 100'000;
  std::string body = Head() + Begin("a"), path = "a", opened = "IPP_Set_Start", closed;
  for (int i = 1; i < kDepth; ++i) body += Member("b") + Begin();
  body += Member("b") + Key("x");
  for (int i = 1; i < kDepth; ++i) opened += ",b,IPP_Set_Start";
  for (int i = 0; i < kDepth; ++i) {
    body += kClose;
    path += ".b";
    closed += ",IPP_Set_End";
  }
  EXPECT_TRUE(opened + ",b,x" + closed == Decoded(body + kEnd, "a"));
  EXPECT_EQ("x", Decoded(body + kEnd, path.c_str()));
  EXPECT_EQ("E_FAIL", Decoded(body + kEnd, (path + ".b").c_str()));
}

// An answer of 2 MB takes a fraction of a second; what grows with the square of it takes minutes.
TEST(IppDecodingTest, ReadsAnyNumberOfValuesInTimeThatGrowsWithThem) {
  constexpr std::size_t kValues = 300'000;
  const std::pair<const char*, std::string> kCases[] = {
      {"one attribute", Key("x")}, {"one attribute repeated", kX}, {"collections", Begin("a")}};
  for (const auto& [name, value] : kCases) {
    std::string body = Head() + kX;
    for (std::size_t i = 1; i < kValues; ++i) body += value;
    IPPOperations operations(nullptr);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(S_OK, Parse(&operations, body, nullptr)) << name;
    EXPECT_EQ(kValues, operations.ValuesOf("a").size()) << name;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20)) << name;
  }
}

TEST(IppDecodingTest, MakesTextOfAnyBytes) {
  std::string body = Head() + Key("h\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "a");
  for (int byte = 0; byte < 256; ++byte) body += Key(std::string(1, static_cast<char>(byte)));
  IPPOperations operations(nullptr);
  _variant_t value;
  EXPECT_EQ(S_OK, Parse(&operations, body, nullptr));
  ASSERT_TRUE(operations.GetValueFromIPPMap("a", &value));
  ASSERT_EQ(VT_ARRAY | VT_BSTR, value.vt);
  ASSERT_EQ(257u, value.parray->rgsabound[0].cElements);
  const BSTR* const texts = static_cast<const BSTR*>(value.parray->pvData);
  EXPECT_STREQ(L"h\u00E9\u20AC\U0001F600", texts[0]);
  for (int byte = 0; byte < 256; ++byte) {
    const BSTR text = texts[byte + 1];
    const wchar_t expected = byte < 0x80 ? static_cast<wchar_t>(byte) : L'\xFFFD';
    EXPECT_EQ(std::wstring(1, expected), std::wstring(text, SysStringLen(text))) << byte;
  }
}

TEST(IppDecodingTest, ReadsTextsByTheCharsetOfTheAnswer) {
  const std::string latin1 = IppValue(IPPTag::kCharset, "attributes-charset", "iso-8859-1");
  const std::string utf8 = IppValue(IPPTag::kCharset, "attributes-charset", "utf-8");
  const std::string other = IppValue(IPPTag::kCharset, "charset-supported", "iso-8859-1");
  const Case kCases[] = {
      {"name", latin1 + IppValue(IPPTag::kName, "a", "Caf\xE9 \xFF\x7F"), "Café ÿ\x7F"},
      {"name with language, the last bytes of the answer",
       latin1 + IppValue(IPPTag::kNameWithLanguage, "a", "\0\2fr\0\4Caf\xE9"s), "Café"},
      {"in UTF-8", utf8 + IppValue(IPPTag::kName, "a", "Caf\xC3\xA9"), "Café"},
      {"another attribute's charset", other + IppValue(IPPTag::kName, "a", "Caf\xC3\xA9"), "Café"},
  };
  for (const Case& row : kCases) {
    IPPOperations operations(nullptr);
    EXPECT_EQ(S_OK, Parse(&operations, Head() + row.body, nullptr)) << row.name;
    EXPECT_EQ(std::vector{row.expected}, operations.ValuesOf("a")) << row.name;
  }
}

TEST(IppDecodingTest, FailsJobOperationsThatThePrinterRefused) {
  static constexpr struct {
    int status;
    bool isJobOperation;
    const char* expected;
  } kCases[] = {{0x0000, true, "x"},  {0x0000, false, "x"},     {0x0001, true, "E_FAIL"},
                {0x0001, false, "x"}, {0x0404, true, "x"},      {0x0406, true, "E_FAIL"},
                {0x0406, false, "x"}, {0x0501, true, "E_FAIL"}, {0xFFFF, true, "E_FAIL"},
                {0xFFFF, false, "x"}};
  for (const auto& row : kCases) {
    IPPOperations operations(nullptr);
    if (row.isJobOperation) operations.SetJobOperations();
    const TraceRecorder recorder(16);
    EXPECT_EQ(row.expected, Decoded(&operations, Head(row.status) + kX + kEnd, "a")) << row.status;
    const std::wstring line = L"IPP status is not success " + std::to_wstring(row.status);
    EXPECT_EQ(row.status != 0,
              recorder.HasMessage(16, L"Corvane::IPPOperations::ReadResponseData", line.c_str()))
        << row.status;
    EXPECT_EQ(row.status != 0 ? 1u : 0u, recorder.Lines().size()) << row.status;
    EXPECT_EQ(std::to_string(row.status), Held(operations, "status-code"));
  }
}

class FakeResponse : public HTTPResponse {
 public:
  FakeResponse(std::string content, std::uint32_t length)
      : m_content(std::move(content)), m_length(length) {}
  explicit FakeResponse(const std::string& content)
      : FakeResponse(content, static_cast<std::uint32_t>(content.size())) {}
  std::uint32_t GetStatusCode() override { return 200; }
  const wchar_t* GetHeader(const wchar_t*) override { return nullptr; }
  const wchar_t* GetContentType() override { return L"application/ipp"; }
  std::uint32_t GetContentLength() override { return m_length; }
  const char* GetContent() override { return m_content.c_str(); }

 private:
  const std::string m_content;
  const std::uint32_t m_length;
};

TEST(IppDecodingTest, FailsWhenTheOneAttributeAskedForIsAbsent) {
  FakeResponse some(Head() + kX + Key("y", "all") + kEnd), none(Head() + kEnd);
  constexpr int kJobs = IPPOperation::kGetJobs, kJob = IPPOperation::kGetJobAttributes;
  const struct {
    const char* asked;
    int operation;
    FakeResponse* answer;
    std::string expected;
  } kCases[] = {{"a", kJob, &some, "x"},         {"a", kJob, &none, "E_FAIL"},
                {"all", kJob, &some, "y"},       {"all", kJob, &none, "nothing"},
                {"ALL", kJob, &some, "E_FAIL"},  {"a,b", kJob, &some, "nothing"},
                {"a,b", kJob, &none, "nothing"}, {nullptr, kJob, &some, "E_FAIL"},
                {"a", kJobs, &some, "x"},        {"a", kJobs, &none, "nothing"},
                {"b", kJobs, &some, "nothing"},  {nullptr, kJobs, &some, "nothing"}};
  int number = 0;
  for (const auto& row : kCases) {
    IPPOperations operations(nullptr);
    operations.SetAttributeName(row.asked);
    _variant_t value(7L, VT_I4);
    const HRESULT result = operations.ParseIPPResponse(row.answer, &value, row.operation);
    EXPECT_EQ(row.expected, result == E_FAIL ? "E_FAIL" : Shown(value)) << number;
    EXPECT_EQ(S_OK, operations.ParseIPPResponse(row.answer, nullptr)) << number++;
  }
}

TEST(IppDecodingTest, FailsWithoutAResponseOrBytes) {
  IPPOperations operations(nullptr);
  const auto* const body = reinterpret_cast<const unsigned char*>("\2\0\0\0\0\0\0\1\3");
  FakeResponse tooLong(Head(), 0x80000000u);
  EXPECT_EQ(E_FAIL, operations.ParseIPPResponse(nullptr, nullptr));
  EXPECT_EQ(E_FAIL, operations.ParseIPPResponse(nullptr, nullptr, IPPOperation::kGetJobs));
  EXPECT_EQ(E_FAIL, operations.ParseIPPResponse(&tooLong, nullptr));
  EXPECT_EQ(E_FAIL, operations.ParseIPPContent(nullptr, 9, nullptr));
  for (const int length : {0, -1, INT_MIN}) {
    EXPECT_EQ(E_FAIL, operations.ParseIPPContent(body, length, nullptr)) << length;
  }
}

TEST(IppDecodingTest, CopiesWhatIsLeftOfTheBody) {
  IPPOperations operations(nullptr);
  const std::string body = Head() + kEnd + "more";
  EXPECT_EQ(S_OK, Parse(&operations, body, nullptr));
  const auto* const bytes = reinterpret_cast<const unsigned char*>(body.data());
  char copy[8] = "-------";
  for (const int count : {5, 0, -1, INT_MIN, INT_MAX}) {
    EXPECT_LT(operations.CopyContentToBuffer(copy, bytes, count), std::max(count, 1)) << count;
  }
  EXPECT_STREQ("-------", copy);
  EXPECT_EQ(4, operations.CopyContentToBuffer(copy, bytes, 4));
  EXPECT_STREQ("more---", copy);
  EXPECT_EQ(0, operations.CopyContentToBuffer(copy, bytes, 1));
}

RefPtr<IPPResponseBase> Formed(const std::string& body) {
  IPPOperations operations(nullptr);
  Parse(&operations, body, nullptr);
  auto response = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
  EXPECT_EQ(S_OK, operations.FormResponseStructure(response.Get()));
  return response;
}

TEST(IppResponseStructureTest, TellsOfTheFirstJob) {
  const auto job = [](int id, int state, const std::string& uri) {
    return "\2"s + Key(uri, "job-uri") + Int(id, "job-id") + Int(state, "job-state") +
           Key("r"s + std::to_string(id), "job-state-reasons") + Key("s");
  };
  const auto response = Formed(Head(0x0404) + Key("gone", "document-access-error") +
                               job(7, 5, "ipp://p/7") + job(8, 9, "ipp://p/8") + kEnd);
  EXPECT_STREQ("1028", response->GetSuccessStatus());
  EXPECT_STREQ("100", response->GetRequestID());
  EXPECT_STREQ("gone", response->GetDocumentAccessError());
  EXPECT_STREQ("ipp://p/7", response->GetJobURI());
  EXPECT_EQ(7, response->GetJobID());
  EXPECT_STREQ("Processing", response->GetJobState());
  EXPECT_STREQ("r7,s,r8,s", response->GetJobStateReasons());
}

TEST(IppResponseStructureTest, LeavesOutWhatTheAnswerLacks) {
  EXPECT_EQ(E_FAIL, IPPOperations(nullptr).FormResponseStructure(nullptr));
  for (const std::string& body : {""s, Head().substr(1), Head() + kEnd}) {
    const auto response = Formed(body);
    EXPECT_STREQ(body.size() > 8 ? "0" : "NOT_SET_ERROR", response->GetSuccessStatus());
    EXPECT_STREQ("100", response->GetRequestID());
    for (const char* text : {response->GetDocumentAccessError(), response->GetJobURI(),
                             response->GetJobState(), response->GetJobStateReasons()}) {
      EXPECT_EQ(nullptr, text);
    }
  }
}

TEST(IppResponseStructureTest, NamesJobStates) {
  static constexpr std::pair<int, const char*> kStates[] = {{2, nullptr},
                                                            {3, "Pending"},
                                                            {4, "Pending_held"},
                                                            {5, "Processing"},
                                                            {6, "Processing_stopped"},
                                                            {7, "Canceled"},
                                                            {8, "Aborted"},
                                                            {9, "Completed"},
                                                            {10, nullptr},
                                                            {INT_MIN, nullptr},
                                                            {INT_MAX, nullptr}};
  for (const auto& [state, name] : kStates) {
    EXPECT_STREQ(name, Formed(Head() + Int(state, "job-state") + kEnd)->GetJobState()) << state;
    const char* text = "unchanged";
    IPPOperations::GetJobState(state, &text);
    EXPECT_STREQ(name ? name : "unchanged", text) << state;
  }
}

}  // namespace
}  // namespace Corvane::Test
