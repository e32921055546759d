#include "tools/options/cache_location.h"

#include "base/utf8.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

constexpr std::string_view kRegistryPrefix = "registry:";
constexpr std::string_view kPrinterPrefix = "printer:";

[[noreturn]] void RefuseCacheLocation(std::string_view text, const std::string& why) {
  ThrowUsage("--cache " + std::string(text) + ": " + why);
}

std::string_view WithoutTrailingBackslashes(std::string_view path) {
  while (path.ends_with('\\')) path.remove_suffix(1);
  return path;
}

CacheLocation ParseRegistry(std::string_view text) {
  const std::string_view path = WithoutTrailingBackslashes(text.substr(kRegistryPrefix.size()));
  if (path.empty()) RefuseCacheLocation(text, "the path of a key is missing");
  // Taken for the name of a key it would lie beside the one that was meant.
  for (const std::string_view root : {"HKEY_", "HKLM\\", "\\"}) {
    if (path.starts_with(root)) {
      RefuseCacheLocation(
          text, "the path begins below HKEY_LOCAL_MACHINE, as in registry:SOFTWARE\\Corvane");
    }
  }
  return {CacheKind::kRegistry, ToWide(path)};
}

}  // namespace

CacheLocation ParseCacheLocation(std::string_view text) {
  // An argument has none, but it could reach this from elsewhere; the system would cut there.
  if (text.find('\0') != std::string_view::npos) RefuseCacheLocation(text, "a NUL stands in it");
  if (text.starts_with(kRegistryPrefix)) return ParseRegistry(text);
  if (!text.starts_with(kPrinterPrefix)) {
    RefuseCacheLocation(text, "expected registry:PATH or printer:NAME");
  }
  const std::string_view printer = text.substr(kPrinterPrefix.size());
  if (printer.empty()) RefuseCacheLocation(text, "the name of a printer is missing");
  return {CacheKind::kPrinter, ToWide(printer)};
}

std::string TextOf(const CacheLocation& location) {
  const bool isRegistry = location.kind == CacheKind::kRegistry;
  return std::string(isRegistry ? kRegistryPrefix : kPrinterPrefix) + ToUtf8(location.name);
}

DWORD OpenPrinterOf(const CacheLocation& location, ACCESS_MASK access, UniquePrinter* printer) {
  std::wstring name = location.name;
  PRINTER_DEFAULTSW defaults = {nullptr, nullptr, access};
  return OpenPrinterW(name.data(), printer->Receive(), &defaults) ? ERROR_SUCCESS : GetLastError();
}

void RefusePrinter(const CacheLocation& location, DWORD error) {
  throw Failure(kBadUsage, "--cache " + EscapeText(TextOf(location)) +
                               ": the printer cannot be opened: " + SystemErrorText(error));
}

}  // namespace Corvane::Tool
