// The codes by which a host tells why an exchange failed: what HTTPRequest::GetLastError returns,
// the results of a MIBConnection, and, where the library passes them on, the thread's last error.
// Their values are those of Windows, on every target.
#ifndef CORVANE_ERROR_CODES_H_
#define CORVANE_ERROR_CODES_H_

#include <cstdint>

#include "corvane/platform.h"

namespace Corvane {

constexpr std::uint32_t kErrorInvalidHandle = 6;         // the connection has been closed
constexpr std::uint32_t kErrorOutOfMemory = 14;          // the host ran out of memory
constexpr std::uint32_t kErrorReadFault = 30;            // a recorded body cannot be read
constexpr std::uint32_t kErrorInvalidParameter = 87;     // what was asked for cannot be sent
constexpr std::uint32_t kErrorTimeout = 12002;           // a limit of time has passed
constexpr std::uint32_t kErrorInternal = 12004;          // the host's libraries failed
constexpr std::uint32_t kErrorNameNotResolved = 12007;   // the device's name has no address
constexpr std::uint32_t kErrorCancelled = 12017;         // by Cancel, or by the receiver of data
constexpr std::uint32_t kErrorOutOfOrder = 12019;        // a second exchange, or a step too early
constexpr std::uint32_t kErrorCannotConnect = 12029;     // nothing listens there
constexpr std::uint32_t kErrorConnection = 12030;        // broken off, or the body is incomplete
constexpr std::uint32_t kErrorInvalidResponse = 12152;   // no HTTP, or its framing is in doubt
constexpr std::uint32_t kErrorRedirectFailed = 12156;    // more than the host follows
constexpr std::uint32_t kErrorSecureFailure = 12175;     // TLS, the certificate or the pinned key
constexpr std::uint32_t kErrorHeaderTooLarge = 12183;    // more header lines than the host reads
constexpr std::uint32_t kErrorResponseTooLarge = 12184;  // a longer body than the host reads

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

}  // namespace Corvane

#endif  // CORVANE_ERROR_CODES_H_
