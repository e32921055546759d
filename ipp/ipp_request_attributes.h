// The values of an IPP job or query.
#ifndef CORVANE_IPP_IPP_REQUEST_ATTRIBUTES_H_
#define CORVANE_IPP_IPP_REQUEST_ATTRIBUTES_H_

#include <memory>
#include <string>
#include <vector>

#include "corvane/ipp_request.h"
#include "ipp/owned_chars.h"

namespace Corvane {

// Encoded attributes of the caller's own.
struct IPPAttributeBlob {
  std::uint32_t group = 0;
  std::unique_ptr<unsigned char[]> blobArray;
  std::int32_t blobSize = 0;  // at least 1
};

class IPPRequestAttributes : public IDisposableImpl, public IPPRequestBase {
 public:
  // One reference, the caller's; null when there is no memory.
  static IPPRequestAttributes* Create();

  IPPRequestAttributes();
  ~IPPRequestAttributes() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  HRESULT SetPrinterURI(const char* uri) override;
  const char* GetPrinterURI() override;
  void SetCopy(std::int32_t copies) override;
  std::int32_t GetCopy() override;
  HRESULT SetRequestingUserName(const char* name) override;
  const char* GetRequestingUserName() override;
  HRESULT SetDocumentUri(const char* uri) override;
  const char* GetDocumentUri() override;
  HRESULT SetJobName(const char* name) override;
  const char* GetJobName() override;
  void SetIPPAttributeFidelity(bool fidelity) override;
  bool GetIPPAttributeFidelity() override;
  HRESULT SetDocumentName(const char* name) override;
  const char* GetDocumentName() override;
  void SetMultipleDocHandling(std::int32_t selector) override;
  std::int32_t GetMultipleDocHandling() override;
  void SetPrintingSides(std::int32_t selector) override;
  std::int32_t GetPrintingSides() override;
  void SetOrientationRequested(std::int32_t selector) override;
  std::int32_t GetOrientationRequested() override;
  void SetPrinterResolution(std::int32_t crossFeed, std::int32_t feed) override;
  void GetPrinterResolution(std::int32_t* crossFeed, std::int32_t* feed) override;
  void SetPrinterResolutionUnits(std::int32_t units) override;
  std::int32_t GetPrinterResolutionUnits() override;
  void SetPrintQuality(std::int32_t selector) override;
  std::int32_t GetPrintQuality() override;
  void SetOutputMode(std::int32_t selector) override;
  std::int32_t GetOutputMode() override;
  void SetPrintContentOptimize(std::int32_t selector) override;
  std::int32_t GetPrintContentOptimize() override;
  void SetMarginsPreApplied(bool preApplied) override;
  bool GetMarginsPreApplied() override;
  HRESULT SetJobURI(const char* uri) override;
  const char* GetJobURI() override;
  void SetLastDocument(bool last) override;
  bool GetLastDocument() override;
  HRESULT SetUsername(const char* name) override;
  const char* GetUsername() override;
  HRESULT SetPassword(const char* password) override;
  const char* GetPassword() override;
  void AddExtraHTTPHeader(const wchar_t* name, const wchar_t* value) override;
  void AddIPPRequest(std::uint32_t group, const void* blob, std::int32_t size) override;
  void AddIPPRequest(const IPPAttributeStruct& attribute) override;
  void SetAuthorizationHeader(const std::wstring& value) override;
  std::wstring GetAuthorizationHeader() override;
  IPPHeaderMap& GetExtraHTTPHeader() override;

  // In the order in which they were added.
  const std::vector<IPPAttributeStruct>& GetAttributesVector() const { return m_attributes; }
  const std::vector<std::unique_ptr<IPPAttributeBlob>>& GetBlobVector() const { return m_blobs; }

 private:
  OwnedChars m_printerUri;
  OwnedChars m_requestingUserName;
  OwnedChars m_documentUri;
  OwnedChars m_jobName;
  bool m_fidelity = false;
  OwnedChars m_documentName;
  OwnedChars m_userName;
  OwnedChars m_password;
  std::int32_t m_multipleDocumentHandling = -1;
  std::int32_t m_copies = 1;
  std::int32_t m_sides = 3;
  std::int32_t m_orientation = 2;
  std::int32_t m_crossFeedResolution = 0;
  std::int32_t m_feedResolution = 0;
  std::int32_t m_resolutionUnits = 0;
  std::int32_t m_printQuality = 2;
  std::int32_t m_outputMode = 0;
  std::int32_t m_contentOptimize = 0;
  bool m_marginsPreApplied = true;
  OwnedChars m_jobUri;
  bool m_lastDocument = false;
  IPPHeaderMap m_headers;
  std::vector<IPPAttributeStruct> m_attributes;
  std::vector<std::unique_ptr<IPPAttributeBlob>> m_blobs;
  std::wstring m_authorization;
};

}  // namespace Corvane

#endif  // CORVANE_IPP_IPP_REQUEST_ATTRIBUTES_H_
