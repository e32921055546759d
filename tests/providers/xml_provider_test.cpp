#include "providers/xml_provider.h"

#include "tests/support/dom.h"
#include "tests/support/fake_device.h"
#include "tests/support/hr.h"
#include "tests/support/trace_recorder.h"

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

class XMLProviderTest : public testing::Test {
 protected:
  XMLProviderTest()
      : m_device(RefPtr<FakeDevice>::Share(new FakeDevice)),
        m_provider(RefPtr<PlainProvider>::Share(new PlainProvider(m_device.Get()))) {
    m_device->Serve(kPort, L"/s.xml", "<s><state>Ready</state><empty/></s>");
  }

  HRESULT Get(const wchar_t* uri, const wchar_t* xpath, int useCache = 1, std::uint32_t life = 0) {
    std::fill(std::begin(m_buffer), std::end(m_buffer), L'#');
    m_required = 99;
    return m_provider->GetValue(uri, xpath, m_buffer, 16, &m_required, useCache, life);
  }

  RefPtr<FakeDevice> m_device;
  RefPtr<PlainProvider> m_provider;
  wchar_t m_buffer[16];
  std::uint32_t m_required = 0;
};

TEST_F(XMLProviderTest, ReadsAValueWithOnePlainGet) {
  EXPECT_HR(Get(L"/s.xml", L"//state"), S_OK);
  EXPECT_STREQ(L"Ready", m_buffer);
  EXPECT_EQ(6u, m_required);
  const std::vector<std::wstring> expected = {L"CreateHTTPRequest 8088", L"SetURI /s.xml",
                                              L"GetResponse", L"Dispose", L"~HTTPRequest"};
  EXPECT_EQ(expected, m_device->calls);
}

TEST_F(XMLProviderTest, AnswersExactlyByCode) {
  m_device->Serve(kPort, L"/bad.xml", "<s><state>");
  m_device->Serve(kPort, L"/empty.xml", "");
  m_device->Serve(kPort, L"/nul.xml", std::string("<s><state>Ready</state></s>\0<!--", 31));
  m_device->Serve(kPort, L"/cut.xml", std::string("<s>\0</s>", 8));
  m_device->answers[{kPort, L"/401.xml"}] = {"<s><state/></s>", 401, S_OK, false, false};
  m_device->answers[{kPort, L"/204.xml"}] = {"<s><state/></s>", 204, S_OK, false, false};
  m_device->answers[{kPort, L"/fail.xml"}] = {"<s/>", 200, E_UNEXPECTED, false, false};
  m_device->answers[{kPort, L"/positive.xml"}] = {"<s/>", 200, S_FALSE, false, false};
  m_device->answers[{kPort, L"/null.xml"}] = {"", 200, S_OK, true, false};
  m_device->answers[{kPort, L"/nullbody.xml"}] = {"", 200, S_OK, false, true};
  static const struct {
    const char* name;
    const wchar_t* uri;
    const wchar_t* xpath;
    HRESULT result;
    std::uint32_t required;
  } kCases[] = {
      {"empty text", L"/s.xml", L"//empty", S_OK, 1},
      {"no node", L"/s.xml", L"//none", S_FALSE, 0},
      {"expression that does not parse", L"/s.xml", L"//state[", E_FAIL, 0},
      {"null expression", L"/s.xml", nullptr, E_INVALIDARG, 0},
      {"null uri", nullptr, L"//state", E_FAIL, 0},
      {"not found", L"/none.xml", L"//state", E_FAIL, 0},
      {"unauthorized with a body", L"/401.xml", L"//state", E_FAIL, 0},
      {"no content with a body", L"/204.xml", L"//state", E_FAIL, 0},
      {"failed exchange", L"/fail.xml", L"//s", E_FAIL, 0},
      {"exchange with a result that is not 0", L"/positive.xml", L"//s", E_FAIL, 0},
      {"null response", L"/null.xml", L"//s", E_FAIL, 0},
      {"half a document", L"/bad.xml", L"//state", S_FALSE, 0},
      {"empty body", L"/empty.xml", L"//state", S_FALSE, 0},
      {"null body", L"/nullbody.xml", L"//state", S_FALSE, 0},
      {"text ends at a NUL", L"/nul.xml", L"//state", S_OK, 6},
      {"NUL inside the document", L"/cut.xml", L"//s", S_FALSE, 0},
  };
  for (const auto& c : kCases) {
    EXPECT_HR(Get(c.uri, c.xpath), c.result) << c.name;
    EXPECT_EQ(c.required, m_required) << c.name;
    EXPECT_EQ(c.result != S_OK, m_buffer[0] == L'#') << c.name << ": written on success only";
  }
}

TEST_F(XMLProviderTest, TellsTheLengthWhenTheBufferIsTooSmall) {
  wchar_t room[8] = L"#######";
  static const struct {
    std::uint32_t size;
    HRESULT result;
    wchar_t first;
  } kCases[] = {{0, E_OUTOFMEMORY, L'#'}, {5, E_OUTOFMEMORY, L'#'}, {6, S_OK, L'R'}};
  for (const auto& c : kCases) {
    std::uint32_t required = 0;
    EXPECT_HR(m_provider->GetValue(L"/s.xml", L"//state", room, c.size, &required, 1, 0), c.result);
    EXPECT_EQ(6u, required);
    EXPECT_EQ(c.first, room[0]);
  }
  std::uint32_t required = 0;
  EXPECT_HR(m_provider->GetValue(L"/s.xml", L"//empty", nullptr, 0, &required, 1, 0),
            E_OUTOFMEMORY);
  EXPECT_EQ(1u, required);
  EXPECT_HR(m_provider->GetValue(L"/s.xml", L"//state", room, 8, nullptr, 1, 0), E_FAIL);
}

TEST_F(XMLProviderTest, CachesDocumentsByPath) {
  Get(L"/s.xml", L"//state");
  m_device->Serve(kPort, L"/s.xml", "<s><state>Busy</state></s>");
  Get(L"/s.xml", L"//state");
  EXPECT_STREQ(L"Ready", m_buffer) << "lifespan 0 never goes stale";
  EXPECT_EQ(1, m_device->Requests());
  Get(L"/s.xml", L"//state", 0);
  EXPECT_STREQ(L"Busy", m_buffer) << "without the cache it is fetched, and replaces the entry";
  Get(L"/s.xml", L"//state", 1, 600);
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
  m_provider->SetCredentials(L"operator", L"");
  Get(L"/s.xml", L"//state", 0);
  m_provider->SetCredentials(L"", L"secret");
  Get(L"/s.xml", L"//state", 0);
  m_provider->SetCredentials(L"operator", L"secret");
  Get(L"/s.xml", L"//state", 0);
  std::vector<std::wstring> set;
  for (const auto& call : m_device->calls) {
    if (call.find(L"SetUser") == 0 || call.find(L"SetPass") == 0) set.push_back(call);
  }
  const std::vector<std::wstring> expected = {L"SetPassword secret", L"SetUserName admin",
                                              L"SetPassword secret", L"SetUserName operator"};
  EXPECT_EQ(expected, set);
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
  const auto orphan = RefPtr<PlainProvider>::Share(new PlainProvider(nullptr));
  std::uint32_t required = 0;
  EXPECT_HR(orphan->GetValue(L"/s.xml", L"//s", nullptr, 0, &required, 1, 0), E_FAIL);
}

TEST_F(XMLProviderTest, GivesBackTheAddress) {
  EXPECT_EQ(2u, m_device->References());
  m_provider.Reset();
  EXPECT_EQ(1u, m_device->References());
}

TEST_F(XMLProviderTest, TracesItsOperations) {
  const TraceRecorder recorder(kTraceAll & ~kTraceInfo);
  Get(L"/s.xml", L"//state");
  const std::vector<std::wstring> expected = {L"Corvane::XMLProvider::GetValue",
                                              L"Corvane::XMLProvider::GetDOM",
                                              L"Corvane::XMLProvider::GetContent"};
  EXPECT_EQ(expected, recorder.Entered());
  EXPECT_EQ(6u, recorder.Lines().size()) << "nothing but entries and exits";
}

}  // namespace
}  // namespace Corvane::Test
