// What a client says of an IPP job or query (RFC 8011).
#ifndef CORVANE_IPP_REQUEST_H_
#define CORVANE_IPP_REQUEST_H_

#include <cstdint>
#include <map>
#include <string>

#include "corvane/disposable.h"

namespace Corvane {

// Where a caller's own attributes go.
constexpr std::uint32_t kIPPOperationGroup = 0;
constexpr std::uint32_t kIPPJobGroup = 1;  // of a Print-Job request

// One attribute of the caller's own. `value` is read by `valueTag` (RFC 8010, 3.5.2), numbers as
// they lie in memory: integer and enum the first one, rangeOfInteger two (lower, upper), resolution
// three (cross-feed, feed, units), boolean the first byte, everything else as NUL-terminated text,
// in which a "," separates values of octetString, text, name, keyword, uri, uriScheme, charset,
// naturalLanguage and mimeMediaType. Name and text end with their arrays at the latest.
struct IPPAttributeStruct {
  std::uint32_t group;
  std::int32_t valueTag;
  char name[128];
  union {
    char text[512];
    std::int32_t numbers[128];
    unsigned char boolean;
  } value;
};

using IPPHeaderMap = std::map<std::wstring, std::wstring>;

// A plain holder of values: nothing is checked unless it says so. Texts are UTF-8 and copied; a
// null takes the text away. Getters give the object's own text, null when there is none, until it
// is set again. Setters of text give 0. One thread at a time.
//
// Selectors. Sides: 0 one-sided, 1 two-sided-long-edge, 2 two-sided-short-edge, 3 the printer's
// own. Multiple document handling: 1 separate uncollated, 2 separate collated, 3 single new sheet,
// below 1 the printer's own. Orientation 3 to 6 and print quality 3 to 5 as in RFC 8011, lower ones
// the printer's own. Output mode: not 0 prints monochrome.
class IPPRequestBase : public Corvane::IDisposable {
 public:
  virtual ~IPPRequestBase() = default;

  virtual HRESULT SetPrinterURI(const char* uri) = 0;
  virtual const char* GetPrinterURI() = 0;
  virtual void SetCopy(std::int32_t copies) = 0;
  virtual std::int32_t GetCopy() = 0;
  virtual HRESULT SetRequestingUserName(const char* name) = 0;
  virtual const char* GetRequestingUserName() = 0;
  virtual HRESULT SetDocumentUri(const char* uri) = 0;
  virtual const char* GetDocumentUri() = 0;
  virtual HRESULT SetJobName(const char* name) = 0;
  virtual const char* GetJobName() = 0;
  virtual void SetIPPAttributeFidelity(bool fidelity) = 0;
  virtual bool GetIPPAttributeFidelity() = 0;
  virtual HRESULT SetDocumentName(const char* name) = 0;
  virtual const char* GetDocumentName() = 0;
  virtual void SetMultipleDocHandling(std::int32_t selector) = 0;
  virtual std::int32_t GetMultipleDocHandling() = 0;
  virtual void SetPrintingSides(std::int32_t selector) = 0;
  virtual std::int32_t GetPrintingSides() = 0;
  virtual void SetOrientationRequested(std::int32_t selector) = 0;
  virtual std::int32_t GetOrientationRequested() = 0;
  // Kept for the caller: no request carries a resolution.
  virtual void SetPrinterResolution(std::int32_t crossFeed, std::int32_t feed) = 0;
  // Either may be null.
  virtual void GetPrinterResolution(std::int32_t* crossFeed, std::int32_t* feed) = 0;
  virtual void SetPrinterResolutionUnits(std::int32_t units) = 0;
  virtual std::int32_t GetPrinterResolutionUnits() = 0;
  virtual void SetPrintQuality(std::int32_t selector) = 0;
  virtual std::int32_t GetPrintQuality() = 0;
  virtual void SetOutputMode(std::int32_t selector) = 0;
  virtual std::int32_t GetOutputMode() = 0;
  // Kept for the caller, as are the margins.
  virtual void SetPrintContentOptimize(std::int32_t selector) = 0;
  virtual std::int32_t GetPrintContentOptimize() = 0;
  virtual void SetMarginsPreApplied(bool preApplied) = 0;
  virtual bool GetMarginsPreApplied() = 0;
  virtual HRESULT SetJobURI(const char* uri) = 0;
  virtual const char* GetJobURI() = 0;
  virtual void SetLastDocument(bool last) = 0;
  virtual bool GetLastDocument() = 0;
  // Credentials of the HTTP exchange.
  virtual HRESULT SetUsername(const char* name) = 0;
  virtual const char* GetUsername() = 0;
  virtual HRESULT SetPassword(const char* password) = 0;
  virtual const char* GetPassword() = 0;
  // A header of every HTTP request; names compare exactly. A null value takes the header away, a
  // null name does nothing.
  virtual void AddExtraHTTPHeader(const wchar_t* name, const wchar_t* value) = 0;
  // Encoded attributes (RFC 8010), copied and sent as they are after the group's own. Without bytes
  // nothing is kept, and a line is traced.
  virtual void AddIPPRequest(std::uint32_t group, const void* blob, std::int32_t size) = 0;
  // A copy, kept even when there is one of that name: then both are sent.
  virtual void AddIPPRequest(const IPPAttributeStruct& attribute) = 0;
  // What the owner of a job puts into the HTTP header "Authorization" of its requests.
  virtual void SetAuthorizationHeader(const std::wstring& value) = 0;
  virtual std::wstring GetAuthorizationHeader() = 0;
  virtual IPPHeaderMap& GetExtraHTTPHeader() = 0;
};

}  // namespace Corvane

// One reference, the caller's; null when there is no memory.
extern "C" CORVANE_API Corvane::IPPRequestBase* CreateIPPRequest();

namespace Corvane {
using ::CreateIPPRequest;
}

#endif  // CORVANE_IPP_REQUEST_H_
