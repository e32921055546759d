// Providers over a scripted host whose text is a USB port name: nothing is probed.
// tests/ipp/printer_port_test.cpp has the real ports.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "corvane/error_codes.h"
#include "corvane/handles.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "tests/ipp/decoded.h"
#include "tests/support/fake_device.h"
#include "tests/support/hr.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using Provider = RefPtr<IPPProvider>;
using Reply = FakeDevice::Answer;

constexpr DWORD kUntouched = 7;

std::string Message(const std::string& attributes, int status = 0) {
  return LibraryAnswer(status, IppGroup(4) + attributes);
}

std::string JobState(int state, const std::string& reasons = {}) {
  const std::string text = IppNumber(IPPTag::kEnum, "job-state", state);
  return Message(reasons.empty() ? text
                                 : text + IppValue(IPPTag::kKeyword, "job-state-reasons", reasons));
}

Reply Status(std::uint32_t status) {
  Reply reply;
  reply.body = "no";
  reply.status = status;
  return reply;
}

Reply Failure(std::uint32_t error) {
  Reply reply;
  reply.result = E_FAIL;
  reply.error = error;
  return reply;
}

Reply Body(std::string body) {
  Reply reply;
  reply.body = std::move(body);
  return reply;
}

// All that a request says of itself, by our own decoder: "status-code" is its operation.
std::string Sent(const FakeDevice& device) {
  IPPOperations request(nullptr);
  Decoded(&request, device.lastRequestBody);
  std::string all;
  for (const char* const name : {"status-code", "printer-uri", "job-uri", "requested-attributes",
                                 "requesting-user-name", "which-jobs"}) {
    if (const std::string value = Held(request, name); value != "nothing") all += value + ' ';
  }
  return all;
}

std::string Messages(const TraceRecorder& recorder, const wchar_t* function) {
  std::string messages;
  for (const auto& line : recorder.Lines()) {
    if (line.kind != TraceKind::kMessage || line.function != function) continue;
    messages += std::to_string(line.level) + ' ' + Narrow(line.message) + '\n';
  }
  return messages;
}

enum class By { kPath, kUri, kSecureUri };

Provider Make(By by, Address* address, const wchar_t* text) {
  switch (by) {
    case By::kPath:
      return Provider::Adopt(CreateIPPProvider(address, text ? Narrow(text).c_str() : nullptr));
    case By::kUri:
      return Provider::Adopt(CreateIPPPrintProvider(address, text));
    default:
      return Provider::Adopt(CreateSecureIPPPrintProvider(address, text, 1));
  }
}

class IppProviderTest : public ::testing::Test {
 protected:
  IppProviderTest() {
    m_device.AddRef();
    m_device.SetNoDelete(true);
    m_device.host = L"USB001";
    AnswerWith(Body(Message(IppValue(IPPTag::kName, "printer-name", "p") +
                            IppValue(IPPTag::kKeyword, "media-ready", "a4") +
                            IppValue(IPPTag::kKeyword, "", "a5") +
                            IppValue(IPPTag::kInteger, "pages", "\0\0\1\2"s))));
  }
  ~IppProviderTest() override { EXPECT_EQ(1u, m_device.References()); }

  void AnswerWith(const Reply& reply) {
    for (const std::uint32_t port : {631u, 443u}) {
      for (const wchar_t* const path : {L"/ipp/print", L"/other"}) {
        m_device.answers[{port, path}] = reply;
      }
    }
  }
  bool Called(const std::wstring& call) const {
    return std::count(m_device.calls.begin(), m_device.calls.end(), call) > 0;
  }

  FakeDevice m_device;
};

TEST_F(IppProviderTest, IsNotMadeAndTellsWhy) {
  const Reply good = Body(Message(""));
  const struct {
    const char* name;
    By by;
    const wchar_t* text;
    Reply reply;
    DWORD error;
    int requests = 0;
    bool hasAddress = true;
  } cases[] = {
      {"path: null", By::kPath, nullptr, good, kUntouched},
      {"path: no address", By::kPath, L"/ipp/print", good, kUntouched, 0, false},
      {"path: empty", By::kPath, L"", good, kIPPNoResourcePath},
      {"path: missing", By::kPath, L"/ipp/print", Status(404), 404, 1},
      {"path: no body", By::kPath, L"/ipp/print", Body(""), 200, 1},
      {"path: garbage", By::kPath, L"/ipp/print", Body("<html></html>"), kUntouched, 1},
      {"path: cut answer", By::kPath, L"/ipp/print", Body("\2\0\0\0\0\0\0"s), kUntouched, 1},
      {"URI: null", By::kUri, nullptr, good, kIPPInvalidArgument},
      {"URI: no address", By::kUri, L"ipp://h/ipp/print", good, kIPPInvalidArgument, 0, false},
      {"URI: secure", By::kUri, L"ipps://h/ipp/print", good, kIPPInvalidArgument},
      {"URI: https", By::kUri, L"https://h/ipp/print", good, kIPPInvalidArgument},
      {"URI: none", By::kUri, L"ipp", good, kIPPInvalidArgument},
      {"URI: no path", By::kUri, L"ipp://h", good, kIPPNoResourcePath},
      {"URI: refused", By::kUri, L"ipp://h/ipp/print", Status(401), kIPPNotAuthorized, 1},
      {"URI: time-out", By::kUri, L"ipp://h/ipp/print", Failure(kErrorTimeout), kErrorTimeout, 1},
      {"secure URI: plain", By::kSecureUri, L"ipp://h/ipp/print", good, kIPPInvalidArgument},
      {"secure URI: refused", By::kSecureUri, L"ipps://h/ipp/print", Status(401), kIPPNotAuthorized,
       1},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    AnswerWith(test.reply);
    m_device.calls.clear();
    SetLastError(kUntouched);
    EXPECT_FALSE(Make(test.by, test.hasAddress ? &m_device : nullptr, test.text));
    EXPECT_EQ(test.error, GetLastError());
    EXPECT_EQ(test.requests, m_device.Requests());
    EXPECT_EQ(1u, m_device.References());
  }
}

TEST_F(IppProviderTest, IsMadeByOneExchange) {
  static const struct {
    const char* name;
    By by;
    const wchar_t* text;
    const wchar_t* port;
  } kCases[] = {
      {"path", By::kPath, L"/ipp/print", L"631"},
      {"URI", By::kUri, L"ipp://elsewhere/ipp/print", L"631"},
      {"URI with the other port", By::kUri, L"ipp://elsewhere:443/ipp/print", L"631"},
      {"secure URI", By::kSecureUri, L"ipps://elsewhere/ipp/print", L"443"},
      {"secure URI with the other port", By::kSecureUri, L"ipps://e:631/ipp/print", L"443"},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    m_device.calls.clear();
    const Provider provider = Make(test.by, &m_device, test.text);
    ASSERT_TRUE(provider);
    EXPECT_EQ(L"CreateIPPHTTPRequest "s + test.port, m_device.calls.front());
    EXPECT_EQ(1, m_device.Requests());
    EXPECT_EQ("11 /ipp/print [printer-name|all] ", Sent(m_device));
    EXPECT_EQ(L"~HTTPRequest", m_device.calls.back());
    provider->AddRef();
    EXPECT_EQ(1u, provider->Release());
  }
}

TEST_F(IppProviderTest, TracesItsMaking) {
  const std::string parsed = "16 ptrIPPOperations->ParseIPPResponse(httpResponse,&value) cretae";
  const std::string uris =
      "16 Resource URI is /ipp/print \r\n\n16 Resource URI is ipp://h/ipp/print \r\n\n";
  const auto traced = [&] {
    const TraceRecorder recorder(kTraceInfo);
    Make(By::kUri, &m_device, L"ipp://h/ipp/print");
    return Messages(recorder, L"Corvane::IPPProviderImpl::Create") +
           Messages(recorder, L"Corvane::IPPProviderImpl::Create2");
  };
  EXPECT_EQ(parsed + '\n' + uris, traced());
  AnswerWith(Body("<html></html>"));
  EXPECT_EQ(parsed + " failed\n" + uris, traced());
  m_device.host = L"printer.example";
  const std::string silent = traced();
  EXPECT_TRUE(
      silent.starts_with("16 IPP support is not present in the device\n"
                         "16 Failed with error "))
      << silent;
  EXPECT_EQ(kIPPDeviceSilent, GetLastError());
  EXPECT_EQ(2, m_device.Requests());
}

TEST_F(IppProviderTest, HasTheFirstOfSeveralNames) {
  const Provider provider = Make(By::kPath, &m_device, L"/ipp/print");
  ASSERT_TRUE(provider);
  AnswerWith(Body(Message("")));  // what it has is from its making
  static const struct {
    const char* name;
    const char* expected;
  } kCases[] = {
      {"printer-name", "p"},
      {"media-ready", "[a4|a5]"},
      {"missing_OR_pages_OR_printer-name", "258"},
      {"_OR_pages", "258"},
      {"pages_OR_", "258"},
      {"missing_OR_absent", "nothing"},
      {"_OR_", "nothing"},
      {"", "nothing"},
      {"missing_or_pages", "nothing"},
      {nullptr, "nothing"},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name ? test.name : "null");
    _variant_t value(7L, VT_I4);
    EXPECT_HR(provider->GetValue(test.name, &value), test.expected == "nothing"s ? E_FAIL : S_OK);
    EXPECT_EQ(test.expected, Shown(value));
  }
  EXPECT_EQ(1, m_device.Requests());
}

TEST_F(IppProviderTest, AsksThePrinterAnew) {
  const std::string pages = IppValue(IPPTag::kInteger, "pages", "\0\0\0\x9"s);
  const std::string asked = "11 /ipp/print [printer-name|pages] ";
  const char* const job = "ipp://h/ipp/print/4";
  const struct {
    const char* name;
    const char* attribute;
    bool forJob;
    const char* uri;
    const char* resource;
    std::string sent;
    Reply reply;
    const char* expected;
    DWORD error = kUntouched;
  } cases[] = {
      {"printer", "pages", false, nullptr, nullptr, asked, Body(Message(pages)), "9"},
      {"by its URI", "pages", false, "ipp://h/x", nullptr, asked, Body(Message(pages)), "9"},
      {"another resource", "pages", false, nullptr, "/other", "11 /other [printer-name|pages] ",
       Body(Message(pages)), "9"},
      {"not told", "pages", false, nullptr, nullptr, asked, Body(Message("")), "nothing"},
      {"an error with it", "pages", false, nullptr, nullptr, asked, Body(Message(pages, 0x503)),
       "9"},
      {"job", "pages", true, job, nullptr, "9 /ipp/print ipp://h/ipp/print/4 pages ",
       Body(Message(pages)), "9"},
      {"no such job", "pages", true, job, nullptr, "9 /ipp/print ipp://h/ipp/print/4 pages ",
       Body(Message("", 0x406)), "nothing"},
      {"garbage", "pages", false, nullptr, nullptr, asked, Body("<html></html>"), "nothing"},
      {"refused", "pages", false, nullptr, nullptr, asked, Status(401), "nothing",
       kIPPNotAuthorized},
      {"time-out", "pages", true, job, nullptr, "9 /ipp/print ipp://h/ipp/print/4 pages ",
       Failure(kErrorTimeout), "nothing", kErrorTimeout},
      {"no name", nullptr, false, nullptr, nullptr, "", Body(Message(pages)), "nothing"},
  };
  const Provider plain = Make(By::kUri, &m_device, L"ipp://h/ipp/print");
  const Provider secure = Make(By::kSecureUri, &m_device, L"ipps://h/ipp/print");
  ASSERT_TRUE(plain && secure);
  for (const auto& test : cases) {
    AnswerWith(test.reply);
    for (const bool isSecure : {false, true}) {
      SCOPED_TRACE(test.name + (isSecure ? ", secure"s : ""s));
      m_device.calls.clear();
      SetLastError(kUntouched);
      _variant_t value(7L, VT_I4);
      EXPECT_HR((isSecure ? secure : plain)
                    ->GetIPPValue(test.attribute, test.forJob, &value, test.uri, test.resource, 0),
                test.expected == "nothing"s ? E_FAIL : S_OK);
      EXPECT_EQ(test.expected, Shown(value));
      EXPECT_EQ(test.error, GetLastError());
      EXPECT_EQ(test.attribute ? 1 : 0, m_device.Requests());
      if (!test.attribute) continue;
      EXPECT_EQ(test.sent, Sent(m_device));
      EXPECT_EQ(L"CreateIPPHTTPRequest "s + (isSecure ? L"443" : L"631"), m_device.calls.front());
    }
  }
}

constexpr wchar_t kGetJobs[] = L"Corvane::IPPProviderImpl::GetJobs";

TEST_F(IppProviderTest, ListsTheJobsOfAUser) {
  const std::string none =
      "16 May be we ask for which-jobs=completed but job is still in process else may be reverse "
      "condition\n";
  const struct {
    const char* name;
    bool selectState;
    Reply reply;
    HRESULT result;
    const char* state;
    std::string traces;
    bool hasRecord = true;
  } cases[] = {
      {"ended", true, Body(JobState(9)), S_OK, "Completed", ""},
      {"going on", false, Body(JobState(5, "none")), S_OK, "Processing", ""},
      {"nowhere to put it", true, Body(JobState(9)), S_FALSE, "null", "", false},
      {"none", true, Body(Message("")), S_FALSE, "null", none},
      {"refused", true, Status(500), E_FAIL, "null",
       "128 GetJobs(struct)..SendIPPRequest() failed\n"},
      {"garbage", true, Body("<html></html>"), E_FAIL, "null",
       "128 GetJobs(struct)..ParseIPPResponse() failed\n"},
  };
  const auto provider =
      RefPtr<IPPProviderImpl>::Adopt(IPPProviderImpl::Create(&m_device, "/ipp/print", false, 0));
  ASSERT_TRUE(provider);
  const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  EXPECT_HR(provider->GetJobs(nullptr, nullptr, true), E_FAIL);
  EXPECT_HR(provider->GetJobs(request.Get(), nullptr, true), E_FAIL);  // of nobody
  EXPECT_EQ(1, m_device.Requests());
  request->SetRequestingUserName("anna");
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    AnswerWith(test.reply);
    const auto record = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
    const TraceRecorder recorder(kTraceInfo | kTraceSevere);
    EXPECT_HR(
        provider->GetJobs(request.Get(), test.hasRecord ? record.Get() : nullptr, test.selectState),
        test.result);
    EXPECT_STREQ(test.state, record->GetJobState() ? record->GetJobState() : "null");
    EXPECT_EQ(test.traces, Messages(recorder, kGetJobs));
    EXPECT_EQ("10 /ipp/print all anna "s + (test.selectState ? "completed " : "not-completed "),
              Sent(m_device));
  }
}

TEST_F(IppProviderTest, TellsWhetherTheCurrentJobHasEnded) {
  const auto says = [](const std::string& state, const std::string& reasons) {
    return "16 Print Job state=" + state + " and JobstateReasons=" + reasons + '\n';
  };
  const std::string ended = "16 Job is canceled or completed\n";
  const struct {
    const char* name;
    Reply reply;
    HRESULT result;
    std::string traces;
  } cases[] = {
      {"completed", Body(JobState(9)), S_OK, says("9", "") + ended},
      {"aborted", Body(JobState(8, "x")), S_OK, says("8", "x") + ended},
      {"canceled", Body(JobState(7)), S_OK, says("7", "") + ended},
      {"about to be canceled", Body(JobState(6, "job-canceled-by-user")), S_OK,
       says("6", "job-canceled-by-user") +
           "16 job-state-reasons can be job-canceled-at-device, canceled-by-user, "
           "canceled-by-operator,printer-stopped\n"},
      {"going on", Body(JobState(5)), S_FALSE,
       says("5", "") + "16 Job is continuing..Print Job state=5 and JobstateReasons=\n"},
      {"none", Body(Message("")), S_FALSE, "16 value is empty\n"},
      {"refused", Status(500), S_FALSE, "128 GetJobs()..SendIPPRequest() failed\n"},
      {"garbage", Body("<html></html>"), S_FALSE, "128 GetJobs()..ParseIPPResponse() failed\n"},
  };
  auto operations = std::make_unique<IPPOperations>(&m_device);
  operations->SetRequestedUserName("anna");
  const auto provider =
      RefPtr<IPPProviderImpl>::Share(new IPPProviderImpl(&m_device, std::move(operations)));
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    m_device.answers[{631, L""}] = test.reply;  // it was made without a resource
    const TraceRecorder recorder(kTraceInfo | kTraceSevere);
    EXPECT_HR(provider->GetJobs(true), test.result);
    EXPECT_EQ(test.traces, Messages(recorder, kGetJobs));
    EXPECT_NE(std::string::npos, Sent(m_device).find("all anna completed ")) << Sent(m_device);
  }
}

TEST_F(IppProviderTest, GivesTheLongestTimeoutToEachRequest) {
  const Provider provider = Make(By::kSecureUri, &m_device, L"ipps://h/ipp/print");
  ASSERT_TRUE(provider);
  EXPECT_TRUE(Called(L"SetOption 30000"));
  for (const std::uint32_t longest : {0u, 1u, 2u}) {
    SCOPED_TRACE(longest);
    provider->SetTimeouts(longest == 0 ? 90000 : 1, longest == 1 ? 90000 : 2,
                          longest == 2 ? 90000 : 3);
    _variant_t value;
    m_device.calls.clear();
    EXPECT_HR(provider->GetIPPValue("pages", false, &value, nullptr, nullptr, 0), S_OK);
    EXPECT_TRUE(Called(L"SetOption 90000"));
  }
}

TEST_F(IppProviderTest, TriesCredentialsOnTheCallersRequest) {
  const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  request->SetUsername("anna");
  request->SetAuthorizationHeader(L"Basic eA==");
  const Provider provider = Make(By::kSecureUri, &m_device, L"ipps://h/ipp/print");
  ASSERT_TRUE(provider);
  const auto check = [&](const Provider& asked) {
    RefPtr<HTTPRequest> httpRequest;
    m_device.CreateIPPHTTPRequest(httpRequest.Receive(), 443);
    m_device.calls.clear();
    SetLastError(kUntouched);
    return asked->CheckAuthorization(httpRequest.Get(), request.Get());
  };
  const struct {
    const char* name;
    Reply reply;
    HRESULT result;
    DWORD error;
  } cases[] = {{"taken", Body(Message("")), S_OK, kUntouched},
               {"refused", Status(401), E_FAIL, kIPPNotAuthorized},
               {"garbage", Body("<html></html>"), E_FAIL, kIPPUnexpectedAnswer},
               {"time-out", Failure(kErrorTimeout), E_FAIL, kErrorTimeout}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    AnswerWith(test.reply);
    EXPECT_HR(check(provider), test.result);
    EXPECT_EQ(test.error, GetLastError());
    EXPECT_TRUE(Called(L"SetUserName anna"));
    EXPECT_EQ(test.result == S_OK, Called(L"AddHeader Authorization: Basic eA=="));
  }
  EXPECT_HR(provider->CheckAuthorization(nullptr, request.Get()), E_FAIL);
  EXPECT_EQ(87u, GetLastError());
  AnswerWith(Body(Message("")));
  EXPECT_HR(check(Make(By::kUri, &m_device, L"ipp://h/ipp/print")), E_FAIL);
  EXPECT_EQ(kIPPNoSecureUri, GetLastError());
  EXPECT_FALSE(Called(L"GetResponse"));
}

}  // namespace
}  // namespace Corvane::Test
