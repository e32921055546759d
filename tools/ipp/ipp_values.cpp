#include "tools/ipp/ipp_values.h"

#include <array>
#include <cstddef>
#include <span>

#include "base/utf8.h"
#include "ipp/wire/values.h"

namespace Corvane::Tool {
namespace {

using namespace std::string_literals;

// Null for a number that has no name.
const char* AttributeNameOf(std::span<const char* const> names, std::int32_t first,
                            std::int32_t number) {
  const std::int64_t index = std::int64_t{number} - first;
  const bool isKnown = index >= 0 && index < static_cast<std::int64_t>(names.size());
  return isKnown ? names[static_cast<std::size_t>(index)] : nullptr;
}

constexpr std::int32_t kFirstState = 3;  // of jobs and of printers

}  // namespace

std::optional<std::string> TextOf(const IPPMessage& answer, const IPPValue& value) {
  if (!IsIPPText(value)) return std::nullopt;
  return ToUtf8(ToWide(IPPTextOf(answer, value)));
}

std::optional<std::string> TextOf(const IPPMessage& answer, const IPPAttribute* attribute) {
  if (!attribute || answer.ValuesOf(*attribute).empty()) return std::nullopt;
  return TextOf(answer, answer.ValuesOf(*attribute).front());
}

const char* JobStateName(std::int32_t state) {
  static constexpr const char* kNames[] = {
      "pending",  "pending-held", "processing", "processing-stopped",
      "canceled", "aborted",      "completed"};
  return AttributeNameOf(kNames, kFirstState, state);
}

const char* PrinterStateName(std::int32_t state) {
  static constexpr const char* kNames[] = {"idle", "processing", "stopped"};
  return AttributeNameOf(kNames, kFirstState, state);
}

std::string ErrorStatusName(std::int32_t status) {
  static constexpr auto kClient = std::to_array<const char*>(
      {"bad-request", "forbidden", "not-authenticated", "not-authorized", "not-possible", "timeout",
       "not-found", "gone", "request-entity-too-large", "request-value-too-long",
       "document-format-not-supported", "attributes-or-values-not-supported",
       "uri-scheme-not-supported", "charset-not-supported", "conflicting-attributes",
       "compression-not-supported", "compression-error", "document-format-error",
       "document-access-error"});
  static constexpr auto kServer = std::to_array<const char*>(
      {"internal-error", "operation-not-supported", "service-unavailable", "version-not-supported",
       "device-error", "temporary-error", "not-accepting-jobs", "busy", "job-canceled",
       "multiple-document-jobs-not-supported"});
  if (const char* const name = AttributeNameOf(kClient, 0x0400, status))
    return "client-error-"s + name;
  if (const char* const name = AttributeNameOf(kServer, 0x0500, status))
    return "server-error-"s + name;
  return {};
}

}  // namespace Corvane::Tool
