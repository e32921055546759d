#include "tools/print/print.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "base/utf8.h"
#include "base/utf8_path.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "ipp/wire/codes.h"
#include "tools/ipp/ipp_values.h"
#include "tools/ipp/printer_address.h"
#include "tools/ipp/printer_uri.h"
#include "tools/ipp/user_jobs.h"
#include "tools/options/device.h"
#include "tools/output/console.h"
#include "tools/output/text.h"
#include "tools/print/print_report.h"
#include "tools/print/print_watch.h"
#include "tools/print/progress.h"

namespace Corvane::Tool {
namespace {

// Held twice in memory, and told nothing of while it is sent.
constexpr std::size_t kMaxWholeBytes = 16'000'000;
constexpr std::size_t kPieceBytes = std::size_t{256} << 10;
constexpr std::size_t kMaxNameBytes = 255;  // RFC 8011, 5.1.3

PrinterUri PrinterUriOf(const Options& options) {
  PrinterUri uri = ParsePrinterUri(options.printerUri);
  if (uri.port && *uri.port != kIppPort && *uri.port != kIppsPort) {
    ThrowUsage("--uri " + options.printerUri +
               ": the port of a printer is 631 or 443; say --port " +
               std::to_string(uri.servicePort) + '=' + std::to_string(*uri.port));
  }
  return uri;
}

// A file, or "-" for the input.
class Document {
 public:
  // Throws Failure with kBadUsage for what is not a file or cannot be opened.
  explicit Document(const std::string& file) {
    namespace fs = std::filesystem;
    if (file == "-") return;
    const fs::path path = PathFromUtf8(file);
    const auto refuse = [&file](const char* why) {
      throw Failure(kBadUsage, EscapeText(file) + ": " + why);
    };
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) refuse("no such file");
    if (fs::is_directory(status)) refuse("is a folder");
    if (fs::is_regular_file(status)) m_size = fs::file_size(path, error);
    if (error) m_size.reset();
    m_file.open(path, std::ios::binary);
    if (!m_file) refuse("cannot be opened");
    m_stream = &m_file;
    m_name = ToUtf8(WideFromPath(path.filename()));
  }

  // "report.pdf"; of the input "stdin".
  const std::string& Name() const { return m_name; }
  // None of what is no plain file, such as a pipe.
  std::optional<std::uint64_t> Size() const { return m_size; }
  // The next bytes: fewer than asked for at the end, none behind it. Throws Failure with
  // kNotPrinted when it cannot be read.
  std::string Read(std::size_t maxBytes) {
    std::string piece(maxBytes, '\0');
    if (m_stream->eof()) return {};
    m_stream->read(piece.data(), static_cast<std::streamsize>(piece.size()));
    if (m_stream->bad() || (m_stream->fail() && !m_stream->eof())) {
      throw Failure(kNotPrinted, EscapeText(m_name) + " cannot be read");
    }
    piece.resize(static_cast<std::size_t>(m_stream->gcount()));
    return piece;
  }

 private:
  std::string m_name = "stdin";
  std::optional<std::uint64_t> m_size;
  std::ifstream m_file;
  std::istream* m_stream = &std::cin;
};

std::string JobNameOf(const Options& options, const Document& document) {
  const std::string& name = options.print.jobName;
  if (name.size() > kMaxNameBytes) ThrowUsage("--job-name has more than 255 bytes");
  if (!name.empty()) return name;
  return document.Name().size() > kMaxNameBytes ? "document" : document.Name();
}

// The first piece, and whether others follow.
struct Beginning {
  std::string bytes;
  bool chunked = false;
};

Beginning ReadBeginning(Document& document, bool chunked) {
  const bool inPieces = chunked || !document.Size() || *document.Size() > kMaxWholeBytes;
  if (inPieces) return {document.Read(kPieceBytes), true};
  Beginning beginning{document.Read(kMaxWholeBytes), false};
  beginning.chunked = beginning.bytes.size() == kMaxWholeBytes;  // it may have grown
  return beginning;
}

void SetColor(const std::string& color, IPPRequestBase& request) {
  if (color == "monochrome") request.SetOutputMode(1);
  if (color != "color") return;
  IPPAttributeStruct attribute{};
  attribute.group = kIPPJobGroup;
  attribute.valueTag = IPPTag::kKeyword;
  std::strcpy(attribute.name, "print-color-mode");
  std::strcpy(attribute.value.text, "color");
  request.AddIPPRequest(attribute);
}

void SetSides(const std::string& sides, IPPRequestBase& request) {
  const auto* const chosen = std::find(std::begin(kSides), std::end(kSides), sides);
  if (chosen == std::end(kSides)) return;
  request.SetPrintingSides(static_cast<std::int32_t>(chosen - std::begin(kSides)));
}

RefPtr<IPPProvider> OpenProvider(Address& address, const PrinterUri& uri,
                                 std::optional<std::uint32_t> timeoutMs) {
  const std::wstring text = ToWide(uri.text);
  SetLastError(0);
  RefPtr<IPPProvider> provider(uri.IsSecure()
                                   ? CreateSecureIPPPrintProvider(&address, text.c_str(), 0)
                                   : CreateIPPPrintProvider(&address, text.c_str()));
  if (!provider) throw CreationFailure(GetLastError(), address);
  if (timeoutMs) provider->SetTimeouts(*timeoutMs, *timeoutMs, *timeoutMs);
  return provider;
}

std::string PrinterStateOf(IPPProvider& provider) {
  UniqueVariant value;
  if (provider.GetValue("printer-state", value.Receive()) != S_OK || value.Get().vt != VT_BSTR) {
    return {};
  }
  const std::wstring_view text(value.Get().bstrVal, SysStringLen(value.Get().bstrVal));
  const char* const name = text.size() == 1 ? PrinterStateName(text.front() - L'0') : nullptr;
  return name ? std::string("; the printer is ") + name : std::string();
}

// Without the printer's URI, which the library tells by itself.
RefPtr<IPPRequestBase> MakeRequest(const Options& options, const std::string& user,
                                   const std::string& jobName) {
  RefPtr<IPPRequestBase> request(CreateIPPRequest());
  if (!request) throw std::bad_alloc();
  request->SetRequestingUserName(user.c_str());
  request->SetJobName(jobName.c_str());
  request->SetDocumentName(jobName.c_str());
  request->SetCopy(options.print.copies);
  SetSides(options.print.sides, *request.Get());
  SetColor(options.print.color, *request.Get());
  // The printer may call the owner by this; the address has the password.
  if (!options.account.empty()) request->SetUsername(options.account.c_str());
  return request;
}

// Whether it is printed, else it was cancelled. Throws Failure. A document that cannot be read on
// is cancelled, or the printer might print what it has.
bool SendDocument(IPPProvider& provider, IPPRequestBase& request, IPPResponseBase& response,
                  Address& address, Document& document, const Beginning& beginning,
                  PrintWatch& watch) {
  std::string piece = beginning.bytes;
  bool isLast = !beginning.chunked;
  watch.Enter(isLast ? PrintStep::kFinishing : PrintStep::kBeginning);
  HRESULT result = provider.PrintJob(&request, &response, piece.data(),
                                     static_cast<std::int32_t>(piece.size()), beginning.chunked);
  while (result == S_OK) {
    watch.AddSent(piece.size());
    if (isLast) return true;
    watch.Enter(PrintStep::kReading);
    try {
      piece = document.Read(kPieceBytes);
    } catch (const Failure&) {
      Cancel(provider, address);
      throw;
    }
    isLast = piece.empty();
    watch.Enter(isLast ? PrintStep::kFinishing : PrintStep::kSending);
    result = provider.PrintJobWrite(&request, &response, piece.data(),
                                    static_cast<std::int32_t>(piece.size()));
  }
  if (result != S_DEVICECANCELED) throw PrintFailure(GetLastError(), response, address);
  return false;
}

}  // namespace

CommandResult PrintDocument(const Options& options) {
  const PrinterUri uri = PrinterUriOf(options);
  const std::string user = RequestingUser(options.user);
  Options reached = ReachPrinter(options, uri);
  Document document(options.print.file);
  const std::string jobName = JobNameOf(options, document);
  const RefPtr<Address> address = OpenDevice(reached);
  const Beginning beginning = ReadBeginning(document, options.print.chunked);
  const RefPtr<IPPProvider> provider = OpenProvider(*address.Get(), uri, reached.network.timeoutMs);
  const RefPtr<IPPRequestBase> request = MakeRequest(options, user, jobName);
  const RefPtr<IPPResponseBase> response(CreateIPPResponse());
  if (!response) throw std::bad_alloc();

  // Until here Ctrl-C ends the process: nothing has been sent.
  Interruption interruption;
  Progress progress(std::cerr, ErrorStreamIsTerminal() && !options.trace, document.Size());
  progress.Say("printing " + EscapeText(jobName) +
               (document.Size() ? ", " + FormatBytes(*document.Size()) : std::string()) + " at " +
               EscapeText(uri.text) + PrinterStateOf(*provider.Get()));
  PrintWatch watch(interruption, *provider.Get(), *address.Get(), progress);
  const bool isPrinted = SendDocument(*provider.Get(), *request.Get(), *response.Get(),
                                      *address.Get(), document, beginning, watch);
  const std::optional<Cancellation> cancellation = watch.Finish();
  CommandResult result;
  if (isPrinted) {
    if (cancellation) result.problems = "too late to cancel: " + cancellation->text + '\n';
    progress.Say("printed: " + JobText(*response.Get()));
    result.output = JobLine(*response.Get());
    return result;
  }
  result.status = kCancelled;
  result.problems = cancellation ? CancelledText(*cancellation)
                                 : "cancelled at the printer: " + JobText(*response.Get());
  return result;
}

}  // namespace Corvane::Tool
