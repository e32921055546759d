#include "platform/linux/dom/tree/xml_reader.h"

#include <expat.h>
#include <iconv.h>

#include <array>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/linux/dom.h"
#include "platform/linux/dom/tree/encoding.h"
#include "platform/linux/dom/tree/tree_builder.h"
#include "platform/linux/misc/exception_wall.h"

namespace Corvane::Dom {
namespace {

static_assert(Corvane::DomLimits::kMaxDocumentBytes <= 0x7FFFFFFF, "the parser takes an int");

constexpr const char* kUtf16 = "UTF-16";

struct ParserFree {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using UniqueParser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFree>;

// The parser is C code: no exception may pass through it, and it stops after the first refusal.
class Reader {
 public:
  Reader(XML_Parser parser, std::size_t bytes, bool isUtf16)
      : m_parser(parser), m_builder(bytes), m_isUtf16(isUtf16) {
    XML_SetUserData(parser, this);
    XML_SetXmlDeclHandler(
        parser, [](void* self, const char* version, const char* encoding, int standalone) {
          Handle(self, [&](TreeBuilder& builder) {
            if (!static_cast<Reader*>(self)->Takes(encoding))
              return builder.Refuse("The declared encoding is not that of the document.");
            builder.Declaration(version, encoding, standalone);
          });
        });
    XML_SetStartDoctypeDeclHandler(
        parser, [](void* self, const char*, const char*, const char*, int) {
          Handle(self, [](TreeBuilder& builder) {
            builder.Refuse("A document type declaration is not allowed.");
          });
        });
    XML_SetElementHandler(
        parser,
        [](void* self, const char* name, const char** attributes) {
          Handle(self, [&](TreeBuilder& builder) { builder.StartElement(name, attributes); });
        },
        [](void* self, const char*) {
          Handle(self, [](TreeBuilder& builder) { builder.EndElement(); });
        });
    XML_SetCharacterDataHandler(parser, [](void* self, const char* text, int length) {
      Handle(self, [&](TreeBuilder& builder) {
        builder.Text({text, static_cast<std::size_t>(length)});
      });
    });
    XML_SetCdataSectionHandler(
        parser,
        [](void* self) { Handle(self, [](TreeBuilder& builder) { builder.StartCdata(); }); },
        [](void* self) { Handle(self, [](TreeBuilder& builder) { builder.EndCdata(); }); });
    XML_SetCommentHandler(parser, [](void* self, const char* text) {
      Handle(self, [&](TreeBuilder& builder) { builder.Comment(text); });
    });
    XML_SetProcessingInstructionHandler(
        parser, [](void* self, const char* target, const char* text) {
          Handle(self, [&](TreeBuilder& builder) { builder.Instruction(target, text); });
        });
  }

  TreeBuilder& Builder() { return m_builder; }

  // Why and where the parser, or the builder before it, stopped. Throws std::bad_alloc when memory
  // ran out.
  LoadFailure Failure() const {
    const XML_Error error = XML_GetErrorCode(m_parser);
    if (m_outOfMemory || error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    if (m_builder.Refusal() != nullptr) return {E_FAIL, m_builder.Refusal(), m_line, m_column};
    return {E_FAIL, XML_ErrorString(error), Line(), Column()};
  }

 private:
  template <class Action>
  static void Handle(void* self, Action action) {
    auto& reader = *static_cast<Reader*>(self);
    if (reader.m_builder.Refusal() != nullptr) return;
    const LSTATUS error = BehindWall([&] {
      action(reader.m_builder);
      return ERROR_SUCCESS;
    });
    if (error != ERROR_SUCCESS) {
      reader.m_outOfMemory = true;
      reader.m_builder.Refuse("Out of memory.");
    }
    if (reader.m_builder.Refusal() != nullptr) {
      // The parser goes past the event before it stops.
      reader.m_line = reader.Line();
      reader.m_column = reader.Column();
      XML_StopParser(reader.m_parser, XML_FALSE);
    }
  }

  // A document in UTF-16 may not be declared as something narrower, but for UTF-8.
  bool Takes(const char* declared) const {
    if (!m_isUtf16 || declared == nullptr) return true;
    const std::string_view name(declared);
    return EqualsIgnoreAsciiCase(name.substr(0, 6), "UTF-16") ||
           EqualsIgnoreAsciiCase(name, "UTF-8");
  }

  LONG Line() const { return static_cast<LONG>(XML_GetCurrentLineNumber(m_parser)); }
  LONG Column() const { return static_cast<LONG>(XML_GetCurrentColumnNumber(m_parser)) + 1; }

  XML_Parser m_parser;
  TreeBuilder m_builder;
  const bool m_isUtf16;  // by its byte order mark
  bool m_outOfMemory = false;
  LONG m_line = 0;
  LONG m_column = 0;
};

int UseWindows1252(XML_Encoding* encoding) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    encoding->map[byte] = static_cast<int>(Windows1252(static_cast<unsigned char>(byte)));
  }
  encoding->data = nullptr;
  encoding->convert = nullptr;
  encoding->release = nullptr;
  return XML_STATUS_OK;
}

// The code point of two bytes of GBK, -1 for a pair that GBK does not have.
int DecodeGbk(void* converter, const char* bytes) {
  std::array<char, 2> pair = {bytes[0], bytes[1]};
  char* in = pair.data();
  std::size_t inLeft = pair.size();
  wchar_t c = 0;
  char* out = reinterpret_cast<char*>(&c);
  std::size_t outLeft = sizeof c;
  const bool whole = iconv(converter, &in, &inLeft, &out, &outLeft) == 0 && outLeft == 0;
  // A pair that is cut short must not spoil the next one.
  if (!whole) iconv(converter, nullptr, nullptr, nullptr, nullptr);
  return whole ? static_cast<int>(c) : -1;
}

// The system holds the table; one without it refuses the document.
int UseGbk(XML_Encoding* encoding) {
  const iconv_t converter = iconv_open("WCHAR_T", "GBK");
  // NOLINTNEXTLINE(performance-no-int-to-ptr): iconv's own mark of a failure
  if (converter == reinterpret_cast<iconv_t>(-1)) return XML_STATUS_ERROR;
  for (int byte = 0; byte < 256; ++byte) {
    const bool leads = byte > 0x80 && byte < 0xFF;
    encoding->map[byte] = byte < 0x80 ? byte : leads ? -2 : -1;  // -2: the first of two bytes
  }
  encoding->data = converter;
  encoding->convert = DecodeGbk;
  encoding->release = [](void* data) { iconv_close(data); };
  return XML_STATUS_OK;
}

int UseEncoding(void*, const char* name, XML_Encoding* encoding) {
  if (EqualsIgnoreAsciiCase(name, "windows-1252")) return UseWindows1252(encoding);
  if (EqualsIgnoreAsciiCase(name, "gbk")) return UseGbk(encoding);
  return XML_STATUS_ERROR;
}

std::unique_ptr<Tree> Read(std::string_view bytes, const char* encoding, LoadFailure* failure) {
  if (bytes.size() > Corvane::DomLimits::kMaxDocumentBytes) {
    *failure = {E_FAIL, "The document is too large.", 0, 0};
    return nullptr;
  }
  const bool isUtf16 = encoding != nullptr && std::string_view(encoding) == kUtf16;
  const UniqueParser parser(XML_ParserCreate(encoding));
  if (!parser) throw std::bad_alloc();
  Reader reader(parser.get(), bytes.size(), isUtf16);
  XML_SetUnknownEncodingHandler(parser.get(), UseEncoding, nullptr);
  const XML_Status status =
      XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
  if (status == XML_STATUS_OK && reader.Builder().Refusal() == nullptr)
    return reader.Builder().Take();

  *failure = reader.Failure();
  return nullptr;
}

}  // namespace

std::unique_ptr<Tree> ReadUtf8(std::string_view text, LoadFailure* failure) {
  return Read(text, "UTF-8", failure);
}

std::unique_ptr<Tree> ReadWide(std::wstring_view text, LoadFailure* failure) {
  constexpr wchar_t kByteOrderMark = 0xFEFF;
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(1);
  std::optional<std::string> utf8;
  if (text.size() <= Corvane::DomLimits::kMaxDocumentBytes) utf8 = ToUtf8Strictly(text);
  if (!utf8) {
    *failure = {E_FAIL, "The text is too large, or is no valid Unicode.", 0, 0};
    return nullptr;
  }
  return ReadUtf8(*utf8, failure);
}

std::unique_ptr<Tree> ReadBytes(std::string_view bytes, LoadFailure* failure) {
  using namespace std::string_view_literals;
  if (bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("\xFE\xFF"sv))
    return Read(bytes, kUtf16, failure);
  // The parser would guess UTF-16 from these zeros.
  if (bytes.substr(0, 2).find('\0') != std::string_view::npos) {
    *failure = {E_FAIL, "The document holds an invalid character.", 1, 1};
    return nullptr;
  }
  return Read(bytes, nullptr, failure);
}

}  // namespace Corvane::Dom
