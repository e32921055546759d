#include "host/snmp/snmp_identity.h"

#include <cstddef>
#include <cstring>
#include <iterator>

#include "base/utf8.h"

namespace Corvane::Host {
namespace {

constexpr std::size_t kMaxCommunityBytes = 255;  // net-snmp reads no longer one back
constexpr std::size_t kMaxUserBytes = 32;        // RFC 3414, usmUserName
constexpr std::size_t kMaxContextBytes = 255;    // RFC 3411, 3.3.1
constexpr std::size_t kMinPassphraseBytes = 8;   // RFC 3414, 11.2

// In the order of SnmpAuth and of SnmpPrivacy; net-snmp's names.
constexpr const char* kAuthNames[] = {"MD5", "SHA", "SHA-224", "SHA-256", "SHA-384", "SHA-512"};
constexpr const char* kPrivacyNames[] = {"DES", "AES", "AES-192", "AES-256"};

bool SecretHasNul(const std::string& text) { return text.find('\0') != std::string::npos; }

// -1 when this net-snmp has no such protocol.
template <std::size_t kCount, typename Enum>
int UsmProtocol(const char* const (&names)[kCount], Enum which, int (*lookUp)(const char*)) {
  const auto index = static_cast<std::size_t>(which);
  return index < kCount ? lookUp(names[index]) : -1;
}

}  // namespace

SnmpIdentity::Key::~Key() { explicit_bzero(bytes, sizeof(bytes)); }

// Works on its arguments alone, so without SnmpLock: it hashes a megabyte.
std::wstring SnmpIdentity::Key::Make(int authentication, const std::string& passphrase) {
  if (passphrase.size() < kMinPassphraseBytes) return L"a passphrase has fewer than 8 bytes";
  std::size_t oidLength = 0;
  const oid* const protocol = sc_get_auth_oid(authentication, &oidLength);
  size = sizeof(bytes);
  if (!protocol || generate_Ku(protocol, static_cast<u_int>(oidLength),
                               reinterpret_cast<const u_char*>(passphrase.data()),
                               passphrase.size(), bytes, &size) != SNMPERR_SUCCESS) {
    return L"no key can be made with the authentication protocol";
  }
  return {};
}

std::wstring SnmpIdentity::Set(const SnmpOptions& options) {
  if (options.timeoutMs == 0 || options.timeoutMs > kMaxSnmpTimeoutMs ||
      options.retries > kMaxSnmpRetries) {
    return L"the time-out is not 1 to 600000 ms, or there are more than 100 retries";
  }
  m_community = ToUtf8(options.community);
  m_user = ToUtf8(options.user);
  m_contextName = ToUtf8(options.contextName);
  switch (options.version) {
    case SnmpVersion::kV3:
      m_version = SNMP_VERSION_3;
      return SetUser(options);
    case SnmpVersion::kV1:
      m_version = SNMP_VERSION_1;
      break;
    case SnmpVersion::kV2c:
      m_version = SNMP_VERSION_2c;
      break;
    default:
      return L"unknown version";
  }
  return m_community.size() > kMaxCommunityBytes ? L"the community is longer than 255 bytes" : L"";
}

std::wstring SnmpIdentity::SetUser(const SnmpOptions& options) {
  if (m_user.empty() || m_user.size() > kMaxUserBytes || SecretHasNul(m_user)) {
    return L"the user name does not have 1 to 32 bytes";
  }
  if (m_contextName.size() > kMaxContextBytes || SecretHasNul(m_contextName)) {
    return L"the context name is longer than 255 bytes";
  }
  if (options.authPassphrase.empty()) {
    return options.privacyPassphrase.empty() ? L"" : L"privacy without authentication";
  }
  m_level = SNMP_SEC_LEVEL_AUTHNOPRIV;
  m_authentication = UsmProtocol(kAuthNames, options.auth, &usm_lookup_auth_type);
  if (m_authentication < 0) return L"unknown authentication protocol";
  std::wstring fault = m_authKey.Make(m_authentication, ToUtf8(options.authPassphrase));
  if (!fault.empty() || options.privacyPassphrase.empty()) return fault;
  m_level = SNMP_SEC_LEVEL_AUTHPRIV;
  m_privacy = UsmProtocol(kPrivacyNames, options.privacy, &usm_lookup_priv_type);
  if (m_privacy < 0) return L"unknown privacy protocol";
  return m_privacyKey.Make(m_authentication, ToUtf8(options.privacyPassphrase));
}

void SnmpIdentity::Lend(netsnmp_session* session) {
  session->version = m_version;
  if (!IsVersion3()) {
    session->community = reinterpret_cast<u_char*>(m_community.data());
    session->community_len = m_community.size();
    return;
  }
  session->securityModel = SNMP_SEC_MODEL_USM;
  session->securityLevel = m_level;
  session->securityName = m_user.data();
  session->securityNameLen = m_user.size();
  session->contextName = m_contextName.data();
  session->contextNameLen = m_contextName.size();
  if (m_level >= SNMP_SEC_LEVEL_AUTHNOPRIV) {
    session->securityAuthProto = sc_get_auth_oid(m_authentication, &session->securityAuthProtoLen);
    std::memcpy(session->securityAuthKey, m_authKey.bytes, m_authKey.size);
    session->securityAuthKeyLen = m_authKey.size;
  }
  if (m_level >= SNMP_SEC_LEVEL_AUTHPRIV) {
    session->securityPrivProto = sc_get_priv_oid(m_privacy, &session->securityPrivProtoLen);
    std::memcpy(session->securityPrivKey, m_privacyKey.bytes, m_privacyKey.size);
    session->securityPrivKeyLen = m_privacyKey.size;
  }
}

}  // namespace Corvane::Host
