// Who a device is, for caches that keep the values of several.
#ifndef CORVANE_COLLECTION_DEVICE_IDENTITY_H_
#define CORVANE_COLLECTION_DEVICE_IDENTITY_H_

#include <optional>
#include <string>

#include "corvane/data_map_spec.h"
#include "corvane/ipp_provider.h"
#include "corvane/oid_provider.h"
#include "corvane/xml_provider.h"

namespace Corvane {

// The device's serial number, as the protocol tells it; of a UUID URN what follows "uuid:".
// Nothing when the device does not answer. One exchange at most.
std::optional<std::wstring> IdentityOf(IXMLProvider* provider, DataMapTypeEnum type);
std::optional<std::wstring> IdentityOf(OIDProvider* provider);
// The printer's UUID, without an exchange.
std::optional<std::wstring> IdentityOf(IPPProvider* provider);

}  // namespace Corvane

#endif  // CORVANE_COLLECTION_DEVICE_IDENTITY_H_
