// net-snmp's headers, in the order that they ask for.
#ifndef CORVANE_HOST_SNMP_NETSNMP_H_
#define CORVANE_HOST_SNMP_NETSNMP_H_

// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/library/large_fd_set.h>
#include <net-snmp/library/snmpIPBaseDomain.h>
// clang-format on

#endif  // CORVANE_HOST_SNMP_NETSNMP_H_
