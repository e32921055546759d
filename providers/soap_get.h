// The SOAP 1.2 envelope of a WS-Transfer Get under WS-Management.
#ifndef CORVANE_PROVIDERS_SOAP_GET_H_
#define CORVANE_PROVIDERS_SOAP_GET_H_

#include <string>
#include <string_view>

namespace Corvane {

struct SoapGet {
  std::string_view resourceURI;  // written as it is, not escaped
  std::string_view messageId;    // a UUID in its string form
  std::string_view host;
  std::string_view path;  // of the To address, from "/" on
};

std::string BuildSoapGet(const SoapGet& request);

// A new UUID (RFC 9562), 36 characters in lower case; empty when the system has none to give.
std::string NewMessageId();

}  // namespace Corvane

#endif  // CORVANE_PROVIDERS_SOAP_GET_H_
