#include "ipp/ipp_response_attributes.h"

#include <new>

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
  return SetTraced(L"Corvane::IPPResponseAttributes::SetSuccess", &m_success, status);
}

const char* IPPResponseAttributes::GetSuccessStatus() {
  return GetTraced(L"Corvane::IPPResponseAttributes::GetSuccessStatus", m_success);
}

HRESULT IPPResponseAttributes::SetRequestID(const char* id) {
  return SetTraced(L"Corvane::IPPResponseAttributes::SetRequestID", &m_requestId, id);
}

const char* IPPResponseAttributes::GetRequestID() {
  return GetTraced(L"Corvane::IPPResponseAttributes::GetRequestID", m_requestId);
}

HRESULT IPPResponseAttributes::SetDocumentAccessError(const char* error) {
  return SetTraced(L"Corvane::IPPResponseAttributes::SetDocumentAccessError",
                   &m_documentAccessError, error);
}

const char* IPPResponseAttributes::GetDocumentAccessError() {
  return GetTraced(L"Corvane::IPPResponseAttributes::GetDocumentAccessError",
                   m_documentAccessError);
}

HRESULT IPPResponseAttributes::SetJobURI(const char* uri) {
  return SetTraced(L"Corvane::IPPResponseAttributes::SetJobURI", &m_jobUri, uri);
}

const char* IPPResponseAttributes::GetJobURI() {
  return GetTraced(L"Corvane::IPPResponseAttributes::GetJobURI", m_jobUri);
}

void IPPResponseAttributes::SetJobID(std::int32_t id) {
  SetTraced(L"Corvane::IPPResponseAttributes::SetJobID", &m_jobId, id);
}

std::int32_t IPPResponseAttributes::GetJobID() {
  return GetTraced(L"Corvane::IPPResponseAttributes::GetJobID", m_jobId);
}

HRESULT IPPResponseAttributes::SetJobState(const char* state) {
  return SetTraced(L"Corvane::IPPResponseAttributes::SetJobState", &m_jobState, state);
}

const char* IPPResponseAttributes::GetJobState() {
  return GetTraced(L"Corvane::IPPResponseAttributes::GetJobState", m_jobState);
}

HRESULT IPPResponseAttributes::SetJobStateReasons(const char* reasons) {
  return SetTraced(L"Corvane::IPPResponseAttributes::SetJobStateReasons", &m_jobStateReasons,
                   reasons);
}

const char* IPPResponseAttributes::GetJobStateReasons() {
  return GetTraced(L"Corvane::IPPResponseAttributes::GetJobStateReasons", m_jobStateReasons);
}

}  // namespace Corvane

Corvane::IPPResponseBase* CreateIPPResponse() {
  Corvane::TraceScope trace(L"Corvane::CreateIPPResponse");
  return Corvane::IPPResponseAttributes::Create();
}
