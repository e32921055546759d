#include "host/snmp/snmp_errors.h"

#include <cerrno>

#include "corvane/error_codes.h"
#include "host/snmp/netsnmp.h"

namespace Corvane::Host {
namespace {

constexpr struct {
  HRESULT code;
  const wchar_t* text;
} kReasons[] = {
    {SnmpStatusResult(SNMP_ERR_TOOBIG), L"the answer does not fit the agent's messages (tooBig)"},
    {SnmpStatusResult(SNMP_ERR_NOSUCHNAME), L"no such name (noSuchName)"},
    {SnmpStatusResult(SNMP_ERR_BADVALUE), L"the agent refuses the value (badValue)"},
    {SnmpStatusResult(SNMP_ERR_READONLY), L"read-only (readOnly)"},
    {SnmpStatusResult(SNMP_ERR_GENERR), L"the agent failed (genErr)"},
    {SnmpStatusResult(SNMP_ERR_NOACCESS), L"not accessible (noAccess)"},
    {SnmpStatusResult(SNMP_ERR_WRONGTYPE), L"a value of another type is wanted (wrongType)"},
    {SnmpStatusResult(SNMP_ERR_WRONGLENGTH), L"a value of another length is wanted (wrongLength)"},
    {SnmpStatusResult(SNMP_ERR_WRONGENCODING), L"the value's encoding is wrong (wrongEncoding)"},
    {SnmpStatusResult(SNMP_ERR_WRONGVALUE), L"the agent refuses the value (wrongValue)"},
    {SnmpStatusResult(SNMP_ERR_NOCREATION), L"it does not exist (noCreation)"},
    {SnmpStatusResult(SNMP_ERR_INCONSISTENTVALUE),
     L"the value is refused at present (inconsistentValue)"},
    {SnmpStatusResult(SNMP_ERR_RESOURCEUNAVAILABLE),
     L"the agent lacks a resource (resourceUnavailable)"},
    {SnmpStatusResult(SNMP_ERR_COMMITFAILED), L"setting failed (commitFailed)"},
    {SnmpStatusResult(SNMP_ERR_UNDOFAILED), L"setting failed half-way (undoFailed)"},
    {SnmpStatusResult(SNMP_ERR_AUTHORIZATIONERROR), L"not permitted (authorizationError)"},
    {SnmpStatusResult(SNMP_ERR_NOTWRITABLE), L"not writable (notWritable)"},
    {SnmpStatusResult(SNMP_ERR_INCONSISTENTNAME), L"it cannot exist at present (inconsistentName)"},
    {kSnmpNoSuchObject, L"no such object"},
    {kSnmpNoSuchInstance, L"no such instance"},
    {kSnmpEndOfMibView, L"the end of the MIB"},
    {kSnmpOtherReport, L"the agent refuses the message"},
    {kSnmpUnsupportedSecurityLevel, L"the user has another security level"},
    {kSnmpNotInTimeWindow, L"the agent's clock and ours do not agree"},
    {kSnmpUnknownUser, L"the agent does not know the user"},
    {kSnmpUnknownEngine, L"the agent's engine ID changed"},
    {kSnmpWrongDigest, L"the authentication passphrase or protocol is wrong"},
    {kSnmpDecryptionError, L"the privacy passphrase or protocol is wrong"},
    {kSnmpUnknownContext, L"the agent does not know the context"},
    {ResultFromError(kErrorTimeout), L"timed out"},
    {ResultFromError(kErrorNameNotResolved), L"the name cannot be resolved"},
    {ResultFromError(kErrorCannotConnect), L"nothing listens there, or no way leads there"},
    {ResultFromError(kErrorInvalidResponse), L"the answer is none to this request"},
    {ResultFromError(kErrorInvalidHandle), L"the connection is closed"},
    {E_INVALIDARG, L"not an OID in dotted decimal"},
    {DISP_E_TYPEMISMATCH, L"a value of this type cannot be set"},
    {E_OUTOFMEMORY, L"out of memory, or the buffer is too small"},
};

}  // namespace

HRESULT ResultFromErrorStatus(long status) {
  const bool known = status > SNMP_ERR_NOERROR && status <= MAX_SNMP_ERR;
  return SnmpStatusResult(static_cast<std::uint32_t>(known ? status : SNMP_ERR_GENERR));
}

HRESULT ResultFromNetSnmp(int error, int systemError) {
  switch (error) {
    case SNMPERR_TIMEOUT:
      return ResultFromError(kErrorTimeout);
    case SNMPERR_TOO_LONG:
      return SnmpStatusResult(SNMP_ERR_TOOBIG);
    case SNMPERR_BAD_SENDTO:
      if (systemError == EMSGSIZE) return SnmpStatusResult(SNMP_ERR_TOOBIG);
      return ResultFromError(kErrorCannotConnect);
    case SNMPERR_BAD_ADDRESS:
    case SNMPERR_BAD_RECVFROM:
    case SNMPERR_NO_SOCKET:
      return ResultFromError(kErrorCannotConnect);
    case SNMPERR_UNSUPPORTED_SEC_LEVEL:
    case SNMPERR_USM_UNSUPPORTEDSECURITYLEVEL:
      return kSnmpUnsupportedSecurityLevel;
    case SNMPERR_NOT_IN_TIME_WINDOW:
    case SNMPERR_USM_NOTINTIMEWINDOW:
      return kSnmpNotInTimeWindow;
    case SNMPERR_UNKNOWN_USER_NAME:
    case SNMPERR_USM_UNKNOWNSECURITYNAME:
      return kSnmpUnknownUser;
    case SNMPERR_UNKNOWN_ENG_ID:
    case SNMPERR_USM_UNKNOWNENGINEID:
      return kSnmpUnknownEngine;
    case SNMPERR_AUTHENTICATION_FAILURE:
    case SNMPERR_USM_AUTHENTICATIONFAILURE:
      return kSnmpWrongDigest;
    case SNMPERR_DECRYPTION_ERR:
    case SNMPERR_USM_DECRYPTIONERROR:
      return kSnmpDecryptionError;
    case SNMPERR_BAD_CONTEXT:
      return kSnmpUnknownContext;
    case SNMPERR_UNKNOWN_SEC_MODEL:
    case SNMPERR_INVALID_MSG:
    case SNMPERR_BAD_VERSION:
    case SNMPERR_UNKNOWN_REPORT:
      return kSnmpOtherReport;
    case SNMPERR_MALLOC:
      return E_OUTOFMEMORY;
    default:
      return ResultFromError(kErrorInternal);
  }
}

std::wstring SnmpReason(HRESULT failure) {
  for (const auto& reason : kReasons) {
    if (reason.code == failure) return reason.text;
  }
  wchar_t text[24];
  std::swprintf(text, std::size(text), L"error 0x%08X", static_cast<unsigned>(failure));
  return text;
}

}  // namespace Corvane::Host
