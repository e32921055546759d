#include "host/snmp/snmp_library.h"

#include "host/snmp/netsnmp.h"

namespace Corvane::Host {
namespace {

std::mutex& LibraryMutex() {
  static std::mutex mutex;
  return mutex;
}

bool SetUpNetSnmp() {
  for (const int flag :
       {NETSNMP_DS_LIB_DONT_READ_CONFIGS, NETSNMP_DS_LIB_DONT_PERSIST_STATE,
        NETSNMP_DS_LIB_DONT_LOAD_HOST_FILES, NETSNMP_DS_LIB_ALARM_DONT_USE_SIG,
        // Without it, a message can make a session answer with an engine ID of ours (RFC 5343).
        NETSNMP_DS_LIB_NO_DISCOVERY}) {
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, flag, 1);
  }
  netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_APPTYPE, "corvane");
  // With no handler at all, messages go to the error stream.
  netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
  netsnmp_session session;
  snmp_sess_init(&session);
  init_snmpv3("corvane");
  // What reading the configuration would end with: the version 3 parts draw their random numbers.
  snmp_call_callbacks(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_PREMIB_READ_CONFIG, nullptr);
  return true;
}

}  // namespace

SnmpLock::SnmpLock() : m_lock(LibraryMutex()) {
  [[maybe_unused]] static const bool ready = SetUpNetSnmp();
}

}  // namespace Corvane::Host
