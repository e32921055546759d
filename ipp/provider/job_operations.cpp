// Print jobs. To come: each says so and sends nothing.
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"

namespace Corvane {

HRESULT IPPProviderImpl::PrintUri(IPPRequestBase*, IPPResponseBase*) {
  TraceScope trace(L"Corvane::IPPProviderImpl::PrintUri");
  return E_NOTIMPL;
}

HRESULT IPPProviderImpl::SendURI(IPPRequestBase*, IPPResponseBase*) {
  TraceScope trace(L"Corvane::IPPProviderImpl::SendURI");
  return E_NOTIMPL;
}

HRESULT IPPProviderImpl::CreateJob(IPPRequestBase*, IPPResponseBase*) {
  TraceScope trace(L"Corvane::IPPProviderImpl::CreateJob");
  return E_NOTIMPL;
}

HRESULT IPPProviderImpl::CancelJob(IPPRequestBase*, IPPResponseBase*) {
  TraceScope trace(L"Corvane::IPPProviderImpl::CancelJob");
  return E_NOTIMPL;
}

HRESULT IPPProviderImpl::PrintJob(IPPRequestBase*, IPPResponseBase*, const void*, std::int32_t,
                                  bool) {
  TraceScope trace(L"Corvane::IPPProviderImpl::PrintJob");
  return E_NOTIMPL;
}

HRESULT IPPProviderImpl::PrintJobWrite(IPPRequestBase*, IPPResponseBase*, const void*,
                                       std::int32_t) {
  TraceScope trace(L"Corvane::IPPProviderImpl::PrintJobWrite");
  return E_NOTIMPL;
}

}  // namespace Corvane
