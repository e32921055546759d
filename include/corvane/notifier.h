// Progress notices of the host's.
#ifndef CORVANE_NOTIFIER_H_
#define CORVANE_NOTIFIER_H_

#include <cstdint>

#include "corvane/disposable.h"

namespace Corvane {

// Declared for hosts that pass progress among their own parts; the library calls none of it.
class CORVANE_API Notifier : public virtual Corvane::IDisposable {
 public:
  Notifier();
  Notifier(const Notifier& other);
  Notifier& operator=(const Notifier& other);

  virtual void OnStart(std::uint64_t totalBytes) = 0;  // 0 when the total is not known
  virtual void OnProgress(std::uint64_t bytes) = 0;
  virtual void OnMessage(const wchar_t* text) = 0;
  virtual void OnFailure(HRESULT code) = 0;
  virtual void OnFinish() = 0;
  virtual bool IsCancelled() = 0;

  virtual ~Notifier();
};

}  // namespace Corvane

#endif  // CORVANE_NOTIFIER_H_
