#include "ipp/ipp_response_attributes.h"

#include <new>

#include "core/class_identification.h"
#include "core/trace.h"
#include "corvane/handles.h"

namespace Corvane {

IPPResponseAttributes* IPPResponseAttributes::Create() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::Create");
  return RefPtr<IPPResponseAttributes>::Share(new (std::nothrow) IPPResponseAttributes).Release();
}

IPPResponseAttributes::IPPResponseAttributes() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::IPPResponseAttributes");
}

IPPResponseAttributes::~IPPResponseAttributes() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::~IPPResponseAttributes");
}

const char* IPPResponseAttributes::GetTypeName() { return kClassIdentification; }

HRESULT IPPResponseAttributes::SetSuccess(const char* status) {
  TraceScope trace(L"Corvane::IPPResponseAttributes::SetSuccess");
  m_success.Set(status);
  return S_OK;
}

const char* IPPResponseAttributes::GetSuccessStatus() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::GetSuccessStatus");
  return m_success.Get();
}

HRESULT IPPResponseAttributes::SetRequestID(const char* id) {
  TraceScope trace(L"Corvane::IPPResponseAttributes::SetRequestID");
  m_requestId.Set(id);
  return S_OK;
}

const char* IPPResponseAttributes::GetRequestID() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::GetRequestID");
  return m_requestId.Get();
}

HRESULT IPPResponseAttributes::SetDocumentAccessError(const char* error) {
  TraceScope trace(L"Corvane::IPPResponseAttributes::SetDocumentAccessError");
  m_documentAccessError.Set(error);
  return S_OK;
}

const char* IPPResponseAttributes::GetDocumentAccessError() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::GetDocumentAccessError");
  return m_documentAccessError.Get();
}

HRESULT IPPResponseAttributes::SetJobURI(const char* uri) {
  TraceScope trace(L"Corvane::IPPResponseAttributes::SetJobURI");
  m_jobUri.Set(uri);
  return S_OK;
}

const char* IPPResponseAttributes::GetJobURI() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::GetJobURI");
  return m_jobUri.Get();
}

void IPPResponseAttributes::SetJobID(std::int32_t id) {
  TraceScope trace(L"Corvane::IPPResponseAttributes::SetJobID");
  m_jobId = id;
}

std::int32_t IPPResponseAttributes::GetJobID() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::GetJobID");
  return m_jobId;
}

HRESULT IPPResponseAttributes::SetJobState(const char* state) {
  TraceScope trace(L"Corvane::IPPResponseAttributes::SetJobState");
  m_jobState.Set(state);
  return S_OK;
}

const char* IPPResponseAttributes::GetJobState() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::GetJobState");
  return m_jobState.Get();
}

HRESULT IPPResponseAttributes::SetJobStateReasons(const char* reasons) {
  TraceScope trace(L"Corvane::IPPResponseAttributes::SetJobStateReasons");
  m_jobStateReasons.Set(reasons);
  return S_OK;
}

const char* IPPResponseAttributes::GetJobStateReasons() {
  TraceScope trace(L"Corvane::IPPResponseAttributes::GetJobStateReasons");
  return m_jobStateReasons.Get();
}

}  // namespace Corvane

Corvane::IPPResponseBase* CreateIPPResponse() {
  Corvane::TraceScope trace(L"Corvane::CreateIPPResponse");
  return Corvane::IPPResponseAttributes::Create();
}
