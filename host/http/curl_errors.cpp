#include "host/http/curl_errors.h"

#include "host/common/error_codes.h"

namespace Corvane::Host {

std::uint32_t ErrorFromCurl(CURLcode code) {
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return kTimeout;
    case CURLE_COULDNT_RESOLVE_HOST:
      return kNameNotResolved;
    case CURLE_COULDNT_CONNECT:
    case CURLE_INTERFACE_FAILED:
      return kCannotConnect;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
      return kSecureFailure;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_SEND_FAIL_REWIND:
      return kConnectionError;
    case CURLE_UNSUPPORTED_PROTOCOL:  // the answer's, as HTTP/0.9: the URL's is always known
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
      return kInvalidServerResponse;
    case CURLE_FILESIZE_EXCEEDED:
      return kResponseTooLarge;
    case CURLE_ABORTED_BY_CALLBACK:
      return kOperationCancelled;
    case CURLE_URL_MALFORMAT:
    case CURLE_BAD_FUNCTION_ARGUMENT:
      return kInvalidParameter;
    case CURLE_OUT_OF_MEMORY:
      return kOutOfMemory;
    default:
      return kInternalError;
  }
}

}  // namespace Corvane::Host
