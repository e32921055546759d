// What a printer URI says.
#ifndef CORVANE_IPP_PROVIDER_PRINTER_URI_H_
#define CORVANE_IPP_PROVIDER_PRINTER_URI_H_

#include <string>

namespace Corvane {

enum class PrinterUriKind { kHttp = 0, kHttps = 1, kIpp = 2, kIpps = 3, kOther = 4 };

// By the text's beginning, case-sensitive. "http" is tried before "https", so that no URI is
// kHttps.
PrinterUriKind KindOfPrinterUri(const wchar_t* uri);

// The path with query and fragment, and the whole from its scheme. False with a last error: the
// codes of provider creation, in the order path missing altogether, syntax, port, path.
bool SplitPrinterUri(const wchar_t* uri, std::wstring* resourcePath, std::wstring* wholeUri);

}  // namespace Corvane

#endif  // CORVANE_IPP_PROVIDER_PRINTER_URI_H_
