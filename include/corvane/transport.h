// The transport classes that a host derives from.
#ifndef CORVANE_TRANSPORT_H_
#define CORVANE_TRANSPORT_H_

#include "corvane/address.h"
#include "corvane/http_request.h"
#include "corvane/http_response.h"
#include "corvane/mib_connection.h"
#include "corvane/notifier.h"
#include "corvane/stream.h"
#include "corvane/tq_http_request_ex.h"

#endif  // CORVANE_TRANSPORT_H_
