// What an IPP answer told of a job.
#ifndef CORVANE_IPP_RESPONSE_H_
#define CORVANE_IPP_RESPONSE_H_

#include <cstdint>

#include "corvane/disposable.h"

namespace Corvane {

// A plain holder of values. Texts are copied; a null takes the text away. Getters give the object's
// own text, null when there is none, until it is set again. Setters of text give 0. One thread at a
// time.
class IPPResponseBase : public Corvane::IDisposable {
 public:
  virtual ~IPPResponseBase() = default;

  // The status code in decimal, or "NOT_SET_ERROR".
  virtual HRESULT SetSuccess(const char* status) = 0;
  virtual const char* GetSuccessStatus() = 0;
  virtual HRESULT SetRequestID(const char* id) = 0;
  virtual const char* GetRequestID() = 0;
  virtual HRESULT SetDocumentAccessError(const char* error) = 0;
  virtual const char* GetDocumentAccessError() = 0;
  virtual HRESULT SetJobURI(const char* uri) = 0;
  virtual const char* GetJobURI() = 0;
  virtual void SetJobID(std::int32_t id) = 0;
  virtual std::int32_t GetJobID() = 0;
  // "Pending", "Pending_held", "Processing", "Processing_stopped", "Canceled", "Aborted" or
  // "Completed".
  virtual HRESULT SetJobState(const char* state) = 0;
  virtual const char* GetJobState() = 0;
  // Keywords with commas between them.
  virtual HRESULT SetJobStateReasons(const char* reasons) = 0;
  virtual const char* GetJobStateReasons() = 0;
};

}  // namespace Corvane

// One reference, the caller's; null when there is no memory.
extern "C" CORVANE_API Corvane::IPPResponseBase* CreateIPPResponse();

namespace Corvane {
using ::CreateIPPResponse;
}

#endif  // CORVANE_IPP_RESPONSE_H_
