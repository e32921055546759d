// An open printer: what a HANDLE of the spooler stands for.
#ifndef CORVANE_PLATFORM_LINUX_SPOOLER_PRINTER_H_
#define CORVANE_PLATFORM_LINUX_SPOOLER_PRINTER_H_

#include <memory>
#include <utility>
#include <vector>

#include "corvane/linux/spooler.h"
#include "platform/linux/store/enumeration.h"
#include "platform/linux/store/names.h"
#include "platform/linux/store/nodes.h"
#include "platform/linux/store/store_handle.h"
#include "platform/linux/store/values.h"

namespace Corvane {

// Any thread. `key` is a path of names as SplitPath makes it. Every operation may give what the
// store's file gives.
class Printer final : public Store::StoreHandle<HandleKind::kPrinter> {
 public:
  Printer(Store::Name name, ACCESS_MASK access)
      : StoreHandle(std::make_shared<Store::Connection>(), access), m_name(std::move(name)) {}

  // ERROR_FILE_NOT_FOUND: no such key.
  LSTATUS Find(Store::Database& database, const std::vector<Store::Name>& key,
               std::int64_t* node) const;

  // Calls `visit(item)` with the values of a node; within a Read. Who asks for a size first does
  // not pay for it twice.
  template <typename Visit>
  LSTATUS VisitLocked(std::int64_t node, Visit&& visit) {
    return m_values.VisitLocked(*m_connection, node, visit);
  }

  // Makes the key where it is missing.
  LSTATUS SetValue(const std::vector<Store::Name>& key, const Store::Name& value,
                   const Store::Data& data);

 private:
  std::vector<Store::Name> PathOf(const std::vector<Store::Name>& key) const;
  LSTATUS FindOrMakeLocked(Store::Database& database, const std::vector<Store::Name>& key,
                           std::int64_t* node);

  const Store::Name m_name;

  // The key written to last, by its folded names, in the connection's transaction m_keyIn: no one
  // else can have deleted it meanwhile. Guarded by the connection's lock.
  std::vector<Store::Name> m_key;
  std::int64_t m_keyNode = 0;
  std::uint64_t m_keyIn = 0;

  Store::Enumeration m_values{Store::Enumeration::Of::kValues};  // guarded likewise
};

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_LINUX_SPOOLER_PRINTER_H_
