#include "tools/ipp/ipp_values.h"

#include <cstddef>
#include <string_view>

#include "base/utf8.h"

namespace Corvane::Tool {
namespace {

unsigned ByteAt(std::string_view bytes, std::size_t position) {
  return static_cast<unsigned char>(bytes[position]);
}

// A text behind its language, each behind its length (RFC 8010, 3.9).
std::optional<std::string_view> TextBehindLanguage(std::string_view bytes) {
  for (int part = 0; part < 2; ++part) {
    if (bytes.size() < 2) return std::nullopt;
    const std::size_t length = ByteAt(bytes, 0) << 8 | ByteAt(bytes, 1);
    bytes.remove_prefix(2);
    if (length > bytes.size()) return std::nullopt;
    if (part == 1) return bytes.substr(0, length);
    bytes.remove_prefix(length);
  }
  return std::nullopt;
}

template <std::size_t kCount>
const char* NameOf(const char* const (&names)[kCount], std::int32_t state) {
  constexpr std::int32_t kFirst = 3;  // of jobs' states and of printers'
  const bool isKnown = state >= kFirst && state < kFirst + static_cast<std::int32_t>(kCount);
  return isKnown ? names[state - kFirst] : nullptr;
}

}  // namespace

std::optional<std::string> TextOf(const IPPValue& value) {
  std::optional<std::string_view> text;
  if (value.tag == IPPTag::kTextWithLanguage || value.tag == IPPTag::kNameWithLanguage) {
    text = TextBehindLanguage(value.bytes);
  } else if (value.tag >= IPPTag::kText && value.tag <= IPPTag::kMimeMediaType) {
    text = value.bytes;
  }
  if (!text) return std::nullopt;
  return ToUtf8(ToWide(*text));
}

std::optional<std::int32_t> NumberOf(const IPPValue& value) {
  const std::string_view bytes = value.bytes;
  if (value.tag != IPPTag::kInteger && value.tag != IPPTag::kEnum) return std::nullopt;
  if (bytes.size() != 4) return std::nullopt;
  return static_cast<std::int32_t>(ByteAt(bytes, 0) << 24 | ByteAt(bytes, 1) << 16 |
                                   ByteAt(bytes, 2) << 8 | ByteAt(bytes, 3));
}

std::optional<std::string> TextOf(const IPPAttribute* attribute) {
  if (!attribute || attribute->values.empty()) return std::nullopt;
  return TextOf(attribute->values.front());
}

std::optional<std::int32_t> NumberOf(const IPPAttribute* attribute) {
  if (!attribute || attribute->values.empty()) return std::nullopt;
  return NumberOf(attribute->values.front());
}

const char* JobStateName(std::int32_t state) {
  static constexpr const char* kNames[] = {
      "pending",  "pending-held", "processing", "processing-stopped",
      "canceled", "aborted",      "completed"};
  return NameOf(kNames, state);
}

const char* PrinterStateName(std::int32_t state) {
  static constexpr const char* kNames[] = {"idle", "processing", "stopped"};
  return NameOf(kNames, state);
}

const char* ErrorStatusName(std::int32_t status) {
  static constexpr const char* kClient[] = {"client-error-bad-request",
                                            "client-error-forbidden",
                                            "client-error-not-authenticated",
                                            "client-error-not-authorized",
                                            "client-error-not-possible",
                                            "client-error-timeout",
                                            "client-error-not-found",
                                            "client-error-gone",
                                            "client-error-request-entity-too-large",
                                            "client-error-request-value-too-long",
                                            "client-error-document-format-not-supported",
                                            "client-error-attributes-or-values-not-supported",
                                            "client-error-uri-scheme-not-supported",
                                            "client-error-charset-not-supported",
                                            "client-error-conflicting-attributes",
                                            "client-error-compression-not-supported",
                                            "client-error-compression-error",
                                            "client-error-document-format-error",
                                            "client-error-document-access-error"};
  static constexpr const char* kServer[] = {
      "server-error-internal-error",      "server-error-operation-not-supported",
      "server-error-service-unavailable", "server-error-version-not-supported",
      "server-error-device-error",        "server-error-temporary-error",
      "server-error-not-accepting-jobs",  "server-error-busy",
      "server-error-job-canceled",        "server-error-multiple-document-jobs-not-supported"};
  constexpr std::int32_t kFirstClient = 0x0400;
  constexpr std::int32_t kFirstServer = 0x0500;
  const auto in = [status](const auto& names, std::int32_t first) -> const char* {
    const std::int32_t index = status - first;
    return index >= 0 && index < static_cast<std::int32_t>(std::size(names)) ? names[index]
                                                                             : nullptr;
  };
  const char* const client = in(kClient, kFirstClient);
  return client ? client : in(kServer, kFirstServer);
}

}  // namespace Corvane::Tool
