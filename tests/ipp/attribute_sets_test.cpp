#include <gtest/gtest.h>

#include <cstring>

#include "corvane/handles.h"
#include "corvane/ipp_response.h"
#include "ipp/ipp_request_attributes.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

RefPtr<IPPRequestBase> NewRequest() { return RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest()); }

TEST(IppRequestTest, BeginsWithThePrintersOwnSettings) {
  const auto request = NewRequest();
  EXPECT_EQ(1, request->GetCopy());
  EXPECT_EQ(3, request->GetPrintingSides());
  EXPECT_EQ(2, request->GetOrientationRequested());
  EXPECT_EQ(2, request->GetPrintQuality());
  EXPECT_EQ(-1, request->GetMultipleDocHandling());
  EXPECT_EQ(0, request->GetOutputMode());
  EXPECT_TRUE(request->GetMarginsPreApplied());
  EXPECT_FALSE(request->GetLastDocument());
  EXPECT_FALSE(request->GetIPPAttributeFidelity());
  EXPECT_TRUE(request->GetExtraHTTPHeader().empty());
  EXPECT_EQ(nullptr, request->GetJobName());
  std::int32_t crossFeed = 1;
  request->GetPrinterResolution(&crossFeed, nullptr);
  EXPECT_EQ(0, crossFeed);
}

// Each setter, and that it touches no neighbour.
TEST(IppRequestTest, KeepsItsOwnCopyOfEachText) {
  using Set = HRESULT (IPPRequestBase::*)(const char*);
  using Get = const char* (IPPRequestBase::*)();
  static const std::pair<Set, Get> kTexts[] = {
      {&IPPRequestBase::SetPrinterURI, &IPPRequestBase::GetPrinterURI},
      {&IPPRequestBase::SetRequestingUserName, &IPPRequestBase::GetRequestingUserName},
      {&IPPRequestBase::SetDocumentUri, &IPPRequestBase::GetDocumentUri},
      {&IPPRequestBase::SetJobName, &IPPRequestBase::GetJobName},
      {&IPPRequestBase::SetDocumentName, &IPPRequestBase::GetDocumentName},
      {&IPPRequestBase::SetJobURI, &IPPRequestBase::GetJobURI},
      {&IPPRequestBase::SetUsername, &IPPRequestBase::GetUsername},
      {&IPPRequestBase::SetPassword, &IPPRequestBase::GetPassword}};
  const auto request = NewRequest();
  int number = 0;
  for (const auto& [set, get] : kTexts) {
    std::string text = "text " + std::to_string(number++);
    EXPECT_EQ(S_OK, (request.Get()->*set)("earlier"));
    EXPECT_EQ(S_OK, (request.Get()->*set)(text.c_str()));
    text.assign(text.size(), 'x');
  }
  number = 0;
  for (const auto& [set, get] : kTexts) {
    EXPECT_EQ("text " + std::to_string(number++), (request.Get()->*get)());
    (request.Get()->*set)((request.Get()->*get)());
    EXPECT_NE(nullptr, (request.Get()->*get)());
    (request.Get()->*set)(nullptr);
    EXPECT_EQ(nullptr, (request.Get()->*get)());
  }
}

TEST(IppRequestTest, KeepsOneHeaderOfAName) {
  const auto request = NewRequest();
  request->AddExtraHTTPHeader(L"X", nullptr);
  request->AddExtraHTTPHeader(nullptr, L"1");
  EXPECT_TRUE(request->GetExtraHTTPHeader().empty());
  request->AddExtraHTTPHeader(L"X", L"1");
  request->AddExtraHTTPHeader(L"X", L"2");
  request->AddExtraHTTPHeader(L"x", L"3");
  EXPECT_EQ((IPPHeaderMap{{L"X", L"2"}, {L"x", L"3"}}), request->GetExtraHTTPHeader());
  request->AddExtraHTTPHeader(L"X", nullptr);
  EXPECT_EQ((IPPHeaderMap{{L"x", L"3"}}), request->GetExtraHTTPHeader());
}

TEST(IppRequestTest, KeepsTheCallersOwnAttributes) {
  const auto request = RefPtr<IPPRequestAttributes>::Adopt(IPPRequestAttributes::Create());
  const TraceRecorder recorder(kTraceInfo);
  request->AddIPPRequest(0, "abc", 0);
  request->AddIPPRequest(0, nullptr, 5);
  request->AddIPPRequest(0, "abc", -1);
  EXPECT_TRUE(recorder.HasMessage(16, L"Corvane::IPPRequestAttributes::AddIPPRequest",
                                  L"Invalid input parameters.. attributeblobSize=5"));
  EXPECT_EQ(3u, recorder.Lines().size());
  EXPECT_TRUE(request->GetBlobVector().empty());

  char bytes[] = {1, 0, 3};
  request->AddIPPRequest(1, bytes, 3);
  bytes[0] = 9;
  ASSERT_EQ(1u, request->GetBlobVector().size());
  const IPPAttributeBlob& blob = *request->GetBlobVector()[0];
  EXPECT_EQ(1u, blob.group);
  ASSERT_EQ(3, blob.blobSize);
  EXPECT_EQ(0, std::memcmp("\1\0\3", blob.blobArray.get(), 3));

  IPPAttributeStruct attribute{};
  std::strcpy(attribute.name, "copies");
  attribute.value.numbers[0] = 2;
  request->AddIPPRequest(attribute);
  request->AddIPPRequest(attribute);
  ASSERT_EQ(2u, request->GetAttributesVector().size());
  EXPECT_STREQ("copies", request->GetAttributesVector()[1].name);
}

TEST(IppResponseTest, HoldsWhatItWasGiven) {
  const auto response = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
  EXPECT_EQ(nullptr, response->GetSuccessStatus());
  EXPECT_EQ(nullptr, response->GetJobStateReasons());
  EXPECT_EQ(0, response->GetJobID());
  response->SetSuccess("0");
  response->SetRequestID("100");
  response->SetDocumentAccessError("e");
  response->SetJobURI("first");
  response->SetJobURI("ipp://p/1");
  response->SetJobID(7);
  response->SetJobState("Pending");
  response->SetJobStateReasons("none");
  EXPECT_STREQ("0", response->GetSuccessStatus());
  EXPECT_STREQ("100", response->GetRequestID());
  EXPECT_STREQ("e", response->GetDocumentAccessError());
  EXPECT_STREQ("ipp://p/1", response->GetJobURI());
  EXPECT_EQ(7, response->GetJobID());
  EXPECT_STREQ("Pending", response->GetJobState());
  EXPECT_STREQ("none", response->GetJobStateReasons());
}

}  // namespace
}  // namespace Corvane::Test
