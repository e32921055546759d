// Numbers of the IPP protocol (RFC 8010, RFC 8011) that are used here.
#ifndef CORVANE_IPP_WIRE_CODES_H_
#define CORVANE_IPP_WIRE_CODES_H_

namespace Corvane {

// Operations (RFC 8011, 5.4.15).
namespace IPPOperation {
constexpr int kPrintJob = 0x02;
constexpr int kPrintUri = 0x03;
constexpr int kCreateJob = 0x05;
constexpr int kSendUri = 0x07;
constexpr int kCancelJob = 0x08;
constexpr int kGetJobAttributes = 0x09;
constexpr int kGetJobs = 0x0A;
constexpr int kGetPrinterAttributes = 0x0B;
// The system's own: a Print-Job whose credentials go to the HTTP request.
constexpr int kPrintJobWithCredentials = 50;
}  // namespace IPPOperation

// Status codes (RFC 8011, appendix B).
namespace IPPStatus {
constexpr int kOk = 0x0000;
constexpr int kLastSuccess = 0x00FF;  // B.1.2
constexpr int kNotAuthenticated = 0x0402;
constexpr int kNotAuthorized = 0x0403;
constexpr int kNotPossible = 0x0404;
constexpr int kServerErrorBusy = 0x0507;
constexpr int kServerErrorJobCanceled = 0x0508;
}  // namespace IPPStatus

// Delimiter and value tags (RFC 8010, 3.5).
namespace IPPTag {
constexpr int kOperationAttributes = 0x01;
constexpr int kJobAttributes = 0x02;
constexpr int kEndOfAttributes = 0x03;
constexpr int kPrinterAttributes = 0x04;
constexpr int kUnsupportedAttributes = 0x05;
constexpr int kFirstValue = 0x10;  // everything below delimits
constexpr int kInteger = 0x21;
constexpr int kBoolean = 0x22;
constexpr int kEnum = 0x23;
constexpr int kOctetString = 0x30;
constexpr int kDateTime = 0x31;
constexpr int kResolution = 0x32;
constexpr int kRangeOfInteger = 0x33;
constexpr int kBegCollection = 0x34;
constexpr int kTextWithLanguage = 0x35;
constexpr int kNameWithLanguage = 0x36;
constexpr int kEndCollection = 0x37;
constexpr int kText = 0x41;
constexpr int kName = 0x42;
constexpr int kKeyword = 0x44;
constexpr int kUri = 0x45;
constexpr int kUriScheme = 0x46;
constexpr int kCharset = 0x47;
constexpr int kNaturalLanguage = 0x48;
constexpr int kMimeMediaType = 0x49;
constexpr int kMemberAttrName = 0x4A;
}  // namespace IPPTag

}  // namespace Corvane

#endif  // CORVANE_IPP_WIRE_CODES_H_
