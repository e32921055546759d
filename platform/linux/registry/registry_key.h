// An open key: what an HKEY stands for.
#ifndef CORVANE_PLATFORM_LINUX_REGISTRY_REGISTRY_KEY_H_
#define CORVANE_PLATFORM_LINUX_REGISTRY_REGISTRY_KEY_H_

#include <memory>

#include "corvane/linux/registry.h"
#include "platform/linux/store/enumeration.h"
#include "platform/linux/store/nodes.h"
#include "platform/linux/store/store_handle.h"
#include "platform/linux/store/values.h"

namespace Corvane {

// Any thread. Every operation may give ERROR_KEY_DELETED and what the store's file gives.
class RegistryKey final : public Store::StoreHandle<HandleKind::kRegistryKey> {
 public:
  RegistryKey(std::shared_ptr<Store::Connection> connection, std::int64_t node, REGSAM access)
      : StoreHandle(std::move(connection), access), m_node(node) {}

  static bool IsPredefined(HKEY key) { return key == HKEY_LOCAL_MACHINE; }

  // What `key` stands for; for HKEY_LOCAL_MACHINE an object of its own for each call, whose store
  // is made by the first write and read as empty before. ERROR_INVALID_HANDLE; ERROR_ACCESS_DENIED
  // unless it was opened with all of `rights`.
  static LSTATUS Find(HKEY key, REGSAM rights, std::shared_ptr<RegistryKey>* found);

  std::int64_t Node() const { return m_node; }

  LSTATUS SetValue(const Store::Name& name, const Store::Data& data);
  LSTATUS GetValue(const Store::Name& name, const Store::Buffer& buffer);
  LSTATUS DeleteValue(const Store::Name& name);
  LSTATUS DeleteSubkey(const std::vector<Store::Name>& path);
  LSTATUS GetInfo(Store::NodeInfo* info);

  // Calls `use(item)` with the value or the key of that number; its result is the operation's.
  template <typename Use>
  LSTATUS WithItem(Store::Enumeration::Of what, std::size_t index, Use&& use) {
    const Store::Connection::Access access(*m_connection);
    Store::Enumeration& enumeration =
        what == Store::Enumeration::Of::kValues ? m_values : m_subkeys;
    Store::Enumeration::Item item;
    const LSTATUS result = enumeration.GetLocked(*m_connection, m_node, index, &item);
    // The root of a store that is not there yet is empty.
    if (result == ERROR_FILE_NOT_FOUND) return ERROR_NO_MORE_ITEMS;
    return result == ERROR_SUCCESS ? use(item) : result;
  }

 private:
  LSTATUS TouchLocked(Store::Database& database);

  const std::int64_t m_node;

  // Guarded by the connection's lock.
  std::uint64_t m_touchedIn = 0;  // the transaction that has noted the time of writing
  Store::Enumeration m_values{Store::Enumeration::Of::kValues};
  Store::Enumeration m_subkeys{Store::Enumeration::Of::kSubkeys};
};

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_LINUX_REGISTRY_REGISTRY_KEY_H_
