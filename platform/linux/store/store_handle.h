// What open keys and open printers have in common.
#ifndef CORVANE_PLATFORM_LINUX_STORE_STORE_HANDLE_H_
#define CORVANE_PLATFORM_LINUX_STORE_STORE_HANDLE_H_

#include <memory>
#include <utility>

#include "platform/linux/misc/handle_table.h"
#include "platform/linux/store/connection.h"

namespace Corvane::Store {

// Any thread.
template <HandleKind kind>
class StoreHandle : public HandleObject {
 public:
  static constexpr HandleKind kKind = kind;

  StoreHandle(std::shared_ptr<Connection> connection, ACCESS_MASK access)
      : HandleObject(kind), m_connection(std::move(connection)), m_access(access) {}

  // ERROR_ACCESS_DENIED unless the handle was opened with all of `rights`.
  LSTATUS Require(ACCESS_MASK rights) const {
    return (m_access & rights) == rights ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
  }

  const std::shared_ptr<Connection>& Way() const { return m_connection; }

 protected:
  const std::shared_ptr<Connection> m_connection;

 private:
  const ACCESS_MASK m_access;
};

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_STORE_HANDLE_H_
