#include <gtest/gtest.h>

#include <cstring>

#include "corvane/handles.h"
#include "ipp/ipp_request_attributes.h"
#include "tests/support/request_settings.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

class IppRequestTest : public ::testing::Test {
 protected:
  const RefPtr<IPPRequestAttributes> m_request =
      RefPtr<IPPRequestAttributes>::Adopt(IPPRequestAttributes::Create());
  IPPRequestBase& m_base = *m_request.Get();
};

// Each setter, and that it touches no neighbour.
TEST_F(IppRequestTest, KeepsEachSetting) {
  EXPECT_TRUE(m_base.GetMarginsPreApplied());
  EXPECT_FALSE(m_base.GetLastDocument());
  EXPECT_FALSE(m_base.GetIPPAttributeFidelity());
  std::int32_t crossFeed = 1;
  m_base.GetPrinterResolution(&crossFeed, nullptr);
  EXPECT_EQ(0, crossFeed);
  for (const auto& number : kNumberSettings) {
    EXPECT_EQ(number.atFirst, (m_base.*number.get)()) << number.name;
    (m_base.*number.set)(number.name[0] * 100 + number.name[4]);
  }
  for (const auto& text : kTextSettings) {
    EXPECT_EQ(nullptr, (m_base.*text.get)()) << text.name;
    std::string own = text.name;
    EXPECT_EQ(S_OK, (m_base.*text.set)("earlier"));
    EXPECT_EQ(S_OK, (m_base.*text.set)(own.c_str()));
    own.assign(own.size(), 'x');
  }
  for (const auto& number : kNumberSettings) {
    EXPECT_EQ(number.name[0] * 100 + number.name[4], (m_base.*number.get)()) << number.name;
  }
  for (const auto& text : kTextSettings) {
    (m_base.*text.set)((m_base.*text.get)());
    EXPECT_STREQ(text.name, (m_base.*text.get)());
    (m_base.*text.set)(nullptr);
    EXPECT_EQ(nullptr, (m_base.*text.get)());
  }
}

TEST_F(IppRequestTest, KeepsOneHeaderOfAName) {
  m_base.AddExtraHTTPHeader(L"X", nullptr);
  m_base.AddExtraHTTPHeader(nullptr, L"1");
  EXPECT_TRUE(m_base.GetExtraHTTPHeader().empty());
  m_base.AddExtraHTTPHeader(L"X", L"1");
  m_base.AddExtraHTTPHeader(L"X", L"2");
  m_base.AddExtraHTTPHeader(L"x", L"3");
  EXPECT_EQ((IPPHeaderMap{{L"X", L"2"}, {L"x", L"3"}}), m_base.GetExtraHTTPHeader());
  m_base.AddExtraHTTPHeader(L"X", nullptr);
  EXPECT_EQ((IPPHeaderMap{{L"x", L"3"}}), m_base.GetExtraHTTPHeader());
}

TEST_F(IppRequestTest, CopiesBlobsThatAreAny) {
  const TraceRecorder recorder(kTraceInfo);
  m_request->AddIPPRequest(0, "abc", 0);
  m_request->AddIPPRequest(0, nullptr, 5);
  m_request->AddIPPRequest(0, "abc", -1);
  EXPECT_TRUE(recorder.HasMessage(16, L"Corvane::IPPRequestAttributes::AddIPPRequest",
                                  L"Invalid input parameters.. attributeblobSize=5"));
  EXPECT_EQ(3u, recorder.Lines().size());
  EXPECT_TRUE(m_request->GetBlobVector().empty());
  char bytes[] = {1, 0, 3};
  m_request->AddIPPRequest(1, bytes, 3);
  bytes[0] = 9;
  ASSERT_EQ(1u, m_request->GetBlobVector().size());
  const IPPAttributeBlob& blob = *m_request->GetBlobVector()[0];
  EXPECT_EQ(1u, blob.group);
  ASSERT_EQ(3, blob.blobSize);
  EXPECT_EQ(0, std::memcmp("\1\0\3", blob.blobArray.get(), 3));
}

}  // namespace
}  // namespace Corvane::Test
