// What an IPP answer told.
#ifndef CORVANE_IPP_IPP_RESPONSE_ATTRIBUTES_H_
#define CORVANE_IPP_IPP_RESPONSE_ATTRIBUTES_H_

#include "corvane/ipp_response.h"
#include "ipp/owned_chars.h"

namespace Corvane {

class IPPResponseAttributes : public IDisposableImpl, public IPPResponseBase {
 public:
  // One reference, the caller's; null when there is no memory.
  static IPPResponseAttributes* Create();

  IPPResponseAttributes();
  ~IPPResponseAttributes() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  HRESULT SetSuccess(const char* status) override;
  const char* GetSuccessStatus() override;
  HRESULT SetRequestID(const char* id) override;
  const char* GetRequestID() override;
  HRESULT SetDocumentAccessError(const char* error) override;
  const char* GetDocumentAccessError() override;
  HRESULT SetJobURI(const char* uri) override;
  const char* GetJobURI() override;
  void SetJobID(std::int32_t id) override;
  std::int32_t GetJobID() override;
  HRESULT SetJobState(const char* state) override;
  const char* GetJobState() override;
  HRESULT SetJobStateReasons(const char* reasons) override;
  const char* GetJobStateReasons() override;

 private:
  OwnedChars m_success;
  OwnedChars m_requestId;
  OwnedChars m_documentAccessError;
  OwnedChars m_jobUri;
  std::int32_t m_jobId = 0;
  OwnedChars m_jobState;
  OwnedChars m_jobStateReasons;
};

}  // namespace Corvane

#endif  // CORVANE_IPP_IPP_RESPONSE_ATTRIBUTES_H_
