#include "tools/print/document.h"

#include <filesystem>
#include <iostream>
#include <system_error>

#include "base/utf8.h"
#include "base/utf8_path.h"
#include "tools/output/failure.h"
#include "tools/output/text_escape.h"

namespace Corvane::Tool {
namespace {

namespace fs = std::filesystem;

}  // namespace

Document::Document(const std::string& file) : m_stream(&std::cin) {
  if (file == "-") {
    m_name = "stdin";
    return;
  }
  const fs::path path = PathFromUtf8(file);
  const auto refuse = [&file](const char* why) {
    throw Failure(kBadUsage, EscapeText(file) + ": " + why);
  };
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) refuse("no such file");
  if (fs::is_directory(status)) refuse("is a folder");
  if (fs::is_regular_file(status)) m_size = fs::file_size(path, error);
  if (error) m_size.reset();
  m_file.open(path, std::ios::binary);
  if (!m_file) refuse("cannot be opened");
  m_stream = &m_file;
  m_name = ToUtf8(WideFromPath(path.filename()));
}

std::string Document::Read(std::size_t maxBytes) {
  std::string piece(maxBytes, '\0');
  if (m_stream->eof()) return {};
  m_stream->read(piece.data(), static_cast<std::streamsize>(piece.size()));
  if (m_stream->bad() || (m_stream->fail() && !m_stream->eof())) {
    throw Failure(kNotPrinted, EscapeText(m_name) + " cannot be read");
  }
  piece.resize(static_cast<std::size_t>(m_stream->gcount()));
  return piece;
}

}  // namespace Corvane::Tool
