#include "platform/write_group.h"

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/registry/registry_key.h"
#include "platform/linux/spooler/printer.h"

namespace Corvane {
namespace {

// Null for a connection that is in a group already: the outer one has the writes.
std::shared_ptr<Store::Connection> Begin(std::shared_ptr<Store::Connection> connection) {
  return connection->BeginGroup() ? std::move(connection) : nullptr;
}

}  // namespace

WriteGroup::WriteGroup(HKEY key) {
  if (RegistryKey::IsPredefined(key)) return;
  const std::shared_ptr<RegistryKey> opened = RegistryKey::Of(key);
  if (opened != nullptr) m_connection = Begin(opened->Connection());
}

WriteGroup::WriteGroup(HANDLE printer) {
  const std::shared_ptr<Printer> opened = Printer::Of(printer);
  if (opened != nullptr) m_connection = Begin(opened->Connection());
}

WriteGroup::~WriteGroup() { End(false); }

LSTATUS WriteGroup::Commit() { return End(true); }

LSTATUS WriteGroup::End(bool commit) {
  const std::shared_ptr<Store::Connection> connection = std::move(m_connection);
  if (connection == nullptr) return ERROR_SUCCESS;
  return BehindWall([&] { return connection->EndGroup(commit); });
}

}  // namespace Corvane
