// The body of a request: header, the operation's attributes, the caller's own.
#include <cstring>
#include <string>

#include "core/trace.h"
#include "ipp/attribute_table.h"
#include "ipp/ipp_operations.h"
#include "ipp/ipp_request_attributes.h"
#include "ipp/wire/codes.h"
#include "ipp/wire/writer.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr std::int32_t kPrintersOwnSides = 3;
constexpr std::int32_t kPrintersOwnEnum = 2;  // orientation and quality: lower values are none

const char* SidesKeyword(std::int32_t selector) {
  static constexpr const char* kKeywords[] = {"one-sided", "two-sided-long-edge",
                                              "two-sided-short-edge"};
  return selector >= 0 && selector < kPrintersOwnSides ? kKeywords[selector] : nullptr;
}

// With underscores, as devices in the field know them; RFC 8011, 5.2.4, has hyphens.
const char* DocumentHandlingKeyword(std::int32_t selector) {
  static constexpr const char* kKeywords[] = {"separate_documents_uncollated_copies",
                                              "separate_documents_collated_copies",
                                              "single_document_new_sheet"};
  return selector >= 1 && selector <= 3 ? kKeywords[selector - 1] : nullptr;
}

// A text of the caller's array, which ends with the array at the latest.
template <std::size_t Size>
std::string_view BoundedText(const char (&text)[Size]) {
  return {text, strnlen(text, Size)};
}

IPPWriter RequestWriter(char* buffer, int* position) {
  return IPPWriter({buffer, std::size_t{kIPPRequestSize}}, position);
}

std::string_view AttributeView(const char* text) {
  return text ? std::string_view(text) : std::string_view();
}

int AddCallersAttribute(const IPPAttributeStruct& attribute, IPPWriter body) {
  const std::string_view name = BoundedText(attribute.name);
  const auto& numbers = attribute.value.numbers;
  const std::string_view text = BoundedText(attribute.value.text);
  switch (attribute.valueTag) {
    case IPPTag::kInteger:
    case IPPTag::kEnum:
      return body.Integer(attribute.valueTag, name, numbers[0]);
    case IPPTag::kBoolean:
      return body.Boolean(name, attribute.value.boolean);
    case IPPTag::kResolution:
      return body.Resolution(name, static_cast<unsigned char>(numbers[2]), numbers[0], numbers[1]);
    case IPPTag::kRangeOfInteger:
      return body.Range(name, numbers[0], numbers[1]);
    case IPPTag::kOctetString:
    case IPPTag::kText:
    case IPPTag::kName:
    case IPPTag::kKeyword:
    case IPPTag::kUri:
    case IPPTag::kUriScheme:
    case IPPTag::kCharset:
    case IPPTag::kNaturalLanguage:
    case IPPTag::kMimeMediaType:
      return body.Attributes(attribute.valueTag, name, text);
    default:
      return body.Attribute(attribute.valueTag, name, text);
  }
}

HRESULT EncodingResult(bool isWritten) { return isWritten ? S_OK : E_FAIL; }

// What the request of a job may carry. Each is written if it is set, and false when there is no
// room for it.
class JobFields {
 public:
  JobFields(IPPRequestBase* request, char* buffer, int* position)
      : m_request(*request), m_body(RequestWriter(buffer, position)) {}

  bool PrinterUri() { return Text(IPPTag::kUri, "printer-uri", m_request.GetPrinterURI()); }
  bool User() {
    return Text(IPPTag::kName, "requesting-user-name", m_request.GetRequestingUserName());
  }
  bool DocumentUri() { return Text(IPPTag::kUri, "document-uri", m_request.GetDocumentUri()); }
  bool JobUri() { return Text(IPPTag::kUri, "job-uri", m_request.GetJobURI()); }
  bool JobName() { return Text(IPPTag::kName, "job-name", m_request.GetJobName()); }
  bool Fidelity() { return True("ipp-attribute-fidelity", m_request.GetIPPAttributeFidelity()); }
  bool DocumentName() { return Text(IPPTag::kName, "document-name", m_request.GetDocumentName()); }
  bool LastDocument() { return True("last-document", m_request.GetLastDocument()); }
  bool JobGroup() { return m_body.Delimiter(IPPTag::kJobAttributes) == kIPPWritten; }
  bool Copies(bool isSent) { return Integer("copies", m_request.GetCopy(), isSent); }
  bool Sides() {
    return Text(IPPTag::kKeyword, "sides", SidesKeyword(m_request.GetPrintingSides()));
  }
  bool DocumentHandling() {
    return Text(IPPTag::kKeyword, "multiple-document-handling",
                DocumentHandlingKeyword(m_request.GetMultipleDocHandling()));
  }
  bool OrientationAndQuality() {
    const std::int32_t orientation = m_request.GetOrientationRequested();
    const std::int32_t quality = m_request.GetPrintQuality();
    return Integer("orientation-requested", orientation, orientation > kPrintersOwnEnum) &&
           Integer("print-quality", quality, quality > kPrintersOwnEnum);
  }
  bool Color() {
    return Text(IPPTag::kKeyword, "print-color-mode",
                m_request.GetOutputMode() != 0 ? "monochrome" : nullptr);
  }

 private:
  bool Text(int tag, const char* name, const char* value) {
    return !value || m_body.Attribute(tag, name, value) == kIPPWritten;
  }
  // A false one is never sent.
  bool True(const char* name, bool value) {
    return !value || m_body.Boolean(name, 1) == kIPPWritten;
  }
  // Enumerations, too, as devices in the field know them; RFC 8011 has another tag for those.
  bool Integer(const char* name, std::int32_t value, bool isSent) {
    return !isSent || m_body.Integer(IPPTag::kInteger, name, value) == kIPPWritten;
  }

  IPPRequestBase& m_request;
  IPPWriter m_body;
};

}  // namespace

HRESULT IPPOperations::FormIPPRequestBasedOnOperation(char* buffer, int operation, int* length,
                                                      IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::FormIPPRequestBasedOnOperation");
  if (!buffer || !length) return E_FAIL;
  std::memset(buffer, 0, kIPPRequestSize);
  m_operation = operation;
  int position = 0;
  const int sent =
      operation == IPPOperation::kPrintJobWithCredentials ? IPPOperation::kPrintJob : operation;
  if (const HRESULT header = FormIPPReqestHeader(buffer, sent, &position); header != S_OK) {
    return header;
  }
  HRESULT result = AddAttributesOf(operation, buffer, &position, request);
  if (operation == IPPOperation::kGetJobAttributes || operation == IPPOperation::kCancelJob) {
    SetJobOperations();
  }
  if (RequestWriter(buffer, &position).Delimiter(IPPTag::kEndOfAttributes) != kIPPWritten) {
    result = E_FAIL;
  }
  *length = position;
  return result;
}

HRESULT IPPOperations::AddAttributesOf(int operation, char* buffer, int* position,
                                       IPPRequestBase* request) {
  switch (operation) {
    case IPPOperation::kGetJobAttributes:
      return AddGetJobAttr(buffer, position);
    case IPPOperation::kGetPrinterAttributes:
      return AddGetPrinterAttr(buffer, position);
    case IPPOperation::kGetJobs:
      return AddGetJobs(buffer, position);
    case IPPOperation::kCancelJob:
      return AddCancelJobAttr(buffer, position, request);
    case IPPOperation::kPrintUri:
      return AddPrintURIAttr(buffer, position, request);
    case IPPOperation::kCreateJob:
      return AddCreateJobAttr(buffer, position, request);
    case IPPOperation::kSendUri:
      return AddSendURIAttr(buffer, position, request);
    case IPPOperation::kPrintJob:
      return AddPrintJobAttr(buffer, position, request);
    case IPPOperation::kPrintJobWithCredentials:
      // What counts is whether the credentials are taken.
      AddPrintJobAttr(buffer, position, request);
      HandOverCredentials(request);
      return S_OK;
    default:
      return S_OK;
  }
}

HRESULT IPPOperations::FormIPPReqestHeader(char* buffer, int operation, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::FormIPPReqestHeader");
  const auto header = MakeIPPHeader(operation);
  const char* const charset = m_charset.Get();
  const char* const language = m_language.Get();
  IPPWriter body = RequestWriter(buffer, position);
  const bool isWritten =
      // With the group's tag behind it, or not at all.
      body.Encoded(std::string(header.begin(), header.end()) + '\1') == kIPPWritten &&
      body.Attribute(IPPTag::kCharset, "attributes-charset", charset ? charset : "utf-8") ==
          kIPPWritten &&
      body.Attribute(IPPTag::kNaturalLanguage, "attributes-natural-language",
                     language ? language : "en") == kIPPWritten &&
      (operation == IPPOperation::kCancelJob ||
       body.Attribute(IPPTag::kUri, "printer-uri", AttributeView(m_resourceUri.Get())) ==
           kIPPWritten);
  return EncodingResult(isWritten);
}

HRESULT IPPOperations::AddGetJobAttr(char* buffer, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::AddGetJobAttr");
  IPPWriter body = RequestWriter(buffer, position);
  const auto add = [&](int tag, const char* name, const char* value) {
    return !value || body.Attribute(tag, name, value) == kIPPWritten;
  };
  return EncodingResult(add(IPPTag::kUri, "job-uri", m_jobUri.Get()) &&
                        add(IPPTag::kKeyword, "requested-attributes", m_attributeName.Get()));
}

HRESULT IPPOperations::AddGetPrinterAttr(char* buffer, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::AddGetPrinterAttr");
  const char* const name = m_attributeName.Get();
  if (!name) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return E_FAIL;
  }
  const std::string names = std::string("printer-name,") + name;
  return EncodingResult(
      RequestWriter(buffer, position).Attributes(IPPTag::kKeyword, "requested-attributes", names) ==
      kIPPWritten);
}

// The list of jobs matters more than who asked: when only the user or only the kind of jobs fits,
// the printer answers all the same.
HRESULT IPPOperations::AddGetJobs(char* buffer, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::AddGetJobs");
  if (!m_requestedUserName.Get()) return E_FAIL;
  IPPWriter body = RequestWriter(buffer, position);
  const int user =
      body.Attributes(IPPTag::kName, "requesting-user-name", m_requestedUserName.Get());
  const int mine = body.Boolean("my-jobs", 1);
  if (const char* const name = m_attributeName.Get()) {
    const bool completed = std::string_view(name) == "job-state";
    body.Attribute(IPPTag::kKeyword, "which-jobs", completed ? "completed" : "not-completed");
  }
  const int all = body.Attribute(IPPTag::kKeyword, "requested-attributes", "all");
  return EncodingResult(all == kIPPWritten || user == kIPPWritten || mine == kIPPWritten);
}

HRESULT IPPOperations::AddCancelJobAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddCancelJobAttr");
  if (!request) return E_FAIL;
  JobFields job(request, buffer, position);
  return EncodingResult(job.JobUri() && job.User());
}

HRESULT IPPOperations::AddPrintURIAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddPrintURIAttr");
  if (!request) return E_FAIL;
  JobFields job(request, buffer, position);
  return EncodingResult(job.PrinterUri() && job.User() && job.DocumentUri() && job.JobName() &&
                        job.Fidelity() && job.DocumentName() && job.JobGroup() &&
                        job.Copies(request->GetCopy() != 0) && job.Sides() &&
                        job.OrientationAndQuality() && job.Color());
}

HRESULT IPPOperations::AddCreateJobAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddCreateJobAttr");
  if (!request) return E_FAIL;
  JobFields job(request, buffer, position);
  return EncodingResult(job.User() && job.JobName() && job.Fidelity() && job.JobGroup() &&
                        job.Copies(request->GetCopy() > 0) && job.Sides() &&
                        job.DocumentHandling() && job.OrientationAndQuality());
}

HRESULT IPPOperations::AddSendURIAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddSendURIAttr");
  if (!request) return E_FAIL;
  JobFields job(request, buffer, position);
  return EncodingResult(job.User() && job.DocumentUri() && job.JobName() && job.Fidelity() &&
                        job.DocumentName() && job.LastDocument() && job.JobGroup() &&
                        job.DocumentHandling() && job.Copies(request->GetCopy() != 0) &&
                        job.Sides() && job.OrientationAndQuality());
}

// What the caller adds and does not fit is left out, and the job printed without it.
HRESULT IPPOperations::AddPrintJobAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddPrintJobAttr");
  if (!request) return E_FAIL;
  JobFields job(request, buffer, position);
  const auto isCallers = [&](const char* name) {
    return IsSetViaIPPAttributeStruct(request, name) != 0;
  };
  if (!(job.PrinterUri() && job.User() && job.JobName() && job.Fidelity() && job.DocumentName())) {
    return E_FAIL;
  }
  AddIPPAttributesToIPPHeader(buffer, request, position, kIPPOperationGroup);
  if (!(job.JobGroup() && job.Copies(request->GetCopy() != 0 && !isCallers("copies")) &&
        job.Sides() && job.OrientationAndQuality() &&
        (isCallers("print-color-mode") || job.Color()))) {
    return E_FAIL;
  }
  AddIPPAttributesToIPPHeader(buffer, request, position, kIPPJobGroup);
  return S_OK;
}

HRESULT IPPOperations::AddIPPAttributesToIPPHeader(char* buffer, IPPRequestBase* request,
                                                   int* position, std::uint32_t group) {
  TraceScope trace(L"Corvane::IPPOperations::AddIPPAttributesToIPPHeader");
  const auto* const attributes = dynamic_cast<IPPRequestAttributes*>(request);
  if (!buffer || !attributes) return S_FALSE;
  IPPWriter body = RequestWriter(buffer, position);
  for (const IPPAttributeStruct& attribute : attributes->GetAttributesVector()) {
    if (attribute.group != group) continue;
    if (AddCallersAttribute(attribute, body) != kIPPWritten) return E_FAIL;
  }
  for (const auto& blob : attributes->GetBlobVector()) {
    if (blob->group != group) continue;
    const std::size_t size = static_cast<std::size_t>(blob->blobSize);
    const auto* const bytes = reinterpret_cast<const char*>(blob->blobArray.get());
    if (body.Encoded({bytes, size}) != kIPPWritten) return S_FALSE;
  }
  return S_OK;
}

int IPPOperations::IsSetViaIPPAttributeStruct(IPPRequestBase* request, const char* name) {
  TraceScope trace(L"Corvane::IPPOperations::IsSetViaIPPAttributeStruct");
  const auto* const attributes = dynamic_cast<IPPRequestAttributes*>(request);
  if (!attributes || !name) return 0;
  for (const IPPAttributeStruct& attribute : attributes->GetAttributesVector()) {
    if (BoundedText(attribute.name) == name) return 1;
  }
  return 0;
}

HRESULT IPPOperations::AddAttributeBasedOnType(const char* name, char* buffer, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::AddAttributeBasedOnType");
  int tag = 0;
  GetTypeOfAttribute(name, &tag);
  return EncodingResult(
      AddStringToIPPRequest(buffer, tag, "requested-attributes", name, position) == kIPPWritten);
}

int IPPOperations::GetTypeOfAttribute(const char* name, int* tag) {
  TraceScope trace(L"Corvane::IPPOperations::GetTypeOfAttribute");
  *tag = IPPTag::kKeyword;
  if (!name) return kIPPTextValue;
  for (const IPPAttributeRow& row : kIPPAttributeTable) {
    if (std::strcmp(row.name, name) != 0) continue;
    *tag = row.valueTag;
    return row.valueKind;
  }
  return kIPPTextValue;
}

int IPPOperations::AddStringToIPPRequest(char* buffer, int tag, const char* name, const char* value,
                                         int* position) {
  return RequestWriter(buffer, position).Attribute(tag, AttributeView(name), AttributeView(value));
}

int IPPOperations::AddStringsToIPPRequest(char* buffer, int tag, const char* name, const char* list,
                                          int* position) {
  return RequestWriter(buffer, position).Attributes(tag, AttributeView(name), AttributeView(list));
}

int IPPOperations::AddIntegerToIPPRequest(char* buffer, int tag, const char* name,
                                          std::int32_t value, int* position) {
  return RequestWriter(buffer, position).Integer(tag, AttributeView(name), value);
}

int IPPOperations::AddBooleanToIPPRequest(char* buffer, const char* name, unsigned char value,
                                          int* position) {
  return RequestWriter(buffer, position).Boolean(AttributeView(name), value);
}

int IPPOperations::AddRangeToIPPRequest(char* buffer, const char* name, std::int32_t lower,
                                        std::int32_t upper, int* position) {
  return RequestWriter(buffer, position).Range(AttributeView(name), lower, upper);
}

int IPPOperations::AddResolutionToIPPRequest(char* buffer, const char* name, unsigned char units,
                                             std::int32_t crossFeed, std::int32_t feed,
                                             int* position) {
  return RequestWriter(buffer, position).Resolution(AttributeView(name), units, crossFeed, feed);
}

}  // namespace Corvane
