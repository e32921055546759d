#include "platform/linux/registry/registry_key.h"

#include <algorithm>
#include <iterator>

#include "platform/linux/store/schema.h"

namespace Corvane {

using Store::Database;
using Store::OpenMode;

LSTATUS RegistryKey::Find(HKEY key, REGSAM rights, std::shared_ptr<RegistryKey>* found) {
  *found = IsPredefined(key) ? std::make_shared<RegistryKey>(std::make_shared<Store::Connection>(),
                                                             Store::kRegistryRoot, KEY_ALL_ACCESS)
                             : HandleTable::OfProcess().Find<RegistryKey>(key);
  return *found != nullptr ? (*found)->Require(rights) : LSTATUS{ERROR_INVALID_HANDLE};
}

LSTATUS RegistryKey::TouchLocked(Database& database) {
  if (m_touchedIn == m_connection->TransactionLocked()) return ERROR_SUCCESS;
  const LSTATUS result = Store::TouchNode(database, m_node);
  if (result == ERROR_SUCCESS) m_touchedIn = m_connection->TransactionLocked();
  return result;
}

LSTATUS RegistryKey::SetValue(const Store::Name& name, const Store::Data& data) {
  return m_connection->Write(OpenMode::kCreate, [&](Database& database) {
    const LSTATUS result = TouchLocked(database);
    return result == ERROR_SUCCESS ? Store::SetValue(database, m_node, name, data) : result;
  });
}

LSTATUS RegistryKey::GetValue(const Store::Name& name, const Store::Buffer& buffer) {
  return m_connection->Read([&](Database& database) {
    const LSTATUS result = Store::GetValue(database, m_node, name, buffer);
    if (result != ERROR_FILE_NOT_FOUND) return result;
    const LSTATUS state = Store::CheckNode(database, m_node);
    return state == ERROR_SUCCESS ? result : state;
  });
}

LSTATUS RegistryKey::DeleteValue(const Store::Name& name) {
  return m_connection->Write(OpenMode::kCreate, [&](Database& database) {
    const LSTATUS result = TouchLocked(database);
    return result == ERROR_SUCCESS ? Store::DeleteValue(database, m_node, name) : result;
  });
}

LSTATUS RegistryKey::DeleteSubkey(const std::vector<Store::Name>& path) {
  return m_connection->Write(OpenMode::kCreate, [&](Database& database) {
    m_touchedIn = 0;  // it may be this key that goes
    std::int64_t node = 0;
    const LSTATUS result = Store::FindNode(database, m_node, path, &node);
    return result == ERROR_SUCCESS ? Store::DeleteNode(database, node) : result;
  });
}

LSTATUS RegistryKey::GetInfo(Store::NodeInfo* info) {
  const Store::Connection::Access access(*m_connection);
  const LSTATUS result = m_connection->ReadLocked([&](Database& database) -> LSTATUS {
    Store::Extent& values = info->values;
    const auto measure = [&](const Store::Enumeration::Item& item) -> LSTATUS {
      ++values.count;
      values.maxNameChars = std::max(values.maxNameChars, std::ssize(item.name));
      values.maxDataBytes = std::max(values.maxDataBytes, std::ssize(item.data));
      return ERROR_SUCCESS;
    };
    const LSTATUS code = m_values.VisitLocked(*m_connection, m_node, measure);
    return code == ERROR_SUCCESS ? GetNodeInfo(database, m_node, info) : code;
  });
  return result == ERROR_FILE_NOT_FOUND ? LSTATUS{ERROR_SUCCESS} : result;
}

}  // namespace Corvane
