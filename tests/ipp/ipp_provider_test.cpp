// Providers over a scripted host whose text is a USB port name: nothing is probed.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "corvane/handles.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "tests/ipp/decoded.h"
#include "tests/support/cases.h"
#include "tests/support/fake_device.h"
#include "tests/support/hr.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using Provider = RefPtr<IPPProvider>;

constexpr DWORD kUntouched = 7;
constexpr wchar_t kPlain[] = L"ipp://h/ipp/print";
constexpr wchar_t kSecure[] = L"ipps://h/ipp/print";
constexpr wchar_t kGetJobs[] = L"Corvane::IPPProviderImpl::GetJobs";

std::string Messages(const TraceRecorder& recorder, const std::wstring& function) {
  std::string messages;
  for (const auto& line : recorder.Lines()) {
    if (line.kind != TraceKind::kMessage || line.function != function) continue;
    messages += std::to_string(line.level) + ' ' + ToUtf8(line.message) + '\n';
  }
  return messages;
}

class IppProviderTest : public ::testing::Test {
 protected:
  IppProviderTest() {
    m_device->host = L"USB001";
    AnswerWith({ReadCases("ipp/provider_creation.txt").front().Text("body")});
  }
  ~IppProviderTest() override { EXPECT_EQ(1u, m_device->References()); }

  void AnswerWith(const FakeDevice::Answer& answer) {
    for (const std::uint32_t port : {631u, 443u}) {
      for (const wchar_t* const path : {L"/ipp/print", L"/other", L""}) {
        m_device->answers[{port, path}] = answer;
      }
    }
    m_device->calls.clear();
    SetLastError(kUntouched);
  }
  void AnswerAs(const Case& c) {
    const auto failure = static_cast<std::uint32_t>(c.Number("failure"));
    const auto status = static_cast<std::uint32_t>(c.Number("http"));
    AnswerWith(
        {c.Text("body"), status ? status : 200, failure ? E_FAIL : S_OK, false, false, failure});
  }
  Provider Make(const std::string& by, const wchar_t* text, bool hasAddress = true) const {
    Address* const address = hasAddress ? m_device.Get() : nullptr;
    return Provider::Adopt(by == "path"
                               ? CreateIPPProvider(address, text ? ToUtf8(text).c_str() : nullptr)
                           : by == "uri" ? CreateIPPPrintProvider(address, text)
                                         : CreateSecureIPPPrintProvider(address, text, 1));
  }
  bool Called(const std::wstring& call) const {
    return std::count(m_device->calls.begin(), m_device->calls.end(), call) > 0;
  }
  // The operation, and what the last request told.
  std::string Sent() const {
    const std::string& body = m_device->lastRequestBody;
    return std::to_string(ReadIPPHeader(body).value_or(IPPHeader()).code) + '\n' + Told(body);
  }

  const RefPtr<FakeDevice> m_device = RefPtr<FakeDevice>::Share(new FakeDevice);
};

TEST_F(IppProviderTest, IsMadeByOneExchangeOrTellsWhyNot) {
  for (const Case& c : ReadCases("ipp/provider_creation.txt")) {
    SCOPED_TRACE(c.Where());
    AnswerAs(c);
    m_device->host = c.Find("host") ? c.Wide("host") : L"USB001";
    const std::wstring text = c.Wide("text");
    const TraceRecorder recorder(kTraceInfo);
    const Provider provider =
        Make(c.Text("by"), c.Find("text") ? text.c_str() : nullptr, !c.Find("address"));
    EXPECT_EQ(c.Number("error"), provider ? 0 : GetLastError());
    const std::string traces = Messages(recorder, L"Corvane::IPPProviderImpl::Create") +
                               Messages(recorder, L"Corvane::IPPProviderImpl::Create2");
    EXPECT_EQ(c.Text("traces"), traces.substr(0, c.Text("traces").size()));
    EXPECT_EQ(c.Number("requests"), m_device->Requests());
    if (!provider) continue;
    EXPECT_EQ(L"CreateIPPHTTPRequest " + c.Wide("port"), m_device->calls.front());
    EXPECT_TRUE(Called(L"SetOption 30000"));
    EXPECT_EQ(L"~HTTPRequest", m_device->calls.back());
    EXPECT_EQ(c.Text("sent"), Sent());
  }
}

TEST_F(IppProviderTest, HasTheFirstOfSeveralNames) {
  const Provider provider = Make("path", L"/ipp/print");
  ASSERT_TRUE(provider);
  m_device->answers.clear();  // what it has is from its making
  const auto get = [&](const char* name) {
    return Asked([&](VARIANT* value) { return provider->GetValue(name, value); });
  };
  for (const Case& c : ReadCases("ipp/provider_values.txt")) {
    EXPECT_EQ(c.Text("value"), get(c.Text("name").c_str())) << c.Where();
  }
  EXPECT_EQ("E_FAIL", get(nullptr));
  EXPECT_EQ(1, m_device->Requests());
}

TEST_F(IppProviderTest, AsksThePrinterAnew) {
  const std::pair<Provider, std::wstring> providers[] = {{Make("uri", kPlain), L"631"},
                                                         {Make("secure", kSecure), L"443"}};
  for (const Case& c : ReadCases("ipp/provider_questions.txt")) {
    for (const auto& [provider, port] : providers) {
      SCOPED_TRACE(c.Where());
      ASSERT_TRUE(provider);
      AnswerAs(c);
      const auto attribute = c.Find("attribute"), resource = c.Find("resource");
      const auto job = c.Find("job"), uri = job ? job : c.Find("uri");
      const auto chars = [](const std::optional<std::string>& text) {
        return text ? text->c_str() : nullptr;
      };
      EXPECT_EQ(c.Text("value"), Asked([&](VARIANT* value) {
                  return provider->GetIPPValue(chars(attribute), job.has_value(), value, chars(uri),
                                               chars(resource), 0);
                }));
      EXPECT_EQ(c.Find("error").value_or("7"), std::to_string(GetLastError()));
      EXPECT_EQ(attribute ? 1 : 0, m_device->Requests());
      if (!attribute) continue;
      EXPECT_EQ(c.Text("sent"), Sent());
      EXPECT_EQ(L"CreateIPPHTTPRequest " + port, m_device->calls.front());
    }
  }
}

TEST_F(IppProviderTest, ListsJobsAndWatchesTheCurrentOne) {
  const auto provider = RefPtr<IPPProviderImpl>::Adopt(
      IPPProviderImpl::Create(m_device.Get(), "/ipp/print", false, 0));
  ASSERT_TRUE(provider);
  const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  EXPECT_HR(provider->GetJobs(nullptr, nullptr, true), E_FAIL);
  EXPECT_HR(provider->GetJobs(request.Get(), nullptr, true), E_FAIL);  // of nobody
  EXPECT_EQ(1, m_device->Requests());
  request->SetRequestingUserName("anna");
  auto operations = std::make_unique<IPPOperations>(m_device.Get());
  operations->SetRequestedUserName("anna");
  const auto watching =
      RefPtr<IPPProviderImpl>::Share(new IPPProviderImpl(m_device.Get(), std::move(operations)));
  for (const Case& c : ReadCases("ipp/job_lists.txt")) {
    SCOPED_TRACE(c.Where());
    AnswerAs(c);
    for (const bool selectState : {false, true}) {
      const auto set = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
      const TraceRecorder recorder(kTraceInfo | kTraceSevere);
      EXPECT_HR(provider->GetJobs(request.Get(), set.Get(), selectState),
                static_cast<HRESULT>(c.Number("listed")));
      EXPECT_EQ(c.Text("state"), set->GetJobState() ? set->GetJobState() : "-");
      EXPECT_EQ(c.Text("traces"), Messages(recorder, kGetJobs));
      const std::string which = "which-jobs="s + (selectState ? "completed" : "not-completed");
      EXPECT_NE(std::string::npos, Sent().find(which)) << Sent();
    }
    if (c.Number("listed") == 0) {
      EXPECT_HR(provider->GetJobs(request.Get(), nullptr, true), S_FALSE);  // nowhere to put it
    }
    const TraceRecorder recorder(kTraceInfo | kTraceSevere);
    EXPECT_HR(watching->GetJobs(true), static_cast<HRESULT>(c.Number("current")));
    EXPECT_EQ(c.Text("currentTraces"), Messages(recorder, kGetJobs));
    EXPECT_NE(std::string::npos, Sent().find("requesting-user-name=anna")) << Sent();
  }
}

TEST_F(IppProviderTest, GivesTheLongestTimeoutToEachRequest) {
  const Provider provider = Make("secure", kSecure);
  ASSERT_TRUE(provider);
  for (const std::uint32_t longest : {0u, 1u, 2u}) {
    const auto timeout = [=](std::uint32_t which) { return which == longest ? 90000 : which + 1; };
    provider->SetTimeouts(timeout(0), timeout(1), timeout(2));
    _variant_t value;
    m_device->calls.clear();
    EXPECT_HR(provider->GetIPPValue("pages", false, &value, nullptr, nullptr, 0), S_OK);
    EXPECT_TRUE(Called(L"SetOption 90000")) << longest;
  }
}

TEST_F(IppProviderTest, TriesCredentialsOnTheCallersRequest) {
  const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  request->SetUsername("anna");
  request->SetAuthorizationHeader(L"Basic eA==");
  const Provider provider = Make("secure", kSecure);
  const Provider plain = Make("uri", kPlain);
  ASSERT_TRUE(provider && plain);
  const auto check = [&](const Provider& asked) {
    RefPtr<HTTPRequest> httpRequest;
    m_device->CreateIPPHTTPRequest(httpRequest.Receive(), kIppsPort);
    return asked->CheckAuthorization(httpRequest.Get(), request.Get());
  };
  for (const Case& c : ReadCases("ipp/authorization.txt")) {
    SCOPED_TRACE(c.Where());
    AnswerAs(c);
    EXPECT_HR(check(provider), static_cast<HRESULT>(c.Number("result")));
    EXPECT_EQ(c.Number("error"), GetLastError());
    EXPECT_TRUE(Called(L"SetUserName anna"));
    EXPECT_EQ(c.Number("result") == S_OK, Called(L"AddHeader Authorization: Basic eA=="));
  }
  EXPECT_HR(provider->CheckAuthorization(nullptr, request.Get()), E_FAIL);
  EXPECT_EQ(87u, GetLastError());
  m_device->calls.clear();
  EXPECT_HR(check(plain), E_FAIL);
  EXPECT_EQ(kIPPNoSecureUri, GetLastError());
  EXPECT_FALSE(Called(L"GetResponse"));
}

}  // namespace
}  // namespace Corvane::Test
