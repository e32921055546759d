// How a collection is made: the specification parsed, the data map that fits the device chosen.
#include <memory>
#include <new>
#include <optional>

#include "cache/reg_cache_provider.h"
#include "collection/data_collection_impl.h"
#include "collection/device_identity.h"
#include "collection/ipp_data_mapper.h"
#include "collection/oid_data_mapper.h"
#include "collection/xml_data_mapper.h"
#include "core/com.h"
#include "corvane/handles.h"
#include "providers/oid_provider_impl.h"
#include "providers/plsxml_provider_impl.h"
#include "providers/quarn_provider_impl.h"
#include "providers/ws_provider_impl.h"

namespace Corvane {
namespace {

constexpr wchar_t kBuildName[] = L"Corvane::CreateDataCollectionFromDataMapSpecsCollection";

struct DisposeSpecs {
  void operator()(DataMapSpecCollection* specs) const { specs->Dispose(); }
};
using UniqueSpecs = std::unique_ptr<DataMapSpecCollection, DisposeSpecs>;

RefPtr<IXMLProvider> MakeXmlProvider(Address* address, DataMapTypeEnum type) {
  switch (type) {
    case DataMapTypeQUARN:
      return RefPtr<IXMLProvider>::Adopt(QUARNProviderImpl::Create(address));
    case DataMapTypeWS:
      return RefPtr<IXMLProvider>::Adopt(WSProviderImpl::Create(address));
    case DataMapTypePLSXML:
      return RefPtr<IXMLProvider>::Adopt(PLSXMLProviderImpl::Create(address));
    default:
      return {};
  }
}

RefPtr<IXMLDOMDocument> NewDocument(HRESULT* result) {
  RefPtr<IXMLDOMDocument> document;
  *result = CoCreateInstance(kDomDocumentClass, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                             document.ReceiveVoid());
  return document;
}

// A collection over a data map, and who the device is if that was asked for and it told.
struct Fit {
  RefPtr<DataCollectionImpl> mapper;
  std::optional<std::wstring> identity;
};

// Without a mapper when the device does not answer the map's protocol. The mapper takes its own
// reference to the provider.
Fit TryDataMap(Address* address, DataMapSpec* spec, bool identify) {
  Fit fit;
  const DataMapTypeEnum type = spec->GetDataMapType();
  if (type == DataMapTypeOID) {
    const auto provider = RefPtr<OIDProvider>::Adopt(OIDProviderImpl::Create(address));
    if (!provider) return fit;
    fit.mapper =
        RefPtr<DataCollectionImpl>::Share(new (std::nothrow) OIDDataMapper(provider.Get(), spec));
    if (identify) fit.identity = IdentityOf(provider.Get());
    return fit;
  }
  if (type == DataMapTypeIPP) {
    const auto provider = RefPtr<IPPProviderImpl>::Adopt(IPPProviderImpl::Create(
        address, IPPDataMapper::ResourceUriOf(spec).c_str(), false, kIPPDefaultFlags));
    if (!provider) return fit;
    fit.mapper =
        RefPtr<DataCollectionImpl>::Share(new (std::nothrow) IPPDataMapper(provider.Get(), spec));
    if (identify) fit.identity = IdentityOf(provider.Get());
    return fit;
  }
  const RefPtr<IXMLProvider> provider = MakeXmlProvider(address, type);
  if (!provider) return fit;
  fit.mapper =
      RefPtr<DataCollectionImpl>::Share(new (std::nothrow) XMLDataMapper(provider.Get(), spec));
  if (identify) fit.identity = IdentityOf(provider.Get(), type);
  return fit;
}

}  // namespace

HRESULT DataCollectionImpl::Build(Address* address, DataMapSpecCollection* specs,
                                  DataCollection** collection, ICacheProvider* cache) {
  if (!address || !specs || !collection) return E_FAIL;
  auto* const registry = dynamic_cast<RegCacheProvider*>(cache);
  const bool identify = registry && !registry->RegistryPath().empty();
  for (int i = 0; i < specs->GetCount(); ++i) {
    DataMapSpec* const spec = specs->GetDataMapSpec(i);
    if (!spec) continue;
    Fit fit = TryDataMap(address, spec, identify);
    if (!fit.mapper) continue;
    if (cache) {
      fit.mapper->m_cache = RefPtr<ICacheProvider>::Share(cache);
      if (fit.identity) registry->SetDevice(*std::move(fit.identity), spec->GetProtocolType());
      fit.mapper->PopulateValueFromCache(cache, spec);
    }
    fit.mapper->LoadStaticItems(spec);
    *collection = fit.mapper.Release();
    return S_OK;
  }
  return E_FAIL;
}

HRESULT DataCollectionImpl::CreateFromFile(Address* address, const wchar_t* path,
                                           DataCollection** collection, ICacheProvider* cache) {
  TraceScope trace(L"Corvane::DataCollectionImpl::CreateFromFile");
  ComInitialization com;
  com.Begin(trace);
  HRESULT result = E_FAIL;
  const RefPtr<IXMLDOMDocument> document = NewDocument(&result);
  if (FAILED(result)) return result;
  const _variant_t source(path);
  VARIANT_BOOL loaded = VARIANT_FALSE;
  result = document->load(source, &loaded);
  if (FAILED(result) || loaded != VARIANT_TRUE) return result;
  return CreateFromDOM(address, document.Get(), collection, cache);
}

// Unlike a load from a file, this does not look at what CoInitialize says and uninitialises in
// every case.
HRESULT DataCollectionImpl::CreateFromXML(Address* address, const wchar_t* xml,
                                          DataCollection** collection, ICacheProvider* cache) {
  TraceScope trace(L"Corvane::DataCollectionImpl::CreateFromXML");
  struct Initialized {
    Initialized() { static_cast<void>(CoInitialize(nullptr)); }
    ~Initialized() { CoUninitialize(); }
  } const com;
  HRESULT result = E_FAIL;
  const RefPtr<IXMLDOMDocument> document = NewDocument(&result);
  if (FAILED(result)) return result;
  const UniqueBstr text = UniqueBstr::Make(xml);
  VARIANT_BOOL loaded = VARIANT_FALSE;
  result = document->loadXML(text.Get(), &loaded);
  if (FAILED(result) || loaded != VARIANT_TRUE) return result;
  return CreateFromDOM(address, document.Get(), collection, cache);
}

HRESULT DataCollectionImpl::CreateFromDOM(Address* address, IXMLDOMNode* document,
                                          DataCollection** collection, ICacheProvider* cache) {
  TraceScope trace(L"Corvane::DataCollectionImpl::CreateFromDOM");
  if (!document) return E_FAIL;
  const UniqueBstr root = UniqueBstr::Make(L"DataMaps");
  RefPtr<IXMLDOMNode> dataMaps;
  const HRESULT result = document->selectSingleNode(root.Get(), dataMaps.Receive());
  if (result != S_OK || !dataMaps) return result;
  const UniqueSpecs specs(DataMapSpecCollection::CreateDataMapSpecCollection(dataMaps.Get()));
  TraceScope build(kBuildName);
  return DataCollectionImpl::Build(address, specs.get(), collection, cache);
}

}  // namespace Corvane

HRESULT CreateDataCollectionFromFile(Corvane::Address* address, const wchar_t* path,
                                     Corvane::DataCollection** collection,
                                     Corvane::ICacheProvider* cache) {
  Corvane::TraceScope trace(L"Corvane::CreateDataCollectionFromFile");
  return Corvane::DataCollectionImpl::CreateFromFile(address, path, collection, cache);
}

HRESULT CreateDataCollectionFromXML(Corvane::Address* address, const wchar_t* xml,
                                    Corvane::DataCollection** collection,
                                    Corvane::ICacheProvider* cache) {
  Corvane::TraceScope trace(L"Corvane::CreateDataCollectionFromXML");
  return Corvane::DataCollectionImpl::CreateFromXML(address, xml, collection, cache);
}

HRESULT CreateDataCollectionFromDOM(Corvane::Address* address, IXMLDOMNode* document,
                                    Corvane::DataCollection** collection,
                                    Corvane::ICacheProvider* cache) {
  Corvane::TraceScope trace(L"Corvane::CreateDataCollectionFromDOM");
  return Corvane::DataCollectionImpl::CreateFromDOM(address, document, collection, cache);
}

HRESULT CreateDataCollectionFromDataMapSpecsCollection(Corvane::Address* address,
                                                       Corvane::DataMapSpecCollection* specs,
                                                       Corvane::DataCollection** collection,
                                                       Corvane::ICacheProvider* cache) {
  Corvane::TraceScope trace(Corvane::kBuildName);
  return Corvane::DataCollectionImpl::Build(address, specs, collection, cache);
}
