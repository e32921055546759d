#include "providers/xml_provider.h"

#include "tests/support/device_test.h"

namespace Corvane::Test {
namespace {

constexpr std::uint32_t kPort = 8088;

// The core with a port of its own, and credentials for a test to set.
class PlainProvider final : public XMLProvider {
 public:
  explicit PlainProvider(Address* address) : XMLProvider(address, kPort) {}
  std::uint32_t GetPort() override { return kPort; }
  void SetCredentials(const wchar_t* user, const wchar_t* password) {
    m_userName = user;
    m_password = password;
  }
};

class XMLProviderTest : public DeviceTest {
 protected:
  XMLProviderTest() { m_device->Serve(kPort, L"/s.xml", "<s><state>Ready</state></s>"); }

  HRESULT Get(const wchar_t* uri, const wchar_t* xpath, int useCache = 1, std::uint32_t life = 0,
              std::uint32_t size = 16) {
    m_buffer.assign(16, L'#');
    m_required = 99;
    return m_provider->GetValue(uri, xpath, m_buffer.data(), size, &m_required, useCache, life);
  }
  // Of /s.xml.
  std::wstring State(int useCache = 1, std::uint32_t life = 0) {
    EXPECT_HR(Get(L"/s.xml", L"//state", useCache, life), S_OK);
    return m_buffer.c_str();
  }

  RefPtr<PlainProvider> m_provider =
      RefPtr<PlainProvider>::Share(new PlainProvider(m_device.Get()));
  std::wstring m_buffer;
  std::uint32_t m_required = 0;
};

TEST_F(XMLProviderTest, ReadsAValueWithOnePlainGet) {
  EXPECT_EQ(L"Ready", State());
  EXPECT_EQ(L"CreateHTTPRequest 8088, SetURI /s.xml, GetResponse, Dispose, ~HTTPRequest",
            TakeCalls());
  EXPECT_EQ(2u, m_device->References());
  m_provider.Reset();
  EXPECT_EQ(1u, m_device->References());
}

TEST_F(XMLProviderTest, AnswersExactlyByCode) {
  for (const Case& c : ReadCases("providers/xml_answers.txt")) {
    SCOPED_TRACE(c.Where());
    FakeDevice::Answer& answer = m_device->answers[{kPort, L"/a.xml"}];
    answer = {c.Text("body"), 200};
    answer.nullBody = !c.Find("body");
    if (c.Find("status")) answer.status = static_cast<std::uint32_t>(c.Number("status"));
    if (c.Find("exchange"))
      answer.result = c.Text("exchange") == "S_FALSE" ? S_FALSE : E_UNEXPECTED;
    const std::wstring xpath = c.Wide("xpath");
    EXPECT_EQ(c.Text("result"),
              HrText(Get(L"/a.xml", c.Find("xpath") ? xpath.c_str() : nullptr, 0)));
    EXPECT_EQ(c.Number("required"), m_required);
    EXPECT_EQ(c.Wide("value"),
              m_buffer.substr(0, std::max<std::size_t>(m_required, 2) - 1).c_str());
  }
  EXPECT_HR(Get(nullptr, L"//state"), E_FAIL);
  m_device->answers[{kPort, L"/a.xml"}].nullResponse = true;
  EXPECT_HR(Get(L"/a.xml", L"//s", 0), E_FAIL);
}

TEST_F(XMLProviderTest, TellsTheLengthWhenTheBufferIsTooSmall) {
  for (const std::uint32_t size : {0u, 5u, 6u}) {
    EXPECT_HR(Get(L"/s.xml", L"//state", 1, 0, size), size < 6 ? E_OUTOFMEMORY : S_OK);
    EXPECT_EQ(6u, m_required);
    EXPECT_EQ(size < 6 ? L'#' : L'R', m_buffer[0]);
  }
  EXPECT_HR(m_provider->GetValue(L"/s.xml", L"//state", nullptr, 16, &m_required, 1, 0),
            E_OUTOFMEMORY);
  EXPECT_HR(m_provider->GetValue(L"/s.xml", L"//state", m_buffer.data(), 8, nullptr, 1, 0), E_FAIL);
}

TEST_F(XMLProviderTest, CachesDocumentsByPath) {
  EXPECT_EQ(L"Ready", State());
  m_device->Serve(kPort, L"/s.xml", "<s><state>Busy</state></s>");
  EXPECT_EQ(L"Ready", State()) << "lifespan 0 never goes stale";
  EXPECT_EQ(1, m_device->Requests());
  EXPECT_EQ(L"Busy", State(0)) << "without the cache it is fetched, and replaces the entry";
  EXPECT_EQ(L"Busy", State(1, 600));
  EXPECT_EQ(2, m_device->Requests());
  m_device->Serve(kPort, L"/bad.xml", "<s>");
  Get(L"/bad.xml", L"//state");
  Get(L"/bad.xml", L"//state");
  EXPECT_EQ(3, m_device->Requests()) << "a body that is no XML is cached as an empty document";
  Get(L"/none.xml", L"//state");
  Get(L"/none.xml", L"//state");
  EXPECT_EQ(5, m_device->Requests()) << "a failed fetch is not cached";
}

TEST_F(XMLProviderTest, CredentialsGoWithAPasswordOnly) {
  const std::wstring start = L"CreateHTTPRequest 8088, SetURI /s.xml, ";
  const std::wstring end = L"GetResponse, Dispose, ~HTTPRequest";
  m_provider->SetCredentials(L"operator", L"");
  State(0);
  EXPECT_EQ(start + end, TakeCalls());
  m_provider->SetCredentials(L"", L"secret");
  State(0);
  EXPECT_EQ(start + L"SetPassword secret, SetUserName admin, " + end, TakeCalls());
  m_provider->SetCredentials(L"operator", L"secret");
  State(0);
  EXPECT_EQ(start + L"SetPassword secret, SetUserName operator, " + end, TakeCalls());
}

TEST_F(XMLProviderTest, RequestThatIsNotMadeFails) {
  m_device->createResult = E_INVALIDARG;
  EXPECT_HR(Get(L"/s.xml", L"//state"), E_INVALIDARG) << "the host's code";
  m_device->createResult = S_FALSE;
  EXPECT_HR(Get(L"/s.xml", L"//state"), S_FALSE) << "not exactly 0";
  m_device->createResult = S_OK;
  m_device->nullRequest = true;
  EXPECT_HR(Get(L"/s.xml", L"//state"), E_FAIL);
  EXPECT_EQ(0, m_device->Requests());
  m_provider = RefPtr<PlainProvider>::Share(new PlainProvider(nullptr));
  EXPECT_HR(Get(L"/s.xml", L"//state"), E_FAIL);
}

}  // namespace
}  // namespace Corvane::Test
