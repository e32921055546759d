// Requests as an independent reader understands them.
#include <cups/ipp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "corvane/handles.h"
#include "ipp/ipp_operations.h"
#include "ipp/ipp_request_attributes.h"
#include "tests/ipp/callers_attribute.h"
#include "tests/support/hr.h"

namespace Corvane::Test {
namespace {

struct Body {
  char bytes[kIPPRequestSize];
  int length = 0;
  int read = 0;
};

ssize_t ReadBody(void* context, ipp_uchar_t* out, std::size_t bytes) {
  Body& body = *static_cast<Body*>(context);
  const int count = std::min(static_cast<int>(bytes), body.length - body.read);
  std::memcpy(out, body.bytes + body.read, static_cast<std::size_t>(count));
  body.read += count;
  return count;
}

// "group tag name count=values", a line for each attribute.
std::vector<std::string> Lines(ipp_t* message) {
  std::vector<std::string> lines;
  for (ipp_attribute_t* a = ippFirstAttribute(message); a; a = ippNextAttribute(message)) {
    const char* const name = ippGetName(a);
    char values[256];
    ippAttributeString(a, values, sizeof(values));
    lines.push_back(std::to_string(ippGetGroupTag(a)) + " " + ippTagString(ippGetValueTag(a)) +
                    " " + (name ? name : "(none)") + " " + std::to_string(ippGetCount(a)) + "=" +
                    values);
  }
  return lines;
}

void Fill(IPPRequestBase* request) {
  request->SetPrinterURI("ipp://printer/b");
  request->SetRequestingUserName("ann");
  request->SetDocumentUri("http://host/d.pdf");
  request->SetJobName("r\xC3\xA9sum\xC3\xA9");
  request->SetIPPAttributeFidelity(true);
  request->SetDocumentName("d.pdf");
  request->SetLastDocument(true);
  request->SetJobURI("ipp://printer/jobs/7");
  request->SetUsername("secret-user");
  request->SetPassword("secret-password");
  request->SetCopy(70000);
  request->SetPrintingSides(1);
  request->SetMultipleDocHandling(2);
  request->SetOrientationRequested(4);
  request->SetPrintQuality(5);
  request->SetPrinterResolution(600, 600);
  request->SetOutputMode(1);
}

// Only Print-Job sends them.
void AddRecords(IPPRequestBase* request) {
  request->AddIPPRequest(CallersText(kIPPOperationGroup, 0x49, "document-format", "image/urf"));
  request->AddIPPRequest(CallersText(kIPPOperationGroup, 0x41, "x-text", "t"));
  request->AddIPPRequest(CallersText(2, 0x44, "x-of-no-group", "t"));
  request->AddIPPRequest(CallersText(kIPPJobGroup, 0x44, "media", "iso_a4,na_letter,custom"));
  request->AddIPPRequest(CallersText(kIPPJobGroup, 0x30, "x-octets", "a=1;b=2"));
  request->AddIPPRequest(CallersNumbers(kIPPJobGroup, 0x23, "finishings", {4}));
  request->AddIPPRequest(CallersNumbers(kIPPJobGroup, 0x33, "page-ranges", {2, 9}));
  request->AddIPPRequest(CallersNumbers(kIPPJobGroup, 0x32, "printer-resolution", {600, 300, 3}));
  request->AddIPPRequest(CallersNumbers(kIPPJobGroup, 0x22, "x-boolean", {1}));
  // A collection, as only a blob can hold one; the literal's terminator is its last byte.
  static constexpr char kMedia[] =
      "\x34\0\x09"
      "media-col"
      "\0\0"
      "\x4A\0\0\0\x0A"
      "media-type"
      "\x44\0\0\0\x05"
      "plain"
      "\x37\0\0\0";
  request->AddIPPRequest(kIPPJobGroup, kMedia, sizeof(kMedia));
}

const std::string kUser = "1 nameWithoutLanguage requesting-user-name 1=ann";
const std::string kJobName = "1 nameWithoutLanguage job-name 1=r\xC3\xA9sum\xC3\xA9";
const std::string kDocument = "1 uri document-uri 1=http://host/d.pdf";
const std::string kFidelity = "1 boolean ipp-attribute-fidelity 1=true";
const std::string kDocumentName = "1 nameWithoutLanguage document-name 1=d.pdf";
const std::string kOther = "1 uri printer-uri 1=ipp://printer/b";
const std::string kOneCopy = "2 integer copies 1=1";
const std::string kCopies = "2 integer copies 1=70000";
const std::string kSides = "2 keyword sides 1=two-sided-long-edge";
const std::string kHandling =
    "2 keyword multiple-document-handling 1=separate_documents_collated_copies";
const std::string kOrientation = "2 integer orientation-requested 1=4";
const std::string kQuality = "2 integer print-quality 1=5";
const std::string kGray = "2 keyword print-color-mode 1=monochrome";

TEST(IppRequestCupsTest, ReadsEveryOperation) {
  const std::vector<std::string> printJob = {kOther,
                                             kUser,
                                             kJobName,
                                             kFidelity,
                                             kDocumentName,
                                             "1 mimeMediaType document-format 1=image/urf",
                                             "1 textWithoutLanguage x-text 1=t",
                                             kCopies,
                                             kSides,
                                             kOrientation,
                                             kQuality,
                                             kGray,
                                             "2 keyword media 3=iso_a4,na_letter,custom",
                                             "2 octetString x-octets 1=a=1;b=2",
                                             "2 enum finishings 1=staple",
                                             "2 rangeOfInteger page-ranges 1=2-9",
                                             "2 resolution printer-resolution 1=600x300dpi",
                                             "2 boolean x-boolean 1=true",
                                             "2 collection media-col 1={media-type=plain}"};
  const std::vector<std::string> getJob = {"1 uri job-uri 1=ipp://printer/jobs/1",
                                           "1 keyword requested-attributes 1=job-state,job-id"};
  const std::vector<std::string> getJobs = {
      "1 nameWithoutLanguage requesting-user-name 1=bob", "1 boolean my-jobs 1=true",
      "1 keyword which-jobs 1=not-completed", "1 keyword requested-attributes 1=all"};
  const std::vector<std::string> getPrinter = {
      "1 keyword requested-attributes 3=printer-name,job-state,job-id"};
  const struct {
    int operation;
    ipp_op_t sent;
    std::vector<std::string> full;
    std::vector<std::string> fresh;
  } operations[] = {
      {2, IPP_OP_PRINT_JOB, printJob, {kOneCopy}},
      {50, IPP_OP_PRINT_JOB, printJob, {kOneCopy}},
      {3,
       IPP_OP_PRINT_URI,
       {kOther, kUser, kDocument, kJobName, kFidelity, kDocumentName, kCopies, kSides, kOrientation,
        kQuality, kGray},
       {kOneCopy}},
      {5,
       IPP_OP_CREATE_JOB,
       {kUser, kJobName, kFidelity, kCopies, kSides, kHandling, kOrientation, kQuality},
       {kOneCopy}},
      {7,
       IPP_OP_SEND_URI,
       {kUser, kDocument, kJobName, kFidelity, kDocumentName, "1 boolean last-document 1=true",
        kHandling, kCopies, kSides, kOrientation, kQuality},
       {kOneCopy}},
      {8, IPP_OP_CANCEL_JOB, {"1 uri job-uri 1=ipp://printer/jobs/7", kUser}, {}},
      {9, IPP_OP_GET_JOB_ATTRIBUTES, getJob, getJob},
      {10, IPP_OP_GET_JOBS, getJobs, getJobs},
      {11, IPP_OP_GET_PRINTER_ATTRIBUTES, getPrinter, getPrinter},
  };
  for (const auto& [operation, sent, full, fresh] : operations) {
    for (const bool filled : {true, false}) {
      SCOPED_TRACE(std::to_string(operation) + (filled ? " filled" : " fresh"));
      IPPOperations encoder(nullptr);
      encoder.SetResourceURI("ipp://printer/a");
      encoder.SetJobURI("ipp://printer/jobs/1");
      encoder.SetAttributeName("job-state,job-id");
      encoder.SetRequestedUserName("bob");
      const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
      if (filled) {
        Fill(request.Get());
        AddRecords(request.Get());
      }
      Body body;
      EXPECT_HR(encoder.FormIPPRequestBasedOnOperation(body.bytes, operation, &body.length,
                                                       request.Get()),
                S_OK);

      std::vector<std::string> expected = {"1 charset attributes-charset 1=utf-8",
                                           "1 naturalLanguage attributes-natural-language 1=en"};
      if (operation != 8) expected.emplace_back("1 uri printer-uri 1=ipp://printer/a");
      const auto& own = filled ? full : fresh;
      expected.insert(expected.end(), own.begin(), own.end());

      const std::unique_ptr<ipp_t, void (*)(ipp_t*)> message(ippNew(), ippDelete);
      EXPECT_EQ(IPP_STATE_DATA, ippReadIO(&body, ReadBody, 1, nullptr, message.get()));
      EXPECT_EQ(body.length, body.read);
      EXPECT_EQ(sent, ippGetOperation(message.get()));
      EXPECT_EQ(100, ippGetRequestId(message.get()));
      int minor = -1;
      EXPECT_EQ(2, ippGetVersion(message.get(), &minor));
      EXPECT_EQ(0, minor);
      EXPECT_EQ(expected, Lines(message.get()));
    }
  }
}

}  // namespace
}  // namespace Corvane::Test
