#include <algorithm>
#include <string>

#include "providers/plsxml_provider_impl.h"
#include "providers/quarn_provider_impl.h"
#include "providers/ws_provider_impl.h"
#include "tests/support/dom.h"
#include "tests/support/fake_device.h"
#include "tests/support/hr.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kTree[] = L"/DevMgmt/DiscoveryTree.xml";

std::string Resource(const std::string& type, const std::string& uri) {
  return "<r><dd:ResourceType>" + type + "</dd:ResourceType><dd:ResourceURI>" + uri +
         "</dd:ResourceURI></r>";
}

std::string Tree(const std::string& resources) {
  return "<t xmlns:dd='urn:dd'>" + resources + "</t>";
}

class VariantsTest : public testing::Test {
 protected:
  RefPtr<FakeDevice> m_device = RefPtr<FakeDevice>::Share(new FakeDevice);
  wchar_t m_buffer[400] = L"";
  std::uint32_t m_required = 0;
};

class QUARNProviderTest : public VariantsTest {
 protected:
  void SetUp() override {
    if (UnderWine()) GTEST_SKIP() << "Wine's DOM answers //.[filter]/name wrongly";
  }
  RefPtr<QUARNProvider> Open(const std::string& resources) {
    m_device->Serve(8080, kTree, Tree(resources));
    return RefPtr<QUARNProvider>::Adopt(CreateQUARNProvider(m_device.Get()));
  }
};

TEST_F(QUARNProviderTest, NeedsTheProductConfigurationInTheTree) {
  const std::string config = Resource("quarn:zqQuarnProductConfigDyn", "/c.xml");
  EXPECT_TRUE(Open(config));
  EXPECT_TRUE(Open(Resource("quarn:zqQuarnProductConfigDyn", ""))) << "its URI may be empty";
  EXPECT_FALSE(Open(Resource("quarn:other", "/c.xml")));
  EXPECT_FALSE(Open(Resource("quarn:zqQuarnProductConfigDyn2", "/c.xml")));
  EXPECT_FALSE(Open("<r>")) << "a tree that is no XML";
  m_device->answers.clear();
  EXPECT_FALSE(RefPtr<QUARNProvider>::Adopt(CreateQUARNProvider(m_device.Get())));
  EXPECT_EQ(1u, m_device->References()) << "a refused provider gives back the address";
}

TEST_F(QUARNProviderTest, ResolvesResourceTypesThroughTheTreeOnce) {
  const std::string longUri = "/" + std::string(300, 'x') + ".xml";
  const auto provider = Open(
      Resource("quarn:zqQuarnProductConfigDyn", "/c.xml") + Resource("quarn:twice", "/first.xml") +
      Resource("quarn:twice", "/second.xml") + Resource("quarn:long", longUri));
  ASSERT_TRUE(provider);
  m_device->Serve(8080, L"/c.xml", "<c><v>config</v></c>");
  m_device->Serve(8080, L"/first.xml", "<c><v>first</v></c>");
  m_device->Serve(8080, std::wstring(longUri.begin(), longUri.end()).c_str(), "<c><v>long</v></c>");
  m_device->Serve(8080, L"quarn:unlisted", "<c><v>as it is</v></c>");
  m_device->Serve(8080, L"", "<c><v>empty path</v></c>");
  static const struct {
    const char* name;
    const wchar_t* uri;
    HRESULT result;
    const wchar_t* text;
  } kCases[] = {
      {"path", L"/c.xml", S_OK, L"config"},
      {"type", L"quarn:zqQuarnProductConfigDyn", S_OK, L"config"},
      {"first of two", L"quarn:twice", S_OK, L"first"},
      {"long URI", L"quarn:long", S_OK, L"long"},
      {"type that the tree lacks is the path", L"quarn:unlisted", S_OK, L"as it is"},
      {"type that nobody serves", L"quarn:nowhere", E_FAIL, L""},
      {"empty is a path", L"", S_OK, L"empty path"},
      {"null", nullptr, E_FAIL, L""},
  };
  for (const auto& c : kCases) {
    m_buffer[0] = L'\0';
    EXPECT_HR(provider->GetValue(c.uri, L"//v", m_buffer, 400, &m_required, 1, 600), c.result)
        << c.name;
    EXPECT_STREQ(c.text, m_buffer) << c.name;
  }
  EXPECT_HR(provider->GetValue(L"/c.xml", nullptr, m_buffer, 400, &m_required, 1, 0), E_FAIL);
  EXPECT_EQ(1, std::count(m_device->calls.begin(), m_device->calls.end(),
                          std::wstring(L"SetURI ") + kTree));
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

TEST_F(WSProviderTest, PostsInTheStatedOrder) {
  ASSERT_TRUE(Open());
  const std::vector<std::wstring> expected = {L"CreateHTTPRequest 7627",
                                              L"SetMethod POST",
                                              L"SetURI /device",
                                              L"SetUserName guest",
                                              L"SetRequestData",
                                              L"SetContentType application/soap+xml",
                                              L"GetResponse",
                                              L"Dispose",
                                              L"~HTTPRequest"};
  EXPECT_EQ(expected, m_device->calls);
}

// The UUID behind "urn:uuid:", which must have its standard form.
std::string MessageIdOf(const std::string& envelope) {
  constexpr char kMark[] = "urn:uuid:";
  std::string id = envelope.substr(envelope.find(kMark) + sizeof(kMark) - 1, 36);
  std::string form = id;
  for (char& c : form) {
    if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f')) c = 'x';
  }
  EXPECT_EQ("xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", form);
  return id;
}

TEST_F(WSProviderTest, EnvelopeIsExactButForItsMessageId) {
  ASSERT_TRUE(Open());
  const std::string first = m_device->lastRequestBody;
  ASSERT_TRUE(Open());
  const std::string second = m_device->lastRequestBody;
  const std::string ids[] = {MessageIdOf(first), MessageIdOf(second)};
  EXPECT_NE(ids[0], ids[1]);
  const std::string expected =
      "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\" "
      "xmlns:a=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\"><s:Header>"
      "<a:Action "
      "s:mustUnderstand=\"1\">http://schemas.xmlsoap.org/ws/2004/09/transfer/Get</a:Action>"
      "<h:ResourceURI xmlns:h=\"http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd\" "
      "xmlns=\"http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd\" "
      "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
      "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">"
      "urn:zq:imaging:con:service:device:DeviceService</h:ResourceURI>"
      "<a:MessageID>urn:uuid:" +
      ids[0] +
      "</a:MessageID>"
      "<a:ReplyTo><a:Address>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous"
      "</a:Address></a:ReplyTo>"
      "<a:To s:mustUnderstand=\"1\">https://printer.example:7627/device</a:To></s:Header>"
      "<s:Body xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
      "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"/></s:Envelope>";
  EXPECT_EQ(expected, first);
}

TEST_F(WSProviderTest, PathIsTheNextToLastField) {
  const auto provider = Open();
  ASSERT_TRUE(provider);
  const std::size_t callsBefore = m_device->calls.size();
  static const struct {
    const wchar_t* uri;
    HRESULT result;
    const wchar_t* path;
  } kCases[] = {
      {L"urn:zq:imaging:con:service:device:DeviceService", S_OK, L"/device"},
      {L"a:b:c", S_OK, L"/b"},
      {L":b:", S_OK, L"/b"},
      {L"a::c", S_OK, L"/"},
      {L"::", S_OK, L"/"},
      {L"nocolon", E_FAIL, L""},
      {L"one:colon", E_FAIL, L""},
      {L":", E_FAIL, L""},
      {L"", E_FAIL, L""},
      {nullptr, E_FAIL, L""},
  };
  for (const auto& c : kCases) {
    m_buffer[0] = L'\0';
    m_required = 99;
    EXPECT_HR(provider->GetResourcePath(c.uri, m_buffer, 400, &m_required), c.result)
        << (c.uri ? c.uri : L"null");
    EXPECT_STREQ(c.path, m_buffer);
    EXPECT_EQ(c.result == S_OK ? wcslen(c.path) + 1 : 0, m_required);
    if (c.result != S_OK) {
      EXPECT_HR(provider->GetValue(c.uri, L"//x", m_buffer, 400, &m_required, 1, 0), E_FAIL);
    }
  }
  EXPECT_HR(provider->GetResourcePath(L"a:b:c", m_buffer, 2, &m_required), E_OUTOFMEMORY);
  EXPECT_EQ(3u, m_required);
  EXPECT_EQ(callsBefore, m_device->calls.size()) << "no request was made";
}

TEST_F(VariantsTest, ProbesDecideWhetherThereIsAProvider) {
  m_device->Serve(7627, L"/device", "<e xmlns:dd='u'><dd:Model/></e>");
  EXPECT_FALSE(RefPtr<WSProvider>::Adopt(CreateWSProvider(m_device.Get())));
  EXPECT_FALSE(RefPtr<PLSXMLProvider>::Adopt(PLSXMLProviderImpl::Create(m_device.Get())));
  m_device->calls.clear();
  m_device->Serve(80, L"/zq/device/product_information.xml", "<p><ProductSerialNumber/></p>");
  const auto provider = RefPtr<PLSXMLProvider>::Adopt(PLSXMLProviderImpl::Create(m_device.Get()));
  ASSERT_TRUE(provider);
  EXPECT_EQ(80u, provider->GetPort());
  const std::vector<std::wstring> expected = {L"CreateHTTPRequest 80",
                                              L"SetURI /zq/device/product_information.xml",
                                              L"GetResponse", L"Dispose", L"~HTTPRequest"};
  EXPECT_EQ(expected, m_device->calls);
}

TEST_F(VariantsTest, NullAddressIsABadArgument) {
  for (int variant = 0; variant < 3; ++variant) {
    SetLastError(0);
    const bool made = variant == 0   ? CreateQUARNProvider(nullptr) != nullptr
                      : variant == 1 ? CreateWSProvider(nullptr) != nullptr
                                     : PLSXMLProviderImpl::Create(nullptr) != nullptr;
    EXPECT_FALSE(made);
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
  }
}

TEST_F(VariantsTest, FactoriesTraceTheirOperations) {
  const TraceRecorder recorder(kTraceScope);
  EXPECT_EQ(nullptr, CreateWSProvider(m_device.Get()));
  const std::vector<std::wstring> expected = {
      L"Corvane::CreateWSProvider",           L"Corvane::WSProviderImpl::Create",
      L"Corvane::XMLProvider::XMLProvider",   L"Corvane::WSProviderImpl::WSProviderImpl",
      L"Corvane::XMLProvider::GetValue",      L"Corvane::XMLProvider::GetDOM",
      L"Corvane::WSProviderImpl::GetContent", L"Corvane::WSProviderImpl::~WSProviderImpl",
      L"Corvane::XMLProvider::~XMLProvider"};
  EXPECT_EQ(expected, recorder.Entered());
}

}  // namespace
}  // namespace Corvane::Test
