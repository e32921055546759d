// Emptying a cache.
#include <algorithm>
#include <functional>

#include "corvane/handles.h"
#include "tools/cache/cache_commands.h"
#include "tools/cache/cache_reader.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

// Deletes a value of a section: a system error code.
using DeleteValue = std::function<DWORD(const wchar_t* name)>;

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

// Companions counted.
std::size_t CountValues(const CacheSection& section) {
  std::size_t count = 0;
  for (const CacheEntry& entry : section.entries) {
    if (entry.verdict != CacheVerdict::kNoValue) ++count;
    if (entry.companion.vt != VT_EMPTY) ++count;
  }
  return count;
}

class Clearing {
 public:
  explicit Clearing(const CacheLocation& location) : m_location(location) {}

  CommandResult Clear() {
    CacheContents contents = ReadCache(m_location, nullptr);
    m_problems = contents.problems;
    // What lies deeper first: a device's name may begin with the whole key of another.
    std::stable_sort(contents.sections.begin(), contents.sections.end(),
                     [](auto& a, auto& b) { return a.path.size() > b.path.size(); });
    for (const CacheSection& section : contents.sections) {
      if (m_location.kind == CacheKind::kPrinter) {
        ClearPrinter(section);
      } else if (section.protocol.empty()) {
        Leave(TitleOf(section) + ": " + std::to_string(CountValues(section)) +
              " values, which name no device");
      } else {
        ClearKey(section);
      }
    }
    if (contents.otherKeys > 0) {
      Leave(std::to_string(contents.otherKeys) + " keys that are not of a cache's protocol");
    }
    return {m_problems.empty() ? kAllAnswered : kCacheFailure,
            "Removed " + std::to_string(m_values) + " values and " + std::to_string(m_keys) +
                " keys.\n" + m_left,
            m_problems};
  }

 private:
  void Leave(const std::string& what) { m_left += "Left: " + what + '\n'; }
  void Report(const std::string& what, DWORD error) {
    m_problems += what + ": " + SystemErrorText(error) + '\n';
  }

  void DeleteEntries(const CacheSection& section, const DeleteValue& deleteValue) {
    for (const CacheEntry& entry : section.entries) {
      if (entry.ownNames.empty()) {
        const VerdictWords words = WordsOf(entry.verdict);
        Leave(TitleOf(section) + ": " + EscapeText(entry.key) + " (" +
              (words.isPair ? "its .Expires holds no time" : words.text) + ")");
      }
      // The companion last: what a failure leaves is then still known for a cache's.
      for (const std::wstring& name : entry.ownNames) {
        const DWORD error = deleteValue(name.c_str());
        if (error == ERROR_SUCCESS) {
          ++m_values;
        } else if (error != ERROR_FILE_NOT_FOUND) {
          return Report(TitleOf(section) + ": " + EscapeText(name) + " cannot be deleted", error);
        }
      }
    }
  }

  void ClearKey(const CacheSection& section) {
    UniqueHkey key;
    const LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, section.path.c_str(), 0,
                                        KEY_READ | KEY_SET_VALUE, key.Receive());
    if (error == ERROR_FILE_NOT_FOUND) return;
    if (error != ERROR_SUCCESS) {
      return Report(TitleOf(section) + ": cannot be written", static_cast<DWORD>(error));
    }
    const std::size_t before = m_values;
    DeleteEntries(section, [&key](const wchar_t* name) {
      return static_cast<DWORD>(RegDeleteValueW(key.Get(), name));
    });
    key.Reset();
    if (m_values > before) DeleteEmptyKeys(section.path);
  }

  // From `path` up to and with the cache's own, as far as they are empty.
  void DeleteEmptyKeys(std::wstring path) {
    while (path.size() >= m_location.name.size() && IsEmptyKey(path)) {
      const LSTATUS error = RegDeleteKeyW(HKEY_LOCAL_MACHINE, path.c_str());
      if (error != ERROR_SUCCESS) {
        return Report("key " + EscapeText(path) + " cannot be deleted", static_cast<DWORD>(error));
      }
      ++m_keys;
      const std::size_t backslash = path.rfind(L'\\');
      if (backslash == std::wstring::npos) return;
      path.resize(backslash);
    }
  }

  void ClearPrinter(const CacheSection& section) {
    UniquePrinter printer;
    const DWORD error =
        OpenPrinterOf(m_location, PRINTER_ACCESS_ADMINISTER | PRINTER_ACCESS_USE, &printer);
    if (error != ERROR_SUCCESS) {
      throw Failure(kCacheFailure, EscapeText(TextOf(m_location)) +
                                       ": cannot be written: " + SystemErrorText(error));
    }
    DeleteEntries(section, [&printer](const wchar_t* name) {
      return DeletePrinterDataExW(printer.Get(), kPrintDataCacheKey, name);
    });
  }

  const CacheLocation& m_location;
  std::size_t m_values = 0;  // deleted, companions counted
  std::size_t m_keys = 0;    // deleted
  std::string m_left;        // what was not touched, escaped
  std::string m_problems;    // what could not be read or deleted, escaped
};

}  // namespace

CommandResult ClearCache(const CacheLocation& location) { return Clearing(location).Clear(); }

}  // namespace Corvane::Tool
