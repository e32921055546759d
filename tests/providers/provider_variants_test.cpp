#include "providers/plsxml_provider_impl.h"
#include "providers/quarn_provider_impl.h"
#include "providers/ws_provider_impl.h"
#include "tests/support/device_test.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

class VariantsTest : public DeviceTest {
 protected:
  static RefPtr<IXMLProvider> Make(std::uint32_t port, Address* address) {
    IXMLProvider* made = nullptr;
    if (port == kQuarnPort) made = CreateQUARNProvider(address);
    if (port == kWsPort) made = CreateWSProvider(address);
    if (port == 80) made = PLSXMLProviderImpl::Create(address);
    return RefPtr<IXMLProvider>::Adopt(made);
  }
  // Of a device that answers so.
  RefPtr<IXMLProvider> Open(std::uint32_t port, const wchar_t* path, const std::string& body) {
    m_device->Serve(port, path, body);
    return Make(port, m_device.Get());
  }
  RefPtr<IXMLProvider> OpenWs() {
    return Open(kWsPort, L"/device", "<e xmlns:dd='u'><dd:MakeAndModel>M</dd:MakeAndModel></e>");
  }

  wchar_t m_buffer[400] = L"";
  std::uint32_t m_required = 0;
};

TEST_F(VariantsTest, ProbesDecideWhetherThereIsAProvider) {
  for (const Case& c : CasesHere("providers/probes.txt")) {
    const auto port = static_cast<std::uint32_t>(c.Number("port"));
    SCOPED_TRACE(c.Where());
    m_device->answers.clear();
    const auto provider = Open(port, c.Wide("path").c_str(), c.Text("body"));
    ASSERT_EQ(c.Text("there") == "yes", static_cast<bool>(provider));
    EXPECT_EQ(provider ? 2u : 1u, m_device->References()) << "a refused one gives back the address";
    EXPECT_EQ(port, provider ? provider->GetPort() : port);
  }
}

TEST_F(VariantsTest, NullAddressIsABadArgument) {
  for (const std::uint32_t port : {8080u, 7627u, 80u}) {
    SetLastError(0);
    EXPECT_FALSE(Make(port, nullptr));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
  }
}

TEST_F(VariantsTest, QuarnResolvesResourceTypesThroughTheTreeOnce) {
  if (UnderWine()) GTEST_SKIP() << "Wine's DOM answers //.[filter]/name wrongly";
  const auto opened =
      Open(kQuarnPort, L"/DevMgmt/DiscoveryTree.xml", ReadData("providers/discovery_tree.xml"));
  auto* const provider = dynamic_cast<QUARNProvider*>(opened.Get());
  ASSERT_NE(nullptr, provider);
  TakeCalls();
  const auto get = [&](const wchar_t* uri) {
    return provider->GetValue(uri, L"//v", m_buffer, 400, &m_required, 0, 600);
  };
  for (const Case& c : ReadCases("providers/quarn_resources.txt")) {
    SCOPED_TRACE(c.Where());
    m_device->Serve(kQuarnPort, c.Wide("path").c_str(), "<c><v>" + c.Where() + "</v></c>");
    EXPECT_HR(get(c.Wide("uri").c_str()), S_OK);
    EXPECT_EQ(ToWide(c.Where()), m_buffer);
    EXPECT_EQ(L"CreateHTTPRequest 8080, SetURI " + c.Wide("path") +
                  L", GetResponse, Dispose, ~HTTPRequest",
              TakeCalls());
  }
  EXPECT_HR(get(L"quarn:nowhere"), E_FAIL);
  EXPECT_HR(get(nullptr), E_FAIL);
  EXPECT_HR(provider->GetValue(L"/c.xml", nullptr, m_buffer, 400, &m_required, 1, 0), E_FAIL);
  EXPECT_HR(provider->GetResourceURI(L"quarn:twice", m_buffer, 3, &m_required, 0), E_OUTOFMEMORY);
  EXPECT_EQ(11u, m_required);
  EXPECT_HR(provider->GetResourceURI(L"quarn:none", m_buffer, 400, &m_required, 0), S_FALSE);
}

// Takes the UUID behind "urn:uuid:" out of an envelope, and leaves its standard form.
std::string TakeMessageId(std::string* envelope) {
  const std::size_t start = envelope->find("urn:uuid:") + 9;
  const std::string id = envelope->substr(start, 36);
  for (char& c : std::span(*envelope).subspan(start, 36)) {
    if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f')) c = 'x';
  }
  return id;
}

TEST_F(VariantsTest, WsPostsAnEnvelopeThatIsExactButForItsMessageId) {
  ASSERT_TRUE(OpenWs());
  EXPECT_EQ(
      L"CreateHTTPRequest 7627, SetMethod POST, SetURI /device, SetUserName guest, SetRequestData, "
      L"SetContentType application/soap+xml, GetResponse, Dispose, ~HTTPRequest",
      TakeCalls());
  std::string first = m_device->lastRequestBody;
  ASSERT_TRUE(OpenWs());
  EXPECT_NE(TakeMessageId(&first), TakeMessageId(&m_device->lastRequestBody));
  EXPECT_EQ(ReadData("providers/soap_get.txt"), first + '\n');
}

TEST_F(VariantsTest, WsPathIsTheNextToLastField) {
  const auto opened = OpenWs();
  auto* const provider = dynamic_cast<WSProvider*>(opened.Get());
  ASSERT_NE(nullptr, provider);
  TakeCalls();
  const auto refuses = [&](const wchar_t* uri) {
    EXPECT_HR(provider->GetResourcePath(uri, m_buffer, 400, &m_required), E_FAIL);
    EXPECT_EQ(0u, m_required);
    EXPECT_HR(provider->GetValue(uri, L"//x", m_buffer, 400, &m_required, 1, 0), E_FAIL);
  };
  for (const Case& c : ReadCases("providers/ws_paths.txt")) {
    SCOPED_TRACE(c.Where());
    if (!c.Find("path")) {
      refuses(c.Wide("uri").c_str());
      continue;
    }
    EXPECT_HR(provider->GetResourcePath(c.Wide("uri").c_str(), m_buffer, 400, &m_required), S_OK);
    EXPECT_EQ(c.Wide("path"), m_buffer);
    EXPECT_EQ(c.Wide("path").size() + 1, m_required);
  }
  refuses(nullptr);
  EXPECT_HR(provider->GetResourcePath(L"a:b:c", m_buffer, 2, &m_required), E_OUTOFMEMORY);
  EXPECT_EQ(3u, m_required);
  EXPECT_EQ(L"", TakeCalls()) << "no request was made";
}

TEST_F(VariantsTest, FactoriesTraceTheirOperations) {
  const TraceRecorder recorder(kTraceScope);
  EXPECT_EQ(nullptr, CreateWSProvider(m_device.Get()));
  EXPECT_TRUE(recorder.Text().starts_with(
      L"> Corvane::CreateWSProvider\n> Corvane::WSProviderImpl::Create\n> "));
}

}  // namespace
}  // namespace Corvane::Test
