// Reference-counted disposable objects: the public interface that every object handed across the
// boundary has, and the counting base that the library, and a host that wants one, builds such
// objects on.
//
// A factory returns an object with one reference, which the caller gives back with Dispose or
// Release; the last one deletes the object. Counting is atomic: any thread may take or give back a
// reference that it owns.
#ifndef CORVANE_DISPOSABLE_H_
#define CORVANE_DISPOSABLE_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "corvane/platform.h"

namespace Corvane {

// The four operations of every object at the boundary. Each returns the new count. AddRefConst does
// exactly what AddRef does, and Release what Dispose does. Nobody deletes through this interface.
class IDisposable {
 public:
  virtual std::uint32_t AddRef() = 0;
  virtual std::uint32_t AddRefConst() = 0;
  virtual std::uint32_t Dispose() = 0;
  virtual std::uint32_t Release() = 0;
};

}  // namespace Corvane

// The utility library's own view of a counted object. An object with the keep-alive flag survives a
// count of 0; its owner deletes it.
class CORVANE_API IDisposable {
 public:
  virtual ~IDisposable();
  virtual std::uint32_t Dispose() = 0;
  virtual std::uint32_t Release() = 0;
  virtual std::uint32_t AddRef() = 0;
  virtual std::uint32_t AddRefConst() = 0;
  virtual void SetNoDelete(bool noDelete) = 0;
  virtual bool IsNoDelete() = 0;
};

namespace TqUtils {

// The reference count. Every object is listed in the process-wide object set from construction to
// destruction; what is still listed when the module unloads is reported to the trace sink at level
// 128. A new object has count 0.
class CORVANE_API CDisposable : public virtual ::IDisposable {
 public:
  CDisposable();
  CDisposable(const CDisposable&) = delete;
  CDisposable& operator=(const CDisposable&) = delete;
  ~CDisposable() override;

  virtual std::uint32_t AddRefImpl();
  // Deletes the object when this very call brought the count to 0 and the keep-alive flag is not
  // set; then returns 0.
  virtual std::uint32_t DisposeImpl();
  virtual void SetNoDeleteImpl(bool noDelete);
  virtual bool IsNoDeleteImpl();
  // The class name for traces, 8-bit, or null. Asked once, at the first trace of the object.
  virtual const char* GetTypeName();

 private:
  friend class CDisposableSet;
  const std::wstring& TypeName();

  std::atomic<std::int32_t> m_count{0};
  bool m_noDelete = false;
  std::wstring m_typeName;
};

}  // namespace TqUtils

// Joins the counting base to the utility library's interface. A concrete class derives from its
// public interface and from this, and forwards that interface's AddRef pair to AddRefImpl and its
// Dispose pair to DisposeImpl.
class CORVANE_API IDisposableImpl : public TqUtils::CDisposable {
 public:
  std::uint32_t Dispose() override;
  std::uint32_t Release() override;
  std::uint32_t AddRef() override;
  std::uint32_t AddRefConst() override;
  void SetNoDelete(bool noDelete) override;
  bool IsNoDelete() override;
};

namespace Corvane {
using ::IDisposableImpl;
}

#endif  // CORVANE_DISPOSABLE_H_
