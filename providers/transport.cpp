// The transport classes' own code: there is only what a host's derived classes need to link.
#include "corvane/transport.h"

namespace Corvane {

Address::Address() = default;
Address::Address(const Address&) = default;
Address& Address::operator=(const Address&) = default;
Address::~Address() = default;

HTTPRequest::HTTPRequest() = default;
HTTPRequest::HTTPRequest(const HTTPRequest&) = default;
HTTPRequest& HTTPRequest::operator=(const HTTPRequest&) = default;
HTTPRequest::~HTTPRequest() = default;

HTTPResponse::HTTPResponse() = default;
HTTPResponse::HTTPResponse(const HTTPResponse&) = default;
HTTPResponse& HTTPResponse::operator=(const HTTPResponse&) = default;
HTTPResponse::~HTTPResponse() = default;

MIBConnection::MIBConnection() = default;
MIBConnection::MIBConnection(const MIBConnection&) = default;
MIBConnection& MIBConnection::operator=(const MIBConnection&) = default;
MIBConnection::~MIBConnection() = default;

Notifier::Notifier() = default;
Notifier::Notifier(const Notifier&) = default;
Notifier& Notifier::operator=(const Notifier&) = default;
Notifier::~Notifier() = default;

Stream::Stream() = default;
Stream::Stream(const Stream&) = default;
Stream& Stream::operator=(const Stream&) = default;
Stream::~Stream() = default;

TqHTTPRequestEx::TqHTTPRequestEx() = default;
TqHTTPRequestEx::TqHTTPRequestEx(const TqHTTPRequestEx&) = default;
TqHTTPRequestEx& TqHTTPRequestEx::operator=(const TqHTTPRequestEx&) = default;
TqHTTPRequestEx::~TqHTTPRequestEx() = default;

}  // namespace Corvane
