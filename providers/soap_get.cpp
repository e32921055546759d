#include "providers/soap_get.h"

#include "platform/system.h"

namespace Corvane {
namespace {

#define CORVANE_WS_ADDRESSING "http://schemas.xmlsoap.org/ws/2004/08/addressing"
#define CORVANE_WS_TRANSFER_GET "http://schemas.xmlsoap.org/ws/2004/09/transfer/Get"
#define CORVANE_WS_MANAGEMENT "http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd"
#define CORVANE_SOAP_ENVELOPE "http://www.w3.org/2003/05/soap-envelope"
#define CORVANE_SCHEMA_NAMESPACES                            \
  "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" " \
  "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\""

constexpr std::string_view kHead =
    "<s:Envelope xmlns:s=\"" CORVANE_SOAP_ENVELOPE "\" xmlns:a=\"" CORVANE_WS_ADDRESSING
    "\"><s:Header><a:Action s:mustUnderstand=\"1\">" CORVANE_WS_TRANSFER_GET
    "</a:Action><h:ResourceURI xmlns:h=\"" CORVANE_WS_MANAGEMENT "\" xmlns=\"" CORVANE_WS_MANAGEMENT
    "\" " CORVANE_SCHEMA_NAMESPACES ">";
constexpr std::string_view kMessageId = "</h:ResourceURI><a:MessageID>urn:uuid:";
constexpr std::string_view kTo =
    "</a:MessageID><a:ReplyTo><a:Address>" CORVANE_WS_ADDRESSING
    "/role/anonymous</a:Address></a:ReplyTo><a:To s:mustUnderstand=\"1\">https://";
constexpr std::string_view kPortOfTo = ":7627";
constexpr std::string_view kTail =
    "</a:To></s:Header><s:Body " CORVANE_SCHEMA_NAMESPACES "/></s:Envelope>";

}  // namespace

std::string BuildSoapGet(const SoapGet& request) {
  std::string envelope;
  for (const std::string_view piece : {kHead, request.resourceURI, kMessageId, request.messageId,
                                       kTo, request.host, kPortOfTo, request.path, kTail}) {
    envelope += piece;
  }
  return envelope;
}

std::string NewMessageId() {
  UUID uuid{};
  RPC_CSTR text = nullptr;
  const RPC_STATUS status = UuidCreate(&uuid);
  if (status != RPC_S_OK && status != RPC_S_UUID_LOCAL_ONLY) return {};
  if (UuidToStringA(&uuid, &text) != RPC_S_OK) return {};
  std::string id(reinterpret_cast<const char*>(text));
  RpcStringFreeA(&text);
  return id;
}

}  // namespace Corvane
