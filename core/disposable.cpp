#include "corvane/disposable.h"

#include <mutex>

#include "core/disposable_set.h"
#include "core/trace.h"

IDisposable::~IDisposable() = default;

namespace TqUtils {

CDisposable::CDisposable() { CDisposableSet::Insert(this); }

CDisposable::~CDisposable() { CDisposableSet::Erase(this); }

std::uint32_t CDisposable::AddRefImpl() {
  m_count.fetch_add(1);
  const std::int32_t count = m_count.load();
  if (Corvane::TraceEnabled(Corvane::kTraceInfo)) {
    Corvane::WriteTraceMessage(Corvane::kTraceInfo, L"TqUtils::CDisposable::AddRefImpl",
                               L"%ls (%p) ref is %d", TypeName().c_str(), static_cast<void*>(this),
                               count);
  }
  return static_cast<std::uint32_t>(count);
}

std::uint32_t CDisposable::DisposeImpl() {
  // After the decrement the object may already be another thread's to delete: its name is read
  // before, and the count not again.
  const bool traced = Corvane::TraceEnabled(Corvane::kTraceInfo);
  const std::wstring name = traced ? TypeName() : std::wstring();
  const std::int32_t count = m_count.fetch_sub(1) - 1;
  if (traced) {
    Corvane::WriteTraceMessage(Corvane::kTraceInfo, L"TqUtils::CDisposable::DisposeImpl",
                               L"%ls (%p) ref is %d", name.c_str(), static_cast<void*>(this),
                               count);
  }
  if (count == 0 && !m_noDelete) delete static_cast<::IDisposable*>(this);
  return static_cast<std::uint32_t>(count);
}

void CDisposable::SetNoDeleteImpl(bool noDelete) { m_noDelete = noDelete; }

bool CDisposable::IsNoDeleteImpl() { return m_noDelete; }

const char* CDisposable::GetTypeName() { return nullptr; }

// Several threads may trace one object. The name never changes once it is there.
const std::wstring& CDisposable::TypeName() {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  if (m_typeName.empty()) {
    if (const char* name = GetTypeName()) {
      for (; *name; ++name) m_typeName.push_back(static_cast<unsigned char>(*name));
    }
  }
  return m_typeName;
}

}  // namespace TqUtils

std::uint32_t IDisposableImpl::Dispose() { return DisposeImpl(); }
std::uint32_t IDisposableImpl::Release() { return DisposeImpl(); }
std::uint32_t IDisposableImpl::AddRef() { return AddRefImpl(); }
std::uint32_t IDisposableImpl::AddRefConst() { return AddRefImpl(); }
void IDisposableImpl::SetNoDelete(bool noDelete) { SetNoDeleteImpl(noDelete); }
bool IDisposableImpl::IsNoDelete() { return IsNoDeleteImpl(); }
