// Answers byte by byte. tests/ipp/cups_test.cpp has libcups read them, too.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <set>
#include <sstream>
#include <string>

#include "corvane/handles.h"
#include "corvane/ipp_response.h"
#include "ipp/wire/codes.h"
#include "tests/ipp/decoded.h"
#include "tests/support/cases.h"
#include "tests/support/fake_device.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

const std::string kHead = LibraryAnswer(0, "").substr(0, 8);
const std::string kX = IppValue(IPPTag::kKeyword, "a", "x");
const std::string kClose = IppValue(IPPTag::kEndCollection, "", "");
const std::string kMember = IppValue(IPPTag::kMemberAttrName, "", "b");

// "path=values" of each of these lines, as the answer holds them.
std::string HeldOf(const IPPOperations& operations, const std::string& expected) {
  std::string held;
  std::istringstream lines(expected);
  for (std::string line; std::getline(lines, line);) {
    const std::string path = line.substr(0, line.find('='));
    held += (held.empty() ? "" : "\n") + path + '=' + Held(operations, path.c_str());
  }
  return held;
}

std::string StructureOf(IPPOperations* operations) {
  const auto set = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
  EXPECT_EQ(S_OK, operations->FormResponseStructure(set.Get()));
  const auto text = [](const char* field) { return field ? std::string(field) + ' ' : "- "; };
  return text(set->GetSuccessStatus()) + text(set->GetRequestID()) +
         text(set->GetDocumentAccessError()) + text(set->GetJobURI()) +
         std::to_string(set->GetJobID()) + ' ' + text(set->GetJobState()) +
         text(set->GetJobStateReasons());
}

// Each by an object that has read another answer before.
TEST(IppDecodingTest, ReadsEachAnswer) {
  const std::string earlier =
      LibraryAnswer(1, IppValue(IPPTag::kCharset, "attributes-charset", "iso-8859-1") + kX + kX);
  for (const Case& c : ReadCases("ipp/answers.txt")) {
    SCOPED_TRACE(c.Where());
    IPPOperations operations(nullptr);
    EXPECT_EQ(S_OK, Parse(&operations, earlier));
    if (c.Find("job")) operations.SetJobOperations();
    operations.SetAttributeName(c.Find("asked") ? c.Text("asked").c_str() : nullptr);
    FakeResponse response({c.Text("body")});
    const int operation = static_cast<int>(c.Number("operation"));
    const TraceRecorder recorder(kTraceInfo);
    SetLastError(7);
    EXPECT_EQ(c.Text("value"), Asked([&](VARIANT* value) {
                return operation ? operations.ParseIPPResponse(&response, value, operation)
                                 : operations.ParseIPPResponse(&response, value);
              }));
    EXPECT_EQ(c.Find("error") ? c.Number("error") : 7, GetLastError());
    const std::wstring trace = c.Wide("trace");
    EXPECT_EQ(!trace.empty(),
              recorder.HasMessage(16, L"Corvane::IPPOperations::ReadResponseData", trace.c_str()));
    EXPECT_EQ(c.Text("held"), HeldOf(operations, c.Text("held")));
    EXPECT_EQ(c.Text("structure"), c.Find("structure") ? StructureOf(&operations) : "");
    EXPECT_EQ(c.Text("told"), c.Find("told") ? Told(c.Text("body")) : "");
  }
}

TEST(IppDecodingTest, KeepsWhatItReadUntilTheNextAnswer) {
  IPPOperations operations(nullptr);
  EXPECT_EQ(S_OK, Parse(&operations, kHead + kX));
  EXPECT_EQ(E_FAIL, Parse(&operations, kHead + IppValue(IPPTag::kKeyword, "b", "y") + "\x44"));
  EXPECT_EQ("nothing", Held(operations, "a"));
  EXPECT_EQ("y", Held(operations, "b"));
  EXPECT_EQ("0", Held(operations, "status-code"));
  EXPECT_EQ(E_FAIL, Parse(&operations, kHead.substr(1)));
  for (const char* const name : {"b", "status-code", "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ("nothing", Held(operations, name));
  }
}

// What costs a stack frame a level, or looks back over them, does not come to an end here.
TEST(IppDecodingTest, ReadsCollectionsOfAnyDepth) {
  constexpr int kDepth = 100'000;
  std::string body = IppValue(IPPTag::kBegCollection, "a", "");
  std::string path = "a";
  std::string text = "IPP_Set_Start";
  for (int i = 1; i < kDepth; ++i) {
    body += kMember + IppValue(IPPTag::kBegCollection, "", "");
    text += ",b,IPP_Set_Start";
  }
  body += kMember + IppValue(IPPTag::kKeyword, "", "x");
  text += ",b,x";
  for (int i = 0; i < kDepth; ++i) {
    body += kClose;
    path += ".b";
    text += ",IPP_Set_End";
  }
  IPPOperations operations(nullptr);
  EXPECT_EQ(S_OK, Parse(&operations, LibraryAnswer(0, body)));
  EXPECT_TRUE(text == Held(operations, "a"));
  EXPECT_EQ("x", Held(operations, path.c_str()));
  EXPECT_EQ("nothing", Held(operations, (path + ".b").c_str()));
}

// An answer of 2 MB takes a fraction of a second; what grows with the square of it takes minutes.
TEST(IppDecodingTest, ReadsAnyNumberOfValuesInTimeThatGrowsWithThem) {
  constexpr std::size_t kValues = 300'000;
  for (const std::string& value :
       {IppValue(IPPTag::kKeyword, "", "x"), kX, IppValue(IPPTag::kBegCollection, "a", "")}) {
    std::string body = kHead + kX;
    for (std::size_t i = 1; i < kValues; ++i) body += value;
    IPPOperations operations(nullptr);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(S_OK, Parse(&operations, body));
    EXPECT_EQ(kValues, operations.ValuesOf("a").size());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  }
}

// Behind its header, its delimiters and its values an answer may be over. Any byte may be wrong.
TEST(IppDecodingTest, SurvivesWhatIsCutOffOrWrong) {
  const std::string answer = ReadCases("ipp/answers.txt").back().Text("body");
  std::set<std::size_t> ends;
  for (std::size_t at = kHead.size(); at < answer.size();) {
    ends.insert(at);
    if (answer[at++] < IPPTag::kFirstValue) continue;
    for (int field = 0; field < 2; ++field) {
      at += 2u + static_cast<unsigned char>(answer[at]) * 256u +
            static_cast<unsigned char>(answer[at + 1]);
    }
  }
  IPPOperations operations(nullptr);
  for (std::size_t size = 1; size < answer.size(); ++size) {
    std::vector<char> exact(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(ends.contains(size) ? S_OK : E_FAIL, Parse(&operations, {exact.data(), size}));
    for (int wrong = 1; wrong < 256; ++wrong) {
      exact.back() = static_cast<char>(answer[size - 1] ^ wrong);
      Parse(&operations, {exact.data(), size});
      exact.insert(exact.end(), answer.begin() + static_cast<std::ptrdiff_t>(size), answer.end());
      Parse(&operations, {exact.data(), exact.size()});
      Held(operations, "media-col-ready.media-size");
      exact.resize(size);
    }
  }
}

TEST(IppDecodingTest, FailsWithoutAResponseOrBytes) {
  class TooLong : public FakeResponse {
    std::uint32_t GetContentLength() override { return 0x80000000u; }
  } tooLong;
  IPPOperations operations(nullptr);
  const auto* const body = reinterpret_cast<const unsigned char*>("\2\0\0\0\0\0\0\1\3");
  EXPECT_EQ(E_FAIL, operations.ParseIPPResponse(nullptr, nullptr));
  EXPECT_EQ(E_FAIL, operations.ParseIPPResponse(nullptr, nullptr, IPPOperation::kGetJobs));
  EXPECT_EQ(E_FAIL, operations.ParseIPPResponse(&tooLong, nullptr));
  EXPECT_EQ(E_FAIL, operations.ParseIPPContent(nullptr, 9, nullptr));
  for (const int length : {0, -1, INT_MIN}) {
    EXPECT_EQ(E_FAIL, operations.ParseIPPContent(body, length, nullptr)) << length;
  }
  EXPECT_EQ(E_FAIL, operations.FormResponseStructure(nullptr));
  const char* text = "unchanged";
  IPPOperations::GetJobState(2, &text);
  EXPECT_STREQ("unchanged", text);
}

TEST(IppDecodingTest, CopiesWhatIsLeftOfTheBody) {
  IPPOperations operations(nullptr);
  const std::string body = LibraryAnswer(0, "") + "more";
  EXPECT_EQ(S_OK, Parse(&operations, body));
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

}  // namespace
}  // namespace Corvane::Test
