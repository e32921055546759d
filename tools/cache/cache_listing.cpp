// What a cache holds, as text and as JSON.
#include <new>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/utf8.h"
#include "corvane/handles.h"
#include "tools/cache/cache_commands.h"
#include "tools/cache/cache_reader.h"
#include "tools/map/specification.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

using Json = nlohmann::ordered_json;

std::string ValueTypeName(DWORD type) {
  static constexpr struct {
    DWORD type;
    const char* name;
  } kTypeNames[] = {
      {REG_NONE, "REG_NONE"},   {REG_SZ, "REG_SZ"},         {REG_EXPAND_SZ, "REG_EXPAND_SZ"},
      {REG_DWORD, "REG_DWORD"}, {REG_BINARY, "REG_BINARY"}, {REG_MULTI_SZ, "REG_MULTI_SZ"},
      {REG_QWORD, "REG_QWORD"},
  };
  for (const auto& known : kTypeNames) {
    if (known.type == type) return known.name;
  }
  return "type " + std::to_string(type);
}

// Of a VT_BSTR.
std::wstring_view ListedText(const VARIANT& text) {
  return {text.bstrVal, SysStringLen(text.bstrVal)};
}

std::string TextOrNumber(const VARIANT& value) {
  return value.vt == VT_I4 ? std::to_string(value.lVal) : EscapeText(ListedText(value));
}

std::string ValueText(const CacheEntry& entry) {
  if (entry.verdict == CacheVerdict::kNoValue) return "-";
  if (entry.value.vt != VT_EMPTY) return TextOrNumber(entry.value);
  return ValueTypeName(entry.type) + ", " + std::to_string(entry.bytes) + " bytes";
}

std::string AgeText(const CacheEntry& entry) {
  if (!entry.fetchTime) return "no time: " + TextOrNumber(entry.companion);
  if (!entry.age) return "never goes stale";
  const bool isFuture = *entry.age < 0;
  const auto ticks = static_cast<std::uint64_t>(isFuture ? -*entry.age : *entry.age);
  return FormatDuration(ticks) + (isFuture ? " in the future" : " old");
}

std::string EntryLine(const CacheEntry& entry, bool hasSpecification) {
  const VerdictWords words = WordsOf(entry.verdict);
  std::string line = "  " + EscapeText(entry.key) + '\t' + ValueText(entry) + '\t';
  if (!words.isPair) return line + words.text + '\n';
  line += AgeText(entry);
  if (entry.isPassedOver) return line + "\tpassed over\n";
  const bool saysMore = hasSpecification && entry.verdict != CacheVerdict::kNeverStale;
  return line + (saysMore ? std::string("\t") + words.text : "") + '\n';
}

// A line "DEVICE, PROTOCOL:" for each section and below it, indented, a line for each value: key,
// value, age and, with a specification, freshness, between tabs and escaped.
std::string ListingText(const CacheContents& contents, bool hasSpecification) {
  std::string text;
  for (const CacheSection& section : contents.sections) {
    text += TitleOf(section) + (section.entries.empty() ? ": empty\n" : ":\n");
    for (const CacheEntry& entry : section.entries) text += EntryLine(entry, hasSpecification);
  }
  return text.empty() ? "The cache is empty.\n" : text;
}

Json ListedJson(const VARIANT& value) {
  if (value.vt == VT_I4) return value.lVal;
  return value.vt == VT_BSTR ? Json(ToUtf8(ListedText(value))) : Json(nullptr);
}

template <typename T>
Json ListedJson(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json ListedJson(const CacheEntry& entry, bool hasSpecification) {
  const VerdictWords words = WordsOf(entry.verdict);
  const bool hasValue = entry.verdict != CacheVerdict::kNoValue;
  Json json = {{"key", ToUtf8(entry.key)},
               {"kind", words.kind},
               {"type", hasValue ? Json(ValueTypeName(entry.type)) : Json(nullptr)},
               {"value", ListedJson(entry.value)},
               {"bytes", hasValue ? Json(entry.bytes) : Json(nullptr)},
               {"expires", ListedJson(entry.companion)}};
  if (entry.companion.vt == VT_EMPTY) return json;
  json["neverGoesStale"] = entry.fetchTime && !entry.age;
  json["timestamp"] = ListedJson(entry.fetchTime);
  json["age"] = ListedJson(entry.age);
  if (!words.isPair) return json;
  json["passedOver"] = entry.isPassedOver;
  if (!hasSpecification) return json;
  json["lifespan"] = ListedJson(entry.lifespan);
  json["freshness"] = words.text;
  return json;
}

// One object with everything that is known; times and ages are exact, in ticks of 100 ns.
std::string ListingJson(const CacheLocation& location, const CacheContents& contents,
                        bool hasSpecification) {
  Json sections = Json::array();
  for (const CacheSection& section : contents.sections) {
    Json values = Json::array();
    for (const CacheEntry& entry : section.entries) {
      values.push_back(ListedJson(entry, hasSpecification));
    }
    const bool isOfADevice = !section.protocol.empty();
    const auto ifOfADevice = [isOfADevice](const std::wstring& name) {
      return isOfADevice ? Json(ToUtf8(name)) : Json(nullptr);
    };
    sections.push_back({{"device", ifOfADevice(section.device)},
                        {"protocol", ifOfADevice(section.protocol)},
                        {"values", std::move(values)}});
  }
  return JsonText(
      {{"cache", TextOf(location)}, {"now", contents.now}, {"sections", std::move(sections)}});
}

}  // namespace

CommandResult ShowCache(const CacheLocation& location, const std::string& specification,
                        bool json) {
  const bool isSpecified = !specification.empty();
  const auto maps =
      RefPtr<DataMapSpecCollection>::Adopt(DataMapSpecCollection::CreateDataMapSpecCollection());
  if (!maps) throw std::bad_alloc();
  if (isSpecified) {
    for (DataMap& map : LoadSpecification(specification)) {
      maps->AddDataMapSpec(map.spec.Release());
    }
  }
  const CacheContents contents = ReadCache(location, maps.Get());
  return {contents.problems.empty() ? kAllAnswered : kCacheFailure,
          json ? ListingJson(location, contents, isSpecified) : ListingText(contents, isSpecified),
          contents.problems};
}

}  // namespace Corvane::Tool
