#include "platform/write_group.h"

#include "platform/linux/store/store_handle.h"

namespace Corvane {
namespace {

// Null for a handle that is not open, and for one that is in a group already: the outer one has the
// writes.
template <HandleKind kind>
std::shared_ptr<Store::Connection> BeginWriteGroup(HANDLE handle) {
  const auto opened = HandleTable::OfProcess().Find<Store::StoreHandle<kind>>(handle);
  if (opened == nullptr || !opened->Way()->BeginGroup()) return nullptr;
  return opened->Way();
}

}  // namespace

WriteGroup::WriteGroup(HKEY key) : m_connection(BeginWriteGroup<HandleKind::kRegistryKey>(key)) {}

WriteGroup::WriteGroup(HANDLE printer)
    : m_connection(BeginWriteGroup<HandleKind::kPrinter>(printer)) {}

WriteGroup::~WriteGroup() { End(false); }

LSTATUS WriteGroup::Commit() { return End(true); }

LSTATUS WriteGroup::End(bool commit) {
  const std::shared_ptr<Store::Connection> connection = std::move(m_connection);
  if (connection == nullptr) return ERROR_SUCCESS;
  return BehindWall([&] { return connection->EndGroup(commit); });
}

}  // namespace Corvane
