#include "tools/cache/cache_reader.h"

#include "corvane/handles.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

class Collector final : public CacheVisitor {
 public:
  explicit Collector(CacheContents* contents) : m_contents(*contents) {}

  void Visit(const CacheSection& section) override {
    if (section.error) {
      m_contents.problems += "key " + EscapeText(section.path) +
                             ": cannot be read: " + SystemErrorText(section.error) + '\n';
      if (section.entries.empty()) return;
    }
    if (section.isOfACache) {
      m_contents.sections.push_back(section);
    } else {
      ++m_contents.otherKeys;
    }
  }

 private:
  CacheContents& m_contents;
};

}  // namespace

CacheContents ReadCache(const CacheLocation& location, DataMapSpecCollection* specification) {
  CacheContents contents;
  Collector collector(&contents);
  std::string why;
  if (location.kind == CacheKind::kRegistry) {
    const DWORD error =
        ReviewRegCache(location.name.c_str(), specification, &collector, &contents.now);
    if (error == ERROR_MORE_DATA) {
      why = "more than " + std::to_string(kMaxCacheKeys) +
            " keys lie below it: this is no cache's key";
    } else if (error != ERROR_SUCCESS) {
      why = "cannot be read: " + SystemErrorText(error);
    }
  } else {
    UniquePrinter printer;
    const DWORD opened = OpenPrinterOf(location, PRINTER_ACCESS_USE, &printer);
    if (opened != ERROR_SUCCESS) RefusePrinter(location, opened);
    const DWORD error =
        ReviewPrintDataCache(printer.Get(), specification, &collector, &contents.now);
    if (error != ERROR_SUCCESS) why = "cannot be read: " + SystemErrorText(error);
  }
  if (!why.empty()) throw Failure(kCacheFailure, EscapeText(TextOf(location)) + ": " + why);
  return contents;
}

std::string TitleOf(const CacheSection& section) {
  if (section.path.empty()) return "the printer's values";
  if (section.protocol.empty()) return "the cache's own key";
  const std::string device =
      section.device.empty() ? "a device without a serial number" : EscapeText(section.device);
  return device + ", " + EscapeText(section.protocol);
}

VerdictWords WordsOf(CacheVerdict verdict) {
  switch (verdict) {
    case CacheVerdict::kNeverStale:
    case CacheVerdict::kFresh:
      return {true, "pair", "fresh"};
    case CacheVerdict::kStale:
      return {true, "pair", "stale"};
    case CacheVerdict::kDependsOnTheMap:
      return {true, "pair", "fresh or stale, by the data map"};
    case CacheVerdict::kNotInSpecification:
      return {true, "pair", "not in the specification"};
    case CacheVerdict::kNoCompanion:
      return {false, "value alone", "a value without its .Expires"};
    case CacheVerdict::kNoValue:
      return {false, "companion alone", "an .Expires without its value"};
    default:
      return {false, "foreign", "not a cache's value"};
  }
}

}  // namespace Corvane::Tool
