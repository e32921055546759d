// The whole exported interface.
#ifndef CORVANE_CORVANE_H_
#define CORVANE_CORVANE_H_

#include "corvane/cache_provider.h"
#include "corvane/data_collection.h"
#include "corvane/data_map_spec_collection.h"
#include "corvane/error_codes.h"
#include "corvane/handles.h"
#include "corvane/ipp_data_item_spec.h"
#include "corvane/ipp_provider.h"
#include "corvane/ipp_request.h"
#include "corvane/ipp_response.h"
#include "corvane/next_oid_data_item_spec.h"
#include "corvane/oid_provider.h"
#include "corvane/static_data_item_spec.h"
#include "corvane/trace.h"
#include "corvane/transport.h"
#include "corvane/xml_data_item_spec.h"
#include "corvane/xml_provider.h"

#endif  // CORVANE_CORVANE_H_
