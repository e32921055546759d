// The system error codes that HTTPRequest::GetLastError tells, by their values on Windows, and the
// results of MIBConnection.
#ifndef CORVANE_HOST_COMMON_ERROR_CODES_H_
#define CORVANE_HOST_COMMON_ERROR_CODES_H_

#include <cstdint>

#include "corvane/platform.h"

namespace Corvane::Host {

constexpr std::uint32_t kInvalidHandle = 6;
constexpr std::uint32_t kOutOfMemory = 14;
constexpr std::uint32_t kReadFault = 30;
constexpr std::uint32_t kInvalidParameter = 87;
constexpr std::uint32_t kTimeout = 12002;
constexpr std::uint32_t kInternalError = 12004;
constexpr std::uint32_t kNameNotResolved = 12007;
constexpr std::uint32_t kOperationCancelled = 12017;
constexpr std::uint32_t kRequestUsedUp = 12019;  // a second exchange of one request
constexpr std::uint32_t kOutOfOrder = 12019;  // a step of a streamed exchange that is not its turn
constexpr std::uint32_t kCannotConnect = 12029;
constexpr std::uint32_t kConnectionError = 12030;  // broken off, or the body is incomplete
constexpr std::uint32_t kInvalidServerResponse = 12152;
constexpr std::uint32_t kRedirectFailed = 12156;
constexpr std::uint32_t kSecureFailure = 12175;
constexpr std::uint32_t kHeaderTooLarge = 12183;
constexpr std::uint32_t kResponseTooLarge = 12184;

// The failure that stands for a system error code other than 0.
constexpr HRESULT ResultFromError(std::uint32_t code) {
  return static_cast<HRESULT>(0x80070000U | (code & 0xFFFFU));
}

// What an SNMP agent answers. An error status of RFC 3416, 3, by its number: tooBig is 1,
// noSuchName of version 1 is 2, inconsistentName is 18.
constexpr HRESULT SnmpStatusResult(std::uint32_t status) {
  return static_cast<HRESULT>(0x80040600U + status);
}
// A variable without a value, by the exception's tag (RFC 3416, 3).
constexpr HRESULT kSnmpNoSuchObject = SnmpStatusResult(0x80);
constexpr HRESULT kSnmpNoSuchInstance = SnmpStatusResult(0x81);
constexpr HRESULT kSnmpEndOfMibView = SnmpStatusResult(0x82);  // nothing follows the OID
// A report of version 3, by the number of its counter (RFC 3414, 5).
constexpr HRESULT kSnmpOtherReport = SnmpStatusResult(0xA0);
constexpr HRESULT kSnmpUnsupportedSecurityLevel = SnmpStatusResult(0xA1);
constexpr HRESULT kSnmpNotInTimeWindow = SnmpStatusResult(0xA2);
constexpr HRESULT kSnmpUnknownUser = SnmpStatusResult(0xA3);
constexpr HRESULT kSnmpUnknownEngine = SnmpStatusResult(0xA4);
constexpr HRESULT kSnmpWrongDigest = SnmpStatusResult(0xA5);
constexpr HRESULT kSnmpDecryptionError = SnmpStatusResult(0xA6);
constexpr HRESULT kSnmpUnknownContext = SnmpStatusResult(0xAF);  // RFC 3413, 4.1.2

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_ERROR_CODES_H_
