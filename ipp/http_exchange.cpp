// A request to the printer over the host's transport, and the document with it.
#include <cstring>
#include <string_view>

#include "core/text.h"
#include "core/trace.h"
#include "ipp/ipp_operations.h"
#include "ipp/ipp_request_attributes.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr int kFirstOperation = 2;
constexpr int kLastOperation = 0x4000;

constexpr wchar_t kMediaType[] = L"application/ipp";

UniqueBstr WideOrEmpty(const char* text) { return BstrFromUtf8(text ? text : ""); }

bool ResponseHasBody(HTTPResponse* response) {
  return response->GetContentLength() > 0 && response->GetContent();
}

// A wide copy of a credential, wiped when it goes.
class CredentialCopy {
 public:
  explicit CredentialCopy(const char* text) : m_text(WideOrEmpty(text)) {}
  CredentialCopy(const CredentialCopy&) = delete;
  CredentialCopy& operator=(const CredentialCopy&) = delete;
  ~CredentialCopy() {
    volatile wchar_t* const chars = m_text.Get();
    for (std::size_t i = m_text.View().size(); i-- > 0;) chars[i] = L'\0';
  }
  const wchar_t* Get() const { return m_text.Get(); }

 private:
  UniqueBstr m_text;
};

}  // namespace

HRESULT IPPOperations::SendIPPRequest(int operation, HTTPResponse** response,
                                      IPPRequestBase* request, bool secure) {
  TraceScope trace(L"Corvane::IPPOperations::SendIPPRequest");
  if (!response) return E_FAIL;
  *response = nullptr;
  if (operation < kFirstOperation || operation > kLastOperation) return E_FAIL;
  if (!OpenRequest(secure)) return E_FAIL;
  AddressRequest(nullptr);
  return Exchange(operation, response, request);
}

HRESULT IPPOperations::SendIPPRequest(HTTPRequest* httpRequest, IPPRequestBase* request,
                                      int operation, HTTPResponse** response) {
  TraceScope trace(L"Corvane::IPPOperations::SendIPPRequest");
  if (response) *response = nullptr;
  if (!httpRequest || !request) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return E_FAIL;
  }
  if (!response || operation < kFirstOperation || operation > kLastOperation) return E_FAIL;
  m_chunked = nullptr;
  m_httpRequest = RefPtr<HTTPRequest>::Share(httpRequest);
  AddressRequest(request);
  return Exchange(operation, response, request);
}

HRESULT IPPOperations::Exchange(int operation, HTTPResponse** response, IPPRequestBase* request) {
  const HRESULT result = ExchangeOnce(operation, response, request);
  if (result != S_OK) EndExchange();
  return result;
}

HRESULT IPPOperations::ExchangeOnce(int operation, HTTPResponse** response,
                                    IPPRequestBase* request) {
  m_httpRequest->SetOption(m_timeoutMs);
  if (operation != IPPOperation::kPrintJob) m_documentLength = 0;
  int length = 0;
  ChunkBuffer body;
  if (const HRESULT result = FormBody(operation, request, &body, &length); result != S_OK) {
    return result;
  }
  static const IPPHeaderMap kNoHeaders;
  AddHttpHeaders(request ? request->GetExtraHTTPHeader() : kNoHeaders, m_httpRequest.Get());
  m_httpRequest->SetRequestData(body.Data(), static_cast<std::uint32_t>(length));

  HTTPResponse* answer = nullptr;
  if (FAILED(m_httpRequest->GetResponse(&answer))) {
    SetLastError(m_httpRequest->GetLastError());
    return E_FAIL;
  }
  if (!answer) return E_FAIL;
  const std::uint32_t status = answer->GetStatusCode();
  if (status == kHttpOk && ResponseHasBody(answer)) {
    *response = answer;
    return S_OK;
  }
  SetLastError(status == kHttpUnauthorized ? IPPStatus::kNotAuthorized : status);
  return E_FAIL;
}

HRESULT IPPOperations::SendPrintJobRequest(HTTPResponse** response, IPPRequestBase* request,
                                           bool chunked, int pieceLength, void* context,
                                           bool secure) {
  TraceScope trace(L"Corvane::IPPOperations::SendPrintJobRequest");
  if (response) *response = nullptr;
  if (!m_address || !response) return E_FAIL;
  const HRESULT result = m_chunked ? SendNextChunk(response, pieceLength, context)
                                   : BeginPrintJob(response, request, chunked, context, secure);
  if (!*response && !m_chunked) EndExchange();
  return result;
}

HRESULT IPPOperations::BeginPrintJob(HTTPResponse** response, IPPRequestBase* request, bool chunked,
                                     void* context, bool secure) {
  if (!OpenRequest(secure)) {
    Trace(kTraceInfo, L"Corvane::IPPOperations::SendPrintJobRequest",
          L"failed to createhttpRequest");
    return E_FAIL;
  }
  AddressRequest(nullptr);
  if (auto* const attributes = dynamic_cast<IPPRequestAttributes*>(request)) {
    AddHttpHeaders(attributes->GetExtraHTTPHeader(), m_httpRequest.Get());
  }
  HandOverCredentials(request);

  int length = 0;
  ChunkBuffer body;
  if (const HRESULT result = FormBody(IPPOperation::kPrintJob, request, &body, &length);
      result != S_OK) {
    return result;
  }
  auto* const extended = dynamic_cast<TqHTTPRequestEx*>(m_httpRequest.Get());
  if (!extended) return E_FAIL;
  if (!chunked) {
    extended->SetOption(reinterpret_cast<std::uintptr_t>(m_address->GetAddress()));
    extended->SetContentLength(static_cast<std::uint32_t>(length));
    extended->SendBody(body.Data(), static_cast<std::uint32_t>(length));
    return ReadPrintJobResponse(response);
  }
  m_httpRequest->AddHeader(L"Transfer-Encoding", L"chunked");
  m_httpRequest->AddHeader(L"Content-Type", kMediaType);
  extended->SetOption(m_timeoutMs);
  if (FAILED(extended->BeginChunkedSend(reinterpret_cast<std::uintptr_t>(context)))) {
    return AbandonRequest();
  }
  m_chunked = extended;
  return WriteChunk(&body, length, context);
}

HRESULT IPPOperations::SendNextChunk(HTTPResponse** response, int pieceLength, void* context) {
  if (pieceLength < 0 || pieceLength > m_documentLength) return E_FAIL;
  const HRESULT written = WriteChunk(&m_document, pieceLength, context);
  if (written != S_OK || pieceLength != 0) return written;
  if (FAILED(m_chunked->FinishChunkedSend())) return AbandonRequest();
  m_chunked = nullptr;
  return ReadPrintJobResponse(response);
}

// An empty piece makes the last chunk.
HRESULT IPPOperations::WriteChunk(ChunkBuffer* piece, int length, void* context) {
  if (!piece->Data() && !piece->Allocate(length)) return E_FAIL;
  const HRESULT written = piece->AsChunk(length, [&](std::string_view chunk) {
    return m_chunked->WriteChunk(chunk.data(), static_cast<std::uint32_t>(chunk.size()),
                                 reinterpret_cast<std::uintptr_t>(context));
  });
  return FAILED(written) ? AbandonRequest() : S_OK;
}

HRESULT IPPOperations::ReadPrintJobResponse(HTTPResponse** response) {
  HTTPResponse* answer = nullptr;
  const HRESULT result = m_httpRequest->GetResponse(&answer);
  if (FAILED(result)) {
    SetLastError(m_httpRequest->GetLastError());
    return result == kAnswerLost ? S_FALSE : result;
  }
  if (!answer) return E_FAIL;
  const std::uint32_t status = answer->GetStatusCode();
  if (status == kHttpUnauthorized) return IPPStatus::kNotAuthenticated;
  if (status != kHttpOk || !ResponseHasBody(answer)) {
    SetLastError(status);
    return E_FAIL;
  }
  *response = answer;
  return S_OK;
}

// A printer that answers before it has the document may say why: what it says is decoded.
HRESULT IPPOperations::AbandonRequest() {
  const std::uint32_t error = m_httpRequest->GetLastError();
  HTTPResponse* early = nullptr;
  if (error == kHttpOk && SUCCEEDED(m_httpRequest->GetResponse(&early)) && early) {
    ParseIPPResponse(early, nullptr);
  }
  EndExchange();
  SetLastError(error);
  return E_FAIL;
}

bool IPPOperations::OpenRequest(bool secure) {
  EndExchange();
  if (!m_address) return false;
  const std::uint32_t port = secure ? kIppsPort : kIppPort;
  return m_address->CreateIPPHTTPRequest(m_httpRequest.Receive(), port) == S_OK && m_httpRequest;
}

void IPPOperations::AddressRequest(IPPRequestBase* credentials) {
  m_httpRequest->SetMethod(L"POST");
  m_httpRequest->SetURI(WideOrEmpty(m_resourceUri.Get()).Get());
  HandOverCredentials(credentials);
  m_httpRequest->SetContentType(kMediaType);
}

void IPPOperations::HandOverCredentials(IPPRequestBase* request) const {
  if (!request || !m_httpRequest) return;
  if (request->GetUsername()) {
    m_httpRequest->SetUserName(CredentialCopy(request->GetUsername()).Get());
  }
  if (request->GetPassword()) {
    m_httpRequest->SetPassword(CredentialCopy(request->GetPassword()).Get());
  }
}

void IPPOperations::AddHttpHeaders(const IPPHeaderMap& headers, HTTPRequest* request) {
  TraceScope trace(L"Corvane::IPPOperations::AddHttpHeaders");
  if (!request) return;
  struct Default {
    const wchar_t* name;
    const wchar_t* value;
    bool given;
  } defaults[] = {{L"Cache-Control", L"no-cache", false},
                  {L"Connection", L"Keep-Alive", false},
                  {L"Pragma", L"no-cache", false}};
  for (const auto& [name, value] : headers) {
    request->AddHeader(name.c_str(), value.c_str());
    for (Default& header : defaults) {
      header.given = header.given || name.find(header.name) != std::wstring::npos;
    }
  }
  for (const Default& header : defaults) {
    if (!header.given) request->AddHeader(header.name, header.value);
  }
}

// The request, and behind it the document where there is one.
HRESULT IPPOperations::FormBody(int operation, IPPRequestBase* request, ChunkBuffer* body,
                                int* length) {
  if (!body->Allocate(m_documentLength + kIPPRequestSize)) return E_FAIL;
  const HRESULT result = FormIPPRequestBasedOnOperation(body->Data(), operation, length, request);
  if (result != S_OK) return result;
  if (operation == IPPOperation::kPrintJob) AddPrinterFileBufferToRequestData(body->Data(), length);
  return S_OK;
}

void IPPOperations::AddPrinterFileBufferToRequestData(char* body, int* length) {
  TraceScope trace(L"Corvane::IPPOperations::AddPrinterFileBufferToRequestData");
  if (*length == 0 || m_documentLength == 0) return;
  std::memcpy(body + *length, m_document.Data(), static_cast<std::size_t>(m_documentLength));
  *length += m_documentLength;
}

HRESULT IPPOperations::SetPrinterFileBufferContent(const void* bytes, int length) {
  TraceScope trace(L"Corvane::IPPOperations::SetPrinterFileBufferContent");
  if (!bytes || length < 0 || length > kMaxDocument) return E_FAIL;
  m_documentLength = 0;
  if (!m_document.Allocate(length)) return E_OUTOFMEMORY;
  std::memcpy(m_document.Data(), bytes, static_cast<std::size_t>(length));
  m_documentLength = length;
  return S_OK;
}

}  // namespace Corvane
