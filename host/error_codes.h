// The system error codes that HTTPRequest::GetLastError tells, by their values on Windows.
#ifndef CORVANE_HOST_ERROR_CODES_H_
#define CORVANE_HOST_ERROR_CODES_H_

#include <cstdint>

#include "corvane/platform.h"

namespace Corvane::Host {

constexpr std::uint32_t kReadFault = 30;
constexpr std::uint32_t kOutOfMemory = 14;
constexpr std::uint32_t kInvalidParameter = 87;
constexpr std::uint32_t kTimeout = 12002;
constexpr std::uint32_t kInternalError = 12004;
constexpr std::uint32_t kNameNotResolved = 12007;
constexpr std::uint32_t kOperationCancelled = 12017;
constexpr std::uint32_t kRequestUsedUp = 12019;  // a second exchange of one request
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

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_ERROR_CODES_H_
