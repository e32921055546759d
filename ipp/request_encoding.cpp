// The body of a request: header, the operation's attributes, the caller's own.
#include <cstring>
#include <string>

#include "core/trace.h"
#include "ipp/attribute_table.h"
#include "ipp/ipp_codes.h"
#include "ipp/ipp_operations.h"
#include "ipp/ipp_request_attributes.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr std::size_t kHeaderSize = 9;
// Version 2.0, an operation to be filled in, request id 100, operation-attributes-tag. One request
// is under way on a connection, so that all may have one id.
constexpr unsigned char kHeader[kHeaderSize] = {0x02, 0x00, 0x00, 0x00, 0x00,
                                                0x00, 0x00, 0x64, 0x01};

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

int AddCallersAttribute(const IPPAttributeStruct& attribute, RequestBuffer body) {
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
      return body.Strings(attribute.valueTag, name, text);
    default:
      return body.String(attribute.valueTag, name, text);
  }
}

// Attributes one after another, until one does not fit.
class AttributeChain {
 public:
  AttributeChain(char* buffer, int* position) : m_body(buffer, position) {}

  // Nothing for a text that was never set.
  AttributeChain& Text(int tag, const char* name, const char* value) {
    if (value && m_ok) m_ok = m_body.String(tag, name, value) == kIPPWritten;
    return *this;
  }
  AttributeChain& Texts(int tag, const char* name, std::string_view list) {
    if (m_ok) m_ok = m_body.Strings(tag, name, list) == kIPPWritten;
    return *this;
  }
  // A false one is never sent.
  AttributeChain& True(const char* name, bool value) {
    if (value && m_ok) m_ok = m_body.Boolean(name, 1) == kIPPWritten;
    return *this;
  }
  AttributeChain& IntegerIf(bool set, const char* name, std::int32_t value) {
    if (set && m_ok) m_ok = m_body.Integer(IPPTag::kInteger, name, value) == kIPPWritten;
    return *this;
  }
  AttributeChain& Delimiter(int tag) {
    if (m_ok) m_ok = m_body.Delimiter(tag) == kIPPWritten;
    return *this;
  }

  HRESULT Result() const { return m_ok ? S_OK : E_FAIL; }

 private:
  RequestBuffer m_body;
  bool m_ok = true;
};

void AddOrientationAndQuality(IPPRequestBase* request, AttributeChain* chain) {
  const std::int32_t orientation = request->GetOrientationRequested();
  const std::int32_t quality = request->GetPrintQuality();
  // Under the tag of integers, as devices in the field know them; RFC 8011 has enumerations.
  chain->IntegerIf(orientation > kPrintersOwnEnum, "orientation-requested", orientation)
      .IntegerIf(quality > kPrintersOwnEnum, "print-quality", quality);
}

const char* Monochrome(IPPRequestBase* request) {
  return request->GetOutputMode() != 0 ? "monochrome" : nullptr;
}

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
  HRESULT result = FormIPPReqestHeader(buffer, sent, &position);
  if (result != S_OK) return result;

  switch (operation) {
    case IPPOperation::kGetJobAttributes:
      result = AddGetJobAttr(buffer, &position);
      SetJobOperations();
      break;
    case IPPOperation::kGetPrinterAttributes:
      result = AddGetPrinterAttr(buffer, &position);
      break;
    case IPPOperation::kGetJobs:
      result = AddGetJobs(buffer, &position);
      break;
    case IPPOperation::kCancelJob:
      result = AddCancelJobAttr(buffer, &position, request);
      SetJobOperations();
      break;
    case IPPOperation::kPrintUri:
      result = AddPrintURIAttr(buffer, &position, request);
      break;
    case IPPOperation::kCreateJob:
      result = AddCreateJobAttr(buffer, &position, request);
      break;
    case IPPOperation::kSendUri:
      result = AddSendURIAttr(buffer, &position, request);
      break;
    case IPPOperation::kPrintJob:
      result = AddPrintJobAttr(buffer, &position, request);
      break;
    case IPPOperation::kPrintJobWithCredentials:
      // What counts is whether the credentials are taken.
      AddPrintJobAttr(buffer, &position, request);
      HandOverCredentials(request);
      break;
    default:
      break;
  }

  if (RequestBuffer(buffer, &position).Delimiter(IPPTag::kEndOfAttributes) != kIPPWritten) {
    result = E_FAIL;
  }
  *length = position;
  return result;
}

HRESULT IPPOperations::FormIPPReqestHeader(char* buffer, int operation, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::FormIPPReqestHeader");
  unsigned char header[kHeaderSize];
  std::memcpy(header, kHeader, kHeaderSize);
  header[2] = static_cast<unsigned char>(operation >> 8);
  header[3] = static_cast<unsigned char>(operation);
  const char* const charset = m_charset.Get();
  const char* const language = m_language.Get();
  RequestBuffer body(buffer, position);
  if (body.Encoded(header) != kIPPWritten ||
      body.String(IPPTag::kCharset, "attributes-charset", charset ? charset : "utf-8") !=
          kIPPWritten ||
      body.String(IPPTag::kNaturalLanguage, "attributes-natural-language",
                  language ? language : "en") != kIPPWritten) {
    return E_FAIL;
  }
  if (operation == IPPOperation::kCancelJob) return S_OK;
  return AddStringToIPPRequest(buffer, IPPTag::kUri, "printer-uri", m_resourceUri.Get(),
                               position) == kIPPWritten
             ? S_OK
             : E_FAIL;
}

HRESULT IPPOperations::AddGetJobAttr(char* buffer, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::AddGetJobAttr");
  return AttributeChain(buffer, position)
      .Text(IPPTag::kUri, "job-uri", m_jobUri.Get())
      .Text(IPPTag::kKeyword, "requested-attributes", m_attributeName.Get())
      .Result();
}

HRESULT IPPOperations::AddGetPrinterAttr(char* buffer, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::AddGetPrinterAttr");
  const char* const name = m_attributeName.Get();
  if (!name) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return E_FAIL;
  }
  return AttributeChain(buffer, position)
      .Texts(IPPTag::kKeyword, "requested-attributes", std::string("printer-name,") + name)
      .Result();
}

// The list of jobs matters more than who asked: when only the user or only the kind of jobs fits,
// the printer answers all the same.
HRESULT IPPOperations::AddGetJobs(char* buffer, int* position) {
  TraceScope trace(L"Corvane::IPPOperations::AddGetJobs");
  if (!m_requestedUserName.Get()) return E_FAIL;
  RequestBuffer body(buffer, position);
  const int user = body.Strings(IPPTag::kName, "requesting-user-name", m_requestedUserName.Get());
  const int mine = body.Boolean("my-jobs", 1);
  const HRESULT whose = user == kIPPWritten || mine == kIPPWritten ? S_OK : E_FAIL;
  if (const char* const name = m_attributeName.Get()) {
    const bool completed = std::string_view(name) == "job-state";
    body.String(IPPTag::kKeyword, "which-jobs", completed ? "completed" : "not-completed");
  }
  return body.String(IPPTag::kKeyword, "requested-attributes", "all") == kIPPWritten ? S_OK : whose;
}

HRESULT IPPOperations::AddCancelJobAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddCancelJobAttr");
  if (!request) return E_FAIL;
  return AttributeChain(buffer, position)
      .Text(IPPTag::kUri, "job-uri", request->GetJobURI())
      .Text(IPPTag::kName, "requesting-user-name", request->GetRequestingUserName())
      .Result();
}

HRESULT IPPOperations::AddPrintURIAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddPrintURIAttr");
  if (!request) return E_FAIL;
  AttributeChain chain(buffer, position);
  chain.Text(IPPTag::kUri, "printer-uri", request->GetPrinterURI())
      .Text(IPPTag::kName, "requesting-user-name", request->GetRequestingUserName())
      .Text(IPPTag::kUri, "document-uri", request->GetDocumentUri())
      .Text(IPPTag::kName, "job-name", request->GetJobName())
      .True("ipp-attribute-fidelity", request->GetIPPAttributeFidelity())
      .Text(IPPTag::kName, "document-name", request->GetDocumentName())
      .Delimiter(IPPTag::kJobAttributes)
      .IntegerIf(request->GetCopy() != 0, "copies", request->GetCopy())
      .Text(IPPTag::kKeyword, "sides", SidesKeyword(request->GetPrintingSides()));
  AddOrientationAndQuality(request, &chain);
  return chain.Text(IPPTag::kKeyword, "print-color-mode", Monochrome(request)).Result();
}

HRESULT IPPOperations::AddCreateJobAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddCreateJobAttr");
  if (!request) return E_FAIL;
  AttributeChain chain(buffer, position);
  chain.Text(IPPTag::kName, "requesting-user-name", request->GetRequestingUserName())
      .Text(IPPTag::kName, "job-name", request->GetJobName())
      .True("ipp-attribute-fidelity", request->GetIPPAttributeFidelity())
      .Delimiter(IPPTag::kJobAttributes)
      .IntegerIf(request->GetCopy() > 0, "copies", request->GetCopy())
      .Text(IPPTag::kKeyword, "sides", SidesKeyword(request->GetPrintingSides()))
      .Text(IPPTag::kKeyword, "multiple-document-handling",
            DocumentHandlingKeyword(request->GetMultipleDocHandling()));
  AddOrientationAndQuality(request, &chain);
  return chain.Result();
}

HRESULT IPPOperations::AddSendURIAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddSendURIAttr");
  if (!request) return E_FAIL;
  AttributeChain chain(buffer, position);
  chain.Text(IPPTag::kName, "requesting-user-name", request->GetRequestingUserName())
      .Text(IPPTag::kUri, "document-uri", request->GetDocumentUri())
      .Text(IPPTag::kName, "job-name", request->GetJobName())
      .True("ipp-attribute-fidelity", request->GetIPPAttributeFidelity())
      .Text(IPPTag::kName, "document-name", request->GetDocumentName())
      .True("last-document", request->GetLastDocument())
      .Delimiter(IPPTag::kJobAttributes)
      .Text(IPPTag::kKeyword, "multiple-document-handling",
            DocumentHandlingKeyword(request->GetMultipleDocHandling()))
      .IntegerIf(request->GetCopy() != 0, "copies", request->GetCopy())
      .Text(IPPTag::kKeyword, "sides", SidesKeyword(request->GetPrintingSides()));
  AddOrientationAndQuality(request, &chain);
  return chain.Result();
}

HRESULT IPPOperations::AddPrintJobAttr(char* buffer, int* position, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddPrintJobAttr");
  if (!request) return E_FAIL;
  AttributeChain chain(buffer, position);
  const HRESULT header =
      chain.Text(IPPTag::kUri, "printer-uri", request->GetPrinterURI())
          .Text(IPPTag::kName, "requesting-user-name", request->GetRequestingUserName())
          .Text(IPPTag::kName, "job-name", request->GetJobName())
          .True("ipp-attribute-fidelity", request->GetIPPAttributeFidelity())
          .Text(IPPTag::kName, "document-name", request->GetDocumentName())
          .Result();
  if (header != S_OK) return header;
  // What the caller adds and does not fit is left out, and the job printed without it.
  AddIPPAttributesToIPPHeader(buffer, request, position, kIPPOperationGroup);

  const bool ownCopies = request->GetCopy() != 0 && !IsSetViaIPPAttributeStruct(request, "copies");
  chain.Delimiter(IPPTag::kJobAttributes)
      .IntegerIf(ownCopies, "copies", request->GetCopy())
      .Text(IPPTag::kKeyword, "sides", SidesKeyword(request->GetPrintingSides()));
  AddOrientationAndQuality(request, &chain);
  if (!IsSetViaIPPAttributeStruct(request, "print-color-mode")) {
    chain.Text(IPPTag::kKeyword, "print-color-mode", Monochrome(request));
  }
  if (chain.Result() != S_OK) return chain.Result();
  AddIPPAttributesToIPPHeader(buffer, request, position, kIPPJobGroup);
  return S_OK;
}

HRESULT IPPOperations::AddIPPAttributesToIPPHeader(char* buffer, IPPRequestBase* request,
                                                   int* position, std::uint32_t group) {
  TraceScope trace(L"Corvane::IPPOperations::AddIPPAttributesToIPPHeader");
  const auto* const attributes = dynamic_cast<IPPRequestAttributes*>(request);
  if (!buffer || !attributes) return S_FALSE;
  RequestBuffer body(buffer, position);
  for (const IPPAttributeStruct& attribute : attributes->GetAttributesVector()) {
    if (attribute.group != group) continue;
    if (AddCallersAttribute(attribute, body) != kIPPWritten) return E_FAIL;
  }
  for (const auto& blob : attributes->GetBlobVector()) {
    if (blob->group != group) continue;
    const std::size_t size = static_cast<std::size_t>(blob->blobSize);
    if (body.Encoded({blob->blobArray.get(), size}) != kIPPWritten) return S_FALSE;
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
  return AddStringToIPPRequest(buffer, tag, "requested-attributes", name, position) == kIPPWritten
             ? S_OK
             : E_FAIL;
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

namespace {

std::string_view ViewOf(const char* text) {
  return text ? std::string_view(text) : std::string_view();
}

}  // namespace

int IPPOperations::AddStringToIPPRequest(char* buffer, int tag, const char* name, const char* value,
                                         int* position) {
  return RequestBuffer(buffer, position).String(tag, ViewOf(name), ViewOf(value));
}

int IPPOperations::AddStringsToIPPRequest(char* buffer, int tag, const char* name, const char* list,
                                          int* position) {
  return RequestBuffer(buffer, position).Strings(tag, ViewOf(name), ViewOf(list));
}

int IPPOperations::AddIntegerToIPPRequest(char* buffer, int tag, const char* name,
                                          std::int32_t value, int* position) {
  return RequestBuffer(buffer, position).Integer(tag, ViewOf(name), value);
}

int IPPOperations::AddBooleanToIPPRequest(char* buffer, const char* name, unsigned char value,
                                          int* position) {
  return RequestBuffer(buffer, position).Boolean(ViewOf(name), value);
}

int IPPOperations::AddRangeToIPPRequest(char* buffer, const char* name, std::int32_t lower,
                                        std::int32_t upper, int* position) {
  return RequestBuffer(buffer, position).Range(ViewOf(name), lower, upper);
}

int IPPOperations::AddResolutionToIPPRequest(char* buffer, const char* name, unsigned char units,
                                             std::int32_t crossFeed, std::int32_t feed,
                                             int* position) {
  return RequestBuffer(buffer, position).Resolution(ViewOf(name), units, crossFeed, feed);
}

}  // namespace Corvane
