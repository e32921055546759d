#include "ipp/ipp_request_attributes.h"

#include <cstring>
#include <new>

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
  return SetTraced(L"Corvane::IPPRequestAttributes::SetPrinterURI", &m_printerUri, uri);
}

const char* IPPRequestAttributes::GetPrinterURI() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetPrinterURI", m_printerUri);
}

void IPPRequestAttributes::SetCopy(std::int32_t copies) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetCopy", &m_copies, copies);
}

std::int32_t IPPRequestAttributes::GetCopy() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetCopy", m_copies);
}

HRESULT IPPRequestAttributes::SetRequestingUserName(const char* name) {
  return SetTraced(L"Corvane::IPPRequestAttributes::SetRequestingUserName", &m_requestingUserName,
                   name);
}

const char* IPPRequestAttributes::GetRequestingUserName() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetRequestingUserName", m_requestingUserName);
}

HRESULT IPPRequestAttributes::SetDocumentUri(const char* uri) {
  return SetTraced(L"Corvane::IPPRequestAttributes::SetDocumentUri", &m_documentUri, uri);
}

const char* IPPRequestAttributes::GetDocumentUri() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetDocumentUri", m_documentUri);
}

HRESULT IPPRequestAttributes::SetJobName(const char* name) {
  return SetTraced(L"Corvane::IPPRequestAttributes::SetJobName", &m_jobName, name);
}

const char* IPPRequestAttributes::GetJobName() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetJobName", m_jobName);
}

void IPPRequestAttributes::SetIPPAttributeFidelity(bool fidelity) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetIPPAttributeFidelity", &m_fidelity, fidelity);
}

bool IPPRequestAttributes::GetIPPAttributeFidelity() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetIPPAttributeFidelity", m_fidelity);
}

HRESULT IPPRequestAttributes::SetDocumentName(const char* name) {
  return SetTraced(L"Corvane::IPPRequestAttributes::SetDocumentName", &m_documentName, name);
}

const char* IPPRequestAttributes::GetDocumentName() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetDocumentName", m_documentName);
}

void IPPRequestAttributes::SetMultipleDocHandling(std::int32_t selector) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetMultipleDocHandling", &m_multipleDocumentHandling,
            selector);
}

std::int32_t IPPRequestAttributes::GetMultipleDocHandling() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetMultipleDocHandling",
                   m_multipleDocumentHandling);
}

void IPPRequestAttributes::SetPrintingSides(std::int32_t selector) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetPrintingSides", &m_sides, selector);
}

std::int32_t IPPRequestAttributes::GetPrintingSides() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetPrintingSides", m_sides);
}

void IPPRequestAttributes::SetOrientationRequested(std::int32_t selector) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetOrientationRequested", &m_orientation, selector);
}

std::int32_t IPPRequestAttributes::GetOrientationRequested() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetOrientationRequested", m_orientation);
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
  SetTraced(L"Corvane::IPPRequestAttributes::SetPrinterResolutionUnits", &m_resolutionUnits, units);
}

std::int32_t IPPRequestAttributes::GetPrinterResolutionUnits() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetPrinterResolutionUnits", m_resolutionUnits);
}

void IPPRequestAttributes::SetPrintQuality(std::int32_t selector) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetPrintQuality", &m_printQuality, selector);
}

std::int32_t IPPRequestAttributes::GetPrintQuality() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetPrintQuality", m_printQuality);
}

void IPPRequestAttributes::SetOutputMode(std::int32_t selector) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetOutputMode", &m_outputMode, selector);
}

std::int32_t IPPRequestAttributes::GetOutputMode() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetOutputMode", m_outputMode);
}

void IPPRequestAttributes::SetPrintContentOptimize(std::int32_t selector) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetPrintContentOptimize", &m_contentOptimize,
            selector);
}

std::int32_t IPPRequestAttributes::GetPrintContentOptimize() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetPrintContentOptimize", m_contentOptimize);
}

void IPPRequestAttributes::SetMarginsPreApplied(bool preApplied) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetMarginsPreApplied", &m_marginsPreApplied,
            preApplied);
}

bool IPPRequestAttributes::GetMarginsPreApplied() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetMarginsPreApplied", m_marginsPreApplied);
}

HRESULT IPPRequestAttributes::SetJobURI(const char* uri) {
  return SetTraced(L"Corvane::IPPRequestAttributes::SetJobURI", &m_jobUri, uri);
}

const char* IPPRequestAttributes::GetJobURI() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetJobURI", m_jobUri);
}

void IPPRequestAttributes::SetLastDocument(bool last) {
  SetTraced(L"Corvane::IPPRequestAttributes::SetLastDocument", &m_lastDocument, last);
}

bool IPPRequestAttributes::GetLastDocument() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetLastDocument", m_lastDocument);
}

HRESULT IPPRequestAttributes::SetUsername(const char* name) {
  return SetTraced(L"Corvane::IPPRequestAttributes::SetUsername", &m_userName, name);
}

const char* IPPRequestAttributes::GetUsername() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetUsername", m_userName);
}

HRESULT IPPRequestAttributes::SetPassword(const char* password) {
  return SetTraced(L"Corvane::IPPRequestAttributes::SetPassword", &m_password, password);
}

const char* IPPRequestAttributes::GetPassword() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetPassword", m_password);
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
  SetTraced(L"Corvane::IPPRequestAttributes::SetAuthorizationHeader", &m_authorization, value);
}

std::wstring IPPRequestAttributes::GetAuthorizationHeader() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetAuthorizationHeader", m_authorization);
}

IPPHeaderMap& IPPRequestAttributes::GetExtraHTTPHeader() {
  return GetTraced(L"Corvane::IPPRequestAttributes::GetExtraHTTPHeader", m_headers);
}

}  // namespace Corvane

Corvane::IPPRequestBase* CreateIPPRequest() {
  Corvane::TraceScope trace(L"Corvane::CreateIPPRequest");
  return Corvane::IPPRequestAttributes::Create();
}
