#include "platform/linux/dom/xml_reader.h"

#include <expat.h>
#include <strings.h>

#include <memory>
#include <new>
#include <type_traits>

#include "corvane/linux/dom.h"
#include "platform/linux/dom/encoding.h"
#include "platform/linux/dom/tree_builder.h"

namespace corvane::dom {
namespace {

static_assert(corvane_dom_limits::kMaxDocumentBytes <= 0x7FFFFFFF, "the parser takes an int");

struct ParserFree {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using UniqueParser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFree>;

// The parser is C code: no exception may pass through it, and it stops after the first refusal.
class Reader {
 public:
  Reader(XML_Parser parser, std::size_t bytes) : m_parser(parser), m_builder(bytes) {
    XML_SetUserData(parser, this);
    XML_SetXmlDeclHandler(
        parser, [](void* self, const char* version, const char* encoding, int standalone) {
          Handle(self,
                 [&](TreeBuilder& builder) { builder.Declaration(version, encoding, standalone); });
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
    try {
      action(reader.m_builder);
    } catch (const std::bad_alloc&) {
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

  LONG Line() const { return static_cast<LONG>(XML_GetCurrentLineNumber(m_parser)); }
  LONG Column() const { return static_cast<LONG>(XML_GetCurrentColumnNumber(m_parser)) + 1; }

  XML_Parser m_parser;
  TreeBuilder m_builder;
  bool m_outOfMemory = false;
  LONG m_line = 0;
  LONG m_column = 0;
};

int UseWindows1252(void*, const char* name, XML_Encoding* encoding) {
  if (strcasecmp(name, "windows-1252") != 0) return XML_STATUS_ERROR;
  for (unsigned byte = 0; byte < 256; ++byte) {
    encoding->map[byte] = static_cast<int>(Windows1252(static_cast<unsigned char>(byte)));
  }
  encoding->data = nullptr;
  encoding->convert = nullptr;
  encoding->release = nullptr;
  return XML_STATUS_OK;
}

std::unique_ptr<Tree> Read(std::string_view bytes, const char* encoding, LoadFailure* failure) {
  if (bytes.size() > corvane_dom_limits::kMaxDocumentBytes) {
    *failure = {E_FAIL, "The document is too large.", 0, 0};
    return nullptr;
  }
  const UniqueParser parser(XML_ParserCreate(encoding));
  if (!parser) throw std::bad_alloc();
  Reader reader(parser.get(), bytes.size());
  XML_SetUnknownEncodingHandler(parser.get(), UseWindows1252, nullptr);
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

std::unique_ptr<Tree> ReadBytes(std::string_view bytes, LoadFailure* failure) {
  using namespace std::string_view_literals;
  if (bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("\xFE\xFF"sv))
    return Read(bytes, "UTF-16", failure);
  if (bytes.starts_with("\xEF\xBB\xBF"sv)) return Read(bytes, "UTF-8", failure);
  // The parser would guess UTF-16 from these zeros.
  if (bytes.substr(0, 2).find('\0') != std::string_view::npos) {
    *failure = {E_FAIL, "The document holds an invalid character.", 1, 1};
    return nullptr;
  }
  return Read(bytes, nullptr, failure);
}

}  // namespace corvane::dom
