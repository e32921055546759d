// net-snmp, for one thread at a time.
#ifndef CORVANE_HOST_SNMP_SNMP_LIBRARY_H_
#define CORVANE_HOST_SNMP_SNMP_LIBRARY_H_

#include <mutex>

namespace Corvane::Host {

// Held around every call that goes into net-snmp beyond its plain data: distributions build it
// without locks of its own, and request numbers, the version 3 users and engine clocks, statistics,
// error texts and the log are shared by all its sessions. Nothing waits while it is held: names are
// resolved and answers awaited outside.
//
// The first one sets net-snmp up for the process. It then reads no configuration file, MIB or
// environment variable, keeps no state on disk and logs nothing. Its own init_snmp is not called:
// that loads MIBs by environment variables and changes the process's locale. A program that uses
// net-snmp beside this host shares these settings and has to share this lock.
class SnmpLock {
 public:
  SnmpLock();
  SnmpLock(const SnmpLock&) = delete;
  SnmpLock& operator=(const SnmpLock&) = delete;

 private:
  const std::lock_guard<std::mutex> m_lock;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_SNMP_LIBRARY_H_
