// The process-wide set of live disposable objects.
#ifndef CORVANE_CORE_DISPOSABLE_SET_H_
#define CORVANE_CORE_DISPOSABLE_SET_H_

#include <functional>
#include <mutex>
#include <set>

#include "corvane/disposable.h"

namespace TqUtils {

// Keyed by the address of an object's IDisposable; null is a key too. Comes into being with the
// first object and goes when the module unloads, then reporting what is still in it; it never
// deletes an object. The lock covers the set alone, so that collections can be made and released on
// several threads at once.
class CDisposableSet {
 public:
  // Before the set exists it is made; after it has gone, when the statics of a host outlive the
  // module's, these do nothing.
  static void Insert(::IDisposable* object);
  static void Erase(::IDisposable* object);

  CDisposableSet() = default;
  CDisposableSet(const CDisposableSet&) = delete;
  CDisposableSet& operator=(const CDisposableSet&) = delete;
  ~CDisposableSet();

 private:
  static CDisposableSet* Instance();
  void ReportLeaks() const;

  std::mutex m_mutex;
  std::set<::IDisposable*, std::less<>> m_objects;  // guarded by m_mutex
};

}  // namespace TqUtils

#endif  // CORVANE_CORE_DISPOSABLE_SET_H_
