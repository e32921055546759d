// One IPP exchange with a printer (RFC 8010, RFC 8011): the request's body, the HTTP exchange, the
// answer.
#ifndef CORVANE_IPP_IPP_OPERATIONS_H_
#define CORVANE_IPP_IPP_OPERATIONS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/handles.h"
#include "corvane/ipp_request.h"
#include "corvane/ipp_response.h"
#include "corvane/transport.h"
#include "ipp/chunk_buffer.h"
#include "ipp/owned_chars.h"
#include "ipp/wire/job.h"
#include "ipp/wire/message.h"

namespace Corvane {

// Bytes of a whole request, without a document. A request is small; the limit keeps what a client
// adds of its own from growing it.
constexpr int kIPPRequestSize = 2048;

// Made for one exchange, or for one print job with its many chunks; its owner keeps it while it
// looks values up in the answer. One thread at a time. Codes of operations are those of
// IPPOperation (wire/codes.h). Results: 0 is success, E_FAIL every failure that nothing else is
// said of.
//
// request_encoding.cpp makes the body, http_exchange.cpp sends it, response_decoding.cpp reads what
// came back.
class IPPOperations {
 public:
  // Bytes of a document, or of one piece: what counts in 32 bits with its request and its framing.
  static constexpr int kMaxDocument = 0x7FFFFFFF - kIPPRequestSize - 64;

  // Takes a reference of its own to the device; without one nothing can be sent.
  explicit IPPOperations(Address* address);
  IPPOperations(const IPPOperations&) = delete;
  IPPOperations& operator=(const IPPOperations&) = delete;

  virtual ~IPPOperations();

  // --- Sending.

  // Sends `operation` (2 to 16384) and hands back the printer's answer if its HTTP status is 200
  // and it has a body. The response is the request's, which this object keeps until its next
  // exchange. `request` may be null for an operation that reads nothing of it. Only a Print-Job
  // takes the document along. `secure` asks for port 443, else 631.
  //
  // A failure is E_FAIL. The thread's last error tells why: kIPPNotAuthorized for HTTP status 401,
  // the HTTP status for any other, also for a 200 without a body; the host's code when it could not
  // have a response. It stays as it was when the host gave no request, and is what forming the
  // request set when that failed; then nothing is sent.
  virtual HRESULT SendIPPRequest(int operation, HTTPResponse** response, IPPRequestBase* request,
                                 bool secure);
  // The same on a request of the caller's, to whatever port that goes; it also gets the user name
  // and password of `request`, and is kept as long. Without either of the two: E_FAIL, last
  // error 87.
  virtual HRESULT SendIPPRequest(HTTPRequest* httpRequest, IPPRequestBase* request, int operation,
                                 HTTPResponse** response);
  // Print-Job with the document set by SetPrinterFileBufferContent, in one piece, or chunked (RFC
  // 9112, 7.1) over several calls. The host's request must be a TqHTTPRequestEx.
  //
  // The first chunked call sends the HTTP headers, the IPP request and the document so far as the
  // first chunk, and leaves the request open. Each further call sends the first `pieceLength` bytes
  // of the document buffer as the next; a pieceLength of 0 ends the document. `context` goes to the
  // host with every chunk.
  //
  // Results: 0 the chunk was sent, or the response has HTTP status 200 and a body; 1 for the host's
  // kAnswerLost; kIPPNotAuthenticated for HTTP status 401; the host's failure for no response; else
  // E_FAIL, with the HTTP status as the last error. After a chunk that could not be sent the last
  // error is the host's code, an early HTTP status among them, the request is given back, and the
  // next call begins anew; the body of an early status 200 has been decoded.
  virtual HRESULT SendPrintJobRequest(HTTPResponse** response, IPPRequestBase* request,
                                      bool chunked, int pieceLength, void* context, bool secure);

  // --- Reading an answer.

  // Decodes a response's body, see ParseIPPContent. E_FAIL without a response.
  virtual HRESULT ParseIPPResponse(HTTPResponse* response, VARIANT* value);
  // The same of an answer to `operation`, whatever this object last formed.
  virtual HRESULT ParseIPPResponse(HTTPResponse* response, VARIANT* value, int operation);
  // Fills the set from the attributes that were read; of several jobs, the first one's URI, id and
  // state. E_FAIL without a set.
  virtual HRESULT FormResponseStructure(IPPResponseBase* out);

  // --- Forming a request.

  // Makes the whole body in `buffer`, kIPPRequestSize bytes, and sets the length. A failure,
  // E_FAIL, leaves what was written before it, well formed: with the end tag and a length, unless
  // the header itself failed or no room was left.
  virtual HRESULT FormIPPRequestBasedOnOperation(char* buffer, int operation, int* length,
                                                 IPPRequestBase* request);

  // Reads `length` bytes. 0, or E_FAIL for what is no whole IPP 2.x message (with the last error
  // kIPPVersion1 for one of 1.x), for the refusal of a job operation (but
  // client-error-not-possible), and when an output is given and the attribute of
  // SetAttributeName is not in the answer. A name of "all", a list with "," and Get-Jobs ask for no
  // attribute in particular: then `value` is filled if there is such a one. A message without its
  // end tag succeeds and leaves `value` alone. What was read stays until the next decoding, after a
  // failure, too.
  virtual HRESULT ParseIPPContent(const unsigned char* body, int length, VARIANT* value);

  // Writes "requested-attributes" with `name` as its value, under the tag that the attribute has in
  // the table.
  virtual HRESULT AddAttributeBasedOnType(const char* name, char* buffer, int* position);
  // The attribute's value kind (IPPValueKind) and tag by the table; text and keyword for others.
  virtual int GetTypeOfAttribute(const char* name, int* tag);

  // --- Settings. A null or empty text changes nothing and gives E_FAIL.

  HRESULT SetJobURI(const char* uri);
  // Printer URI and HTTP target.
  HRESULT SetResourceURI(const char* uri);
  HRESULT SetAttributeName(const char* name);
  HRESULT SetRequestedUserName(const char* name);
  // Of the request and the texts that it asks for; at first "utf-8" and "en".
  HRESULT SetCharset(const char* charset);
  HRESULT SetLanguage(const char* language);
  // The whole URI of the printer, kept for the owner.
  HRESULT SetPrinterURI(const wchar_t* uri);
  const std::wstring& PrinterUri() const { return m_printerUri; }
  // Kept for the owner, too.
  void SetConnectionFlags(std::uint32_t flags) { m_connectionFlags = flags; }
  std::uint32_t ConnectionFlags() const { return m_connectionFlags; }
  // Null when there is none.
  const char* RequestedUserName() const { return m_requestedUserName.Get(); }
  // From now on the printer's refusal makes decoding fail.
  void SetJobOperations() { m_jobOperation = true; }
  // The option that the host's request gets (HTTPRequest::SetOption), but for a document in one
  // piece.
  void SetTimeout(std::uint32_t milliseconds) { m_timeoutMs = milliseconds; }
  // Replaces the document, or its next piece, by a copy. Null and a length below 0 or above
  // kMaxDocument change nothing and give E_FAIL; E_OUTOFMEMORY leaves none.
  HRESULT SetPrinterFileBufferContent(const void* bytes, int length);

  // Whether a chunked document is on its way.
  bool IsSendingChunks() const { return m_chunked != nullptr; }
  // Gives the request, and its response, back to the host. What was decoded stays.
  void EndExchange();

  // --- Pieces of a request. `buffer` is that of FormIPPRequestBasedOnOperation, *position moves.

  // Version, operation, request id 100, charset, language and, but for Cancel-Job, "printer-uri".
  HRESULT FormIPPReqestHeader(char* buffer, int operation, int* position);
  HRESULT AddGetJobAttr(char* buffer, int* position);
  HRESULT AddGetJobs(char* buffer, int* position);
  // Last error 87 without an attribute name.
  HRESULT AddGetPrinterAttr(char* buffer, int* position);
  HRESULT AddPrintURIAttr(char* buffer, int* position, IPPRequestBase* request);
  HRESULT AddCreateJobAttr(char* buffer, int* position, IPPRequestBase* request);
  HRESULT AddCancelJobAttr(char* buffer, int* position, IPPRequestBase* request);
  HRESULT AddSendURIAttr(char* buffer, int* position, IPPRequestBase* request);
  HRESULT AddPrintJobAttr(char* buffer, int* position, IPPRequestBase* request);

  // The caller's own attributes of a group (kIPPOperationGroup, kIPPJobGroup), then its blobs. 0;
  // E_FAIL for an attribute that could not be written; 1 for a blob without room, which ends them,
  // and when there is no set of ours to read.
  static HRESULT AddIPPAttributesToIPPHeader(char* buffer, IPPRequestBase* request, int* position,
                                             std::uint32_t group);
  // 1 when the caller added an attribute of that name, else 0.
  static int IsSetViaIPPAttributeStruct(IPPRequestBase* request, const char* name);

  // One attribute: kIPPWritten, kIPPTooLarge or kIPPNoName (wire/writer.h). A null value is an
  // empty one.
  static int AddStringToIPPRequest(char* buffer, int tag, const char* name, const char* value,
                                   int* position);
  static int AddStringsToIPPRequest(char* buffer, int tag, const char* name, const char* list,
                                    int* position);
  static int AddIntegerToIPPRequest(char* buffer, int tag, const char* name, std::int32_t value,
                                    int* position);
  static int AddBooleanToIPPRequest(char* buffer, const char* name, unsigned char value,
                                    int* position);
  static int AddRangeToIPPRequest(char* buffer, const char* name, std::int32_t lower,
                                  std::int32_t upper, int* position);
  static int AddResolutionToIPPRequest(char* buffer, const char* name, unsigned char units,
                                       std::int32_t crossFeed, std::int32_t feed, int* position);

  // --- Pieces of an exchange.

  // Adds the caller's headers in the map's order, then "Cache-Control", "Connection" and "Pragma",
  // each unless the caller named one like it.
  static void AddHttpHeaders(const IPPHeaderMap& headers, HTTPRequest* request);
  // Copies the document behind the request's *length bytes, if there are both, and adds its length.
  void AddPrinterFileBufferToRequestData(char* body, int* length);

  // --- Pieces of decoding.

  // 0, or -1 for what ParseIPPContent calls E_FAIL. Reads as many bytes as that was last given.
  int ReadResponseData(const unsigned char* body, VARIANT* value);
  // The next `count` bytes of the body, if there are so many; fewer than `count` is the end. Gives
  // how many were copied.
  int CopyContentToBuffer(void* destination, const unsigned char* body, int count);
  // The value of an attribute of the answer. True when there is one: a VT_BSTR, or a VT_ARRAY |
  // VT_BSTR of several in their order; dates, resolutions and ranges as text. "a.b" is member b of
  // collection a, or of the "b=..." of an octet string a; "a.b.c" goes on. A whole collection is
  // one text, "IPP_Set_Start,member,value,...,IPP_Set_End". What *out held is cleared.
  bool GetValueFromIPPMap(const char* name, VARIANT* out) const;
  // The same values in UTF-8, none for an attribute that the answer has not.
  std::vector<std::string> ValuesOf(std::string_view name) const;
  // The jobs that the answer tells of, in its order.
  std::vector<IPPJob> Jobs() const;
  // "Pending" of 3 to "Completed" of 9 (RFC 8011, 5.3.7); leaves *text alone for others.
  static void GetJobState(int state, const char** text);

 private:
  bool OpenRequest(bool secure);
  // With the credentials of a set, which may be null.
  void AddressRequest(IPPRequestBase* credentials);
  void HandOverCredentials(IPPRequestBase* request) const;
  HRESULT FormBody(int operation, IPPRequestBase* request, ChunkBuffer* body, int* length);
  HRESULT Exchange(int operation, HTTPResponse** response, IPPRequestBase* request);
  HRESULT ExchangeOnce(int operation, HTTPResponse** response, IPPRequestBase* request);
  HRESULT BeginPrintJob(HTTPResponse** response, IPPRequestBase* request, bool chunked,
                        void* context, bool secure);
  HRESULT SendNextChunk(HTTPResponse** response, int pieceLength, void* context);
  HRESULT WriteChunk(ChunkBuffer* piece, int length, void* context);
  HRESULT ReadPrintJobResponse(HTTPResponse** response);
  HRESULT AbandonRequest();

  HRESULT AddAttributesOf(int operation, char* buffer, int* position, IPPRequestBase* request);
  bool AsksForOneValue() const;

  const RefPtr<Address> m_address;
  RefPtr<HTTPRequest> m_httpRequest;     // of the current exchange
  TqHTTPRequestEx* m_chunked = nullptr;  // the same, while a chunked document is on its way
  std::uint32_t m_timeoutMs = 0;
  ChunkBuffer m_document;
  int m_documentLength = 0;

  OwnedChars m_jobUri;
  OwnedChars m_resourceUri;
  OwnedChars m_attributeName;
  OwnedChars m_requestedUserName;
  OwnedChars m_charset;
  OwnedChars m_language;
  std::wstring m_printerUri;
  std::uint32_t m_connectionFlags = 0;
  int m_operation = 0;  // last formed
  bool m_jobOperation = false;

  IPPMessage m_answer;
  std::optional<int> m_statusCode;
  int m_length = 0;    // of the body that is decoded
  int m_position = 0;  // in it
};

}  // namespace Corvane

#endif  // CORVANE_IPP_IPP_OPERATIONS_H_
