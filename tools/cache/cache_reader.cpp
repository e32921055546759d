#include "tools/cache/cache_reader.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <utility>

#include "corvane/code_unit_less.h"
#include "corvane/data_map_spec.h"
#include "corvane/handles.h"
#include "host/common/text.h"
#include "tools/output/failure.h"
#include "tools/output/text_escape.h"

namespace Corvane::Tool {
namespace {

constexpr DWORD kMaxKeyNameChars = 255;      // the registry's own bound
constexpr DWORD kMaxValueNameChars = 16383;  // the registry's own bound
// A device's identity has at most 255 characters, which make 128 keys with a backslash between.
constexpr int kMaxDepth = 129;
// Against a walk through half the machine when a path is mistaken for a cache.
constexpr std::size_t kMaxKeys = 10'000;
// Against memory for what no cache holds: of a longer value the name and type are kept.
constexpr DWORD kMaxDataBytes = 1 << 20;
constexpr std::size_t kMaxTotalBytes = std::size_t{256} << 20;
// An enumeration may be overtaken by writers once and again.
constexpr int kMaxAttempts = 4;

[[noreturn]] void Fail(const CacheLocation& location, const std::string& why) {
  throw Failure(kCacheFailure, EscapeText(TextOf(location)) + ": " + why);
}

// The names that the library gives the keys of its protocols.
std::vector<std::wstring> ProtocolNames() {
  std::vector<std::wstring> names;
  for (const DataMapTypeEnum type :
       {DataMapTypeQUARN, DataMapTypeWS, DataMapTypePLSXML, DataMapTypeOID, DataMapTypeIPP}) {
    const RefPtr<DataMapSpec> spec(DataMapSpec::CreateDataMapSpec(type));
    if (spec) names.push_back(spec->GetProtocolType());
  }
  return names;
}

class RegistryReader {
 public:
  explicit RegistryReader(const CacheLocation& location)
      : m_location(location), m_name(kMaxValueNameChars + 1) {}

  CacheContents Read() {
    m_pending.push_back({{}, 0});
    while (!m_pending.empty()) {
      const Pending next = std::move(m_pending.back());
      m_pending.pop_back();
      if (++m_keys > kMaxKeys) {
        Fail(m_location, "more than " + std::to_string(kMaxKeys) +
                             " keys lie below it: this is no cache's key");
      }
      ReadKey(next);
    }
    return std::move(m_contents);
  }

 private:
  struct Pending {
    std::wstring below;  // the path below the cache's own key; empty for that
    int depth;
  };

  void ReadKey(const Pending& pending) {
    const std::wstring path =
        pending.below.empty() ? m_location.name : m_location.name + L'\\' + pending.below;
    UniqueHkey key;
    const LSTATUS error =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.Receive());
    if (error == ERROR_FILE_NOT_FOUND) return;  // no cache yet, or gone meanwhile
    if (error != ERROR_SUCCESS) {
      const std::string why = "cannot be read: " + SystemErrorText(static_cast<DWORD>(error));
      if (pending.depth == 0) Fail(m_location, why);
      m_contents.problems.push_back("key " + EscapeText(path) + ": " + why);
      return;
    }
    const bool hasKeys = PushSubkeys(key.Get(), pending, path);
    const std::size_t backslash = pending.below.rfind(L'\\');
    CacheSection section;
    section.path = path;
    if (pending.depth > 0) {
      section.protocol = pending.below.substr(backslash + 1);  // npos + 1 is 0
      if (backslash != std::wstring::npos) section.device = pending.below.substr(0, backslash);
      if (!IsProtocol(section.protocol)) {
        if (!hasKeys) ++m_contents.otherKeys;
        return;
      }
    }
    section.values = ReadValues(key.Get(), path);
    if (pending.depth > 0 || !section.values.empty()) {
      m_contents.sections.push_back(std::move(section));
    }
  }

  // Names of protocols, and of their keys, fold case.
  bool IsProtocol(std::wstring_view name) const {
    return std::any_of(m_protocols.begin(), m_protocols.end(),
                       [name](const auto& each) { return Host::EqualsIgnoreCase(each, name); });
  }

  // What ends a listing before its end is a problem of the key at `path`.
  bool IsItem(LSTATUS error, const std::wstring& path) {
    if (error != ERROR_SUCCESS && error != ERROR_NO_MORE_ITEMS) {
      m_contents.problems.push_back("key " + EscapeText(path) + ": cannot be read to its end: " +
                                    SystemErrorText(static_cast<DWORD>(error)));
    }
    return error == ERROR_SUCCESS;
  }

  bool PushSubkeys(HKEY key, const Pending& parent, const std::wstring& path) {
    bool any = false;
    for (DWORD index = 0; index <= kMaxKeys; ++index) {
      wchar_t name[kMaxKeyNameChars + 1];
      DWORD chars = kMaxKeyNameChars + 1;
      if (!IsItem(RegEnumKeyExW(key, index, name, &chars, nullptr, nullptr, nullptr, nullptr),
                  path)) {
        break;
      }
      any = true;
      if (parent.depth >= kMaxDepth) break;
      const std::wstring child(name, chars);
      m_pending.push_back(
          {parent.below.empty() ? child : parent.below + L'\\' + child, parent.depth + 1});
    }
    return any;
  }

  std::vector<StoredValue> ReadValues(HKEY key, const std::wstring& path) {
    std::vector<StoredValue> values;
    for (DWORD index = 0;; ++index) {
      StoredValue value;
      if (!IsItem(ReadValue(key, index, &value), path)) return values;
      m_totalBytes += value.data.size() + value.name.size() * sizeof(wchar_t);
      if (m_totalBytes > kMaxTotalBytes) Fail(m_location, "it holds more than any cache does");
      values.push_back(std::move(value));
    }
  }

  LSTATUS ReadValue(HKEY key, DWORD index, StoredValue* value) {
    DWORD size = 256;
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
      value->data.resize(size);
      DWORD chars = kMaxValueNameChars + 1;
      const LSTATUS error = RegEnumValueW(key, index, m_name.data(), &chars, nullptr, &value->type,
                                          value->data.data(), &size);
      if (error == ERROR_SUCCESS) {
        value->name.assign(m_name.data(), chars);
        value->data.resize(size);
        return ERROR_SUCCESS;
      }
      if (error != ERROR_MORE_DATA) return error;
      if (size > kMaxDataBytes) return ReadNameOnly(key, index, value);
    }
    return ReadNameOnly(key, index, value);
  }

  LSTATUS ReadNameOnly(HKEY key, DWORD index, StoredValue* value) {
    DWORD chars = kMaxValueNameChars + 1;
    const LSTATUS error =
        RegEnumValueW(key, index, m_name.data(), &chars, nullptr, nullptr, nullptr, nullptr);
    if (error != ERROR_SUCCESS) return error;
    value->name.assign(m_name.data(), chars);
    value->type = REG_NONE;
    value->data.clear();
    return ERROR_SUCCESS;
  }

  const CacheLocation& m_location;
  const std::vector<std::wstring> m_protocols = ProtocolNames();
  std::vector<wchar_t> m_name;
  std::vector<Pending> m_pending;
  std::size_t m_keys = 0;
  std::size_t m_totalBytes = 0;
  CacheContents m_contents;
};

std::vector<StoredValue> ValuesIn(const std::vector<BYTE>& buffer, DWORD count) {
  std::vector<StoredValue> values;
  const auto* const entries = reinterpret_cast<const PRINTER_ENUM_VALUESW*>(buffer.data());
  for (DWORD i = 0; i < count; ++i) {
    const PRINTER_ENUM_VALUESW& entry = entries[i];
    if (!entry.pValueName) continue;
    StoredValue value;
    value.name = entry.pValueName;
    value.type = entry.dwType;
    if (entry.pData) value.data.assign(entry.pData, entry.pData + entry.cbData);
    values.push_back(std::move(value));
  }
  return values;
}

CacheContents ReadPrinter(const CacheLocation& location) {
  UniquePrinter printer;
  const DWORD opened = OpenPrinterOf(location, PRINTER_ACCESS_USE, &printer);
  if (opened != ERROR_SUCCESS) RefusePrinter(location, opened);
  std::vector<BYTE> buffer;
  DWORD error = ERROR_MORE_DATA;
  DWORD needed = 0;
  DWORD count = 0;
  for (int attempt = 0; attempt < kMaxAttempts && error == ERROR_MORE_DATA; ++attempt) {
    if (needed > kMaxTotalBytes) Fail(location, "it holds more than any cache does");
    buffer.resize(needed);
    error =
        EnumPrinterDataExW(printer.Get(), kPrinterDataKey, buffer.empty() ? nullptr : buffer.data(),
                           static_cast<DWORD>(buffer.size()), &needed, &count);
  }
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) {
    Fail(location, "cannot be read: " + SystemErrorText(error));
  }
  CacheContents contents;
  if (error == ERROR_SUCCESS && count > 0) {
    contents.sections.push_back({{}, {}, {}, ValuesIn(buffer, count)});
  }
  return contents;
}

}  // namespace

CacheContents ReadCache(const CacheLocation& location) {
  CacheContents contents = location.kind == CacheKind::kRegistry ? RegistryReader(location).Read()
                                                                 : ReadPrinter(location);
  for (CacheSection& section : contents.sections) {
    std::sort(section.values.begin(), section.values.end(),
              [](const auto& a, const auto& b) { return CodeUnitLess()(a.name, b.name); });
  }
  std::sort(contents.sections.begin(), contents.sections.end(), [](const auto& a, const auto& b) {
    return std::tie(a.device, a.protocol) < std::tie(b.device, b.protocol);
  });
  return contents;
}

}  // namespace Corvane::Tool
