// What can be set of a request, by name.
#ifndef CORVANE_TESTS_SUPPORT_REQUEST_SETTINGS_H_
#define CORVANE_TESTS_SUPPORT_REQUEST_SETTINGS_H_

#include "ipp/ipp_operations.h"

namespace Corvane::Test {

struct TextSetting {
  const char* name;
  HRESULT (IPPRequestBase::*set)(const char*);
  const char* (IPPRequestBase::*get)();
};
inline constexpr TextSetting kTextSettings[] = {
    {"PrinterURI", &IPPRequestBase::SetPrinterURI, &IPPRequestBase::GetPrinterURI},
    {"RequestingUserName", &IPPRequestBase::SetRequestingUserName,
     &IPPRequestBase::GetRequestingUserName},
    {"DocumentUri", &IPPRequestBase::SetDocumentUri, &IPPRequestBase::GetDocumentUri},
    {"JobName", &IPPRequestBase::SetJobName, &IPPRequestBase::GetJobName},
    {"DocumentName", &IPPRequestBase::SetDocumentName, &IPPRequestBase::GetDocumentName},
    {"JobURI", &IPPRequestBase::SetJobURI, &IPPRequestBase::GetJobURI},
    {"Username", &IPPRequestBase::SetUsername, &IPPRequestBase::GetUsername},
    {"Password", &IPPRequestBase::SetPassword, &IPPRequestBase::GetPassword}};

struct NumberSetting {
  const char* name;
  void (IPPRequestBase::*set)(std::int32_t);
  std::int32_t (IPPRequestBase::*get)();
  std::int32_t atFirst;
};
inline constexpr NumberSetting kNumberSettings[] = {
    {"Copy", &IPPRequestBase::SetCopy, &IPPRequestBase::GetCopy, 1},
    {"MultipleDocHandling", &IPPRequestBase::SetMultipleDocHandling,
     &IPPRequestBase::GetMultipleDocHandling, -1},
    {"PrintingSides", &IPPRequestBase::SetPrintingSides, &IPPRequestBase::GetPrintingSides, 3},
    {"OrientationRequested", &IPPRequestBase::SetOrientationRequested,
     &IPPRequestBase::GetOrientationRequested, 2},
    {"PrintQuality", &IPPRequestBase::SetPrintQuality, &IPPRequestBase::GetPrintQuality, 2},
    {"OutputMode", &IPPRequestBase::SetOutputMode, &IPPRequestBase::GetOutputMode, 0}};

// Those of the exchange.
struct ExchangeSetting {
  const char* name;
  HRESULT (IPPOperations::*set)(const char*);
};
inline constexpr ExchangeSetting kExchangeSettings[] = {
    {"resource", &IPPOperations::SetResourceURI}, {"attribute", &IPPOperations::SetAttributeName},
    {"job", &IPPOperations::SetJobURI},           {"user", &IPPOperations::SetRequestedUserName},
    {"charset", &IPPOperations::SetCharset},      {"language", &IPPOperations::SetLanguage}};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_REQUEST_SETTINGS_H_
