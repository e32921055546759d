// The user of one version 3 session.
#ifndef CORVANE_HOST_SNMP_USM_USER_H_
#define CORVANE_HOST_SNMP_USM_USER_H_

#include <memory>

#include "host/common/freed_by.h"
#include "host/snmp/netsnmp.h"

namespace Corvane::Host {

// net-snmp keeps one list of users for all sessions and finds a user there by engine ID and name
// alone: two sessions to one agent would share the keys of the first, wrong ones too. So each
// session keeps its user to itself and puts it into the list for the length of a call. With
// SnmpLock held.
class UsmUser {
 public:
  // Makes the user of a session that knows the agent's engine ID; false when net-snmp cannot.
  bool Make(netsnmp_session* session);
  void Forget() { m_user.reset(); }
  bool IsMade() const { return m_user != nullptr; }

  class InList {
   public:
    explicit InList(const UsmUser& user);
    InList(const InList&) = delete;
    InList& operator=(const InList&) = delete;
    ~InList();

   private:
    usmUser* const m_user;
  };

 private:
  std::unique_ptr<usmUser, FreedBy<usm_free_user>> m_user;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_USM_USER_H_
