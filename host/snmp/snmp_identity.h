// Who a host is to an agent: what SnmpOptions say, checked, as net-snmp takes it.
#ifndef CORVANE_HOST_SNMP_SNMP_IDENTITY_H_
#define CORVANE_HOST_SNMP_SNMP_IDENTITY_H_

#include <string>

#include "host/common/network_options.h"
#include "host/snmp/netsnmp.h"

namespace Corvane::Host {

class SnmpIdentity {
 public:
  // A remark for people when no agent can be spoken to with these options, without the secrets in
  // it; empty on success. Making the keys of version 3 takes some milliseconds.
  std::wstring Set(const SnmpOptions& options);

  bool IsVersion3() const { return m_version == SNMP_VERSION_3; }
  // Gives a session of snmp_sess_init views of what this object holds.
  void Lend(netsnmp_session* session);

 private:
  // A key that is not yet bound to an engine (RFC 3414, 2.6: Ku).
  struct Key {
    ~Key();
    std::wstring Make(int authentication, const std::string& passphrase);
    u_char bytes[USM_AUTH_KU_LEN] = {};
    std::size_t size = 0;
  };

  std::wstring SetUser(const SnmpOptions& options);

  long m_version = SNMP_VERSION_2c;
  int m_level = SNMP_SEC_LEVEL_NOAUTH;
  std::string m_community;
  std::string m_user;
  std::string m_contextName;
  int m_authentication = 0;  // net-snmp's number; with m_level
  int m_privacy = 0;
  Key m_authKey;
  Key m_privacyKey;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_SNMP_IDENTITY_H_
