#include "host/snmp/usm_user.h"

namespace Corvane::Host {
namespace {

void TakeFromList(usmUser* user) {
  usm_remove_user(user);
  user->next = nullptr;
  user->prev = nullptr;
}

}  // namespace

bool UsmUser::Make(netsnmp_session* session) {
  if (create_user_from_session(session) != SNMPERR_SUCCESS) return false;
  m_user.reset(
      usm_get_user(session->securityEngineID, session->securityEngineIDLen, session->securityName));
  if (!m_user) return false;
  TakeFromList(m_user.get());
  return true;
}

UsmUser::InList::InList(const UsmUser& user) : m_user(user.m_user.get()) {
  if (m_user) usm_add_user(m_user);
}

UsmUser::InList::~InList() {
  if (m_user) TakeFromList(m_user);
}

}  // namespace Corvane::Host
