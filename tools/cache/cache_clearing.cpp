#include "tools/cache/cache_clearing.h"

#include <algorithm>
#include <cstddef>

#include "corvane/handles.h"
#include "tools/cache/cache_entries.h"
#include "tools/cache/cache_listing.h"
#include "tools/output/failure.h"
#include "tools/output/text_escape.h"

namespace Corvane::Tool {
namespace {

// What deletes a value of a section: a system error code.
using DeleteValue = DWORD (*)(void* store, const wchar_t* name);

// True when a value was deleted.
bool DeleteEntries(const CacheSection& section, DeleteValue deleteValue, void* store,
                   ClearResult* result) {
  bool deletedAny = false;
  for (const CacheEntry& entry : EntriesOf(section.values)) {
    if (!entry.IsOfACache()) {
      const char* const what =
          entry.kind == EntryKind::kPair ? "its .Expires holds no time" : DescriptionOf(entry.kind);
      result->left.push_back(TitleOf(section) + ": " + EscapeText(entry.key) + " (" + what + ")");
      continue;
    }
    // The companion last: what a failure leaves is then still known for a cache's.
    for (const StoredValue* const value : {entry.value, entry.companion}) {
      if (!value) continue;
      const DWORD error = deleteValue(store, value->name.c_str());
      if (error == ERROR_SUCCESS) {
        ++result->values;
        deletedAny = true;
      } else if (error != ERROR_FILE_NOT_FOUND) {
        result->problems.push_back(TitleOf(section) + ": " + EscapeText(value->name) +
                                   " cannot be deleted: " + SystemErrorText(error));
        return deletedAny;
      }
    }
  }
  return deletedAny;
}

bool IsEmptyKey(const std::wstring& path) {
  UniqueHkey key;
  DWORD keys = 0;
  DWORD values = 0;
  return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.Receive()) ==
             ERROR_SUCCESS &&
         RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                          nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
         keys == 0 && values == 0;
}

// From `path` up to and with `top`, as far as they are empty.
void DeleteEmptyKeys(std::wstring path, const std::wstring& top, ClearResult* result) {
  while (path.size() >= top.size() && IsEmptyKey(path)) {
    const LSTATUS error = RegDeleteKeyW(HKEY_LOCAL_MACHINE, path.c_str());
    if (error != ERROR_SUCCESS) {
      result->problems.push_back("key " + EscapeText(path) + " cannot be deleted: " +
                                 SystemErrorText(static_cast<DWORD>(error)));
      return;
    }
    ++result->keys;
    const std::size_t backslash = path.rfind(L'\\');
    if (backslash == std::wstring::npos) return;
    path.resize(backslash);
  }
}

void ClearRegistrySection(const CacheLocation& location, const CacheSection& section,
                          ClearResult* result) {
  UniqueHkey key;
  const LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, section.path.c_str(), 0,
                                      KEY_READ | KEY_SET_VALUE, key.Receive());
  if (error == ERROR_FILE_NOT_FOUND) return;
  if (error != ERROR_SUCCESS) {
    result->problems.push_back(
        TitleOf(section) + ": cannot be written: " + SystemErrorText(static_cast<DWORD>(error)));
    return;
  }
  const auto deleteValue = [](void* store, const wchar_t* name) {
    return static_cast<DWORD>(RegDeleteValueW(static_cast<HKEY>(store), name));
  };
  const bool deletedAny = DeleteEntries(section, deleteValue, key.Get(), result);
  key.Reset();
  if (deletedAny) DeleteEmptyKeys(section.path, location.name, result);
}

void ClearPrinter(const CacheLocation& location, const CacheSection& section, ClearResult* result) {
  UniquePrinter printer;
  const DWORD error =
      OpenPrinterOf(location, PRINTER_ACCESS_ADMINISTER | PRINTER_ACCESS_USE, &printer);
  if (error != ERROR_SUCCESS) {
    throw Failure(kCacheFailure,
                  EscapeText(TextOf(location)) + ": cannot be written: " + SystemErrorText(error));
  }
  const auto deleteValue = [](void* store, const wchar_t* value) {
    return DeletePrinterDataExW(store, kPrinterDataKey, value);
  };
  DeleteEntries(section, deleteValue, printer.Get(), result);
}

}  // namespace

ClearResult ClearCache(const CacheLocation& location, const CacheContents& contents) {
  ClearResult result;
  std::vector<const CacheSection*> sections;
  for (const CacheSection& section : contents.sections) sections.push_back(&section);
  // What lies deeper first: a device's name may begin with the whole key of another.
  std::stable_sort(sections.begin(), sections.end(),
                   [](auto* a, auto* b) { return a->path.size() > b->path.size(); });
  for (const CacheSection* const section : sections) {
    if (location.kind == CacheKind::kPrinter) {
      ClearPrinter(location, *section, &result);
    } else if (section->protocol.empty()) {
      result.left.push_back(TitleOf(*section) + ": " + std::to_string(section->values.size()) +
                            " values, which name no device");
    } else {
      ClearRegistrySection(location, *section, &result);
    }
  }
  if (contents.otherKeys > 0) {
    result.left.push_back(std::to_string(contents.otherKeys) +
                          " keys that are not of a cache's protocol");
  }
  return result;
}

}  // namespace Corvane::Tool
