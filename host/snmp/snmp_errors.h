// What a failed SNMP exchange means.
#ifndef CORVANE_HOST_SNMP_SNMP_ERRORS_H_
#define CORVANE_HOST_SNMP_SNMP_ERRORS_H_

#include <string>

#include "corvane/platform.h"

namespace Corvane::Host {

// The result of an error number of net-snmp (SNMPERR_...), which stands for a report of the agent
// too; `systemError` is the errno beside it, or 0.
HRESULT ResultFromNetSnmp(int error, int systemError);

// The result of an error status of RFC 3416, 3, other than noError. Numbers that it does not know
// count as genErr.
HRESULT ResultFromErrorStatus(long status);

// Why, for people: "no such object".
std::wstring SnmpReason(HRESULT failure);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_SNMP_ERRORS_H_
