#include "ipp/ipp_request_attributes.h"

#include <cstring>
#include <new>

#include "core/class_identification.h"
#include "core/trace.h"
#include "corvane/handles.h"

namespace Corvane {

IPPRequestAttributes* IPPRequestAttributes::Create() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::Create");
  return RefPtr<IPPRequestAttributes>::Share(new (std::nothrow) IPPRequestAttributes).Release();
}

IPPRequestAttributes::IPPRequestAttributes() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::IPPRequestAttributes");
}

IPPRequestAttributes::~IPPRequestAttributes() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::~IPPRequestAttributes");
}

const char* IPPRequestAttributes::GetTypeName() { return kClassIdentification; }

HRESULT IPPRequestAttributes::SetPrinterURI(const char* uri) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetPrinterURI");
  m_printerUri.Set(uri);
  return S_OK;
}

const char* IPPRequestAttributes::GetPrinterURI() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetPrinterURI");
  return m_printerUri.Get();
}

void IPPRequestAttributes::SetCopy(std::int32_t copies) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetCopy");
  m_copies = copies;
}

std::int32_t IPPRequestAttributes::GetCopy() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetCopy");
  return m_copies;
}

HRESULT IPPRequestAttributes::SetRequestingUserName(const char* name) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetRequestingUserName");
  m_requestingUserName.Set(name);
  return S_OK;
}

const char* IPPRequestAttributes::GetRequestingUserName() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetRequestingUserName");
  return m_requestingUserName.Get();
}

HRESULT IPPRequestAttributes::SetDocumentUri(const char* uri) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetDocumentUri");
  m_documentUri.Set(uri);
  return S_OK;
}

const char* IPPRequestAttributes::GetDocumentUri() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetDocumentUri");
  return m_documentUri.Get();
}

HRESULT IPPRequestAttributes::SetJobName(const char* name) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetJobName");
  m_jobName.Set(name);
  return S_OK;
}

const char* IPPRequestAttributes::GetJobName() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetJobName");
  return m_jobName.Get();
}

void IPPRequestAttributes::SetIPPAttributeFidelity(bool fidelity) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetIPPAttributeFidelity");
  m_fidelity = fidelity;
}

bool IPPRequestAttributes::GetIPPAttributeFidelity() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetIPPAttributeFidelity");
  return m_fidelity;
}

HRESULT IPPRequestAttributes::SetDocumentName(const char* name) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetDocumentName");
  m_documentName.Set(name);
  return S_OK;
}

const char* IPPRequestAttributes::GetDocumentName() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetDocumentName");
  return m_documentName.Get();
}

void IPPRequestAttributes::SetMultipleDocHandling(std::int32_t selector) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetMultipleDocHandling");
  m_multipleDocumentHandling = selector;
}

std::int32_t IPPRequestAttributes::GetMultipleDocHandling() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetMultipleDocHandling");
  return m_multipleDocumentHandling;
}

void IPPRequestAttributes::SetPrintingSides(std::int32_t selector) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetPrintingSides");
  m_sides = selector;
}

std::int32_t IPPRequestAttributes::GetPrintingSides() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetPrintingSides");
  return m_sides;
}

void IPPRequestAttributes::SetOrientationRequested(std::int32_t selector) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetOrientationRequested");
  m_orientation = selector;
}

std::int32_t IPPRequestAttributes::GetOrientationRequested() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetOrientationRequested");
  return m_orientation;
}

void IPPRequestAttributes::SetPrinterResolution(std::int32_t crossFeed, std::int32_t feed) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetPrinterResolution");
  m_crossFeedResolution = crossFeed;
  m_feedResolution = feed;
}

void IPPRequestAttributes::GetPrinterResolution(std::int32_t* crossFeed, std::int32_t* feed) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetPrinterResolution");
  if (crossFeed) *crossFeed = m_crossFeedResolution;
  if (feed) *feed = m_feedResolution;
}

void IPPRequestAttributes::SetPrinterResolutionUnits(std::int32_t units) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetPrinterResolutionUnits");
  m_resolutionUnits = units;
}

std::int32_t IPPRequestAttributes::GetPrinterResolutionUnits() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetPrinterResolutionUnits");
  return m_resolutionUnits;
}

void IPPRequestAttributes::SetPrintQuality(std::int32_t selector) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetPrintQuality");
  m_printQuality = selector;
}

std::int32_t IPPRequestAttributes::GetPrintQuality() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetPrintQuality");
  return m_printQuality;
}

void IPPRequestAttributes::SetOutputMode(std::int32_t selector) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetOutputMode");
  m_outputMode = selector;
}

std::int32_t IPPRequestAttributes::GetOutputMode() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetOutputMode");
  return m_outputMode;
}

void IPPRequestAttributes::SetPrintContentOptimize(std::int32_t selector) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetPrintContentOptimize");
  m_contentOptimize = selector;
}

std::int32_t IPPRequestAttributes::GetPrintContentOptimize() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetPrintContentOptimize");
  return m_contentOptimize;
}

void IPPRequestAttributes::SetMarginsPreApplied(bool preApplied) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetMarginsPreApplied");
  m_marginsPreApplied = preApplied;
}

bool IPPRequestAttributes::GetMarginsPreApplied() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetMarginsPreApplied");
  return m_marginsPreApplied;
}

HRESULT IPPRequestAttributes::SetJobURI(const char* uri) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetJobURI");
  m_jobUri.Set(uri);
  return S_OK;
}

const char* IPPRequestAttributes::GetJobURI() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetJobURI");
  return m_jobUri.Get();
}

void IPPRequestAttributes::SetLastDocument(bool last) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetLastDocument");
  m_lastDocument = last;
}

bool IPPRequestAttributes::GetLastDocument() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetLastDocument");
  return m_lastDocument;
}

HRESULT IPPRequestAttributes::SetUsername(const char* name) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetUsername");
  m_userName.Set(name);
  return S_OK;
}

const char* IPPRequestAttributes::GetUsername() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetUsername");
  return m_userName.Get();
}

HRESULT IPPRequestAttributes::SetPassword(const char* password) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetPassword");
  m_password.Set(password);
  return S_OK;
}

const char* IPPRequestAttributes::GetPassword() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetPassword");
  return m_password.Get();
}

void IPPRequestAttributes::AddExtraHTTPHeader(const wchar_t* name, const wchar_t* value) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::AddExtraHTTPHeader");
  if (!name) return;
  if (value) {
    m_headers.insert_or_assign(name, value);
  } else {
    m_headers.erase(name);
  }
}

void IPPRequestAttributes::AddIPPRequest(std::uint32_t group, const void* blob, std::int32_t size) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::AddIPPRequest");
  if (!blob || size < 1) {
    trace.Message(kTraceInfo, L"Invalid input parameters.. attributeblobSize=%d",
                  static_cast<int>(size));
    return;
  }
  std::unique_ptr<IPPAttributeBlob> copy(new (std::nothrow) IPPAttributeBlob);
  if (!copy) {
    trace.Message(kTraceInfo, L"Unable to allocate memory for blobTemp");
    return;
  }
  const auto bytes = static_cast<std::size_t>(size);
  copy->blobArray.reset(new (std::nothrow) unsigned char[bytes]);
  if (!copy->blobArray) {
    trace.Message(kTraceInfo, L"Unable to allocate memory for blobTemp->blobArray");
    return;
  }
  std::memcpy(copy->blobArray.get(), blob, bytes);
  copy->group = group;
  copy->blobSize = size;
  m_blobs.push_back(std::move(copy));
}

void IPPRequestAttributes::AddIPPRequest(const IPPAttributeStruct& attribute) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::AddIPPRequest");
  m_attributes.push_back(attribute);
}

void IPPRequestAttributes::SetAuthorizationHeader(const std::wstring& value) {
  TraceScope trace(L"Corvane::IPPRequestAttributes::SetAuthorizationHeader");
  m_authorization = value;
}

std::wstring IPPRequestAttributes::GetAuthorizationHeader() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetAuthorizationHeader");
  return m_authorization;
}

IPPHeaderMap& IPPRequestAttributes::GetExtraHTTPHeader() {
  TraceScope trace(L"Corvane::IPPRequestAttributes::GetExtraHTTPHeader");
  return m_headers;
}

}  // namespace Corvane

Corvane::IPPRequestBase* CreateIPPRequest() {
  Corvane::TraceScope trace(L"Corvane::CreateIPPRequest");
  return Corvane::IPPRequestAttributes::Create();
}
