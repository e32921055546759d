#include "collection/device_identity.h"

#include <string_view>

#include "corvane/handles.h"

namespace Corvane {
namespace {

constexpr std::uint32_t kMaxIdentityChars = 256;
constexpr wchar_t kSerialNumberOid[] = L"1.3.6.1.4.1.11.2.3.9.4.2.1.1.3.3.0";

struct SerialNumberPlace {
  const wchar_t* resource;
  const wchar_t* xpath;
  int useCache;
};

std::optional<SerialNumberPlace> IdentityPlaceOf(DataMapTypeEnum type) {
  switch (type) {
    case DataMapTypeQUARN:
      return SerialNumberPlace{L"quarn:zqQuarnProductConfigDyn", L"//dd:SerialNumber", 0};
    case DataMapTypeWS:
      return SerialNumberPlace{L"urn:zq:imaging:con:service:device:DeviceService",
                               L"//dd:SerialNumber", 1};
    case DataMapTypePLSXML:
      return SerialNumberPlace{L"/zq/device/product_information.xml", L"//ProductSerialNumber", 1};
    default:
      return std::nullopt;
  }
}

std::wstring WithoutUrn(std::wstring_view identity) {
  constexpr std::wstring_view kUuid = L"uuid:";
  const std::size_t position = identity.find(kUuid);
  return std::wstring(
      position == std::wstring_view::npos ? identity : identity.substr(position + kUuid.size()));
}

}  // namespace

std::optional<std::wstring> IdentityOf(IXMLProvider* provider, DataMapTypeEnum type) {
  const std::optional<SerialNumberPlace> place = IdentityPlaceOf(type);
  if (!place) return std::nullopt;
  wchar_t buffer[kMaxIdentityChars] = {};
  std::uint32_t required = 0;
  if (provider->GetValue(place->resource, place->xpath, buffer, kMaxIdentityChars, &required,
                         place->useCache, 0) != S_OK) {
    return std::nullopt;
  }
  return WithoutUrn(buffer);
}

std::optional<std::wstring> IdentityOf(OIDProvider* provider) {
  _variant_t value;
  if (provider->GetValue(kSerialNumberOid, &value) != S_OK) return std::nullopt;
  if (FAILED(VariantChangeType(&value, &value, 0, VT_BSTR))) return std::nullopt;
  return WithoutUrn(value.bstrVal ? value.bstrVal : L"");
}

std::optional<std::wstring> IdentityOf(IPPProvider* provider) {
  _variant_t value;
  if (provider->GetValue("printer-uuid", &value) != S_OK || value.vt != VT_BSTR) {
    return std::nullopt;
  }
  return WithoutUrn(value.bstrVal);
}

}  // namespace Corvane
