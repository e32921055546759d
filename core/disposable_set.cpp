#include "core/disposable_set.h"

#include <atomic>

#include "base/exception_wall.h"
#include "core/trace.h"

namespace TqUtils {
namespace {

constinit std::atomic<bool> g_gone{false};
constexpr wchar_t kDestructor[] = L"TqUtils::CDisposableSet::~CDisposableSet";

}  // namespace

CDisposableSet* CDisposableSet::Instance() {
  if (g_gone.load(std::memory_order_relaxed)) return nullptr;
  static CDisposableSet set;
  return &set;
}

void CDisposableSet::Insert(::IDisposable* object) {
  if (CDisposableSet* const set = Instance()) {
    const std::lock_guard lock(set->m_mutex);
    set->m_objects.insert(object);
  }
}

void CDisposableSet::Erase(::IDisposable* object) {
  if (CDisposableSet* const set = Instance()) {
    const std::lock_guard lock(set->m_mutex);
    set->m_objects.erase(object);
  }
}

CDisposableSet::~CDisposableSet() {
  g_gone.store(true, std::memory_order_relaxed);
  const auto report = [this] {
    ReportLeaks();
    return true;
  };
  if (!Corvane::BehindWall(false, report)) {
    Corvane::Trace(Corvane::kTraceError, kDestructor,
                   L"Exception caught in CDisposableSet::~CDisposableSet()");
  }
}

void CDisposableSet::ReportLeaks() const {
  using Corvane::kTraceSevere;
  if (!Corvane::TraceEnabled(kTraceSevere)) return;
  for (::IDisposable* const object : m_objects) {
    if (auto* const counted = dynamic_cast<CDisposable*>(object)) {
      Corvane::Trace(
          kTraceSevere, kDestructor, L"%ls (%p) remains in object set with ref count of %d",
          counted->TypeName().c_str(), static_cast<void*>(counted), counted->m_count.load());
    } else {
      Corvane::Trace(kTraceSevere, kDestructor,
                     L"%p remains in object set but could not be cast as CDisposable*",
                     static_cast<void*>(object));
    }
  }
}

}  // namespace TqUtils
