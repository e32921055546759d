#include "providers/plsxml_provider_impl.h"
#include "providers/quarn_provider_impl.h"
#include "providers/ws_provider_impl.h"
#include "tests/support/device_test.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kTree[] = L"/DevMgmt/DiscoveryTree.xml";

class VariantsTest : public DeviceTest {
 protected:
  wchar_t m_buffer[400] = L"";
  std::uint32_t m_required = 0;
};

class QUARNProviderTest : public VariantsTest {
 protected:
  void SetUp() override {
    if (UnderWine()) GTEST_SKIP() << "Wine's DOM answers //.[filter]/name wrongly";
  }
  RefPtr<QUARNProvider> Open(const std::string& tree) {
    m_device->Serve(8080, kTree, tree);
    return RefPtr<QUARNProvider>::Adopt(CreateQUARNProvider(m_device.Get()));
  }
};

TEST_F(QUARNProviderTest, NeedsTheProductConfigurationInTheTree) {
  const auto tree = [](const std::string& type) {
    return "<t xmlns:dd='urn:dd'><r><dd:ResourceType>" + type +
           "</dd:ResourceType><dd:ResourceURI/></r></t>";
  };
  EXPECT_TRUE(Open(tree("quarn:zqQuarnProductConfigDyn"))) << "its URI may be empty";
  EXPECT_FALSE(Open(tree("quarn:other")));
  EXPECT_FALSE(Open(tree("quarn:zqQuarnProductConfigDyn2")));
  EXPECT_FALSE(Open("<r>")) << "a tree that is no XML";
  m_device->answers.clear();
  EXPECT_EQ(nullptr, CreateQUARNProvider(m_device.Get()));
  EXPECT_EQ(1u, m_device->References()) << "a refused provider gives back the address";
}

TEST_F(QUARNProviderTest, ResolvesResourceTypesThroughTheTreeOnce) {
  const auto provider = Open(ReadData("providers/discovery_tree.xml"));
  ASSERT_TRUE(provider);
  EXPECT_EQ(std::wstring(L"CreateHTTPRequest 8080, SetURI ") + kTree +
                L", GetResponse, Dispose, ~HTTPRequest",
            TakeCalls());
  const auto get = [&](const wchar_t* uri) {
    return provider->GetValue(uri, L"//v", m_buffer, 400, &m_required, 0, 600);
  };
  for (const Case& c : ReadCases("providers/quarn_resources.txt")) {
    SCOPED_TRACE(c.Where());
    m_device->Serve(8080, c.Wide("path").c_str(), "<c><v>" + c.Where() + "</v></c>");
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

class WSProviderTest : public VariantsTest {
 protected:
  RefPtr<WSProvider> Open() {
    m_device->Serve(7627, L"/device", "<e xmlns:dd='u'><dd:MakeAndModel>M</dd:MakeAndModel></e>");
    return RefPtr<WSProvider>::Adopt(CreateWSProvider(m_device.Get()));
  }
};

// Takes the UUID behind "urn:uuid:" out of an envelope, and leaves its standard form.
std::string TakeMessageId(std::string* envelope) {
  const std::size_t start = envelope->find("urn:uuid:") + 9;
  const std::string id = envelope->substr(start, 36);
  for (char& c : std::span(*envelope).subspan(start, 36)) {
    if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f')) c = 'x';
  }
  return id;
}

TEST_F(WSProviderTest, PostsAnEnvelopeThatIsExactButForItsMessageId) {
  ASSERT_TRUE(Open());
  EXPECT_EQ(
      L"CreateHTTPRequest 7627, SetMethod POST, SetURI /device, SetUserName guest, SetRequestData, "
      L"SetContentType application/soap+xml, GetResponse, Dispose, ~HTTPRequest",
      TakeCalls());
  std::string first = m_device->lastRequestBody;
  ASSERT_TRUE(Open());
  EXPECT_NE(TakeMessageId(&first), TakeMessageId(&m_device->lastRequestBody));
  EXPECT_EQ(ReadData("providers/soap_get.txt"), first + '\n');
}

TEST_F(WSProviderTest, PathIsTheNextToLastField) {
  const auto provider = Open();
  ASSERT_TRUE(provider);
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

TEST_F(VariantsTest, ProbesDecideWhetherThereIsAProvider) {
  m_device->Serve(7627, L"/device", "<e xmlns:dd='u'><dd:Model/></e>");
  EXPECT_EQ(nullptr, CreateWSProvider(m_device.Get()));
  EXPECT_EQ(nullptr, PLSXMLProviderImpl::Create(m_device.Get()));
  TakeCalls();
  m_device->Serve(80, L"/zq/device/product_information.xml", "<p><ProductSerialNumber/></p>");
  const auto provider = RefPtr<PLSXMLProvider>::Adopt(PLSXMLProviderImpl::Create(m_device.Get()));
  ASSERT_TRUE(provider);
  EXPECT_EQ(80u, provider->GetPort());
  EXPECT_EQ(
      L"CreateHTTPRequest 80, SetURI /zq/device/product_information.xml, GetResponse, Dispose, "
      L"~HTTPRequest",
      TakeCalls());
}

TEST_F(VariantsTest, NullAddressIsABadArgument) {
  const auto expect = [](IXMLProvider* provider) {
    EXPECT_EQ(nullptr, provider);
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
    SetLastError(0);
  };
  SetLastError(0);
  expect(CreateQUARNProvider(nullptr));
  expect(CreateWSProvider(nullptr));
  expect(PLSXMLProviderImpl::Create(nullptr));
}

TEST_F(VariantsTest, FactoriesTraceTheirOperations) {
  const TraceRecorder recorder(kTraceScope);
  EXPECT_EQ(nullptr, CreateWSProvider(m_device.Get()));
  EXPECT_TRUE(recorder.Text().starts_with(
      L"> Corvane::CreateWSProvider\n> Corvane::WSProviderImpl::Create\n> "));
}

}  // namespace
}  // namespace Corvane::Test
