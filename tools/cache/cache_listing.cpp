#include "tools/cache/cache_listing.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "tools/output/duration.h"
#include "tools/output/json_text.h"
#include "tools/output/text_escape.h"
#include "tools/output/utf8.h"

namespace Corvane::Tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr struct {
  DWORD type;
  const char* name;
} kTypeNames[] = {
    {REG_NONE, "REG_NONE"},   {REG_SZ, "REG_SZ"},         {REG_EXPAND_SZ, "REG_EXPAND_SZ"},
    {REG_DWORD, "REG_DWORD"}, {REG_BINARY, "REG_BINARY"}, {REG_MULTI_SZ, "REG_MULTI_SZ"},
    {REG_QWORD, "REG_QWORD"},
};

std::string TypeName(DWORD type) {
  for (const auto& known : kTypeNames) {
    if (known.type == type) return known.name;
  }
  return "type " + std::to_string(type);
}

const char* KindWord(EntryKind kind) {
  switch (kind) {
    case EntryKind::kPair:
      return "pair";
    case EntryKind::kValueAlone:
      return "value alone";
    case EntryKind::kCompanionAlone:
      return "companion alone";
    default:
      return "foreign";
  }
}

const char* FreshnessWord(Freshness freshness) {
  switch (freshness) {
    case Freshness::kFresh:
      return "fresh";
    case Freshness::kStale:
      return "stale";
    case Freshness::kDependsOnTheMap:
      return "fresh or stale, by the data map";
    default:
      return "not in the specification";
  }
}

std::string ValueText(const CacheEntry& entry) {
  if (!entry.value) return "-";
  const StoredValue& value = *entry.value;
  if (const auto number = NumberOf(value)) return std::to_string(*number);
  if (value.type == REG_SZ) return EscapeText(TextOf(value));
  return TypeName(value.type) + ", " + std::to_string(value.data.size()) + " bytes";
}

std::string AgeText(const CacheEntry& entry, std::uint64_t now) {
  if (entry.NeverGoesStale()) return "never goes stale";
  const auto timestamp = entry.Timestamp();
  if (!timestamp) return "no time: " + EscapeText(TextOf(*entry.companion));
  if (*timestamp > now) return FormatDuration(*timestamp - now) + " in the future";
  return FormatDuration(now - *timestamp) + " old";
}

// Of a pair; empty when there is nothing to say.
std::string StateText(const CacheEntry& entry, const CacheSection& section,
                      const Lifespans* lifespans, std::uint64_t now) {
  if (entry.isPassedOver) return "passed over";
  if (!lifespans || entry.NeverGoesStale()) return {};
  return FreshnessWord(lifespans->Judge(entry, section, now).freshness);
}

std::string EntryLine(const CacheEntry& entry, const CacheSection& section,
                      const Lifespans* lifespans, std::uint64_t now) {
  std::string line = "  " + EscapeText(entry.key) + '\t' + ValueText(entry) + '\t';
  if (entry.kind != EntryKind::kPair) return line + DescriptionOf(entry.kind) + '\n';
  line += AgeText(entry, now);
  const std::string state = StateText(entry, section, lifespans, now);
  return line + (state.empty() ? "" : '\t' + state) + '\n';
}

Json JsonOf(const StoredValue* value) {
  if (!value) return nullptr;
  if (const auto number = NumberOf(*value)) return *number;
  return value->type == REG_SZ ? Json(Utf8FromWide(TextOf(*value))) : Json(nullptr);
}

Json JsonOf(const CacheEntry& entry, const CacheSection& section, const Lifespans* lifespans,
            std::uint64_t now) {
  Json json = {{"key", Utf8FromWide(entry.key)},
               {"kind", KindWord(entry.kind)},
               {"type", entry.value ? Json(TypeName(entry.value->type)) : Json(nullptr)},
               {"value", JsonOf(entry.value)},
               {"bytes", entry.value ? Json(entry.value->data.size()) : Json(nullptr)},
               {"expires", JsonOf(entry.companion)}};
  if (!entry.companion) return json;
  const auto timestamp = entry.Timestamp();
  json["neverGoesStale"] = entry.NeverGoesStale();
  json["timestamp"] = timestamp ? Json(*timestamp) : Json(nullptr);
  const bool hasAge = timestamp && !entry.NeverGoesStale();
  json["age"] = hasAge ? Json(static_cast<std::int64_t>(now - *timestamp)) : Json(nullptr);
  if (entry.kind != EntryKind::kPair) return json;
  json["passedOver"] = entry.isPassedOver;
  if (!lifespans) return json;
  const Judgement judgement = lifespans->Judge(entry, section, now);
  json["lifespan"] = judgement.lifespan ? Json(*judgement.lifespan) : Json(nullptr);
  json["freshness"] =
      entry.NeverGoesStale() ? Json("fresh") : Json(FreshnessWord(judgement.freshness));
  return json;
}

}  // namespace

std::string TitleOf(const CacheSection& section) {
  if (section.path.empty()) return "the printer's values";
  if (section.protocol.empty()) return "the cache's own key";
  const std::string device =
      section.device.empty() ? "a device without a serial number" : EscapeText(section.device);
  return device + ", " + EscapeText(section.protocol);
}

const char* DescriptionOf(EntryKind kind) {
  switch (kind) {
    case EntryKind::kPair:
      return "a value and its .Expires";
    case EntryKind::kValueAlone:
      return "a value without its .Expires";
    case EntryKind::kCompanionAlone:
      return "an .Expires without its value";
    default:
      return "not a cache's value";
  }
}

std::string ListingText(const CacheContents& contents, const Lifespans* lifespans,
                        std::uint64_t now) {
  std::string text;
  for (const CacheSection& section : contents.sections) {
    text += TitleOf(section) + (section.values.empty() ? ": empty\n" : ":\n");
    for (const CacheEntry& entry : EntriesOf(section.values)) {
      text += EntryLine(entry, section, lifespans, now);
    }
  }
  return text.empty() ? "The cache is empty.\n" : text;
}

std::string ListingJson(const CacheLocation& location, const CacheContents& contents,
                        const Lifespans* lifespans, std::uint64_t now) {
  Json sections = Json::array();
  for (const CacheSection& section : contents.sections) {
    Json values = Json::array();
    for (const CacheEntry& entry : EntriesOf(section.values)) {
      values.push_back(JsonOf(entry, section, lifespans, now));
    }
    const bool isOfADevice = !section.protocol.empty();
    const auto ifOfADevice = [isOfADevice](const std::wstring& name) {
      return isOfADevice ? Json(Utf8FromWide(name)) : Json(nullptr);
    };
    sections.push_back({{"device", ifOfADevice(section.device)},
                        {"protocol", ifOfADevice(section.protocol)},
                        {"values", std::move(values)}});
  }
  const Json object = {
      {"cache", TextOf(location)}, {"now", now}, {"sections", std::move(sections)}};
  return JsonText(object);
}

}  // namespace Corvane::Tool
