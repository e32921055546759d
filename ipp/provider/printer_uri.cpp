#include "ipp/provider/printer_uri.h"

#include <string_view>

#include "corvane/ipp_provider.h"
#include "platform/system.h"

namespace Corvane {
namespace {

// What a part of a URI may have in characters.
constexpr DWORD kMaxScheme = 32;
constexpr DWORD kMaxHost = 256;
constexpr DWORD kMaxPath = 2048;

bool RefusePrinterUri(DWORD error) {
  SetLastError(error);
  return false;
}

}  // namespace

PrinterUriKind KindOfPrinterUri(const wchar_t* uri) {
  if (!uri) return PrinterUriKind::kOther;
  const std::wstring_view text = uri;
  if (text.starts_with(L"ipps")) return PrinterUriKind::kIpps;
  if (text.starts_with(L"ipp")) return PrinterUriKind::kIpp;
  if (text.starts_with(L"http")) return PrinterUriKind::kHttp;
  if (text.starts_with(L"https")) return PrinterUriKind::kHttps;
  return PrinterUriKind::kOther;
}

bool SplitPrinterUri(const wchar_t* uri, std::wstring* resourcePath, std::wstring* wholeUri) {
  if (!*uri) return RefusePrinterUri(kIPPPathTooShort);
  URL_COMPONENTSW parts{};
  parts.dwStructSize = sizeof(parts);
  parts.dwSchemeLength = kMaxScheme;
  parts.dwHostNameLength = kMaxHost;
  parts.dwUrlPathLength = kMaxPath;
  if (!InternetCrackUrlW(uri, 0, 0, &parts)) return RefusePrinterUri(kIPPInvalidArgument);
  if (parts.nPort != kIppPort && parts.nPort != kIppsPort && parts.nPort != 0) {
    return RefusePrinterUri(kIPPUnknownPort);
  }
  if (parts.dwUrlPathLength == 0) return RefusePrinterUri(kIPPNoResourcePath);
  if (parts.dwUrlPathLength < 4) return RefusePrinterUri(kIPPPathTooShort);
  resourcePath->assign(parts.lpszUrlPath);
  wholeUri->assign(parts.lpszScheme);
  return true;
}

}  // namespace Corvane
