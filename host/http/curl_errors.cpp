#include "host/http/curl_errors.h"

#include "corvane/error_codes.h"

namespace Corvane::Host {

std::uint32_t ErrorFromCurl(CURLcode code) {
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return kErrorTimeout;
    case CURLE_COULDNT_RESOLVE_HOST:
      return kErrorNameNotResolved;
    case CURLE_COULDNT_CONNECT:
    case CURLE_INTERFACE_FAILED:
      return kErrorCannotConnect;
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
      return kErrorSecureFailure;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_SEND_FAIL_REWIND:
      return kErrorConnection;
    case CURLE_UNSUPPORTED_PROTOCOL:  // the answer's, as HTTP/0.9: the URL's is always known
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
      return kErrorInvalidResponse;
    case CURLE_FILESIZE_EXCEEDED:
      return kErrorResponseTooLarge;
    case CURLE_ABORTED_BY_CALLBACK:
      return kErrorCancelled;
    case CURLE_URL_MALFORMAT:
    case CURLE_BAD_FUNCTION_ARGUMENT:
      return kErrorInvalidParameter;
    case CURLE_OUT_OF_MEMORY:
      return kErrorOutOfMemory;
    default:
      return kErrorInternal;
  }
}

}  // namespace Corvane::Host
